"""The PPD's options as libcups offers them, against what the filter understands."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import itertools
import re

import pytest

from cups_ppd import Ppd

PAGES_MM = {"120x120mm.Fullbleed": 120, "80x80mm.Fullbleed": 80}
POINTS_PER_MM = 72 / 25.4
FILTER_KEYWORDS = {
    "MediaType": {"HighGloss", "HighGloss2", "WhitePolyester", "SemiGloss", "WhiteMatteBOPP"},
    "PrintQuality": {"Quality1", "Quality2", "Quality3", "Quality4"},
    "ColorModel": {"RGB", "Gray"},
    "ColorMatching": {"BestForPhotos", "BestForGraphics"},
    "Bidi": {"Yes", "No"},
    "SkipLowInkFWCheck": {"Yes", "No"},
    "SuppressStartingUtilityOnError": {"Yes", "No"},
    "Resolution": {"600dpi", "300dpi"},
    "PageSize": set(PAGES_MM),
}


@pytest.fixture(scope="module")
def options(ppd_path):
    with Ppd(ppd_path) as ppd:
        return ppd.options()


def number(keyword):
    """The number that a keyword begins with, as the filter reads it."""
    return int(re.match(r"\d+", keyword).group())


def millimetres(text):
    """The length that a choice's text promises."""
    return 0.0 if text == "None" else float(re.match(r"([\d.]+) mm", text).group(1))


def dpi(resolution):
    return number(resolution)


def test_at_most_twenty_options(options):
    assert 9 <= len(options) <= 20


@pytest.mark.parametrize("option", FILTER_KEYWORDS)
def test_keywords_are_the_ones_the_filter_knows(options, option):
    assert set(options[option][2]) == FILTER_KEYWORDS[option]


def test_every_option_and_choice_is_named_for_people(options):
    for keyword, (text, _, choices) in options.items():
        assert text and (text != keyword or keyword == "Resolution")
        assert len(set(choices.values())) == len(choices), f"two choices of {keyword} look alike"
        assert all(re.search(r"[ \d]|^[A-Z][a-z-]+$", name) for name in choices.values())


def test_defaults_are_marked_and_agree(ppd_path):
    expected = {"PageSize": "120x120mm.Fullbleed", "Resolution": "600dpi", "InnerDiameter": "220",
                "OuterMargin": "10", "MediaType": "WhiteMatteBOPP", "PrintQuality": "Quality2",
                "ColorModel": "RGB", "ColorMatching": "BestForPhotos", "Saturation": "100",
                "Bidi": "Yes",
                "SkipLowInkFWCheck": "No", "SuppressStartingUtilityOnError": "No"}
    with Ppd(ppd_path) as ppd:
        assert {option: ppd.marked(option) for option in expected} == expected
        assert ppd.conflicts() == 0


def test_every_choice_can_be_marked(ppd_path, options):
    for option, (_, _, choices) in options.items():
        for choice in choices:
            with Ppd(ppd_path, f"{option}={choice}") as ppd:
                # A page size is marked as both of its options or as one of them.
                marked = {ppd.marked(option)} | (
                    {ppd.marked("PageSize"), ppd.marked("PageRegion")}
                    if option in ("PageSize", "PageRegion") else set())
                assert choice in marked


@pytest.mark.parametrize("name", PAGES_MM)
def test_page_is_the_disc_without_margins(ppd_path, name):
    """To the hundredth of a millimetre, which is as fine as CUPS tells sizes."""
    with Ppd(ppd_path) as ppd:
        width, length, left, bottom, right, top = (edge / POINTS_PER_MM for edge in ppd.page(name))
    assert (round(width, 2), round(length, 2)) == (PAGES_MM[name], PAGES_MM[name])
    assert (left, bottom) == (0, 0)
    assert (round(width - right, 2), round(length - top, 2)) == (0, 0)


def test_no_size_can_be_made_up(ppd_path):
    """The machine takes two sizes of disc: a size of one's own would be promised in vain."""
    with open(ppd_path, encoding="utf-8") as file:
        text = file.read()
    assert "Custom" not in text and "*VariablePaperSize: True" not in text
    assert "MaxMediaWidth" not in text and "HWMargins" not in text


def test_draft_is_one_thing(options):
    """The word stands for 300 dpi and what belongs to it, not for a quality as well."""
    drafts = {(option, keyword) for option, (text, _, choices) in options.items()
              for keyword, name in choices.items() if "draft" in f"{text} {name}".lower()}
    assert ("Resolution", "300dpi") in drafts
    assert all(keyword == "300dpi" or keyword.endswith("Draft") for _, keyword in drafts)
    assert options["PrintQuality"][2]["Quality1"] == "Fast"


def test_saturation_never_wraps_a_byte(options):
    percents = [int(keyword) for keyword in options["Saturation"][2]]
    for percent, ink in itertools.product(percents, range(256)):
        assert ink * (percent + 28) >> 7 <= 255, f"{percent} % turns ink {ink} over"
    assert 100 in percents
    assert all(text == f"{keyword} %" for keyword, text in options["Saturation"][2].items())


def allowed_rings(ppd_path, options):
    """Every (page, resolution, hole, margin) without a conflict."""
    parts = [options[name][2]
             for name in ("PageSize", "Resolution", "InnerDiameter", "OuterMargin")]
    for page, resolution, hole, margin in itertools.product(*parts):
        job = (f"PageSize={page} Resolution={resolution} InnerDiameter={hole} "
               f"OuterMargin={margin} PrintQuality=Quality1")
        with Ppd(ppd_path, job) as ppd:
            if ppd.conflicts() == 0:
                yield page, resolution, hole, margin


def test_allowed_rings_are_the_ones_the_texts_promise(ppd_path, options):
    """The filter's hole has a radius of keyword x 300 / 254 dots and its margin keyword x 600 / 254
    dots, whatever the resolution; it refuses a page whose hole is wider than its ring."""
    rings = list(allowed_rings(ppd_path, options))
    assert {ring[1] for ring in rings} == {"600dpi", "300dpi"}
    for page, resolution, hole, margin in rings:
        dot_mm = 25.4 / dpi(resolution)
        radius_dots, margin_dots = number(hole) * 300 // 254, number(margin) * 600 // 254
        across_dots = round(PAGES_MM[page] / dot_mm)
        assert abs(2 * radius_dots * dot_mm - millimetres(options["InnerDiameter"][2][hole])) < (
            2 * dot_mm)
        assert abs(margin_dots * dot_mm - millimetres(options["OuterMargin"][2][margin])) < dot_mm
        ring_mm = (across_dots - 2 * margin_dots - 2 * radius_dots) / 2 * dot_mm
        assert ring_mm > 10, f"{page} {hole} {margin} leaves {ring_mm} mm"


@pytest.mark.parametrize("job", [
    "Resolution=300dpi InnerDiameter=110Draft OuterMargin=0 PrintQuality=Quality3",
    "Resolution=300dpi InnerDiameter=110Draft OuterMargin=0 PrintQuality=Quality4",
    "Resolution=300dpi InnerDiameter=220 OuterMargin=0",
    "PageSize=80x80mm.Fullbleed Resolution=300dpi InnerDiameter=460 OuterMargin=0",
    "Resolution=300dpi InnerDiameter=110Draft OuterMargin=10",
    "Resolution=600dpi InnerDiameter=110Draft",
    "Resolution=600dpi OuterMargin=5Draft",
])
def test_senseless_combinations_conflict(ppd_path, job):
    with Ppd(ppd_path, job) as ppd:
        assert ppd.conflicts() > 0


def test_changing_to_the_draft_resolution_keeps_the_disc(ppd_path):
    """A dialogue that settles the conflicts by itself keeps the default hole of 22 mm."""
    with Ppd(ppd_path) as ppd:
        settled = ppd.resolved("Resolution", "300dpi")
    assert settled["InnerDiameter"] == "110Draft"
    assert settled["OuterMargin"] in ("0", "5Draft")


@pytest.mark.parametrize("quality,expected", [
    (3, {"Resolution": "300dpi", "InnerDiameter": "110Draft", "OuterMargin": "5Draft",
         "PrintQuality": "Quality1"}),
    (4, {"Resolution": "600dpi", "InnerDiameter": "220", "OuterMargin": "10",
         "PrintQuality": "Quality2"}),
    (5, {"Resolution": "600dpi", "InnerDiameter": "220", "OuterMargin": "10",
         "PrintQuality": "Quality4"}),
])
def test_print_quality_of_a_job_sets_what_belongs_together(ppd_path, quality, expected):
    with Ppd(ppd_path, f"print-quality={quality}") as ppd:
        assert {option: ppd.marked(option) for option in expected} == expected
        assert ppd.conflicts() == 0


@pytest.mark.parametrize("job,expected", [
    ("print-color-mode=color", {"ColorModel": "RGB", "Resolution": "600dpi"}),
    ("print-color-mode=monochrome", {"ColorModel": "Gray", "Resolution": "600dpi"}),
    ("print-color-mode=monochrome print-quality=3",
     {"ColorModel": "Gray", "Resolution": "300dpi", "InnerDiameter": "110Draft",
      "OuterMargin": "5Draft", "PrintQuality": "Quality1"}),
    ("print-color-mode=monochrome print-quality=5", {"ColorModel": "Gray",
                                                     "PrintQuality": "Quality4"}),
])
def test_color_mode_of_a_job_has_an_effect(ppd_path, job, expected):
    with Ppd(ppd_path, job) as ppd:
        assert {option: ppd.marked(option) for option in expected} == expected
        assert ppd.conflicts() == 0
