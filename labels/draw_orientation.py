#!/usr/bin/env python3
"""Draws orientation.png: a label whose four sides differ, so that a disc that comes out upside
down, mirrored, turned or off centre is seen at once. Needs PIL."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os

from PIL import Image, ImageDraw, ImageFont

SIDE = 1417  # dots: 120 mm at 300 dpi
MM = SIDE / 120
BOLD = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"

# Corner quadrants of the disc: their colours and where their middles lie, in millimetres from the
# disc's centre, right and down.
QUADRANTS = (
    ("2", (214, 48, 49), (1, -1)),  # red, upper right
    ("3", (32, 150, 83), (1, 1)),  # green, lower right
    ("4", (30, 90, 190), (-1, 1)),  # blue, lower left
    ("5", (247, 193, 40), (-1, -1)),  # yellow, upper left
)


def at(x_mm, y_mm):
    return SIDE / 2 + x_mm * MM, SIDE / 2 + y_mm * MM


def box(x_mm, y_mm, radius_mm):
    return [*at(x_mm - radius_mm, y_mm - radius_mm), *at(x_mm + radius_mm, y_mm + radius_mm)]


def write(draw, text, x_mm, y_mm, size_mm, color):
    draw.text(
        at(x_mm, y_mm),
        text,
        font=ImageFont.truetype(BOLD, round(size_mm * MM)),
        fill=color,
        anchor="mm",
    )


def quadrants(draw):
    for _, color, (right, down) in QUADRANTS:
        start = {(1, -1): 270, (1, 1): 0, (-1, 1): 90, (-1, -1): 180}[right, down]
        draw.pieslice(box(0, 0, 57), start, start + 90, fill=color)
    draw.ellipse(box(0, 0, 49), fill="white")
    for number, color, (right, down) in QUADRANTS:
        write(draw, number, 30.0 * right, 30.0 * down, 9, color)


def rulers(draw):
    """Ticks each millimetre across the middle, long ones each ten."""
    for way in range(-48, 49):
        long = 3.0 if way % 10 == 0 else 1.6 if way % 5 == 0 else 0.9
        if abs(way) < 12:
            continue
        draw.line([*at(way, -long), *at(way, long)], fill="black", width=2)
        if not 33 < abs(way) < 43:  # where the words stand
            draw.line([*at(-long, way), *at(long, way)], fill="black", width=2)


def arrow(draw):
    draw.polygon([at(-24, -22), at(-20, -28), at(-16, -22)], fill="black")
    draw.rectangle([*at(-21, -22), *at(-19, -15)], fill="black")


def main():
    image = Image.new("RGB", (SIDE, SIDE), "white")
    draw = ImageDraw.Draw(image)
    quadrants(draw)
    draw.ellipse(box(0, 0, 47.5), outline="black", width=2)
    draw.ellipse(box(0, 0, 24), outline="black", width=2)
    rulers(draw)
    arrow(draw)
    write(draw, "1 TOP", 0, -38, 8, "black")
    write(draw, "R", 40.5, 5, 7, "black")
    write(draw, "bottom", 0, 38, 7, "black")
    write(draw, "L", -40.5, 5, 7, "black")
    image.save(
        os.path.join(os.path.dirname(os.path.abspath(__file__)), "orientation.png"),
        optimize=True,
        dpi=(300, 300),
    )


if __name__ == "__main__":
    main()
