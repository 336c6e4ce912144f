"""The raster writer, read back by the system's own raster reader."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import pages
import raster
import raster_reader


@pytest.mark.parametrize("version", [2, 3])
@pytest.mark.parametrize("order", ["<", ">"])
def test_the_system_reads_what_the_writer_writes(version, order):
    written = [pages.small(33, 40), pages.flat(300, 300, (1, 2, 3)), pages.small(1, 1)]
    written[1].lines[17] = bytes(range(250)) * 3 + bytes(150)
    read = raster_reader.raw_pages(raster.stream(written, version, order))
    assert len(read) == len(written)
    for page, (header, pixels) in zip(written, read):
        assert pixels == b"".join(page.lines)
        assert header[:420] == raster.header_bytes(page.fields)[:420]
        assert header[-64:].rstrip(b"\0") == b"Disc120mm"
