"""What the PPD choices come to: properties, colour tables, ini keys and pixels."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import itertools

import pytest

import compare
import pages
import record
from job import CHOICES, Job, run_together

MEDIA = ["HighGloss", "HighGloss2", "WhitePolyester", "SemiGloss", "WhiteMatteBOPP", "Matte"]
QUALITIES = ["Quality1", "Quality2", "Quality3", "Quality4"]


@pytest.mark.parametrize("cartridge", "QPUV")
def test_every_quality_with_every_medium(cartridge):
    """Each combination once, the other choices alternating."""
    tasks = []
    for i, (quality, media) in enumerate(itertools.product(QUALITIES, MEDIA)):
        if "QPUV".index(cartridge) % 2 != i % 2:
            continue
        choices = dict(CHOICES, PrintQuality=quality, MediaType=media,
                       ColorMatching=["Standard", "BestForPhotos"][i // 2 % 2],
                       Bidi=["Yes", "No"][i // 3 % 2])
        job = Job(choices=choices, record=record.record(cartridge=cartridge))
        tasks.append(lambda job=job: compare.run(job))
    run_together(tasks)


@pytest.mark.parametrize("choice", [("Saturation", "90"), ("Saturation", "120"),
                                    ("Saturation", "0"), ("Saturation", "356"),
                                    ("OuterMargin", "-3"), ("OuterMargin", "10"),
                                    ("InnerDiameter", "0"), ("Bidi", "yes"),
                                    ("ColorMatching", "bestforphotos"),
                                    ("Saturation", "90x"), ("OuterMargin", "x"),
                                    # 600 times this leaves 32 bits.
                                    ("OuterMargin", "9999999"), ("OuterMargin", "-2147483648"),
                                    # The hole's diameter keeps 16 bits: 65540 becomes 4.
                                    ("InnerDiameter", "27746"), ("InnerDiameter", "65536")])
def test_one_choice_alone(choice):
    compare.run(Job(choices=dict(CHOICES, **dict([choice]))))


@pytest.mark.parametrize("saturation", ["80", "100", "120"])
@pytest.mark.parametrize("matching", ["Standard", "BestForPhotos"])
def test_saturation_meets_the_ink_limit(saturation, matching):
    choices = dict(CHOICES, Saturation=saturation, ColorMatching=matching,
                   MediaType="WhitePolyester", InnerDiameter="0")
    compare.run(Job(choices=choices, settings={"RunComp": 3, "RunCompDiv": 700}))


def test_negative_ink_settings_compute_as_signed_and_show_as_unsigned():
    choices = dict(CHOICES, MediaType="WhitePolyester")
    result = compare.run(Job(choices=choices, settings={"RunComp": -1, "RunCompDiv": -3000}))
    assert "   nRunCompDiv 4294964296" in result.log


def test_ink_products_wrap_at_32_bits():
    choices = dict(CHOICES, MediaType="WhitePolyester")
    compare.run(Job(choices=choices, settings={"RunComp": 2000000000, "RunCompDiv": 7}))


def test_black_on_photo_media_is_lightened():
    choices = dict(CHOICES, MediaType="WhiteMatteBOPP", InnerDiameter="0")
    result = compare.run(Job(choices=choices, pages=[pages.flat(100, 100, (0, 0, 0))]))
    assert bytes([43, 43, 43, 0]) in result.pixels
    assert set(result.pixels) == {0, 43, 255}


@pytest.mark.parametrize("cartridge,setting", [
    ("Q", {"LeftMarginOffset": -3000}), ("Q", {"LeftMarginOffset": 100}),
    ("U", {"LeftMarginOffsetHeron": -2000, "LeftMarginOffsetHeronHighQuality": 44}),
    ("V", {"LeftMarginOffsetHeron": 3, "TopMarginOffsetHeron": 31, "TopMarginOffset": 900}),
    ("P", {"LeftMarginOffset": -1916}), ("Q", {"TopMarginOffset": -100})])
@pytest.mark.parametrize("media", ["HighGloss", "SemiGloss"])
def test_margins_by_family_and_medium(cartridge, setting, media):
    compare.run(Job(choices=dict(CHOICES, MediaType=media), settings=setting,
                    record=record.record(cartridge=cartridge)))


@pytest.mark.parametrize("width,resolution", [(1199, 600), (1200, 600), (599, 300), (600, 300),
                                              (60, 1)])
def test_pages_around_two_inches_wide(width, resolution):
    page = pages.small(width, 50, HWResolution=(resolution, resolution + 1))
    compare.run(Job(pages=[page]))


def test_a_hole_larger_than_the_disc_is_refused():
    job = Job(choices=dict(CHOICES, InnerDiameter="220"))
    result = compare.run(job)
    assert "Invalid Dimension wOd: 86, Pline 5100" in result.log
    assert result.status == 0 and result.stdout == b""


def test_a_rectangle_wider_than_the_largest_disc_is_refused():
    result = compare.run(Job(pages=[pages.flat(5115, 30, (9, 9, 9))]))
    assert "Invalid Dimension wOd: 5101, Pline 5100" in result.log


def test_margins_that_meet_print_unclipped_or_not_at_all():
    """OuterMargin 254 is 600 dots: a page of 1200 dots has no printable rectangle left."""
    none = dict(CHOICES, OuterMargin="254", InnerDiameter="0")
    hole = dict(CHOICES, OuterMargin="254", InnerDiameter="20")
    page = pages.flat(1200, 1200, (1, 2, 3))
    unclipped = compare.run(Job(choices=none, pages=[page]))
    assert "START_PAGE_END" in unclipped.log and unclipped.pixels == b""
    refused = compare.run(Job(choices=hole, pages=[page]))
    assert "Invalid Dimension wOd: 0, Pline 5100" in refused.log


@pytest.mark.parametrize("width,height", [(101, 100), (100, 101), (33, 140), (140, 33), (300, 99)])
def test_rings_on_odd_and_oblong_pages(width, height):
    choices = dict(CHOICES, InnerDiameter="10")
    compare.run(Job(choices=choices, pages=[pages.small(width, height)]))


def test_a_hole_of_metres_is_told_in_full_and_refused():
    """60000 tenths of a millimetre are 60000 * 300 / 254 = 70866 dots, whose double is beyond 16 bits:
    141732 - 2 * 65536 = 10660."""
    result = compare.run(Job(choices=dict(CHOICES, InnerDiameter="60000")))
    assert "     ClipGetData: nID = 70866 (in 300dpi units))\n" in result.log
    assert "   Unable to create ClipDataBufs!" in result.log
