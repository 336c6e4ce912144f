"""The disc that a raster should give: its pixels within the ring, white elsewhere.

The ring comes from the PPD's choices, once by the requirements' whole-number arithmetic (which
rounds the hole a little) and once as plain circles in millimetres.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import functools

import numpy as np

from expected_page import Geometry, atoi, quotient


def _margin_dots(chosen):
    return quotient(atoi(chosen["OuterMargin"]) * 600, 254)


@functools.lru_cache(8)
def _ring(side_dots, margin_dots, hole):
    geometry = Geometry(side_dots, side_dots, margin_dots, hole)
    inside = [geometry.prints(y) and ~np.array(geometry.white(y, side_dots))
              for y in range(side_dots)]
    return np.array([row if row is not False else [False] * side_dots for row in inside])


def ring(side_dots, chosen):
    """True for the dots of a page that may be printed."""
    return _ring(side_dots, _margin_dots(chosen), atoi(chosen["InnerDiameter"]))


def circles(side_dots, chosen, grow_dots):
    """True for the dots whose middle lies between the circles that the choices name, which
    `grow_dots` move apart. A keyword's number is tenths of a millimetre at 600 dpi; the draft ones
    hold half of what they say, because the filter takes them for as many dots at 300 dpi."""
    dots_per_tenth = 600 / 254
    outer = side_dots / 2 - atoi(chosen["OuterMargin"]) * dots_per_tenth + grow_dots
    hole = atoi(chosen["InnerDiameter"]) / 2 * dots_per_tenth - grow_dots
    middle = np.arange(side_dots) + 0.5 - side_dots / 2
    distance2 = middle[None, :] ** 2 + middle[:, None] ** 2
    return (distance2 <= outer ** 2) & (distance2 >= hole ** 2)


def disc_of(pixels, chosen):
    """The raster's pixels with white outside the ring."""
    out = pixels.copy()
    out[~ring(pixels.shape[0], chosen)] = 255
    return out


def near(mask, dots):
    """Where there is a true value within so many dots, in rows or columns or diagonally."""
    padded = np.pad(mask, dots)
    out = np.zeros_like(mask)
    for y in range(2 * dots + 1):
        for x in range(2 * dots + 1):
            out |= padded[y:y + mask.shape[0], x:x + mask.shape[1]]
    return out
