"""Writes CUPS raster streams: version 2 (compressed), versions 1 (with the old short header) and 3
(both uncompressed), either byte order.

Written from the format's description, so that the filter's reading is checked against something
other than the library that it reads with.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import struct
from dataclasses import dataclass, field

HEADER_BYTES = 1796

# The header's 32-bit words from byte 256 on, as (name, how many).
_WORDS_1 = [
    ("AdvanceDistance", 1), ("AdvanceMedia", 1), ("Collate", 1), ("CutMedia", 1), ("Duplex", 1),
    ("HWResolution", 2), ("ImagingBoundingBox", 4), ("InsertSheet", 1), ("Jog", 1),
    ("LeadingEdge", 1), ("Margins", 2), ("ManualFeed", 1), ("MediaPosition", 1),
    ("MediaWeight", 1), ("MirrorPrint", 1), ("NegativePrint", 1), ("NumCopies", 1),
    ("Orientation", 1), ("OutputFaceUp", 1), ("PageSize", 2), ("Separations", 1),
    ("TraySwitch", 1), ("Tumble", 1), ("cupsWidth", 1), ("cupsHeight", 1), ("cupsMediaType", 1),
    ("cupsBitsPerColor", 1), ("cupsBitsPerPixel", 1), ("cupsBytesPerLine", 1),
    ("cupsColorOrder", 1), ("cupsColorSpace", 1), ("cupsCompression", 1), ("cupsRowCount", 1),
    ("cupsRowFeed", 1), ("cupsRowStep", 1), ("cupsNumColors", 1),
]


@dataclass
class Page:
    """One raster page: its header fields by their own names, and its lines from the top.

    Fewer lines than cupsHeight make a page cut short.
    """

    fields: dict = field(default_factory=dict)
    lines: list = field(default_factory=list)

    def __getitem__(self, name):
        return self.fields[name]


def rgb_page(width, height, pixel, **fields):
    """A page of chunky 8-bit RGB at 600 dpi; pixel(x, y) gives the three bytes of a dot."""
    lines = [b"".join(bytes(pixel(x, y)) for x in range(width)) for y in range(height)]
    header = {
        "MediaClass": "class", "MediaColor": "color", "MediaType": "type", "OutputType": "output",
        "HWResolution": (600, 600), "NumCopies": 1, "PageSize": (340, 340),
        "cupsWidth": width, "cupsHeight": height, "cupsBitsPerColor": 8, "cupsBitsPerPixel": 24,
        "cupsBytesPerLine": 3 * width, "cupsColorOrder": 0, "cupsColorSpace": 1,
        "cupsNumColors": 3, "cupsPageSize": (340.157, 340.157), "cupsPageSizeName": "Disc120mm",
    }
    header.update(fields)
    return Page(header, lines)


def _text(value, size=64):
    raw = value if isinstance(value, bytes) else value.encode()
    return raw[:size].ljust(size, b"\0")


def header_bytes(fields, order="<"):
    """The 1796-byte header; order is "<" for little-endian words, ">" for big-endian ones."""
    out = b"".join(_text(fields.get(name, ""))
                   for name in ("MediaClass", "MediaColor", "MediaType", "OutputType"))
    for name, count in _WORDS_1:
        value = fields.get(name, 0 if count == 1 else (0,) * count)
        out += struct.pack(f"{order}{count}I", *((value,) if count == 1 else value))
    out += struct.pack(order + "f", 1.0)
    out += struct.pack(order + "2f", *fields.get("cupsPageSize", (0, 0)))
    out += bytes(4 * 4 + 16 * 4 + 16 * 4 + 16 * 64 + 64 + 64)
    out += _text(fields.get("cupsPageSizeName", ""))
    assert len(out) == HEADER_BYTES
    return out


def _pack_runs(line, unit):
    """One line in the run-length form of version 2: pixel runs and literal stretches."""
    pixels = [line[i:i + unit] for i in range(0, len(line), unit)]
    out, at = b"", 0
    while at < len(pixels):
        run = 1
        while run < 128 and at + run < len(pixels) and pixels[at + run] == pixels[at]:
            run += 1
        if run > 1:
            out += bytes([run - 1]) + pixels[at]
            at += run
            continue
        end = at + 1
        while (end < len(pixels) and end - at < 128
               and (end + 1 >= len(pixels) or pixels[end] != pixels[end + 1])):
            end += 1
        stretch = pixels[at:end]
        out += (bytes([0]) if len(stretch) == 1 else bytes([257 - len(stretch)]))
        out += b"".join(stretch)
        at = end
    return out


def _compress(lines, unit):
    out, at = b"", 0
    while at < len(lines):
        same = 1
        while same < 256 and at + same < len(lines) and lines[at + same] == lines[at]:
            same += 1
        out += bytes([same - 1]) + _pack_runs(lines[at], unit)
        at += same
    return out


def stream(pages, version=3, order="<"):
    """A whole raster stream as bytes."""
    sync = b"RaSt" if version == 1 else f"RaS{version}".encode()
    out = [sync if order == ">" else sync[::-1]]
    for page in pages:
        out.append(header_bytes(page.fields, order)[:420 if version == 1 else HEADER_BYTES])
        if version == 2:
            out.append(_compress(page.lines, (page["cupsBitsPerPixel"] + 7) // 8))
        else:
            out.extend(page.lines)
    return b"".join(out)
