"""Pages: how many, how long, and which raster headers are refused."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import pages
import raster
import record
from expected import Model
from job import CHOICES, Job

WITHOUT_HOLE = dict(CHOICES, InnerDiameter="0")


@pytest.mark.parametrize("version", [2, 3])
@pytest.mark.parametrize("order", ["<", ">"])
def test_raster_versions_and_byte_orders(version, order):
    compare.run(Job(version=version, order=order))


@pytest.mark.parametrize("order", ["<", ">"])
def test_old_streams_with_the_short_header(order):
    page = pages.small(cupsPageSize=(0, 0), cupsPageSizeName="")
    compare.run(Job(version=1, order=order, pages=[page, page]))


def test_several_pages_are_a_document_each():
    job = Job(pages=[pages.small(), pages.small(120, 90, NumCopies=3), pages.small(90, 120)])
    result = compare.run(job)
    assert result.status == 0
    assert sum(call.startswith("HPEStartDoc") for call in result.calls) == 4
    assert sum(call.startswith("HPEEndDoc") for call in result.calls) == 4
    assert "     PAGE: 2 3" in result.stderr


def test_the_page_line_has_no_end():
    low = record.record(error=0x10)
    job = Job(record=low)
    result = job.run()
    assert "     PAGE: 1 1STATE: +marker-supply-low\n" in result.stderr


def test_three_hundred_lines_report_three_times():
    result = compare.run(Job(pages=[pages.flat(30, 300, (7, 8, 9))], choices=WITHOUT_HOLE))
    reports = [line for line in result.log if "complete..." in line]
    assert reports == ["     Printing page 1, 0% complete...",
                       "     Printing page 1, 43% complete...",
                       "     Printing page 1, 85% complete..."]


@pytest.mark.parametrize("raw", [b"", b"RaS", b"3SaR", b"not a raster at all" * 200],
                         ids=["empty", "cut-in-the-mark", "mark-only", "foreign"])
def test_a_stream_without_a_page_still_ends_the_document(raw):
    job = Job(pages=raw)
    result = compare.run(job, pages=[])
    assert result.status == 1
    assert result.log[-1] == "     No pages found!"


def test_a_stream_cut_in_the_header_has_no_page():
    compare.run(Job(pages=raster.stream([pages.small()])[:900]), pages=[])


@pytest.mark.parametrize("lines,version", [(0, 3), (1, 3), (57, 3), (99, 3), (57, 2)])
def test_a_page_cut_short_is_ended_like_a_whole_one(lines, version):
    page = pages.small()
    del page.lines[lines:]
    result = compare.run(Job(pages=[page], version=version))
    assert result.status == 0
    assert "HPEEndPage H 0" in result.calls


def test_a_line_cut_short_is_not_sent():
    whole = raster.stream([pages.small()])
    page = pages.small()
    del page.lines[60:]
    compare.run(Job(pages=whole[:4 + raster.HEADER_BYTES + 60 * 300 + 150]), pages=[page])


REFUSED = [("cupsBitsPerColor", 4, 4), ("cupsBitsPerColor", 1, 1), ("cupsColorOrder", 1, 1),
           ("cupsColorOrder", 2, 2), ("cupsColorSpace", 2, 2), ("cupsColorSpace", 17, 17),
           # Numbers that the header's own enumerations do not reach.
           ("cupsColorOrder", 4, 4), ("cupsColorOrder", 65536, 65536),
           ("cupsColorOrder", 0xFFFFFFFF, 0xFFFFFFFF), ("cupsColorSpace", 64, 64),
           ("cupsColorSpace", 0xFFFFFFFF, 0xFFFFFFFF)]


@pytest.mark.parametrize("name,value,shown", REFUSED)
def test_raster_formats_that_are_refused(name, value, shown):
    result = compare.run(Job(pages=[pages.small(**{name: value})]))
    assert f"   Bad {name}={shown}!" in result.log
    assert result.stdout == b"" and result.status == 0


def test_the_first_wrong_field_is_the_one_that_is_named():
    page = pages.small(cupsBitsPerColor=2, cupsColorOrder=1, cupsColorSpace=9)
    result = compare.run(Job(pages=[page]))
    assert [line for line in result.log if "Bad" in line] == ["   Bad cupsBitsPerColor=2!"]


def test_a_second_page_that_is_refused_keeps_the_first():
    result = compare.run(Job(pages=[pages.small(), pages.small(cupsColorSpace=6)]))
    assert result.status == 0
    assert len(result.stdout) == 16


def test_sixteen_bits_a_colour_are_read_three_bytes_a_pixel():
    page = pages.small(cupsBitsPerColor=16, cupsBitsPerPixel=48, cupsBytesPerLine=600)
    page.lines = [bytes((i * 7 + y) & 255 for i in range(600)) for y in range(100)]
    compare.run(Job(pages=[page]))


def test_one_byte_a_pixel_never_reads_beyond_the_line():
    page = pages.small(cupsBitsPerPixel=8, cupsBytesPerLine=100, cupsColorSpace=0,
                       cupsNumColors=1)
    page.lines = [bytes((i * 7 + y) & 255 for i in range(100)) for y in range(100)]
    compare.run(Job(pages=[page]))


def test_a_line_longer_than_the_width_says():
    page = pages.small(cupsWidth=60)
    compare.run(Job(pages=[page], choices=WITHOUT_HOLE))


@pytest.mark.parametrize("bits", [1, 4, 7])
def test_less_than_a_byte_a_pixel_leaves_the_page_loop(bits):
    page = pages.small(cupsBitsPerPixel=bits, cupsBitsPerColor=1, cupsBytesPerLine=100)
    result = Job(pages=[page]).run()
    assert f"     Bad cupsBitsPerPixel={bits}!" in result.log
    assert result.status == 1 and result.log[-1] == "     No pages found!"
    assert "PAGE:" not in result.stderr and result.stdout == b""
    assert result.calls[-2:] == ["HPEEndDoc H 0", "DestroyHostPrintEngine H"]


# 131,072 pixels are the most.
@pytest.mark.parametrize("size,bits", [(0x7FFFFFFE, 24), (393219, 24), (131073, 8),
                                       (4294967040, 2040)])
def test_lines_too_large_to_hold_leave_the_page_loop(size, bits):
    page = pages.small(cupsBytesPerLine=size, cupsBitsPerPixel=bits)
    result = Job(pages=[page]).run()
    assert result.log.count(f"     Unable to allocate {size} bytes!") == 1
    assert "     Allocated line buffer" not in result.raw_log.decode()
    assert result.log.index("     cupsColorOrder color class type output ") > 0
    assert result.status == 1 and result.log[-1] == "     No pages found!"
    assert "PAGE:" not in result.stderr


def test_a_line_of_131072_pixels_is_taken():
    page = pages.flat(131072, 2, (1, 2, 3))
    result = Job(pages=[page], choices=WITHOUT_HOLE).run()
    assert "     Allocated line buffer 393216 bytes" in result.raw_log.decode()
    assert "PAGE: 1 1" in result.stderr


def test_a_second_page_too_large_ends_the_job_well():
    job = Job(pages=[pages.small(), pages.small(cupsBytesPerLine=0x7FFFFFFE)])
    result = job.run()
    assert result.status == 0 and result.log[-1] == "     Ready to print."
    assert "     Checking Status on Page 1" not in result.log


def test_a_resolution_of_nothing_is_refused_before_anything_is_written():
    result = compare.run(Job(pages=[pages.small(HWResolution=(0, 600))]))
    assert "   Bad HWResolution=0!" in result.log
    assert result.stdout == b""


def test_texts_without_an_end_are_read_within_their_64_bytes():
    page = pages.small(MediaClass="c" * 64, MediaColor="k" * 64, MediaType="t" * 64,
                       OutputType="o" * 64, cupsPageSizeName="n" * 64)
    result = compare.run(Job(pages=[page]))
    assert f"   Cups Page Size {'n' * 64}" in result.log


@pytest.mark.parametrize("size", [(1e30, -1e30), (float("nan"), float("inf")), (12.9, -12.9)])
def test_odd_page_sizes_in_the_header_do_no_harm(size):
    result = Job(pages=[pages.small(cupsPageSize=size)]).run()
    assert result.status == 0
    shown = [line for line in result.log if line.startswith("   Cups Page Size ")]
    assert len(shown) == 2


@pytest.mark.parametrize("height", [2 ** 31, 2 ** 31 + 100, 0xFFFF0064, 2 ** 32 - 1])
def test_a_page_that_claims_to_be_huge_is_refused_or_cut_short(height):
    page = pages.small(height=60, cupsHeight=height)
    result = Job(pages=[page], limit=60).run()
    assert result.status == 0
    assert result.log[-1] == "     Ready to print."


def test_the_check_before_the_second_page_can_end_the_job():
    """A printer gone silent after the first page: six failed reads, and nothing is put in order."""
    def plan(p):
        p.fresh(record.record(), until=p.trace("HPEEndPage"))
        p.drop()
        p.silence()

    job = Job(pages=[pages.small(), pages.small()], plan=plan)
    result = job.run()
    model = Model(job.pages, job.choices, checks={1: [None] * 6}).run()
    assert model.status == 1
    assert result.status == 1
    assert result.log[-1] == "     StartOfPageJobCheck get status retries failed"
    assert result.calls == model.calls and result.stdout == model.stdout
    assert result.stderr == model.stderr
    assert sum(line == "FAILED TO GET STATUS" for line in result.log) >= 6
    assert result.shared_memory_left
