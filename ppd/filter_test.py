"""The filter itself with this PPD, on raster that the distribution's filters made with it: each
choice arrives as the number that its text promises (needs bubblewrap, as all whole-job tests)."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

from raster_pages import filtered, pdf

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../tests/jobs"))
from job import Job  # pylint: disable=wrong-import-position

LABEL = "0 0 1 rg 0 0 400 400 re f"
SMALL = "PageSize=80x80mm.Fullbleed"


def run(ppd_path, folder, points, options):
    """The diagnostic log of a job with these options."""
    raster = filtered(ppd_path, pdf(points, LABEL), "gstoraster", options, 1, folder).read_bytes()
    with open(ppd_path, encoding="utf-8") as file:
        job = Job(pages=raster, ppd_text=file.read(), options=options)
    return [line.strip() for line in job.run().log]


# Options, points of a side, then in dots: page, margin at each edge, radius of the hole.
# 120 mm: 2834; 1 mm: 10 x 600 / 254 = 23; 22 mm: 220 x 300 / 254 = 259.
# At 300 dpi 1417, 1 mm: 5 x 600 / 254 = 11, 22 mm: 110 x 300 / 254 = 129.
# 80 mm: 1890; 5 mm: 118; 46 mm: 543.
RINGS = [("", 340.157, 2834, 23, 259),
         ("print-quality=3", 340.157, 1417, 11, 129),
         (f"{SMALL} InnerDiameter=460 OuterMargin=50", 226.772, 1890, 118, 543)]


@pytest.mark.parametrize("options,points,page,margin,radius", RINGS)
def test_ring(ppd_path, tmp_path, options, points, page, margin, radius):
    log = run(ppd_path, tmp_path, points, options)
    inside = page - 2 * margin
    assert f"Page Size {page}, {page}" in log
    assert f"OuterMargin: {margin}" in log
    assert f"ClipGetData: wImageWidth = {inside}, wImageHeight = {inside}" in log
    assert f"ClipGetData: nID = {radius} (in 300dpi units))" in log
    assert "Ready to print." in log
    assert "START_PAGE_END" in log


def test_combination_that_the_constraints_forbid_is_refused(ppd_path, tmp_path):
    """945 dots at 300 dpi less two margins of 23 cannot hold a hole of 2 x 543."""
    log = run(ppd_path, tmp_path, 226.772, f"{SMALL} Resolution=300dpi InnerDiameter=460")
    assert "Invalid Dimension wOd: 899, Pline 5100" in log
    assert "START_PAGE_END" not in log


def test_other_choices_arrive(ppd_path, tmp_path):
    log = run(ppd_path, tmp_path, 340.157,
              "Resolution=300dpi InnerDiameter=75Draft OuterMargin=0 PrintQuality=Quality1 "
              "MediaType=SemiGloss ColorMatching=BestForGraphics Saturation=85 Bidi=No "
              "SkipLowInkFWCheck=Yes")
    assert {"InnerDiam: 75", "OuterMargin: 0", "PrintQuality: 1", "DiscSurfaceQuality: 4",
            "ColorMatching: 1", "InkSaturation: 85", "Setting print direction to UNI"} <= set(log)
    # The standard cartridge's high limit of 400,000,000 instead of seven eighths of the low one.
    assert "Color Ink Warning: 17d78400" in log
