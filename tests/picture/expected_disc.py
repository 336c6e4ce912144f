"""The disc that a raster should give: its pixels within the ring, white elsewhere.

The ring is computed from the PPD's choices alone, as circles in millimetres; the filter draws it
0.17 per cent narrower than tall.
"""

import numpy as np

_NARROWER = 0.99828


def ring(side_dots, dpi, chosen, grow=0.0):
    """True where a dot's middle lies in the ring, which `grow` dots make wider on either side."""
    # A keyword's number is tenths of a millimetre at 600 dpi; the draft ones hold half of that,
    # because the filter takes it for as many dots at 300 dpi.
    dots_per_tenth = 600 / 254
    outer = side_dots / 2 - int(dots_per_tenth * _number(chosen["OuterMargin"])) + grow
    hole = _number(chosen["InnerDiameter"]) * dots_per_tenth / 2 - grow
    middle = np.arange(side_dots) + 0.5 - side_dots / 2
    x, y = middle[None, :], middle[:, None]
    inside = (x / (outer * _NARROWER + grow * (1 - _NARROWER))) ** 2 + (y / outer) ** 2 <= 1
    return inside & (x * x + y * y >= max(hole, 0) ** 2)


def _number(keyword):
    return int("".join(c for c in keyword if c.isdigit()))


def disc_of(pixels, dpi, chosen):
    """The raster's pixels with white outside the ring."""
    out = pixels.copy()
    out[~ring(pixels.shape[0], dpi, chosen)] = 255
    return out


def near(mask, dots):
    """Where there is a true value within so many dots, in rows or columns or diagonally."""
    padded = np.pad(mask, dots)
    out = np.zeros_like(mask)
    for y in range(2 * dots + 1):
        for x in range(2 * dots + 1):
            out |= padded[y:y + mask.shape[0], x:x + mask.shape[1]]
    return out
