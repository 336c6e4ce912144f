"""./demo's own part: bad input is told in one sentence, and nothing half-done is left behind."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import fcntl
import io
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest
from PIL import Image

import demo_label
import demo_options
import demo_picture
import demo_print
import disc_job
import sandbox
from disc_job import BUILD, PPD, REPOSITORY

LABELS = REPOSITORY / "labels"


class DemoBox(sandbox.Sandbox):
    """A private root in which the demonstration runs, whose filter has the fixed paths; and a build
    folder with the programs as links and nothing printed yet."""

    def __init__(self, folder):
        super().__init__()
        self.folder = folder
        self.build = folder / "build"
        self.build.mkdir()
        for name in ("ppd", "zr7700-printer", "rastertoZR7700"):
            (self.build / name).symlink_to(BUILD / name)
        for place in (sandbox.LIBRARIES, sandbox.ENGINE_DATA):
            shutil.copytree(BUILD / "root" / place, self.root / place, dirs_exist_ok=True)

    def run(self, *command, mounts=(), **more):
        bwrap = [*self.command(disc_job.FILTER), "--ro-bind", REPOSITORY, REPOSITORY, "--bind",
                 BUILD, BUILD, "--bind", self.folder, self.folder, *mounts]
        return subprocess.run([*bwrap, *command], capture_output=True, text=True, check=False,
                              timeout=120, **more)

    def demo(self, *words, mounts=()):
        return self.run(sys.executable, "-B", REPOSITORY / "tools/demo_print.py", "--build",
                        self.build, *map(str, words), mounts=mounts)

    def refusal(self, *words, mounts=()):
        """What a call that must fail says, without its line end."""
        done = self.demo(*words, mounts=mounts)
        assert done.returncode == 1
        assert done.stderr.startswith("demo: ") and done.stderr.count("\n") == 1, done.stderr
        left = [name for _, _, names in os.walk(self.build / "discs") for name in names]
        assert left == [] and not list(self.build.glob("job-*"))
        assert os.listdir(self.root / "shm") == []
        return done.stderr.strip()


@pytest.fixture
def box(tmp_path):
    sandbox.require()
    made = DemoBox(tmp_path)
    yield made
    made.remove()


def pdf_without_pages():
    text, places = "%PDF-1.4\n", []
    for number, body in enumerate(("<</Type/Catalog/Pages 2 0 R>>",
                                   "<</Type/Pages/Kids[]/Count 0>>"), 1):
        places.append(len(text))
        text += f"{number} 0 obj{body}endobj\n"
    rows = "".join(f"{place:010} 00000 n \n" for place in places)
    return (text + f"xref\n0 3\n0000000000 65535 f \n{rows}trailer<</Size 3/Root 1 0 R>>\n"
            f"startxref\n{len(text)}\n%%EOF\n").encode()


def damaged(path):
    data = bytearray(path.read_bytes())
    data[2000:200000] = bytes(255 & 7 * i for i in range(len(data[2000:200000])))
    return bytes(data)


def picture(kind, mode="RGB", size=(60, 40), **more):
    out = io.BytesIO()
    Image.new(mode, size, "gray" if mode != "CMYK" else (0, 0, 0, 99)).save(out, kind, **more)
    return out.getvalue()


def png_of_size(width, height):
    """Only the header says so."""
    data = bytearray(picture("PNG"))
    data[16:24] = width.to_bytes(4, "big") + height.to_bytes(4, "big")
    return bytes(data)


@pytest.mark.parametrize("name, content, told", [
    ("text.png", b"hello", "is no picture that can be printed; give a PDF, PNG, JPEG"),
    ("empty.pdf", b"", "is no picture that can be printed"),
    ("cut.png", (LABELS / "lake.png").read_bytes()[:300000], "is cut short; save or copy it"),
    ("cut.pdf", (LABELS / "concert.pdf").read_bytes()[:40000], "is cut short"),
    ("cut.gif", picture("GIF")[:-1], "is cut short"),
    ("cut.tif", picture("TIFF")[:-500], "is cut short"),
    ("cut.jpg", picture("JPEG")[:-2], "is cut short"),
    ("cmyk.tif", picture("TIFF", "CMYK"), "is a TIFF in CMYK, whose colours would come out wrong"),
    ("huge.png", png_of_size(10001, 10000), "has 10001 x 10000 dots"),
    ("broken.tif", b"II*\0\xff\xff\xff\x7f", "is damaged; save it again"),
    ("pageless.pdf", pdf_without_pages(), "has no pages; export it again"),
    ("damaged.png", damaged(LABELS / "lake.png"), "cannot be turned into a page; save it again"),
], ids=lambda value: value if isinstance(value, str) and value[-4:-3] == "." else "")
def test_labels_that_are_none(box, tmp_path, name, content, told):
    label = tmp_path / name
    label.write_bytes(content)
    assert f"{label} {told}" in box.refusal(label)


@pytest.mark.parametrize("kind, more", [
    ("PNG", {}), ("JPEG", {}), ("JPEG", {"progressive": True}), ("JPEG", {"exif": b"Exif\0\0" * 9}),
    ("GIF", {}), ("TIFF", {}), ("TIFF", {"big_endian": True}), ("TIFF", {"compression": "packbits"}),
])
def test_pictures_that_are_whole(tmp_path, kind, more):
    """Also with what some programs write behind a picture's end."""
    for tail in (b"", b"\0" * 100) + (() if kind == "GIF" else (b"more" * 2000,)):
        label = tmp_path / "label"
        label.write_bytes(picture(kind, size=(200, 100), **more) + tail)
        found = demo_label.label_type(label)
        assert found == "image/" + kind.lower()
        demo_picture.check(label, found)


def test_a_pdf_with_empty_lines_behind_it_is_whole(tmp_path):
    label = tmp_path / "label.pdf"
    label.write_bytes((LABELS / "concert.pdf").read_bytes() + b"\n" * 5000)
    assert demo_label.label_type(label) == "application/pdf"


@pytest.mark.parametrize("label", ["/dev/zero", "fifo"])
def test_labels_that_are_no_files(box, tmp_path, label):
    if label == "fifo":
        label = tmp_path / "fifo"
        os.mkfifo(label)
    assert f"The label {label} is no file;" in box.refusal(label)


def test_labels_of_the_same_name_get_pictures_of_their_own(tmp_path):
    labels = []
    for name in ("a/disc.png", "b/disc.gif", "c/disc.png", "d/disc_2.png"):
        path = tmp_path / name
        path.parent.mkdir()
        path.write_bytes(picture(path.suffix[1:].upper()))
        labels.append(demo_print.Label(path))
    assert demo_print.names_of(labels) == ["disc", "disc_2", "disc_3", "disc_2_2"]


def test_label_that_is_missing_or_a_folder(box, tmp_path):
    assert "(No such file or directory); check its name." in box.refusal(tmp_path / "no.png")
    assert "(Is a directory)" in box.refusal(tmp_path)


@pytest.mark.parametrize("words, told", [
    (["-o", "PrintQuality=Quality9"], "can be Quality1, Quality2, Quality3, Quality4."),
    (["-o", "PrintQualty=Quality3"], "did you mean PrintQuality?"),
    (["-o", "=3"], "options read NAME=VALUE."),
    (["-o", "ppi=$(id)"], "holds a character that no option takes."),
    (["-o", "Resolution=300dpi PrintQuality=Quality4"], "exclude each other"),
    (["--cartridge", "X"], "can be Q, P, U or V."),
    (["--discs", "0"], 'can be 1 to 25, not "0".'),
    (["--discs", "\u00b2"], "can be 1 to 25"),
    (["--", "-no.png"], "The label -no.png cannot be read"),
    (["-o", "print-scaling=bogus"], "takes auto, auto-fit, fill, fit or none, not \"bogus\""),
    (["-o", "page-ranges=0-3"], "takes pages such as 1-3,5, not \"0-3\""),
    (["-o", "mirror=maybe"], "takes true or false"),
    (["-o", "page-set=bogus"], "takes all, even or odd"),
    (["-o", "orientation-requested=77"], "takes 3, 4 (turned left)"),
    (["-o", "scaling=100000"], "takes a number of per cent from 1 to 800"),
    (["-o", "natural-scaling=abc"], "takes a number of per cent from 1 to 800"),
    (["-o", "ppi=0"], "takes a number of dots per inch"),
    (["-o", "ppi=-5"], "takes a number of dots per inch"),
    (["-o", "position=middle"], "takes center, top"),
    (["-o", "outputorder=random"], "takes normal or reverse"),
    (["-o", "fit-to-page=perhaps"], "takes true or false"),
    (["--paper", "A4"], "--help tells what there is."),
])
def test_arguments_that_are_wrong(box, words, told):
    assert told in box.refusal(LABELS / "lake.png", *words)


def test_no_room_on_the_disk(box):
    """Too little room is told before anything is printed."""
    (box.build / "discs").mkdir()
    small = ["--size", "4000000", "--tmpfs", box.build / "discs"]
    assert "There is no room on the disk" in box.refusal(LABELS / "lake.png", mounts=small)


def test_disk_that_fills_up_while_printing(tmp_path, box):
    """The filters' own files fill it first; nothing of the job stays."""
    disk = tmp_path / "disk"
    disk.mkdir()
    script = """cd "$1" && mkdir discs && for name in ppd zr7700-printer rastertoZR7700; do
                  ln -s "$2/$name" .; done
                "$3" -B -c 'import sys, demo_print as demo; demo.ROOM_MIB = 0
sys.argv[1:] = ["--build", sys.argv[1], sys.argv[2]]; sys.exit(demo.main())' "$1" "$4"
                echo "left: $(ls discs; ls -d job-* 2>/dev/null)"; exit 0"""
    done = box.run("bash", "-c", script, "bash", disk, BUILD, sys.executable, LABELS / "lake.png",
                   mounts=["--size", "2500000", "--tmpfs", disk],
                   env={**os.environ, "PYTHONPATH": str(REPOSITORY / "tools")})
    assert done.stderr == ("demo: There is no room on the disk for the picture; "
                           "delete something and try again.\n")
    assert done.stdout.splitlines()[-1] == "left: "


def test_one_at_a_time(box):
    with open(box.build / "demo.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        assert "Another ./demo is printing" in box.refusal(LABELS / "lake.png")


def test_what_a_killed_job_left_is_removed(box, tmp_path):
    (box.build / "job-killed").mkdir()
    (box.build / "job-killed/lake-001.png.part").write_bytes(b"half")
    label = tmp_path / "damaged.png"
    label.write_bytes(damaged(LABELS / "lake.png"))
    assert "cannot be turned into a page" in box.refusal(label)


def test_files_of_somebody_else_are_told(box):
    (box.build / "demo.lock").mkdir()
    assert "demo.lock cannot be used (Is a directory)" in box.refusal(LABELS / "lake.png")


def test_the_command_itself_tells_mistakes_before_it_builds():
    done = subprocess.run([REPOSITORY / "demo", "no.png"], capture_output=True, text=True,
                          check=False, timeout=20)
    assert done.returncode == 1 and done.stdout == ""
    assert done.stderr == ("demo: The label no.png cannot be read (No such file or directory); "
                           "check its name.\n")


def processes_of(folder):
    """The commands that run with the folder as their place for temporary files."""
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        try:
            if f"TMPDIR={folder}".encode() in (process / "environ").read_bytes():
                found.append((process / "cmdline").read_bytes())
        except OSError:
            pass
    return found


# Starts the demonstration, waits as it is told and sends the signal.
STOP_SCRIPT = """"$@" & eval "$WAIT"; sleep "$AFTER_S"; kill -"$SIGNAL" $!; wait $!; exit $?"""
JOB_HAS_BEGUN = """while kill -0 $! && ! compgen -G "$BUILD/job-*" >/dev/null; do sleep 0.01; done"""


def stopped(box, name, wait, after_s):
    return box.run("bash", "-c", STOP_SCRIPT, "bash", sys.executable, "-B",
                   REPOSITORY / "tools/demo_print.py", "--build", box.build, LABELS / "lake.png",
                   env={**os.environ, "WAIT": wait, "AFTER_S": str(after_s), "SIGNAL": name,
                        "BUILD": str(box.build)})


@pytest.mark.parametrize("name, status, after_s", [
    *[("INT", 130, moment) for moment in (0, 0.02, 0.05, 0.1, 0.3, 1.0)], ("TERM", 143, 0),
    ("TERM", 143, 0.6), ("HUP", 129, 0.01), ("HUP", 129, 0.6)])
def test_a_stopped_job_leaves_nothing(box, name, status, after_s):
    """So long after its folder was made: while its processes start, while they print."""
    done = stopped(box, name, JOB_HAS_BEGUN, after_s)
    assert (done.returncode, done.stderr) == (status, "")
    assert processes_of(box.build) == []
    assert not list(box.build.glob("job-*")) and os.listdir(box.root / "shm") == []
    assert not list(box.build.glob("discs/*"))


@pytest.mark.parametrize("after_s", [0.05, 0.1, 0.15])
def test_a_stop_while_it_starts_says_nothing(box, after_s):
    done = stopped(box, "TERM", ":", after_s)
    assert (done.returncode, done.stderr) == (143, "")


def test_more_ink_than_a_cartridge_holds(box, tmp_path):
    """The printer is looked after: a standard cartridge is empty at 400 microlitres of an ink."""
    label = tmp_path / "black.png"
    Image.new("RGB", (1417, 1417), "black").save(label)
    done = box.demo(label, "--discs", "6", "-o", "ColorMatching=BestForPhotos")
    assert done.returncode == 0, done.stderr
    used = [float(ink) for ink in re.findall(r"(?:cyan|magenta|yellow) ([\d.]+)", done.stdout)]
    assert max(used) > 400
    assert "ERROR" not in done.stdout and "STATE: +" not in done.stdout
    assert len(os.listdir(box.build / "discs")) == 12


def test_defaults_follow_the_draft_resolution():
    ppd = demo_options.PpdOptions(PPD)
    settled = ppd.settle({"Resolution": "300dpi"})
    # 22 mm and 1 mm again, by the keywords of the draft.
    assert settled["InnerDiameter"] == "110Draft" and settled["OuterMargin"] == "5Draft"
    assert ppd.settle({}) == {}
    assert disc_job.choices("PrintQuality=Quality3")["PrintQuality"] == "Quality3"


def test_whole_demonstration(box):
    """From the label to the picture, in a private root that holds the engine."""
    done = box.demo(LABELS / "orientation.png", "-o", "PrintQuality=Quality3", "--cartridge", "U",
                    "--discs", "2")
    assert done.returncode == 0, done.stderr
    kept = sorted(os.listdir(box.build / "discs"))
    assert kept == [f"orientation-00{n}{kind}.png" for n in (1, 2) for kind in ("-small", "")]
    for words in ("pages    2, 600 dpi, Quality3, engine family Heron, 4 passes", "microlitres",
                  "STATE: -media-needed", str(box.build / "discs/orientation-002-small.png")):
        assert words in done.stdout
