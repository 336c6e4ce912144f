"""Printing with lp through a real scheduler: what a person at the desktop, and what an
administrator at the machine, finds before, during and after the jobs."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re

import numpy as np
import pytest
from PIL import Image

from disc_measure import Disc
from scheduler import BUILD, REPOSITORY, USER, wait_for

LABEL = REPOSITORY / "labels/concert.pdf"
SHARED_MEMORY = "shm/TessaryZR7700PrinterMMap"
BIN_EMPTY = "Disc input bin is empty.  Open the cover, add more discs, and close the cover"
INK_LOW = "Ink is low.  Install a new cartridge or press the button"
MISSING = "The Color cartridge is missing!  Press the button to change the cartridge."


@pytest.fixture(scope="session", autouse=True)
def transcript(scheduler):
    """The session as a text, left in the build folder."""
    yield
    (BUILD / "cups-transcript.txt").write_text("\n".join(scheduler.transcript) + "\n")


@pytest.fixture(autouse=True)
def quiet_end(request, scheduler):
    """Every test leaves an idle printer without reasons, processes or shared memory."""
    name = request.node.originalname.removeprefix("test_").replace("_", " ")
    scheduler.tell(f"\n# {name}")
    yield
    # The programs of a cancelled job may take some seconds to end.
    wait_for("no process", lambda: not scheduler.processes(), 30)
    scheduler.wait_for_reasons({"none"})
    assert scheduler.printer()["printer-state"] == "idle"
    assert os.listdir(scheduler.root / "shm") == []
    assert scheduler.jobs("not-completed") == []


def colored_pages(path, colors):
    """A PDF of disc-sized pages, each filled with a colour."""
    first, *others = [Image.new("RGB", (1417, 1417), color) for color in colors]
    first.save(path, save_all=True, append_images=others, resolution=300)
    return path


RED, GREEN, BLUE = (230, 25, 25), (25, 180, 25), (25, 25, 230)


@pytest.fixture
def three_pages(scheduler):
    return colored_pages(scheduler.root / "three.pdf", [RED, GREEN, BLUE])


@pytest.fixture
def two_pages(scheduler):
    return colored_pages(scheduler.root / "two.pdf", [RED, GREEN])


def pictures(report):
    assert report["violation_count"] == 0 and report["errors"] == []
    return [np.asarray(Image.open(disc["picture"]).convert("RGB")) for disc in report["discs"]]


def color_at_the_ring(picture):
    """The strongest of red, green and blue in a patch 40 mm above the disc's middle."""
    side = picture.shape[0]
    row = int(side / 2 - 40 / 120 * side)
    patch = picture[row - 40:row + 40, side // 2 - 40:side // 2 + 40].reshape(-1, 3)
    return "red green blue".split()[int(patch.mean(axis=0).argmax())]


def test_two_pages_are_two_discs(scheduler, two_pages):
    scheduler.machine()
    job = scheduler.print(two_pages)
    scheduler.wait_for_state(job, "completed")
    report = scheduler.report(job)
    assert [color_at_the_ring(p) for p in pictures(report)] == ["red", "green"]
    assert [disc["spoilt"] for disc in report["discs"]] == [False, False]
    assert job in scheduler.jobs("completed")
    assert "idle" in scheduler.lpstat()


def test_options_reach_the_disc(scheduler):
    scheduler.machine(cartridge="U")
    job = scheduler.print("-o", "PrintQuality=Quality4", "-o", "InnerDiameter=460", "-o",
                          "OuterMargin=50", "-o", "Bidi=No", LABEL)
    scheduler.wait_for_state(job, "completed")
    report = scheduler.report(job)
    disc = report["discs"][0]
    # The best quality takes eight passes; one way is direction 1 or 2.
    assert (disc["family"], disc["passes"], disc["direction"] in (1, 2)) == ("Heron", 8, True)
    # 5 mm are 118 dots of 2834; the ring is 2.4 dots narrower than tall.
    box = disc["bounding_box"]
    assert all(117 <= box[side] <= 122 for side in ("left", "top"))
    assert all(2711 <= box[side] <= 2717 for side in ("right", "bottom"))
    # 46 mm are 1086 dots.
    middle_row = (pictures(report)[0][1417] == 255).all(axis=1)[500:2300]
    assert 1080 <= middle_row.sum() <= 1092


@pytest.mark.parametrize("words", [("-P", "2"), ("-o", "page-ranges=2")])
def test_page_range(scheduler, three_pages, words):
    scheduler.machine()
    job = scheduler.print(*words, three_pages)
    scheduler.wait_for_state(job, "completed")
    assert [color_at_the_ring(p) for p in pictures(scheduler.report(job))] == ["green"]


def test_copies_are_discs(scheduler, two_pages):
    scheduler.machine()
    job = scheduler.print("-n", "2", "-P", "1", two_pages)
    scheduler.wait_for_state(job, "completed")
    assert [color_at_the_ring(p) for p in pictures(scheduler.report(job))] == ["red", "red"]


def test_draft_resolution_with_a_small_hole(scheduler):
    scheduler.machine()
    job = scheduler.print("-o", "Resolution=300dpi", "-o", "PrintQuality=Quality1", "-o",
                          "InnerDiameter=110Draft", "-o", "OuterMargin=5Draft", LABEL)
    scheduler.wait_for_state(job, "completed")
    report = scheduler.report(job)
    found = report["discs"][0]
    assert found["resolution_dpi"] == 300
    # The draft keywords hold half of what is meant: the hole is of 22 mm, the margin of 1. Those are
    # 130 and 12 dots of 1417, and the ring is 1.2 dots narrower than tall.
    assert Disc(found, 22.0, 1.0).dots_off_the_ring() == 0
    box = found["bounding_box"]
    assert all(10 <= box[side] <= 14 for side in ("left", "top"))
    assert all(1402 <= box[side] <= 1406 for side in ("right", "bottom"))
    middle_row = (pictures(report)[0][708] == 255).all(axis=1)[200:1200]
    assert 256 <= middle_row.sum() <= 263


def test_cancel_while_the_page_waits_for_a_disc(scheduler):
    scheduler.machine(discs=0)
    job = scheduler.print(LABEL)
    # As with all that a page begins with, the person sees the message and not the reason: the
    # filter's page line has no line end and swallows what is said next.
    scheduler.wait_for_message(BIN_EMPTY)
    assert BIN_EMPTY in scheduler.lpstat()
    assert scheduler.job(job)["job-state"] == "processing"
    scheduler.cancel(job)
    scheduler.wait_for_state(job, "canceled")
    report = scheduler.report(job)
    # There was no disc to be spoilt.
    assert report["given_up"] and report["discs"] == []
    assert not list(scheduler.root.glob(f"out/job-{job}-*.part"))


def test_cancel_in_mid_page_spoils_that_disc_only(scheduler, two_pages):
    log = scheduler.root / "Library/Caches/ZR7700Filter.log"
    before = log.stat().st_size if log.exists() else 0
    scheduler.machine(pace="5s")
    job = scheduler.print(two_pages)
    # At a tenth of it drops have been sent, so that its disc has been begun.
    wait_for("the second page", lambda: log.exists() and
             re.search(r"Printing page 2, \d\d%", log.read_text()[before:]))
    scheduler.cancel(job)
    scheduler.wait_for_state(job, "canceled")
    report = scheduler.report(job)
    assert report["violation_count"] == 0
    assert [disc["spoilt"] for disc in report["discs"]] == [False, True]


def test_printer_runs_out_of_discs_and_is_refilled(scheduler, two_pages):
    # The first disc lasts until the second page has begun: the printer is busy till then.
    scheduler.machine(discs=1, pace="5s")
    job = scheduler.print(two_pages)
    scheduler.wait_for_message(BIN_EMPTY)
    scheduler.wait_for_reasons({"media-needed"})
    said = scheduler.lpstat()
    assert BIN_EMPTY in said and "Alerts: media-needed" in said
    assert scheduler.job(job)["job-state"] == "processing"
    assert scheduler.order("bin 5") == "ok"
    scheduler.wait_for_state(job, "completed")
    assert [color_at_the_ring(p) for p in pictures(scheduler.report(job))] == ["red", "green"]
    scheduler.wait_for_reasons({"none"})
    assert "Alerts: none" in scheduler.lpstat()


def test_ink_gets_low_while_a_page_waits(scheduler):
    scheduler.machine(discs=0)
    job = scheduler.print(LABEL)
    scheduler.wait_for_message("Disc input bin is empty")
    scheduler.order("ink low")
    scheduler.wait_for_message(INK_LOW)
    assert "marker-supply-low" in scheduler.printer()["printer-state-reasons"]
    assert INK_LOW in scheduler.lpstat()
    scheduler.order("ink full")
    wait_for("no low ink", lambda: "marker-supply-low" not in
             scheduler.printer()["printer-state-reasons"])
    scheduler.order("bin 5")
    scheduler.wait_for_state(job, "completed")
    assert len(pictures(scheduler.report(job))) == 1


def test_ink_is_low_from_the_beginning(scheduler):
    scheduler.machine(script="ink low\n", pace="6s")
    job = scheduler.print(LABEL)
    scheduler.wait_for_message(INK_LOW)
    scheduler.lpstat()
    scheduler.order("ink full")
    scheduler.wait_for_state(job, "completed")
    assert len(pictures(scheduler.report(job))) == 1


def test_cartridge_is_missing_at_first(scheduler):
    scheduler.machine(cartridge="none")
    job = scheduler.print(LABEL)
    scheduler.wait_for_message(MISSING)
    scheduler.lpstat(MISSING)
    assert scheduler.job(job)["job-state"] == "processing"
    scheduler.order("cartridge U")
    scheduler.wait_for_state(job, "completed")
    assert [disc["family"] for disc in scheduler.report(job)["discs"]] == ["Heron"]


def test_files_have_the_right_owners_and_rights(scheduler):
    """The filter runs as lp with the mode mask 077, and others must read its log and its memory."""
    scheduler.machine()
    scheduler.wait_for_state(scheduler.print(LABEL), "completed")
    scheduler.machine(discs=0)
    job = scheduler.print(LABEL)
    scheduler.wait_for_message("Disc input bin is empty")
    assert scheduler.mode(SHARED_MEMORY) == (USER, 0o644)
    assert (scheduler.root / SHARED_MEMORY).stat().st_size == 144
    scheduler.order("bin 1")
    scheduler.wait_for_state(job, "completed")
    owner, mode = scheduler.mode("Library/Caches/ZR7700Filter.log")
    # Made with 0700 by the first job ever; the second one has opened it for all readers.
    assert owner == USER and mode & 0o044 == 0o044 and mode & 0o022 == 0
    wait_for("a finished job", lambda: not scheduler.processes())
    for top in ("Library", "Users", "out", "var-tmp/tessary", "spool"):
        for folder, _, names in os.walk(scheduler.root / top):
            for name in names:
                mode = os.lstat(os.path.join(folder, name)).st_mode
                assert mode & 0o022 == 0, f"{folder}/{name} is writable by others"
    # The rasterizer's interpreter leaves its own files when it is cancelled.
    left = os.listdir(scheduler.root / "spool/tmp")
    assert [name for name in left if not name.startswith("gs_")] == []
    spooled = [name for name in os.listdir(scheduler.root / "spool") if name != "tmp"]
    assert spooled and all(scheduler.mode(f"spool/{name}")[1] & 0o007 == 0 for name in spooled)


def test_a_damaged_label_stops_its_job_alone(scheduler):
    broken = scheduler.root / "broken.pdf"
    broken.write_bytes(b"%PDF-1.4\n" + bytes(range(256)) * 40)
    scheduler.machine()
    job = scheduler.print(broken)
    found = scheduler.wait_for_state(job, "processing-stopped")
    assert found["job-state-reasons"] == "job-completed-with-errors"
    assert scheduler.report(job)["discs"] == []
    scheduler.cancel(job)
    scheduler.wait_for_state(job, "canceled")
    after = scheduler.print(LABEL)
    scheduler.wait_for_state(after, "completed")
    assert len(scheduler.report(after)["discs"]) == 1
