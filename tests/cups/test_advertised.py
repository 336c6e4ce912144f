"""What the queue promises its clients: what the printer has, and nothing that would have no effect."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

_VARIABLE_SIZES = 0x8000  # the bit of printer-type


def test_two_sizes_and_no_others(scheduler):
    told = scheduler.attributes("media-supported", "media-size-supported", "media-default",
                                "printer-type")
    # Names of sizes that no standard knows begin with "custom_"; a range of sizes would be a pair
    # of custom_min_... and custom_max_...
    assert told["media-supported"] == "custom_120x120mm_120x120mm,custom_80x80mm_80x80mm"
    assert told["media-size-supported"] == ("{x-dimension=12000 y-dimension=12000},"
                                            "{x-dimension=8000 y-dimension=8000}")
    assert told["media-default"] == "custom_120x120mm_120x120mm"
    assert int(told["printer-type"]) & _VARIABLE_SIZES == 0


def test_color_modes_have_a_choice_each(scheduler):
    told = scheduler.attributes("print-color-mode-supported", "print-color-mode-default",
                                "color-supported")
    assert told["print-color-mode-supported"] == "monochrome,color"
    assert told["print-color-mode-default"] == "color"
    assert told["color-supported"] == "true"
    ppd = (scheduler.root / "etc/ppd/discs.ppd").read_text()
    assert "\n*ColorModel RGB/" in ppd and "\n*ColorModel Gray/" in ppd


def test_media_types_and_resolutions(scheduler):
    told = scheduler.attributes("media-type-supported", "printer-resolution-supported",
                                "print-quality-supported")
    assert told["media-type-supported"].split(",") == [
        "photographic-high-gloss", "high-gloss-2", "white-polyester", "semi-gloss",
        "white-matte-bopp"]
    assert told["printer-resolution-supported"] == "600dpi,300dpi"
    assert told["print-quality-supported"] == "draft,normal,high"
