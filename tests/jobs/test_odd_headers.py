"""Raster headers that nobody sends on purpose."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import pages
from job import CHOICES, Job

BARE = dict(CHOICES, InnerDiameter="0", OuterMargin="0")


@pytest.mark.parametrize("width", [0, 1, 2, 0xFFFFFFFF, 0x80000000, 65536, 70000])
def test_widths_that_the_lines_do_not_have(width):
    compare.run(Job(choices=BARE, pages=[pages.small(cupsWidth=width)]))


@pytest.mark.parametrize("resolution", [(1, 0), (600, 0), (0xFFFFFFFF, 600), (0x80000000, 1),
                                        (0x7FFFFFFF, 0x7FFFFFFF), (842151, 600)])
@pytest.mark.parametrize("width", [100, 0x80000000])
def test_resolutions_at_the_ends_of_32_bits(resolution, width):
    """The most negative width divided by a resolution of all ones is the one quotient that does not
    fit: the job must get over it."""
    page = pages.small(cupsWidth=width, HWResolution=resolution)
    job = Job(choices=BARE, pages=[page])
    if (width, resolution[0]) == (0x80000000, 0xFFFFFFFF):
        assert job.run().status == 0
    else:
        compare.run(job)


@pytest.mark.parametrize("copies", [0, 2147483648, 4294967295])
def test_numbers_of_copies(copies):
    result = Job(pages=[pages.small(NumCopies=copies)]).run()
    shown = copies - (1 << 32) if copies >= 1 << 31 else copies
    assert f"     PAGE: 1 {shown}" in result.stderr


@pytest.mark.parametrize("width", [1, 2, 3])
def test_lines_shorter_than_what_an_error_shows(width):
    script = {("HPESendBand", 1): [("return", 4)]}
    page = pages.small(width, 4)
    result = compare.run(Job(choices=BARE, pages=[page], script=script))
    assert any(line.startswith("Error:  HPESendBand Failed err=4 y=1 ") for line in result.log)


@pytest.mark.parametrize("bits,colors", [(32, 8), (240, 16), (16, 16), (40, 8)])
def test_other_sizes_of_a_pixel(bits, colors):
    unit = bits // 8
    page = pages.small(cupsBitsPerPixel=bits, cupsBitsPerColor=colors, cupsBytesPerLine=60 * unit)
    page.lines = [bytes((i * 7 + y) & 255 for i in range(60 * unit)) for y in range(100)]
    compare.run(Job(pages=[page], choices=dict(CHOICES, InnerDiameter="0")))


def test_a_page_of_more_than_65536_lines():
    """Line numbers go to the engine whole; the band and the ring count in 16 bits."""
    page = pages.flat(40, 66000, (200, 100, 50))
    result = compare.run(Job(choices=dict(CHOICES, InnerDiameter="0"), pages=[page]))
    lines = [int(call.split()[3]) for call in result.calls if call.startswith("HPESendBand")]
    assert lines == list(range(8, 457)) + list(range(65544, 65993))


def test_lines_narrower_than_the_width():
    compare.run(Job(pages=[pages.small(cupsWidth=150)], choices=BARE))


def test_pages_of_different_kinds_in_one_stream():
    wide = pages.small(cupsBitsPerPixel=32, cupsBytesPerLine=400)
    wide.lines = [bytes((i + y) & 255 for i in range(400)) for y in range(100)]
    compare.run(Job(choices=BARE, pages=[pages.small(10, 20), wide, pages.small(300, 20)]))
