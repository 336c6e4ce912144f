"""What the header of a picture tells: its size, and whether all of the file is there."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import struct

from demo_label import Refused

MOST_MEGAPIXELS = 100  # the filters before ours unpack a picture whole, on the disk

_CMYK = 5  # of the TIFF tag PhotometricInterpretation
_TIFF_SIZES = {3: "H", 4: "I"}  # the types short and long


def check(path, label_type):
    """Refused when the picture is cut short, too large, or of a kind that comes out wrong."""
    read = {"image/png": _png, "image/jpeg": _jpeg, "image/gif": _gif, "image/tiff": _tiff}
    try:
        with open(path, "rb") as file:
            width, height = read[label_type](path, file)
    except (struct.error, LookupError, ValueError):
        raise Refused(f"The label {path} is damaged; save it again.") from None
    if width * height > MOST_MEGAPIXELS * 1_000_000:
        raise Refused(f"The label {path} has {width} x {height} dots; 3000 x 3000 fill a disc, and "
                      f"more than {MOST_MEGAPIXELS} million are too many: save it smaller.")


def _png(_, file):
    return struct.unpack(">16xII", file.read(24))


def _gif(path, file):
    width, height = struct.unpack("<6xHH", file.read(10))
    file.seek(0, 2)
    file.seek(max(0, file.tell() - 1024))
    # The trailer, before what some programs pad files with.
    if not file.read().rstrip(b"\0").endswith(b";"):
        raise Refused(f"The label {path} is cut short; save or copy it again.")
    return width, height


def _jpeg(_, file):
    """The size stands in the first start-of-frame segment."""
    file.seek(2)
    while True:
        marker = struct.unpack(">H", file.read(2))[0]
        while marker == 0xFFFF:  # bytes that fill
            marker = 0xFF00 | file.read(1)[0]
        length = struct.unpack(">H", file.read(2))[0]
        if 0xFFC0 <= marker <= 0xFFCF and marker not in (0xFFC4, 0xFFC8, 0xFFCC):
            height, width = struct.unpack(">xHH", file.read(5))
            return width, height
        if marker < 0xFF01 or length < 2:
            raise ValueError
        file.seek(length - 2, 1)


def _tiff(path, file):
    tags = _tiff_tags(file)
    if tags.get(262, [0])[0] == _CMYK:
        raise Refused(f"The label {path} is a TIFF in CMYK, whose colours would come out wrong; "
                      "save it in RGB.")
    # Strips, or tiles: where each lies and how long it is.
    places = tags.get(273) or tags[324]
    lengths = tags.get(279) or tags[325]
    if max(at + length for at, length in zip(places, lengths)) > file.seek(0, 2):
        raise Refused(f"The label {path} is cut short; save or copy it again.")
    return tags[256][0], tags[257][0]


def _tiff_tags(file):
    """The whole-number values of the file's first directory, by tag."""
    order = {b"II": "<", b"MM": ">"}[file.read(2)]
    file.seek(struct.unpack(order + "2xI", file.read(6))[0])
    rows = file.read(12 * struct.unpack(order + "H", file.read(2))[0])
    tags = {}
    for tag, kind, count, value in struct.iter_unpack(order + "HHI4s", rows):
        if kind in _TIFF_SIZES and 0 < count <= 1_000_000:
            layout = f"{order}{count}{_TIFF_SIZES[kind]}"
            tags[tag] = _tiff_values(file, order, layout, value)
    return tags


def _tiff_values(file, order, layout, value):
    """Values of up to four bytes stand in the directory itself, others where it says."""
    size = struct.calcsize(layout)
    if size > len(value):
        file.seek(struct.unpack(order + "I", value)[0])
        value = file.read(size)
    return struct.unpack(layout, value[:size])
