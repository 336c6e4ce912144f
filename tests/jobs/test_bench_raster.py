"""The raster writer, read back by the system's own raster reader."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import ctypes
import ctypes.util
import os

import pytest

import pages
import raster


def _library():
    lib = ctypes.CDLL(ctypes.util.find_library("cups"))
    lib.cupsRasterOpen.restype = ctypes.c_void_p
    lib.cupsRasterOpen.argtypes = [ctypes.c_int, ctypes.c_int]
    lib.cupsRasterReadHeader2.argtypes = [ctypes.c_void_p, ctypes.c_char_p]
    lib.cupsRasterReadPixels.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_uint]
    lib.cupsRasterClose.argtypes = [ctypes.c_void_p]
    return lib


def read_back(path, heights):
    """(header bytes, lines) of each page."""
    lib = _library()
    fd = os.open(path, os.O_RDONLY)
    stream = lib.cupsRasterOpen(fd, 0)
    out = []
    for height, width_bytes in heights:
        header = ctypes.create_string_buffer(raster.HEADER_BYTES)
        assert lib.cupsRasterReadHeader2(stream, header) == 1
        line = ctypes.create_string_buffer(width_bytes)
        lines = []
        for _ in range(height):
            assert lib.cupsRasterReadPixels(stream, line, width_bytes) == width_bytes
            lines.append(line.raw)
        out.append((header.raw, lines))
    header = ctypes.create_string_buffer(raster.HEADER_BYTES)
    assert lib.cupsRasterReadHeader2(stream, header) == 0
    lib.cupsRasterClose(stream)
    os.close(fd)
    return out


@pytest.mark.parametrize("version", [2, 3])
@pytest.mark.parametrize("order", ["<", ">"])
def test_the_system_reads_what_the_writer_writes(tmp_path, version, order):
    written = [pages.small(33, 40), pages.flat(300, 300, (1, 2, 3)), pages.small(1, 1)]
    written[1].lines[17] = bytes(range(250)) * 3 + bytes(150)
    path = tmp_path / "raster"
    path.write_bytes(raster.stream(written, version, order))
    sizes = [(page["cupsHeight"], page["cupsBytesPerLine"]) for page in written]
    for page, (header, lines) in zip(written, read_back(path, sizes)):
        assert lines == page.lines
        assert header[:420] == raster.header_bytes(page.fields)[:420]
        assert header[-64:].rstrip(b"\0") == b"Disc120mm"
