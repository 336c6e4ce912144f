"""What a person reads when a document cannot be printed: the cause, in one sentence."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest
from PIL import Image

import documents


def cut_png(path):
    Image.new("RGB", (800, 800), (9, 9, 200)).save(path)
    path.write_bytes(path.read_bytes()[:-600])


def cut_jpeg(path):
    documents.picture(path, (800, 800))
    path.write_bytes(path.read_bytes()[:3000])


def cmyk_raster(path):
    import raster  # pylint: disable=import-outside-toplevel
    page = raster.rgb_page(8, 8, lambda x, y: (0, 0, 0), cupsColorSpace=6, cupsBitsPerPixel=32,
                           cupsBytesPerLine=32, cupsNumColors=4)
    page.lines = [bytes(32)] * 8
    path.write_bytes(raster.stream([page]))


CASES = [
    ("a picture that is cut short", "cut.png", cut_png, [], "picture"),
    ("a photograph that is cut short", "cut.jpg", cut_jpeg, [], "picture"),
    ("a page that the document lacks", "one.pdf", lambda path: documents.pdf(path, [(340, 340)]),
     ["-o", "page-ranges=7"], "No page came to be printed"),
    ("a hole that leaves nothing", "p.png", lambda path: documents.picture(path, (300, 300)),
     ["-o", "InnerDiameter=460", "-o", "PageSize=80x80mm.Fullbleed", "-o", "Resolution=300dpi"],
     "choose a smaller InnerDiameter or OuterMargin"),
    ("raster in CMYK", "cmyk.ras", cmyk_raster, [], "colours are of a kind"),
]


@pytest.mark.parametrize("name,file,make,words,cause", CASES, ids=[case[0] for case in CASES])
def test_the_cause_stands_on_the_job(scheduler, tmp_path, name, file, make, words, cause):
    document = tmp_path / file
    make(document)
    tmp_path.chmod(0o755)
    document.chmod(0o644)
    scheduler.machine()
    job = scheduler.print(*words, document)
    found = scheduler.wait_for_state(job, "processing-stopped")
    said = scheduler.job(job)["job-printer-state-message"]
    assert cause in said, (said, found)
    assert scheduler.report(job)["discs"] == []
    scheduler.cancel(job)
    scheduler.wait_for_state(job, "canceled")
