"""A PNG as the printer writes it (8 bits, RGB) in the language of sixel terminals."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import itertools
import struct
import zlib

_LEVELS = 6  # of each primary: 216 colours, of the 256 that such terminals have


def encode(png):
    """The picture at half its size, which fits a window."""
    width, lines = _lines(png)
    columns = range(0, width - 1, 2)
    rows = [[_color(line, x) for x in columns] for line in lines[::2]]
    palette = "".join(f"#{n};2;{n // 36 * 20};{n // 6 % 6 * 20};{n % 6 * 20}"
                      for n in range(_LEVELS ** 3))
    bands = (_band(rows[top:top + 6]) for top in range(0, len(rows), 6))
    return f"\033P0;1q\"1;1;{len(columns)};{len(rows)}{palette}{'-'.join(bands)}\033\\"


def _color(line, x):
    red, green, blue = ((line[3 * x + i] * (_LEVELS - 1) + 127) // 255 for i in range(3))
    return 36 * red + 6 * green + blue


def _band(rows):
    """Up to six rows of dots: for each colour a character a column, whose bits are its rows."""
    bits = {}
    for row, colors in enumerate(rows):
        for x, color in enumerate(colors):
            line = bits.setdefault(color, bytearray(len(colors)))
            line[x] |= 1 << row
    return "$".join(f"#{color}" + "".join(f"!{len(list(run))}{chr(63 + value)}"
                                          for value, run in itertools.groupby(line))
                    for color, line in bits.items())


def _lines(png):
    """Width, and the lines as bytes of red, green and blue."""
    at, packed = 8, b""
    while at < len(png):
        length, kind = struct.unpack_from(">I4s", png, at)
        body = png[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, color = struct.unpack_from(">IIBB", body)
            if (depth, color) != (8, 2):
                raise ValueError("no RGB of 8 bits")
        packed += body * (kind == b"IDAT")
        at += length + 12
    data, stride = zlib.decompress(packed), 3 * width + 1
    line, lines = bytes(stride - 1), []
    for y in range(height):
        line = _unfiltered(data[y * stride], data[y * stride + 1:(y + 1) * stride], line)
        lines.append(line)
    return width, lines


def _unfiltered(kind, line, above):
    out = bytearray(line)
    for i, value in enumerate(line) if kind else ():
        left, up = out[i - 3] if i > 2 else 0, above[i]
        corner = above[i - 3] if i > 2 else 0
        nearest = min((left, up, corner), key=lambda v: abs(left + up - corner - v))
        out[i] = value + (0, left, up, (left + up) // 2, nearest)[kind] & 255
    return bytes(out)
