"""Files of a few bytes whose headers claim pages without measure cost neither time nor memory."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import functools
import re

import pytest

import pages
import raster
from job import CHOICES, Job, run_together

# What a page of some other job may cost beyond a small one: the engine's stand-in keeps no page.
MORE_ADDRESS_SPACE_KB = 16 * 1024
MORE_PROCESSOR_SECONDS = 1.0

LONG = 0xFFFFFFFF // 3 * 3
HEADERS = {
    "the longest line": dict(cupsBytesPerLine=LONG, cupsWidth=LONG // 3),
    "two thousand million bytes": dict(cupsBytesPerLine=0x7FFFFFFE),
    "64 MiB": dict(cupsBytesPerLine=64 << 20, cupsBitsPerPixel=32, cupsNumColors=4),
    "a pixel too many": dict(cupsBytesPerLine=393219, cupsWidth=131073),
    "the longest line that is taken": dict(cupsBytesPerLine=393216, cupsWidth=131072),
    "giant pixels": dict(cupsBytesPerLine=0xFF000000, cupsBitsPerPixel=0x7F800000),
    "bits": dict(cupsBytesPerLine=0xFFFFFFFF, cupsBitsPerPixel=1, cupsBitsPerColor=1),
    "a line for every atom": dict(cupsHeight=0xFFFFFFFF),
    "all of it": dict(cupsBytesPerLine=LONG, cupsWidth=0xFFFFFFFF, cupsHeight=0xFFFFFFFF),
    "planes": dict(cupsBytesPerLine=LONG, cupsColorOrder=2, cupsHeight=0xFFFFFFFF),
}


def hostile_file(fields, version, order):
    page = pages.small(**fields)
    page.lines = []
    raw = raster.stream([page], version, order)
    assert len(raw) <= 1800
    return raw


def cost(raw):
    """Address space at its peak in kB and processor time in seconds of a job."""
    peaks = []

    def watch(job):
        job.until_log("**** Wait until printer Busy")
        text = (job.process_folder() / "status").read_text()
        peaks.append(int(re.search(r"VmPeak:\s+(\d+) kB", text).group(1)))

    result = Job(pages=raw, choices=dict(CHOICES, InnerDiameter="0"), actions=watch).run()
    assert result.status in (0, 1) and result.log[-1] in ("     Ready to print.",
                                                          "     No pages found!")
    return peaks[0], result.processor_seconds


@pytest.mark.parametrize("version,order", [(1, "<"), (2, "<"), (2, ">"), (3, "<"), (3, ">")])
def test_a_small_file_costs_no_more_than_it_is(version, order):
    plain = raster.stream([pages.small()], version, order)
    files = [plain] + [hostile_file(fields, version, order) for fields in HEADERS.values()]
    costs = run_together([functools.partial(cost, raw) for raw in files])
    most_kb = costs[0][0] + MORE_ADDRESS_SPACE_KB
    most_seconds = costs[0][1] + MORE_PROCESSOR_SECONDS
    for name, (peak_kb, seconds) in zip(HEADERS, costs[1:]):
        assert peak_kb <= most_kb, (name, peak_kb, costs[0])
        assert seconds <= most_seconds, (name, seconds, costs[0])
