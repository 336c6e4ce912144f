"""./demo's own part: bad input is told in one sentence, and nothing half-done is left behind."""

import os
import shutil
import subprocess
import sys

import pytest

import demo_options
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


@pytest.mark.parametrize("name, content, told", [
    ("text.png", b"hello", "is no picture that can be printed; give a PDF, PNG, JPEG"),
    ("empty.pdf", b"", "is no picture that can be printed"),
    ("cut.png", (LABELS / "lake.png").read_bytes()[:300000], "is cut short; save or copy it"),
    ("cut.pdf", (LABELS / "concert.pdf").read_bytes()[:40000], "is cut short"),
    ("pageless.pdf", pdf_without_pages(), "has no pages; export it again"),
    ("damaged.png", damaged(LABELS / "lake.png"), "cannot be turned into a page; save it again"),
], ids=lambda value: value if str(value).endswith((".png", ".pdf")) else "")
def test_labels_that_are_none(box, tmp_path, name, content, told):
    label = tmp_path / name
    label.write_bytes(content)
    assert f"{label} {told}" in box.refusal(label)


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
