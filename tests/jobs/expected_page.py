"""The disc's clip table and the conversion of raster lines, by the requirements' arithmetic.

Written for plainness, not speed: whole numbers of Python, cut to their widths where the width shows.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import math

TABLE_ENTRIES = 5100
MAX_DOTS = 5100


def u16(value):
    return value & 0xFFFF


def u32(value):
    return value & 0xFFFFFFFF


def i32(value):
    value &= 0xFFFFFFFF
    return value - (1 << 32) if value >= 1 << 31 else value


def atoi(text):
    digits, sign, text = "", 1, text.lstrip(" \t\n\v\f\r")
    if text[:1] in ("+", "-"):
        sign, text = (-1 if text[0] == "-" else 1), text[1:]
    for letter in text:
        if not letter.isdigit():
            break
        digits += letter
    return sign * int(digits or "0")


def quotient(a, b):
    """Division that truncates toward zero."""
    return abs(a) // abs(b) * (1 if (a < 0) == (b < 0) else -1)


class Geometry:
    """The page's printable rectangle and its ring, from header and choices."""

    def __init__(self, width, height, outer_margin, inner_diameter):
        self.width, self.height = width, height
        self.margin = u32(outer_margin)
        self.top = u16(self.margin)
        self.bottom = u16(height - self.margin)
        self.left = self.margin
        self.right = u32(width - self.margin)
        self.ring_width = u16(self.right - self.left)
        self.ring_height = u16(self.bottom - self.top)
        self.hole_radius = u32(u16(inner_diameter) * 300) // 254
        self.hole = u16(2 * self.hole_radius)
        self.outer = max(self.ring_width, self.ring_height)
        self.valid = self.hole <= self.outer <= MAX_DOTS
        self.table = self._table() if self.valid else None

    def _table(self):
        outer, inner = [0] * TABLE_ENTRIES, [0] * TABLE_ENTRIES
        if self.outer == 0:
            return outer, inner
        self._fill_outer(outer)
        self._fill_inner(inner)
        for e in range((self.height + 1) // 2):
            other = self.height - 1 - e
            if e < TABLE_ENTRIES and other < TABLE_ENTRIES:
                outer[other], inner[other] = outer[e], inner[e]
        return outer, inner

    def _fill_outer(self, outer):
        d = float((self.outer * self.outer) >> 2)
        h = self.outer // 2
        narrowed = d - (0.00343396 * h) * h
        at = self.top
        for a in range(self.outer - 1, 0, -2):
            t = float(a // 2)
            if at < TABLE_ENTRIES:
                outer[at] = u16(int(math.sqrt(narrowed * (1.0 - t * t / d))))
            at += 1

    def _fill_inner(self, inner):
        hole = self.hole
        at = (u16(self.height - hole) + 1) // 2
        for a in range(hole, 0, -2):
            if at < TABLE_ENTRIES:
                inner[at] = u16(math.isqrt(hole * hole - a * a)) >> 1
            at += 1

    def prints(self, y):
        """Whether line y lies inside the printable band."""
        return self.top < u16(y) < self.bottom

    def white(self, y, pixels):
        """For each pixel of the line, whether it lies outside the ring."""
        y, width = u16(y), u16(pixels)
        if y >= TABLE_ENTRIES:
            return [False] * pixels
        o, i = self.table[0][y], self.table[1][y]
        half = width // 2
        outer_high, outer_low = (half + o, half - o) if 0 < o < half else (MAX_DOTS, 0)
        inner_high, inner_low = ((u16(half + i), u16(half - i)) if 0 < i < width
                                 else (0, MAX_DOTS))
        return [n > outer_high or n < outer_low or inner_low < n < inner_high
                for n in range(width, 0, -1)]


class Inks:
    """Saturation and ink limit of a job."""

    def __init__(self, saturation, color_matching, surface, run_comp=1, run_comp_div=3000):
        self.saturation = saturation
        self.limited = color_matching == 2 or surface in (3, 4, 5)
        self.limit = 700 if color_matching == 2 else 255
        self.run_comp, self.run_comp_div = run_comp, run_comp_div

    def convert(self, rgb):
        """The three bytes that go to the engine for a pixel's three bytes."""
        if self.saturation == 100 and not self.limited:
            return bytes(rgb)
        cmy = [255 - v for v in rgb]
        if self.saturation != 100:
            cmy = [((v * (self.saturation + 28)) >> 7) & 0xFF for v in cmy]
        excess = sum(cmy) - self.limit
        if self.limited and excess > 0 and self.run_comp_div != 0:
            cmy = [(v - quotient(i32(excess * self.run_comp * v), self.run_comp_div)) & 0xFF
                   for v in cmy]
        return bytes(255 - v for v in cmy)


def band(geometry, inks, line, y, bytes_per_line, bits_per_pixel):
    """The bytes of one line as the engine gets them, or None when it is not sent."""
    if not geometry.prints(y):
        return None
    pixels = bytes_per_line // (bits_per_pixel >> 3)
    padded = line[:bytes_per_line].ljust(3 * pixels, b"\0")
    white = geometry.white(y, pixels)
    known, out = {}, []
    for i in range(pixels):
        rgb = padded[3 * i:3 * i + 3]
        if white[i]:
            out.append(b"\xff\xff\xff\0")
            continue
        if rgb not in known:
            known[rgb] = inks.convert(rgb) + b"\0"
        out.append(known[rgb])
    return b"".join(out)
