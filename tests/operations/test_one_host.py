"""Two printers at one host: both print, and what their filters share on the way."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import json
import re

import pytest
from PIL import Image

from scheduler import USER, running, wait_for

INI = "Users/Shared/Tessary/ZR7700/Frameworks/tqgrcfg.ini"
STATUS = "shm/TessaryZR7700PrinterMMap"
LOG = "Library/Caches/ZR7700Filter.log"


@pytest.fixture(scope="module")
def scheduler():
    with running() as machine:
        yield machine


@pytest.fixture
def second(scheduler):
    """Where the discs of a second printer come out; its queue is discs2."""
    out = scheduler.folder("out2", USER)
    scheduler.client("lpadmin", "-p", "discs2", "-E", "-v", f"zr7700virtual:{out}", "-P",
                     scheduler.ppd)
    return out


def report(folder, job):
    path = folder / f"job-{job}-report.json"
    return json.loads(wait_for("a report", lambda: path.exists() and path.read_text()))


def send(scheduler, queue, *words):
    said = scheduler.client("lp", "-d", queue, *map(str, words))
    return int(re.search(r"-(\d+) ", said)[1])


def test_two_jobs_at_once(scheduler, second):
    pages = scheduler.root / "two.pdf"
    first, other = (Image.new("RGB", (500, 500), color) for color in ((200, 0, 0), (0, 200, 0)))
    first.save(pages, save_all=True, append_images=[other], resolution=100)
    # The first printer waits with its second disc until the other job is over.
    scheduler.machine(discs=1)
    long = send(scheduler, "discs", "-o", "PrintQuality=Quality4", pages)
    scheduler.wait_for_message("Disc input bin is empty")
    assert "Slot1NumPassesOverride=8" in (scheduler.root / INI).read_text()
    assert (scheduler.root / STATUS).exists()
    short = send(scheduler, "discs2", "-o", "PrintQuality=Quality1", pages)
    found = report(second, short)
    assert [disc["passes"] for disc in found["discs"]] == [1, 1]
    # The settings are those of the job that began last, and no status is left of the other.
    assert "Slot1NumPassesOverride=1" in (scheduler.root / INI).read_text()
    wait_for("no status", lambda: not (scheduler.root / STATUS).exists())
    assert scheduler.job(long)["job-state"] == "processing"
    scheduler.order("bin 1")
    scheduler.wait_for_state(long, "completed")
    found = report(scheduler.out, long)
    # The open engine has read the settings when its job began.
    assert [(disc["passes"], disc["spoilt"]) for disc in found["discs"]] == [(8, False)] * 2
    assert found["violation_count"] == 0
    log = (scheduler.root / LOG).read_text()
    # The lines of both, with nothing that tells them apart.
    for line in ("FILTER_STARTED", "Printing page 1, 0% complete", "Printing page 2, 0% complete"):
        assert log.count(line) == 2
