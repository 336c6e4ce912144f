"""./demo's own part: bad input is told in one sentence, and nothing half-done is left behind."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import fcntl
import os
import re
import subprocess
import sys
import time
from pathlib import Path

import pytest
from PIL import Image

import demo_label
import demo_options
import demo_print
import demo_queue
import documents
from disc_job import BUILD, PPD, REPOSITORY

LABELS = REPOSITORY / "labels"


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


@pytest.mark.parametrize("name, content, told", [
    ("cut.png", (LABELS / "lake.png").read_bytes()[:300000],
     "is not printed: The picture is damaged, not all of it came"),
    ("damaged.png", damaged(LABELS / "lake.png"), "is not printed: The picture is damaged"),
    ("cut.pdf", (LABELS / "concert.pdf").read_bytes()[:40000], "is damaged; export it again"),
    ("pageless.pdf", pdf_without_pages(), "has no pages; export it again"),
    ("noise.png", bytes(range(256)) * 99, "is not printed: The document is no PNG, JPEG or TIFF"),
    ("noise.bin", bytes(range(256)) * 99, "is of no kind that can be printed; give a PDF"),
    ("empty.pdf", b"", "is of no kind that can be printed"),
    ("box.zip", b"PK\3\4" + bytes(range(128, 256)) * 99, "be printed; give a PDF"),
], ids=lambda value: value if isinstance(value, str) and value[-4:-3] == "." else "")
def test_labels_that_are_none(box, tmp_path, name, content, told):
    """What a filter says reaches the person as it is."""
    label = tmp_path / name
    label.write_bytes(content)
    said = box.refusal(label)
    assert str(label) in said and told in said


def test_pages_that_a_document_has_not(box, tmp_path):
    documents.pdf(tmp_path / "two.pdf", [(340, 340)] * 2)
    assert "No page came to be printed; choose pages that the document has" in box.refusal(
        tmp_path / "two.pdf", "-o", "page-ranges=3")


@pytest.mark.parametrize("options, pages", [
    ({}, 9), ({"page-ranges": "2"}, 1), ({"page-ranges": "2-4,4,8-"}, 5),
    ({"page-ranges": "8-20"}, 2), ({"page-set": "even"}, 4), ({"page-set": "odd"}, 5),
    ({"page-ranges": "3-5", "page-set": "odd"}, 2), ({"page-ranges": "10"}, 0),
])
def test_pages_that_are_chosen(options, pages):
    assert demo_label.pages_chosen(9, options) == pages


@pytest.mark.parametrize("label", ["/dev/zero", "fifo"])
def test_labels_that_are_no_files(box, tmp_path, label):
    if label == "fifo":
        label = tmp_path / "fifo"
        os.mkfifo(label)
    assert f"The label {label} is no file;" in box.refusal(label)


def test_labels_of_the_same_name_get_pictures_of_their_own():
    paths = ["a/disc.png", "b/disc.gif", "c/disc.png", "d/disc_2.png", "e/.txt"]
    assert demo_print.names_of(paths) == ["disc", "disc_2", "disc_3", "disc_2_2", "txt"]


def test_label_that_is_missing_or_a_folder(box, tmp_path):
    assert "(No such file or directory); check its name." in box.refusal(tmp_path / "no.png")
    assert "is no file; give" in box.refusal(tmp_path)


@pytest.mark.parametrize("words, told", [
    (["-o", "PrintQuality=Quality9"], "can be Quality1, Quality2, Quality3, Quality4."),
    (["-o", "PrintQualty=Quality3"], "did you mean PrintQuality?"),
    (["-o", "=3"], "options read NAME=VALUE."),
    (["-o", "ppi=$(id)"], "holds a character that no option takes."),
    (["-o", "PrintQuality=Quality4 print-quality=3"],
     "PrintQuality=Quality4 does not go with Resolution=300dpi"),
    # 22 mm would become 44: CUPS knows, and prints it nevertheless.
    (["-o", "Resolution=300dpi"], "does not go with InnerDiameter=220 and OuterMargin=10;"),
    (["-o", "print-quality=9"], "takes 3 (draft), 4 (normal) or 5 (best), not"),
    (["-o", "copies=26"], 'can be 1 to 25, not "26".'),
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
    script = """cd "$1" && mkdir discs && for name in ppd zr7700-printer $NAMES; do
                  ln -s "$2/$name" .; done
                "$3" -B -c 'import sys, demo_print as demo; demo.ROOM_MIB = 0
sys.argv[1:] = ["--build", sys.argv[1], sys.argv[2]]; sys.exit(demo.main())' "$1" "$4"
                echo "left: $(ls discs; ls -d job-* 2>/dev/null)"; exit 0"""
    done = box.run("bash", "-c", script, "bash", disk, BUILD, sys.executable, LABELS / "lake.png",
                   mounts=["--size", "2500000", "--tmpfs", disk],
                   env={**os.environ, "PYTHONPATH": str(REPOSITORY / "tools"),
                        "NAMES": " ".join(demo_queue.OURS)})
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
    assert "The picture is damaged" in box.refusal(label)


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


@pytest.mark.parametrize("asked, told", [
    ({}, {}),
    # 22 mm and 1 mm again, by the keywords of the draft.
    ({"print-quality": "3"}, {"Resolution": "300dpi", "InnerDiameter": "110Draft",
                              "OuterMargin": "5Draft", "PrintQuality": "Quality1"}),
    ({"print-quality": "4"}, {}),
    ({"print-quality": "5"}, {"PrintQuality": "Quality4"}),
    ({"media": "80x80mm.Fullbleed"}, {"PageSize": "80x80mm.Fullbleed"}),
    ({"print-color-mode": "monochrome"}, {"ColorModel": "Gray"}),
])
def test_what_options_mean(asked, told):
    """As the PPD has it, whose presets are named so for the scheduler."""
    assert demo_options.PpdOptions(str(PPD)).told(asked) == told | asked


def test_descriptors_of_the_caller_stay_with_it(box, tmp_path):
    """Open ones, low and high, reach no filter: it has 0 to 2 and the two channels."""
    probe = tmp_path / "probe"
    probe.write_text(f'#!/bin/sh\nls -l /proc/$$/fd >{tmp_path}/found\n'
                     f'exec {BUILD}/rastertodisc "$@"\n')
    probe.chmod(0o755)
    (box.build / "rastertodisc").unlink()
    (box.build / "rastertodisc").symlink_to(probe)
    documents.picture(tmp_path / "label.png", (600, 600))
    script = 'exec 3</dev/zero 4</dev/zero 5</dev/zero 8</dev/zero; exec "$@" 12</dev/zero'
    done = box.run("bash", "-c", script, "bash", sys.executable, "-B",
                   REPOSITORY / "tools/demo_print.py", "--build", box.build, "--no-show",
                   tmp_path / "label.png")
    assert done.returncode == 0, done.stderr
    found = dict(re.findall(r"(\d+) -> (\S+)", (tmp_path / "found").read_text()))
    assert found["3"].startswith("pipe:") and found["4"].startswith("socket:")
    # From 10 on are the probe's own: its script, and its output while ls runs.
    assert set(found) - {"10", "11"} == set("01234") and "/dev/zero" not in found.values()


@pytest.mark.parametrize("after_s", [0, 0.01, 0.03, 0.06, 0.1, 0.2, 0.4, 0.8])
def test_control_c_at_the_very_start(after_s):
    """In the shell, before Python is up, while it imports: status 130 and no word."""
    with subprocess.Popen([REPOSITORY / "demo", "no.png", "--check-arguments"], text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, process_group=0) as demo:
        time.sleep(after_s)
        try:
            os.killpg(demo.pid, 2)
        except ProcessLookupError:
            pass
        said = demo.communicate(timeout=20)
    told = "demo: The label no.png cannot be read (No such file or directory); check its name.\n"
    assert demo.returncode in (130, -2, 1) and said in (("", ""), ("", told))
    assert after_s > 0.02 or (demo.returncode != 1 and said == ("", ""))


def test_missing_packages_without_a_way_to_root():
    """One sentence that says what to do."""
    script = """source tools/setup.sh; id() { echo 1000; }; command() { [ "$2" != sudo ] &&
                builtin command "$@"; }; need_packages zr7700-a zr7700-b"""
    done = subprocess.run(["bash", "-c", script], capture_output=True, text=True, check=False,
                          cwd=REPOSITORY, timeout=20)
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr == ("Packages are missing, and there is no sudo: please run this as root and"
                           " then try again: apt-get install zr7700-a zr7700-b\n")


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
