"""Small raster pages for the tests."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import raster


def color(x, y):
    """Colours that differ from dot to dot and reach both ends of every channel."""
    return (x * 37 + y * 11) & 255, (x * 5 + y * 91 + 128) & 255, (x * y + 255) & 255


def small(width=100, height=100, **fields):
    """With the default choices large enough for a ring with a hole."""
    return raster.rgb_page(width, height, color, **fields)


def flat(width, height, rgb, **fields):
    return raster.rgb_page(width, height, lambda x, y: rgb, **fields)
