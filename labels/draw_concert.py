#!/usr/bin/env python3
"""Draws concert.pdf: the label of a concert recording, in lines, gradients and type only.

The page is the disc's square, 120 mm; all lengths are millimetres from the disc's centre, y down.
Needs python3-cairo; the type is embedded, so that nobody else needs the fonts.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import math
import os
import random

import cairo

MM = 72 / 25.4
GOTHIC = "URW Gothic"
SERIF = "C059"
GOLD = (0.98, 0.84, 0.52)
CREAM = (1.0, 0.95, 0.84)

dice = random.Random(14)


def gradient(kind, stops):
    for at, red, green, blue, alpha in stops:
        kind.add_color_stop_rgba(at, red, green, blue, alpha)
    return kind


def night(page):
    page.set_source(
        gradient(
            cairo.LinearGradient(0, -60, 0, 60),
            [
                (0.00, 0.045, 0.060, 0.200, 1),
                (0.38, 0.130, 0.135, 0.400, 1),
                (0.60, 0.380, 0.200, 0.480, 1),
                (0.78, 0.820, 0.330, 0.400, 1),
                (0.90, 0.980, 0.560, 0.330, 1),
                (1.00, 1.000, 0.720, 0.420, 1),
            ],
        )
    )
    page.paint()


def stars(page):
    for _ in range(330):
        turn, far = dice.uniform(math.pi * 1.02, math.pi * 1.98), dice.uniform(24, 59.5)
        if 40.5 < far < 55 and abs(turn - 1.5 * math.pi) < 1.15:
            continue  # where the title stands
        x, y = far * math.cos(turn), far * math.sin(turn)
        size = dice.choice((0.09, 0.11, 0.13, 0.16, 0.22))
        page.set_source_rgba(1, 0.97, 0.9, dice.uniform(0.35, 1) * min(1, (6 - y) / 40))
        page.arc(x, y, size, 0, 2 * math.pi)
        page.fill()


def moon(page):
    page.set_source(
        gradient(
            cairo.RadialGradient(0, 0, 22, 0, 0, 46),
            [(0, 1, 0.90, 0.66, 0.60), (0.35, 1, 0.80, 0.60, 0.22), (1, 1, 0.75, 0.6, 0)],
        )
    )
    page.arc(0, 0, 46, 0, 2 * math.pi)
    page.fill()
    page.set_source(
        gradient(
            cairo.RadialGradient(-7, -9, 4, 0, 0, 25),
            [(0, 1, 0.985, 0.90, 1), (0.6, 0.995, 0.925, 0.74, 1), (1, 0.965, 0.80, 0.55, 1)],
        )
    )
    page.arc(0, 0, 25, 0, 2 * math.pi)
    page.fill()
    page.save()
    page.arc(0, 0, 25, 0, 2 * math.pi)
    page.clip()
    for x, y, r in (
        (-15, -13, 4.6),
        (14, -16, 3.1),
        (19, 4, 4.0),
        (-20, 3, 2.6),
        (9, 18, 3.6),
        (-10, 19, 2.4),
        (-4, -21, 2.0),
        (20, -8, 1.6),
        (-17, 12, 1.8),
        (17, 13, 1.5),
    ):
        page.set_source(
            gradient(
                cairo.RadialGradient(x - r * 0.2, y - r * 0.25, r * 0.2, x, y, r),
                [
                    (0, 0.90, 0.74, 0.50, 0.50),
                    (0.85, 0.90, 0.74, 0.50, 0.36),
                    (1, 0.90, 0.74, 0.50, 0),
                ],
            )
        )
        page.arc(x, y, r, 0, 2 * math.pi)
        page.fill()
    page.restore()


def grooves(page):
    """Fine circles like those of a record, 0.09 mm wide, and a ring of bars: how loud it is."""
    page.set_line_width(0.09)
    for step in range(12):
        page.set_source_rgba(*GOLD, 0.55 - 0.035 * step)
        page.arc(0, 0, 27.0 + 0.62 * step * (1 + step * 0.045), 0, 2 * math.pi)
        page.stroke()
    page.set_line_width(0.32)
    page.set_line_cap(cairo.LINE_CAP_ROUND)
    for bar in range(240):
        turn = bar / 240 * 2 * math.pi
        long = (
            0.5
            + 2.6
            * abs(math.sin(turn * 3.5) * math.sin(turn * 11 + 1) * math.sin(turn * 29 + 2)) ** 0.8
        )
        long += dice.uniform(0, 0.8)
        page.set_source_rgba(*CREAM, 0.85)
        page.move_to(37.6 * math.cos(turn), 37.6 * math.sin(turn))
        page.line_to((37.6 + long) * math.cos(turn), (37.6 + long) * math.sin(turn))
        page.stroke()


def hills(page):
    """Three ranges of hills, the mill on the nearest, and reeds in front."""
    for base, height, waves, seed, color in (
        (33, 5.0, 2.1, 0.4, (0.46, 0.17, 0.36)),
        (38, 4.2, 2.9, 2.2, (0.28, 0.10, 0.29)),
        (44, 3.4, 2.3, 4.4, (0.105, 0.050, 0.165)),
    ):
        page.move_to(-61, 61)
        for step in range(-610, 615, 5):
            x = step / 10
            y = base - height * (
                0.6 * math.sin(x / 60 * waves * math.pi + seed)
                + 0.25 * math.sin(x / 60 * waves * 7.3 + seed * 3)
                + 0.06 * math.sin(x * 1.9 + seed)
            )
            page.line_to(x, y)
        page.line_to(61, 61)
        page.close_path()
        page.set_source_rgb(*color)
        page.fill()


def mill(page):
    dark = (0.105, 0.050, 0.165)
    page.save()
    page.translate(26.5, 37.2)
    page.set_source_rgb(*dark)
    page.move_to(-2.9, 10)
    page.line_to(-1.7, -3.4)
    page.curve_to(-1.5, -5.0, 1.5, -5.0, 1.7, -3.4)
    page.line_to(2.9, 10)
    page.close_path()
    page.fill()
    page.translate(0, -2.9)
    page.rotate(0.42)
    for _ in range(4):
        page.rotate(math.pi / 2)
        page.rectangle(-0.13, 0, 0.26, 8.6)
        page.fill()
        page.set_line_width(0.10)
        for rung in range(11):
            page.move_to(0, 1.6 + rung * 0.66)
            page.line_to(1.5, 1.6 + rung * 0.66)
        page.move_to(1.5, 1.6)
        page.line_to(1.5, 8.2)
        page.set_source_rgb(*dark)
        page.stroke()
    page.restore()
    page.set_source_rgb(1, 0.84, 0.45)
    page.rectangle(25.9, 40.2, 1.1, 1.5)
    page.fill()


def staff(page):
    """Five lines of music that rise across the sky, with their notes."""

    def middle(x):
        return 2.0 - 7.5 * math.sin((x + 8) / 60 * 2.3) - x * 0.10

    page.set_line_width(0.13)
    for line in range(-2, 3):
        page.set_source_rgba(*CREAM, 0.95)
        for step in range(-600, 601, 4):
            x = step / 10
            gap = 1.55 + 0.55 * math.cos(x / 60 * 3.0)
            (page.line_to if step > -600 else page.move_to)(x, middle(x) + line * gap)
        page.stroke()
    return middle


def notes(page, middle):
    tune = (
        (-55.5, 1, 0),
        (-51.2, 0, 0),
        (-47.4, -1, 1),
        (-43.8, 0, 1),
        (-39.8, 2, 0),
        (-35.6, 1, 0),
        (-31.5, -1, 1),
        (-28.2, -2, 1),
        (28.4, 2, 1),
        (31.8, 1, 1),
        (35.8, 0, 0),
        (39.7, -1, 0),
        (43.6, -2, 1),
        (47.0, -1, 1),
        (50.8, 1, 0),
        (55.4, 0, 0),
    )
    stems = []
    for x, place, _ in tune:
        gap = 1.55 + 0.55 * math.cos(x / 60 * 3.0)
        y = middle(x) + place * gap / 1
        page.save()
        page.translate(x, y)
        page.rotate(-0.42)
        page.scale(1.15, 0.80)
        page.arc(0, 0, 1, 0, 2 * math.pi)
        page.restore()
        page.set_source_rgb(*CREAM)
        page.fill()
        up = place > -1
        stems.append((x + (1.02 if up else -1.02), y, -6.2 if up else 6.2))
    page.set_line_width(0.24)
    page.set_line_cap(cairo.LINE_CAP_BUTT)
    for x, y, long in stems:
        page.move_to(x, y)
        page.line_to(x, y + long)
        page.stroke()
    for first in range(len(tune) - 1):
        if tune[first][2] and tune[first + 1][2]:
            (x1, y1, l1), (x2, y2, l2) = stems[first], stems[first + 1]
            if l1 * l2 < 0:
                continue
            thick = 0.9 if l1 < 0 else -0.9
            page.move_to(x1, y1 + l1)
            page.line_to(x2, y2 + l2)
            page.line_to(x2, y2 + l2 + thick)
            page.line_to(x1, y1 + l1 + thick)
            page.close_path()
            page.fill()


def reeds(page):
    for _ in range(150):
        x = dice.gauss(-34, 11) if dice.random() < 0.75 else dice.uniform(-58, 55)
        foot, long, lean = (
            62.0,
            dice.uniform(7, 22) * (1.1 if x < -10 else 0.6),
            dice.uniform(-0.22, 0.28),
        )
        if x * x + (foot - long) ** 2 < 41**2:
            continue
        page.set_source_rgb(0.055, 0.028, 0.110)
        page.set_line_width(dice.uniform(0.12, 0.38))
        page.move_to(x, foot)
        page.curve_to(
            x,
            foot - long * 0.5,
            x + lean * long * 0.3,
            foot - long * 0.8,
            x + lean * long,
            foot - long,
        )
        page.stroke()


def arc_text(page, text, radius, size, spacing, top=True):
    """Text along a circle, its middle at the top (reading clockwise) or at the bottom."""
    page.set_font_size(size)
    widths = [page.text_extents(letter).x_advance + spacing for letter in text]
    turn = -sum(widths) / radius / 2
    for letter, width in zip(text, widths):
        page.save()
        page.rotate((turn + width / radius / 2) * (1 if top else -1))
        page.translate(-(width - spacing) / 2, -radius if top else radius)
        page.move_to(0, 0)
        page.show_text(letter)
        page.restore()
        turn += width / radius


def line_text(page, text, y, size, spacing=0.0):
    page.set_font_size(size)
    widths = [page.text_extents(letter).x_advance + spacing for letter in text]
    x = -(sum(widths) - spacing) / 2
    for letter, width in zip(text, widths):
        page.move_to(x, y)
        page.show_text(letter)
        x += width


def words(page):
    page.select_font_face(GOTHIC, cairo.FONT_SLANT_NORMAL, cairo.FONT_WEIGHT_BOLD)
    page.set_source_rgb(*CREAM)
    arc_text(page, "NOCTURNES  FOR  STRINGS", 47.6, 6.6, 0.75)
    page.select_font_face(SERIF, cairo.FONT_SLANT_ITALIC, cairo.FONT_WEIGHT_NORMAL)
    page.set_source_rgb(*GOLD)
    arc_text(page, "The Larkfield Quartet", 42.4, 3.7, 0.22)
    page.select_font_face(GOTHIC, cairo.FONT_SLANT_NORMAL, cairo.FONT_WEIGHT_NORMAL)
    page.set_source_rgb(*CREAM)
    arc_text(page, "LIVE AT ORCHARD MILL  ·  14 JUNE 2026  ·  STEREO", 56.6, 2.5, 0.28, top=False)
    page.set_source_rgba(*CREAM, 0.95)
    for number, tune in enumerate(
        (
            "1  Moonrise over the weir   6:12",
            "2  The heron's patience   8:40",
            "3  Lanterns   4:57",
            "4  Orchard, after rain   11:26",
        )
    ):
        line_text(page, tune, 46.0 + 2.45 * number - 1.6, 1.62, 0.06)


def main():
    folder = os.path.dirname(os.path.abspath(__file__))
    surface = cairo.PDFSurface(os.path.join(folder, "concert.pdf"), 120 * MM, 120 * MM)
    surface.set_metadata(cairo.PDF_METADATA_TITLE, "Nocturnes for Strings")
    surface.set_metadata(cairo.PDF_METADATA_CREATE_DATE, "2026-06-15T12:00:00Z")
    page = cairo.Context(surface)
    page.scale(MM, MM)
    page.translate(60, 60)
    night(page)
    stars(page)
    moon(page)
    grooves(page)
    hills(page)
    mill(page)
    notes(page, staff(page))
    reeds(page)
    words(page)
    surface.finish()


if __name__ == "__main__":
    main()
