"""Any picture lands on the disc: what people send to a queue that has been added without any
option, printed through a real scheduler, and where the dots of its disc lie."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
from dataclasses import dataclass

import pytest
from PIL import Image

import documents
from disc_measure import Disc
from scheduler import BUILD, REPOSITORY

A4 = (595.28, 841.89)
A4_LYING = (841.89, 595.28)
DISC_POINTS = 340.157
TEST_PAGE = "/usr/share/cups/data/testprint"


@dataclass
class Case:
    """A job, and what its disc must show."""
    name: str
    file: str       # its ending says what it is
    size: tuple     # of the picture in dots, of a document's page in points
    shown: tuple    # how large it must be, in millimetres; None: as large as the ring
    options: str = ""
    orientation: int = 0   # in the Exif data
    dpi: int = 300         # of the picture
    turned: int = 0        # degrees counter-clockwise on the disc
    discs: int = 1
    diameter: int = 120
    resolution: int = 600
    ring: tuple = (22, 1)  # hole and margin in millimetres

    def options_list(self):
        return [word for option in self.options.split() for word in ("-o", option)]


# A picture of 1500 x 3000 dots fills the 120 mm of the disc from top to bottom and half of it across.
TALL, WIDE, SQUARE, SMALL = (1500, 3000), (3000, 1500), (2000, 2000), (900, 600)
TALL_MM, WIDE_MM = (60, 120), (120, 60)
SMALL_MM = (76.2, 50.8)        # 900 x 600 at 300 dots an inch
SMALL_FIT_MM = (120, 80)
A4_MM, A4_LYING_MM = (84.85, 120), (120, 84.85)   # 120 mm x 210 / 297

CASES = [
    # Pictures without any option, in every shape and format.
    *(Case(f"{kind} {name}", f"p.{kind}", size, shown)
      for kind in ("png", "jpg", "tif")
      for name, size, shown in (("tall", TALL, TALL_MM), ("wide", WIDE, WIDE_MM),
                                ("square", SQUARE, None))),
    *(Case(f"{kind} tall", f"p.{kind}", TALL, TALL_MM) for kind in ("gif", "bmp", "ppm")),
    # Turned photographs come out upright.
    *(Case(f"jpg exif {turn}", "p.jpg", TALL, TALL_MM, orientation=turn) for turn in range(2, 9)),
    # Every value of print-scaling, of pictures that are larger and smaller than the disc.
    Case("png tall auto", "p.png", TALL, TALL_MM, "print-scaling=auto"),
    Case("jpg wide auto-fit", "p.jpg", WIDE, WIDE_MM, "print-scaling=auto-fit"),
    Case("png tall fit", "p.png", TALL, TALL_MM, "print-scaling=fit"),
    Case("jpg wide fill", "p.jpg", WIDE, None, "print-scaling=fill"),
    Case("png tall none", "p.png", TALL, None, "print-scaling=none"),
    Case("png small", "p.png", SMALL, SMALL_FIT_MM),
    Case("png small auto", "p.png", SMALL, SMALL_MM, "print-scaling=auto"),
    Case("tif small auto-fit", "p.tif", SMALL, SMALL_MM, "print-scaling=auto-fit"),
    Case("jpg small fit", "p.jpg", SMALL, SMALL_FIT_MM, "print-scaling=fit"),
    Case("png small fill", "p.png", SMALL, None, "print-scaling=fill"),
    Case("jpg small none", "p.jpg", SMALL, SMALL_MM, "print-scaling=none"),
    Case("bmp small fill", "p.bmp", SMALL, None, "print-scaling=fill"),
    # Turned because the job says so.
    Case("png tall 4", "p.png", TALL, WIDE_MM, "orientation-requested=4", turned=90),
    Case("jpg wide 5", "p.jpg", WIDE, TALL_MM, "orientation-requested=5", turned=270),
    Case("png tall 6", "p.png", TALL, TALL_MM, "orientation-requested=6", turned=180),
    Case("pdf a4 4", "p.pdf", A4, A4_LYING_MM, "orientation-requested=4", turned=90),
    Case("pdf a4 6", "p.pdf", A4, A4_MM, "orientation-requested=6", turned=180),
    # Small discs, rough discs, and both.
    *(Case(f"{kind} {name} {text}", f"p.{kind}", size, shown, options, **more)
      for kind, name, size, full in (("png", "tall", TALL, (.5, 1)), ("jpg", "wide", WIDE, (1, .5)),
                                     ("pdf", "a4", A4, (.7071, 1)))
      for text, options, more in (
          ("80 mm", "PageSize=80x80mm.Fullbleed", {"diameter": 80}),
          ("draft", "print-quality=3", {"resolution": 300}),
          ("80 mm draft", "PageSize=80x80mm.Fullbleed print-quality=3",
           {"diameter": 80, "resolution": 300}))
      for shown in ((full[0] * more.get("diameter", 120), full[1] * more.get("diameter", 120)),)),
    Case("png fill 80 mm", "p.png", WIDE, None, "media=80x80mm.Fullbleed print-scaling=fill",
         diameter=80),
    Case("png square hole and margin", "p.png", SQUARE, None, "InnerDiameter=460 OuterMargin=50",
         ring=(46, 5)),
    # Documents.
    Case("pdf a4", "p.pdf", A4, A4_MM),
    Case("pdf a4 lying", "p.pdf", A4_LYING, A4_LYING_MM),
    Case("pdf disc", "p.pdf", (DISC_POINTS, DISC_POINTS), None),
    Case("pdf small", "p.pdf", (226.8, 170.1), (80, 60)),
    Case("pdf a4 lying fill", "p.pdf", A4_LYING, None, "print-scaling=fill"),
    Case("pdf a4 lying fit", "p.pdf", A4_LYING, A4_LYING_MM, "print-scaling=fit"),
    Case("pdf a4 none", "p.pdf", A4, None, "print-scaling=none"),
    Case("pdf small fit", "p.pdf", (226.8, 170.1), (120, 90), "print-scaling=fit"),
    Case("pdf a4 media a4", "p.pdf", A4, A4_MM, "media=A4"),
    Case("pdf a4 auto", "p.pdf", A4, A4_MM, "print-scaling=auto"),
    Case("ps a4", "p.ps", A4, A4_MM),
    # What telephones and other computers send.
    Case("urf a4", "p.urf", (2480, 3508), A4_MM),
    Case("urf a4 lying", "p.urf", (3508, 2480), A4_LYING_MM),
    Case("urf disc", "p.urf", (1417, 1417), None),
    Case("pwg a4", "p.pwg", (2480, 3508), A4_MM),
    Case("pwg a4 lying", "p.pwg", (3508, 2480), A4_LYING_MM),
    Case("pwg disc", "p.pwg", (2834, 2834), None, dpi=600),
    Case("cups raster tall", "p.ras", TALL, TALL_MM),
    Case("cups raster wide", "p.ras", WIDE, WIDE_MM),
    # Several discs of one job.
    Case("png copies", "p.png", TALL, TALL_MM, "copies=3", discs=3),
    Case("pdf two pages", "two.pdf", A4, A4_MM, discs=2),
    Case("pdf two pages, two copies", "two.pdf", A4, A4_MM, "copies=2", discs=4),
]
# In a short run: one of each kind that has been wrong once.
SHORT = {"png tall", "jpg wide", "tif square", "jpg exif 6", "jpg small none", "png tall draft",
         "pdf a4 lying", "urf a4", "cups raster wide", "pdf two pages"}


def make(case, folder, ppd):
    path = folder / case.file
    kind = case.file.rsplit(".", 1)[1]
    if case.orientation:
        documents.turned_photo(path, case.size, case.orientation)
    elif kind == "pdf":
        documents.pdf(path, [case.size] * (2 if case.file.startswith("two") else 1))
    elif kind == "ras":
        documents.picture(folder / "p.png", case.size)
        documents.cups_raster(path, folder / "p.png", ppd)
    elif kind == "ps":
        documents.postscript(path, case.size)
    elif kind in ("urf", "pwg"):
        {"urf": documents.urf, "pwg": documents.pwg}[kind](path, case.size, case.dpi)
    else:
        save = {"compression": "tiff_lzw"} if kind == "tif" else {}
        documents.picture(path, case.size, case.dpi, **save)
    path.chmod(0o644)
    return path


def upright_quarters(turned):
    """Names of the colours in the upper left, upper right, lower left, lower right quarter."""
    clockwise = ["red", "green", "black", "blue"]
    steps = turned // 90
    first, second, third, fourth = clockwise[steps:] + clockwise[:steps]
    return [first, second, fourth, third]


def quarters_seen(disc, shown):
    width, height = (0.3 * side / 25.4 * disc.dpi for side in shown)
    return [disc.quarter(x * width, y * height) for y in (-1, 1) for x in (-1, 1)]


HEAD = ("| job | options | dots off the ring | right | down | upper left, upper right, lower left, "
        "lower right | discs that CUPS counted |\n| --- | --- | --- | --- | --- | --- | --- |\n")


@pytest.fixture(scope="session", autouse=True)
def table():
    """What was measured, a line a job, left in the build folder."""
    rows = []
    yield rows
    lines = [f"| {' | '.join(str(cell) for cell in row)} |\n" for row in rows]
    (BUILD / "any-picture.md").write_text(HEAD + "".join(lines), encoding="utf-8")


@pytest.mark.parametrize("case", [c for c in CASES if "ZR7700_LONG" in os.environ
                                  or c.name in SHORT], ids=lambda case: case.name)
def test_lands_on_the_disc(scheduler, tmp_path, table, case):
    tmp_path.chmod(0o755)
    scheduler.machine(diameter=case.diameter)
    document = make(case, tmp_path, scheduler.ppd)
    job = scheduler.print(*case.options_list(), document)
    state = scheduler.wait_for_state(job, "completed", 120)
    report = scheduler.report(job)
    assert report["violation_count"] == 0 and report["errors"] == []
    assert len(report["discs"]) == case.discs
    counted = int(state["job-impressions-completed"])
    for number, found in enumerate(report["discs"]):
        disc = Disc(found, *case.ring)
        assert disc.dpi == case.resolution
        shown = case.shown or (case.diameter, case.diameter)
        seen = quarters_seen(disc, shown)
        right, down = disc.center_offset()
        if number == 0:
            table.append([case.name, case.options, disc.dots_off_the_ring(), right, down,
                          " ".join(seen), counted])
        assert disc.dots_off_the_ring() == 0
        assert abs(right) <= 1 and abs(down) <= 1
        assert seen == upright_quarters(case.turned)
        check_size(disc, shown)
    assert counted == case.discs


def check_size(disc, shown):
    left, right, top, bottom = disc.box()
    for length, inked in zip(shown, (right - left + 1, bottom - top + 1)):
        expected = min(length / 25.4 * disc.dpi, 2 * disc.outer_dots)
        # The ring is up to 5 dots narrower than tall; edges of pages are cut to whole dots.
        assert abs(inked - expected) <= 6, (inked, expected)


def print_and_measure(scheduler, document, *words):
    """The discs of a job, none of which has dots off the ring, all counted by the scheduler."""
    document.chmod(0o644)
    document.parent.chmod(0o755)
    scheduler.machine()
    job = scheduler.print(*words, document)
    state = scheduler.wait_for_state(job, "completed", 120)
    report = scheduler.report(job)
    assert report["violation_count"] == 0
    discs = [Disc(found) for found in report["discs"]]
    assert [disc.dots_off_the_ring() for disc in discs] == [0] * len(discs)
    assert int(state["job-impressions-completed"]) == len(discs)
    return discs


def test_text(scheduler, tmp_path):
    (tmp_path / "text.txt").write_text("A line of text, long enough.\n" * 12)
    disc, = print_and_measure(scheduler, tmp_path / "text.txt")
    # It begins in the upper left corner of the largest square within the edge, 60 - 59 / 1.414 =
    # 18.3 mm from the page's edges, and its 28 letters of 2.54 mm stay within the square's 83 mm.
    left, right, top, _ = disc.box()
    millimetre = disc.dpi / 25.4
    assert 17 * millimetre < left < 21 * millimetre and 17 * millimetre < top < 21 * millimetre
    assert 80 * millimetre < right < 102 * millimetre


@pytest.mark.skipif(not os.path.exists(TEST_PAGE), reason="this scheduler has no test page")
def test_the_schedulers_own_test_page(scheduler, tmp_path):
    shutil.copyfile(TEST_PAGE, tmp_path / "testprint")
    disc, = print_and_measure(scheduler, tmp_path / "testprint")
    assert disc.has_ink()


@pytest.mark.parametrize("pages_on_a_disc,discs", [(2, 2), (4, 1)])
def test_several_pages_on_a_disc(scheduler, tmp_path, pages_on_a_disc, discs):
    documents.pdf(tmp_path / "four.pdf", [A4] * 4)
    assert len(print_and_measure(scheduler, tmp_path / "four.pdf", "-o",
                                 f"number-up={pages_on_a_disc}")) == discs


def test_four_pages_on_a_disc_keep_their_order(scheduler, tmp_path):
    documents.pdf(tmp_path / "four.pdf", [(DISC_POINTS, DISC_POINTS)] * 4)
    disc, = print_and_measure(scheduler, tmp_path / "four.pdf", "-o", "number-up=4")
    # Of the page in the lower right quarter of the disc, the upper left is red, the rest follows.
    quarter = disc.side / 4
    assert [disc.quarter(quarter + x * 130, quarter + y * 130)
            for y in (-1, 1) for x in (-1, 1)] == ["red", "green", "blue", "black"]


@pytest.mark.parametrize("kind", ["urf", "pwg"])
def test_a_grey_page(scheduler, tmp_path, kind):
    getattr(documents, kind)(tmp_path / f"grey.{kind}", (2480, 3508), 300, "L")
    disc, = print_and_measure(scheduler, tmp_path / f"grey.{kind}")
    red, green, blue, black = (disc.color(x, y) for y in (-700, 700) for x in (-500, 500))
    for seen, level in ((red, 80), (green, 102), (blue, 43), (black, 10)):  # as luma makes of them
        assert max(seen) - min(seen) < 20 and abs(seen.mean() - level) < 30, (seen, level)
    assert green.mean() > red.mean() > blue.mean() > black.mean()


def test_a_half_transparent_picture_lies_on_white(scheduler, tmp_path):
    Image.new("RGBA", (1000, 1000), (255, 0, 0, 128)).save(tmp_path / "half.png")
    disc, = print_and_measure(scheduler, tmp_path / "half.png")
    red, green, blue = disc.color(0, 900)
    # Half of red and half of white are (255, 127, 127).
    assert red > 240 and 107 < green < 147 and 107 < blue < 147


def test_a_cmyk_picture_has_its_colours(scheduler, tmp_path):
    Image.new("CMYK", (1000, 1000), (255, 0, 0, 0)).save(tmp_path / "cyan.jpg", quality=95)
    disc, = print_and_measure(scheduler, tmp_path / "cyan.jpg")
    red, green, blue = disc.color(0, 900)
    assert red < 90 and green > 120 and blue > 170


@pytest.mark.skipif("ZR7700_LONG" not in os.environ, reason="only some of the jobs have been printed")
def test_the_document_tells_what_was_measured(table):
    told = (REPOSITORY / "docs/pictures-to-discs.md").read_text(encoding="utf-8")
    measured = [[str(cell) for cell in row] for row in table]
    rows = [[cell.strip() for cell in line.strip("|\n").split(" |")]
            for line in told[told.index(HEAD) + len(HEAD):].splitlines() if line.startswith("|")]
    assert rows == measured
    assert len(rows) == len(CASES) >= 60
