"""CUPS raster streams as libcups reads them."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import ctypes
import ctypes.util
import pathlib
import tempfile

_raster = ctypes.CDLL(ctypes.util.find_library("cupsimage"))
_HEADER_BYTES = 1796
# Offsets of 32-bit numbers in a page header, version 2.
_FIELDS = {"x_dpi": 276, "y_dpi": 280, "copies": 340, "width_dots": 372, "height_dots": 376,
           "bits_per_color": 384, "bits_per_pixel": 388, "bytes_per_line": 392,
           "color_order": 396, "color_space": 400}

for _name, _result, _arguments in (
        ("cupsRasterOpen", ctypes.c_void_p, [ctypes.c_int, ctypes.c_int]),
        ("cupsRasterReadHeader2", ctypes.c_uint, [ctypes.c_void_p, ctypes.c_char_p]),
        ("cupsRasterReadPixels", ctypes.c_uint,
         [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_uint]),
        ("cupsRasterClose", None, [ctypes.c_void_p])):
    _function = getattr(_raster, _name)
    _function.restype, _function.argtypes = _result, _arguments


def raw_pages(data):
    """[(header as it lies in memory, bytes of all lines)] of a raster stream."""
    pages = []
    with tempfile.TemporaryFile() as file:
        file.write(data)
        file.seek(0)
        stream = _raster.cupsRasterOpen(file.fileno(), 0)
        header = ctypes.create_string_buffer(_HEADER_BYTES)
        while _raster.cupsRasterReadHeader2(stream, header):
            fields = fields_of(header.raw)
            size = fields["bytes_per_line"] * fields["height_dots"]
            pixels = ctypes.create_string_buffer(size)
            assert _raster.cupsRasterReadPixels(stream, pixels, size) == size
            pages.append((header.raw, pixels.raw))
        _raster.cupsRasterClose(stream)
    return pages


def fields_of(header):
    """The numbers of a header that tests ask for, by name."""
    return {name: int.from_bytes(header[at:at + 4], "little") for name, at in _FIELDS.items()}


def pages_of(data):
    """[(header fields, bytes of all lines)] of a raster stream."""
    return [(fields_of(header), pixels) for header, pixels in raw_pages(data)]


def read_pages(path):
    """The pages of a raster file."""
    return pages_of(pathlib.Path(path).read_bytes())
