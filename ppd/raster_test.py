"""The raster that the distribution's filters make with this PPD: what the filter will read."""

import pytest

from raster_pages import filtered, pdf, read_pages

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
    at = line * fields["bytes_per_line"] + 3 * column
    return tuple(pixels[at:at + 3])


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
