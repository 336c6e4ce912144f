"""The printed disc is the label: colours, edges, ring and orientation, for both engine families."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import numpy as np
import pytest

import disc_job
from color_difference import ciede2000, lab, linear_light, low_pass
from expected_disc import circles, disc_of, near, ring

LABELS = {name: str(disc_job.REPOSITORY / "labels" / name)
          for name in ("concert.pdf", "lake.png", "orientation.png")}
FAMILIES = {"Q": "Granite", "U": "Heron"}
WHITE = 255
# Mean and 99th percentile of the colour difference stay below these, by resolution: a third above the
# largest that are measured (0.57 and 2.4; 0.87 and 4.3).
LIMITS = {600: (0.76, 3.2), 300: (1.16, 5.8)}
# How far the ring may be from true circles: the filter draws it 0.17 per cent narrower than tall
# (2.4 dots) and rounds the hole to the inside.
ROUNDING_DOTS = 3

# Qualities that differ in their passes alone (Granite's 2 and 4, all of Heron's) give the same disc.
CASES = [(label, cartridge, f"PrintQuality=Quality{quality}")
         for label in ("concert.pdf", "lake.png") for cartridge, quality in ("Q1", "Q3", "U2")]
DRAFT = "print-quality=3"
CASES += [("lake.png", "Q", DRAFT), ("concert.pdf", "U", DRAFT)]
CASES += [("lake.png", "Q", "MediaType=HighGloss PrintQuality=Quality3"),
          ("concert.pdf", "Q", "MediaType=HighGloss ColorMatching=BestForGraphics")]


@pytest.fixture(scope="session")
def table():
    """Rows of the table of colour differences, written when all tests are done."""
    rows = []
    yield rows
    disc_job.PICTURES.mkdir(exist_ok=True)
    lines = ["| label | family | options | mean dE2000 | 99th percentile | largest |",
             "| --- | --- | --- | --- | --- | --- |"]
    lines += [f"| {label} | {family} | {options} | {mean:.2f} | {high:.2f} | {most:.2f} |"
              for label, family, options, mean, high, most in rows]
    (disc_job.PICTURES / "color-differences.md").write_text("\n".join(lines) + "\n")


def dpi_of(options):
    return 300 if options == DRAFT else 600


def print_label(label, cartridge, options):
    """The disc, and the raster's pixels."""
    dpi = dpi_of(options)
    stream = disc_job.raster_file(LABELS[label], options)
    name = f"{label.split('.')[0]}-{FAMILIES[cartridge]}-{options.replace(' ', '-')}"
    disc = disc_job.print_raster(stream, options, cartridge, name)
    assert disc.report["discs"][0]["family"] == FAMILIES[cartridge]
    pixels = disc_job.raster_pixels(stream)
    assert pixels.shape == ((2834, 2834, 3) if dpi == 600 else (1417, 1417, 3))
    # The disc's square is 2834.6 dots wide; the page lies at its upper left corner.
    return disc.picture[:pixels.shape[0], :pixels.shape[1]], pixels, disc


def inked(picture):
    return (picture != WHITE).any(axis=2)


@pytest.mark.parametrize("label, cartridge, options", CASES)
def test_disc_looks_like_its_label(label, cartridge, options, table):
    picture, pixels, disc = print_label(label, cartridge, options)
    dpi, chosen = dpi_of(options), disc_job.choices(options)
    drops = inked(picture)
    assert drops.any()
    assert not (drops & ~ring(pixels.shape[0], chosen)).any(), "a drop outside the ring"
    found = disc.report["discs"][0]
    assert (found["dots_outside_disc"], found["dots_in_hole"]) == (0, 0)
    assert disc.report["violation_count"] == 0

    expected = low_pass(linear_light(disc_of(pixels, chosen)), dpi)
    difference = ciede2000(lab(expected), lab(low_pass(linear_light(picture), dpi)))
    mean, high = difference.mean(), np.percentile(difference, 99)
    table.append((label, FAMILIES[cartridge], options, mean, high, difference.max()))
    mean_limit, percentile_limit = LIMITS[dpi]
    assert mean < mean_limit and high < percentile_limit, (mean, high)


def quadrant_patches(side):
    """Middles of patches in the coloured quadrants of the orientation label: 53 mm from the disc's
    middle, 45 degrees to all sides; the colours are those that the label was drawn with."""
    reach = 53 / 120 * side * 0.5 ** 0.5
    colors = {(1, -1): (214, 48, 49), (1, 1): (32, 150, 83), (-1, 1): (30, 90, 190),
              (-1, -1): (247, 193, 40)}
    return [((int(side / 2 + down * reach), int(side / 2 + right * reach)), color)
            for (right, down), color in colors.items()]


@pytest.mark.parametrize("cartridge, options", [
    ("Q", "PrintQuality=Quality2"), ("U", "PrintQuality=Quality2"), ("U", DRAFT),
    ("Q", "PrintQuality=Quality4 Bidi=No MediaType=HighGloss")])
def test_nothing_is_turned_mirrored_or_off_centre(cartridge, options):
    picture, _, _ = print_label("orientation.png", cartridge, options)
    side = picture.shape[0]
    dot_mm = 25.4 / dpi_of(options)
    patch = int(1.5 / dot_mm)
    for (row, column), color in quadrant_patches(side):
        mean = linear_light(picture[row - patch:row + patch, column - patch:column + patch])
        wanted = linear_light(np.array(color, dtype=np.uint8))
        assert ciede2000(lab(mean.mean(axis=(0, 1))), lab(wanted)) < 10
    # The quadrants end 57 mm from the disc's middle, the same to all sides: within the label's dot
    # there, which smooth scaling spreads by half its width.
    drops = inked(picture)
    rows, columns = np.flatnonzero(drops.any(axis=1)), np.flatnonzero(drops.any(axis=0))
    middle = 60 / dot_mm
    label_dot = (25.4 / 300) / dot_mm
    for first, last in ((rows[0], rows[-1]), (columns[0], columns[-1])):
        assert abs((first + last + 1) / 2 - middle) <= label_dot
        assert abs((last - first + 1) / 2 - 57 / dot_mm) <= 1.5 * label_dot


@pytest.mark.parametrize("cartridge", "QU")
@pytest.mark.parametrize("options", ["PrintQuality=Quality1", "PrintQuality=Quality3", DRAFT])
def test_edges_sit_within_one_dot(cartridge, options):
    picture, pixels, _ = print_label("orientation.png", cartridge, options)
    drops = inked(picture)
    paper = (pixels == WHITE).all(axis=2)
    solid = (pixels < 8).all(axis=2) & ring(pixels.shape[0], disc_job.choices(options))
    # No drop farther than a dot from what is not white; none missing farther than a dot inside
    # what is black.
    assert not (drops & ~near(~paper, 1)).any()
    core = ~near(~solid, 1)
    assert core.sum() > 500
    assert (~drops & core).sum() == 0


@pytest.mark.parametrize("cartridge, hole, margin", [
    ("Q", "220", "10"), ("U", "460", "50"), ("U", "150", "0")])
def test_black_fills_the_ring_to_the_last_dot(cartridge, hole, margin):
    options = f"InnerDiameter={hole} OuterMargin={margin} PrintQuality=Quality1"
    header, side = disc_job.raster_file(LABELS["lake.png"], options)[:1800], 2834
    black = header + bytes(side * side * 3)
    disc = disc_job.print_raster(black, options, cartridge, f"black-{cartridge}-{hole}-{margin}")
    drops = inked(disc.picture[:side, :side])
    chosen = disc_job.choices(options)
    assert (drops == ring(side, chosen)).all()
    assert not (drops & ~circles(side, chosen, ROUNDING_DOTS)).any()
    assert not (~drops & circles(side, chosen, -ROUNDING_DOTS)).any()
