"""The raster that the distribution's filters make with this PPD: what the filter will read."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest
from PIL import Image

from raster_pages import filtered, filtered_picture, pdf
from raster_reader import read_pages

PAGES = [("120x120mm.Fullbleed", 340.157, "600dpi", 2834),
         ("120x120mm.Fullbleed", 340.157, "300dpi", 1417),
         ("80x80mm.Fullbleed", 226.772, "600dpi", 1890),
         ("80x80mm.Fullbleed", 226.772, "300dpi", 945)]
RASTERIZERS = ("gstoraster", "pdftoraster")
RED, GREEN, BLUE, BLACK = (255, 0, 0), (0, 255, 0), (0, 0, 255), (0, 0, 0)


def four_corners(side):
    """Red upper left, green upper right, blue lower left, black lower right."""
    half = side / 2
    return (f"1 0 0 rg 0 {half} {half} {half} re f 0 1 0 rg {half} {half} {half} {half} re f "
            f"0 0 1 rg 0 0 {half} {half} re f 0 0 0 rg {half} 0 {half} {half} re f")


def pixel(page, column, line):
    fields, pixels = page
    pixel_bytes = fields["bits_per_pixel"] // 8
    at = line * fields["bytes_per_line"] + pixel_bytes * column
    return tuple(pixels[at:at + pixel_bytes])


@pytest.mark.parametrize("rasterizer", RASTERIZERS)
@pytest.mark.parametrize("page_size,points,resolution,dots", PAGES)
def test_page_of_a_label(ppd_path, tmp_path, rasterizer, page_size, points, resolution, dots):
    options = f"PageSize={page_size} Resolution={resolution}"
    pages = read_pages(filtered(ppd_path, pdf(points, four_corners(points)), rasterizer, options, 1,
                                tmp_path))
    assert len(pages) == 1
    dpi = int(resolution[:3])
    assert pages[0][0] == {"x_dpi": dpi, "y_dpi": dpi, "copies": 1, "width_dots": dots,
                           "height_dots": dots, "bits_per_color": 8, "bits_per_pixel": 24,
                           "bytes_per_line": 3 * dots, "color_order": 0, "color_space": 1}
    near, far = 3, dots - 4
    assert pixel(pages[0], near, near) == RED
    assert pixel(pages[0], far, near) == GREEN
    assert pixel(pages[0], near, far) == BLUE
    assert pixel(pages[0], far, far) == BLACK


@pytest.mark.parametrize("rasterizer", RASTERIZERS)
def test_page_without_options_is_the_whole_disc(ppd_path, tmp_path, rasterizer):
    pages = read_pages(filtered(ppd_path, pdf(340.157, four_corners(340.157)), rasterizer, "", 1,
                                tmp_path))
    assert [(page[0]["width_dots"], page[0]["height_dots"]) for page in pages] == [(2834, 2834)]


@pytest.mark.parametrize("rasterizer", RASTERIZERS)
def test_copies_are_pages(ppd_path, tmp_path, rasterizer):
    """The printer makes no copies itself: two copies arrive as two pages of one copy each."""
    pages = read_pages(filtered(ppd_path, pdf(340.157, four_corners(340.157)), rasterizer,
                                "Resolution=300dpi", 2, tmp_path))
    assert [page[0]["copies"] for page in pages] == [1, 1]


STRIPES = [RED, GREEN, BLUE, BLACK, (128, 128, 128), (255, 255, 255)]
# Luma of red, green and blue in grey with the gamma of sRGB: filters weigh them as television does
# (0.3, 0.6, 0.1) or in linear light (128, 219, 77), so a wide range, but in this order.
DARKEST, LIGHTEST = {RED: 70, GREEN: 145, BLUE: 15}, {RED: 140, GREEN: 225, BLUE: 80}


def striped(rasterizer, ppd_path, options, folder):
    """A page at 300 dpi with stripes across it, from a PDF or a picture, and its pixels in them."""
    options = f"Resolution=300dpi {options}"
    if rasterizer == "imagetoraster":
        picture = Image.new("RGB", (600, 600))
        for place, color in enumerate(STRIPES):
            picture.paste(color, (0, 100 * place, 600, 100 * place + 100))
        picture.save(folder / "stripes.png")
        path = filtered_picture(ppd_path, folder / "stripes.png", options, folder)
    else:
        side = 340.157
        drawing = "".join(f"{r / 255} {g / 255} {b / 255} rg 0 {side * (5 - place) / 6} {side} "
                          f"{side / 6} re f " for place, (r, g, b) in enumerate(STRIPES))
        path = filtered(ppd_path, pdf(side, drawing), rasterizer, options, 1, folder)
    page, = read_pages(path)
    dots = page[0]["height_dots"]
    return page[0], {color: pixel(page, dots // 2, dots * (2 * place + 1) // 12)
                     for place, color in enumerate(STRIPES)}


@pytest.mark.parametrize("rasterizer", (*RASTERIZERS, "imagetoraster"))
@pytest.mark.parametrize("options", ["ColorModel=Gray", "print-color-mode=monochrome"])
def test_grayscale_is_one_byte_a_dot(ppd_path, tmp_path, rasterizer, options):
    fields, colors = striped(rasterizer, ppd_path, options, tmp_path)
    assert (fields["bits_per_color"], fields["bits_per_pixel"], fields["color_space"],
            fields["color_order"]) == (8, 8, 18, 0)
    assert fields["bytes_per_line"] == fields["width_dots"]
    assert colors[BLACK] == (0,) and colors[STRIPES[5]] == (255,)
    assert abs(colors[STRIPES[4]][0] - 128) <= 1
    for color in (RED, GREEN, BLUE):
        assert DARKEST[color] <= colors[color][0] <= LIGHTEST[color]
    assert colors[BLUE] < colors[RED] < colors[GREEN]


@pytest.mark.parametrize("rasterizer", (*RASTERIZERS, "imagetoraster"))
@pytest.mark.parametrize("options", ["", "ColorModel=RGB", "print-color-mode=color"])
def test_color_is_three_bytes_a_dot(ppd_path, tmp_path, rasterizer, options):
    fields, colors = striped(rasterizer, ppd_path, options, tmp_path)
    assert (fields["bits_per_color"], fields["bits_per_pixel"], fields["color_space"],
            fields["color_order"]) == (8, 24, 1, 0)
    assert fields["bytes_per_line"] == 3 * fields["width_dots"]
    for color in STRIPES:
        assert all(abs(seen - drawn) <= 1 for seen, drawn in zip(colors[color], color))
