"""picturetodisc itself, on pictures as Pillow writes them, its pages read back by libcups.

The page is that of a disc of 120 mm at 600 dpi: 2834 x 2834 dots."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import io
import os
import resource
import signal
import struct
import subprocess
import sys
import zlib

import numpy
import pytest
from PIL import Image, ImageCms, ImageFile

for folder in ("../disc", "../ppd"):
    sys.path.insert(0, os.path.join(os.path.dirname(__file__), folder))
from farewell import expect_farewell  # pylint: disable=wrong-import-position
from raster_reader import read_pages  # pylint: disable=wrong-import-position

# Pillow gives up on a picture that does not become smaller than its usual block.
ImageFile.MAXBLOCK = 1 << 22

FILTER = os.environ["ZR7700_PICTURETODISC"]
SIDE = 2834
WHITE, BLACK = (255, 255, 255), (0, 0, 0)
RED, GREEN, BLUE = (255, 0, 0), (0, 255, 0), (0, 0, 255)
# The quarters of the test picture, line by line.
QUARTERS = [RED, GREEN, BLUE, BLACK]
FORMATS = ["PNG", "JPEG", "TIFF"]


class Printed:
    """What the filter made of a document."""

    def __init__(self, folder, document, options="", copies=1, by_file=True, **more):
        source, result = folder / "document", folder / "pages.raster"
        source.write_bytes(document)
        command = [FILTER, "1", "user", "title", str(copies), options]
        with open(source, "rb") as stdin, open(result, "wb") as stdout:
            environment = {**os.environ, "PPD": os.environ["ZR7700_PPD"], "TMPDIR": str(folder)}
            environment.update(more.pop("environment", {}))
            done = subprocess.run(command + [str(source)] * by_file, stdin=stdin, stdout=stdout,
                                  stderr=subprocess.PIPE, env=environment, timeout=120, check=False,
                                  **more)
        self.status = done.returncode
        lines = done.stderr.decode().splitlines()
        self.errors = [line for line in lines if line.startswith("ERROR: ")]
        self.warnings = [line for line in lines if line.startswith("WARNING: ")]
        self.others = [line for line in lines
                       if line and line not in self.errors and line not in self.warnings]
        self.headers, self.pages = [], []
        for fields, raw in read_pages(result):
            self.headers.append(fields)
            self.pages.append(numpy.frombuffer(raw, numpy.uint8).reshape(
                fields["height_dots"], fields["width_dots"], 3))

    @property
    def page(self):
        assert (self.status, self.errors, self.others, len(self.pages)) == (0, [], [], 1)
        return self.pages[0]


def quarters(width, height):
    dots = numpy.zeros((height, width, 3), numpy.uint8)
    for i, colour in enumerate(QUARTERS):
        top, left = i // 2 * height // 2, i % 2 * width // 2
        dots[top:top + height // 2, left:left + width // 2] = colour
    return Image.fromarray(dots)


def saved(image, kind, **settings):
    if kind == "JPEG":
        settings = {"quality": 100, "subsampling": 0, **settings}
    file = io.BytesIO()
    image.save(file, kind, **settings)
    return file.getvalue()


def box(page):
    """(left, top, width, height) of what is not white."""
    inked = page.min(axis=2) < 250
    rows, columns = numpy.flatnonzero(inked.any(axis=1)), numpy.flatnonzero(inked.any(axis=0))
    return (int(columns[0]), int(rows[0]),
            int(columns[-1] - columns[0]) + 1, int(rows[-1] - rows[0]) + 1)


def corners(page):
    """The colours near the four corners of what is not white, line by line."""
    left, top, width, height = box(page)
    return [tuple(int(v) for v in page[top + height * y // 10, left + width * x // 10])
            for y in (1, 9) for x in (1, 9)]


def near(colours, expected, error=3):
    return numpy.abs(numpy.array(colours, int) - numpy.array(expected, int)).max() <= error


def test_header_is_the_discs(tmp_path):
    document = saved(quarters(300, 300), "PNG")
    header = {"x_dpi": 600, "y_dpi": 600, "copies": 1, "width_dots": 2834, "height_dots": 2834,
              "bits_per_color": 8, "bits_per_pixel": 24, "bytes_per_line": 3 * 2834,
              "color_order": 0, "color_space": 1}
    assert Printed(tmp_path, document).headers == [header]
    draft = Printed(tmp_path, document, "Resolution=300dpi InnerDiameter=110Draft").headers[0]
    assert (draft["x_dpi"], draft["width_dots"], draft["height_dots"]) == (300, 1417, 1417)


# A picture of 600 x 300 dots at 300 dpi is 1200 x 600 of the page's: (2834 - 1200) / 2 = 817 and
# (2834 - 600) / 2 = 1117 around it. As large as the page allows it is 2834 x 1417, from 708 down.
LAYOUTS = [
    ("", (0, 708, 2834, 1417)),
    ("print-scaling=fit", (0, 708, 2834, 1417)),
    ("print-scaling=auto", (817, 1117, 1200, 600)),
    ("print-scaling=auto-fit", (817, 1117, 1200, 600)),
    ("print-scaling=none", (817, 1117, 1200, 600)),
    ("print-scaling=fill", (0, 0, 2834, 2834)),
    ("scaling=50", (708, 1062, 1417, 709)),
    ("natural-scaling=50", (1117, 1267, 600, 300)),
    ("nofitplot", (817, 1117, 1200, 600)),
    ("fit-to-page", (0, 708, 2834, 1417)),
    ("ppi=600", (1117, 1267, 600, 300)),
    ("ppi=600x300", (1117, 1117, 600, 600)),
    ("number-up=4", (0, 708, 2834, 1417)),
    ("print-scaling=none position=top-left", (0, 0, 1200, 600)),
    ("print-scaling=none position=bottom-right", (1634, 2234, 1200, 600)),
    ("print-scaling=none position=left", (0, 1117, 1200, 600)),
    ("position=top", (0, 0, 2834, 1417)),
    ("print-scaling=none position=top-left orientation-requested=4", (0, 0, 600, 1200)),
]


@pytest.mark.parametrize("options,expected", LAYOUTS)
def test_layout(tmp_path, options, expected):
    page = Printed(tmp_path, saved(quarters(600, 300), "PNG", dpi=(300, 300)), options).page
    assert box(page) == expected


# Too large by far at its natural size: 10 x 5 inches.
@pytest.mark.parametrize("options,expected,colours", [
    ("print-scaling=auto", (0, 708, 2834, 1417), QUARTERS),
    ("print-scaling=none", (0, 0, 2834, 2834), QUARTERS),
    ("nofitplot", (0, 0, 2834, 2834), QUARTERS),
    ("print-scaling=none position=left", (0, 0, 2834, 2834), [RED, RED, BLUE, BLUE]),
    ("print-scaling=fill position=right", (0, 0, 2834, 2834), [GREEN, GREEN, BLACK, BLACK]),
])
def test_layout_of_a_large_picture(tmp_path, options, expected, colours):
    page = Printed(tmp_path, saved(quarters(1000, 500), "PNG", dpi=(100, 100)), options).page
    assert box(page) == expected
    assert corners(page) == colours


# 200 dots an inch are the usual ones: 600 dots are 1800 of the page's.
@pytest.mark.parametrize("kind", FORMATS)
@pytest.mark.parametrize("settings,expected", [
    ({}, (517, 967, 1800, 900)),
    ({"dpi": (150, 300)}, (217, 1117, 2400, 600)),
    ({"dpi": (300, 300)}, (817, 1117, 1200, 600)),
])
def test_natural_size(tmp_path, kind, settings, expected):
    document = saved(quarters(600, 300), kind, **settings)
    assert box(Printed(tmp_path, document, "print-scaling=auto").page) == expected


# The first is the picture's corner that comes out left above, and so on line by line.
TURNS = [("orientation-requested=3", [RED, GREEN, BLUE, BLACK]),
         ("orientation-requested=4", [GREEN, BLACK, RED, BLUE]),
         ("landscape", [GREEN, BLACK, RED, BLUE]),
         ("orientation-requested=5", [BLUE, RED, BLACK, GREEN]),
         ("orientation-requested=6", [BLACK, BLUE, GREEN, RED]),
         ("mirror", [GREEN, RED, BLACK, BLUE]),
         ("mirror orientation-requested=4", [BLACK, GREEN, BLUE, RED])]


@pytest.mark.parametrize("options,expected", TURNS)
def test_turns(tmp_path, options, expected):
    page = Printed(tmp_path, saved(quarters(600, 300), "PNG"), options).page
    on_its_side = any(word in options for word in ("requested=4", "requested=5", "landscape"))
    assert box(page) == ((708, 0, 1417, 2834) if on_its_side else (0, 708, 2834, 1417))
    assert corners(page) == expected


# What has been done to the upright picture before it was stored with the orientation.
STORED = {1: None, 2: Image.FLIP_LEFT_RIGHT, 3: Image.ROTATE_180, 4: Image.FLIP_TOP_BOTTOM,
          5: Image.TRANSPOSE, 6: Image.ROTATE_90, 7: Image.TRANSVERSE, 8: Image.ROTATE_270}


@pytest.mark.parametrize("kind", FORMATS)
@pytest.mark.parametrize("orientation", STORED)
def test_orientation_of_the_file(tmp_path, kind, orientation):
    image = quarters(600, 300)
    if STORED[orientation] is not None:
        image = image.transpose(STORED[orientation])
    if kind == "TIFF":
        document = saved(image, kind, tiffinfo={274: orientation})
    else:
        exif = Image.Exif()
        exif[274] = orientation
        document = saved(image, kind, exif=exif)
    page = Printed(tmp_path, document).page
    assert box(page) == (0, 708, 2834, 1417)
    assert near(corners(page), QUARTERS)


def one_colour(mode, colour):
    return Image.new(mode, (400, 400), colour)


# 255 - 255 x 128 / 255 = 127; cyan and half black: 255 x 127 / 255 = 127.
COLOURS = [
    ("PNG", "RGBA", (255, 0, 0, 128), (255, 127, 127)),
    ("PNG", "LA", (0, 128), (127, 127, 127)),
    ("PNG", "RGBA", (0, 0, 0, 0), WHITE),
    ("PNG", "L", 99, (99, 99, 99)),
    ("PNG", "1", 0, BLACK),
    ("PNG", "I;16", 0x8080, (128, 128, 128)),
    ("TIFF", "RGBA", (255, 0, 0, 128), (255, 127, 127)),
    ("TIFF", "LA", (0, 128), (127, 127, 127)),
    ("TIFF", "L", 99, (99, 99, 99)),
    ("TIFF", "1", 0, BLACK),
    ("TIFF", "I;16", 0x8080, (128, 128, 128)),
    ("TIFF", "CMYK", (255, 0, 0, 0), (0, 255, 255)),
    ("TIFF", "CMYK", (255, 0, 0, 128), (0, 127, 127)),
    ("TIFF", "LAB", (255, 128, 128), WHITE),
    ("JPEG", "L", 99, (99, 99, 99)),
    ("JPEG", "CMYK", (255, 0, 0, 128), (0, 127, 127)),
]


@pytest.mark.parametrize("kind,mode,colour,expected", COLOURS)
def test_colour(tmp_path, kind, mode, colour, expected):
    page = Printed(tmp_path, saved(one_colour(mode, colour), kind)).page
    error = 1 if kind == "JPEG" or mode == "LAB" else 0
    assert near(page.reshape(-1, 3), expected, error)


def test_transparent_palette(tmp_path):
    image = one_colour("P", 0)
    image.putpalette([255, 0, 0, 0, 0, 255])
    page = Printed(tmp_path, saved(image, "PNG", transparency=bytes([128, 255]))).page
    assert near(page.reshape(-1, 3), (255, 127, 127), 0)


def test_jpeg_within_tiff(tmp_path):
    document = saved(quarters(1000, 1000), "TIFF", compression="jpeg")
    assert near(corners(Printed(tmp_path, document).page), QUARTERS)


def swapped_profile():
    """sRGB, but the first number is green's and the second red's: two tags change names."""
    profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    table, rest = profile[:132 + 12 * 32], profile[132 + 12 * 32:]
    assert table.count(b"rXYZ") == table.count(b"gXYZ") == 1
    table = table.replace(b"rXYZ", b"tmp ").replace(b"gXYZ", b"rXYZ").replace(b"tmp ", b"gXYZ")
    return table + rest


@pytest.mark.parametrize("kind", FORMATS)
def test_profile_is_followed(tmp_path, kind):
    printed = Printed(tmp_path, saved(quarters(1000, 1000), kind, icc_profile=swapped_profile()))
    assert near(corners(printed.page), [GREEN, RED, BLUE, BLACK], 4)
    assert printed.warnings in ([], [line for line in printed.warnings if "dots an inch" in line])


@pytest.mark.parametrize("kind", FORMATS)
def test_profile_of_srgb_changes_nothing(tmp_path, kind):
    profile = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
    shades = Image.fromarray(numpy.repeat(numpy.arange(256, dtype=numpy.uint8), 3 * 256)
                             .reshape(256, 256, 3))
    plain = Printed(tmp_path, saved(shades, kind)).page
    assert near(Printed(tmp_path, saved(shades, kind, icc_profile=profile)).page, plain, 1)


@pytest.mark.parametrize("kind", ["JPEG", "TIFF"])
def test_damaged_profile_is_left_out_and_told(tmp_path, kind):
    printed = Printed(tmp_path, saved(quarters(1000, 1000), kind, icc_profile=b"no profile" * 20))
    assert near(corners(printed.page), QUARTERS)
    assert len(printed.warnings) == 1
    assert "colour profile" in printed.warnings[0]


def tiff_of(*images):
    return saved(images[0], "TIFF", save_all=True, append_images=images[1:],
                 compression="tiff_lzw")


def test_every_page_of_a_tiff_is_a_disc(tmp_path):
    document = tiff_of(*(one_colour("RGB", colour) for colour in (RED, GREEN, BLUE)))
    for by_file in (True, False):
        printed = Printed(tmp_path, document, by_file=by_file)
        assert printed.status == 0
        assert [tuple(page[1000, 300]) for page in printed.pages] == [RED, GREEN, BLUE]
        assert len(printed.warnings) == 1


def test_copies_are_collated_when_the_filter_is_the_first(tmp_path):
    document = tiff_of(one_colour("RGB", RED), one_colour("RGB", BLUE))
    printed = Printed(tmp_path, document, copies=3)
    assert [tuple(page[1000, 300]) for page in printed.pages] == [RED, BLUE] * 3
    assert len(Printed(tmp_path, document, copies=3, by_file=False).pages) == 2
    assert len(Printed(tmp_path, saved(one_colour("RGB", RED), "PNG"), copies=3).pages) == 3


def test_warning_says_how_many_dots_and_how_many_would_do(tmp_path):
    """400 dots on 2834 / 600 inches are 84.7; 300 an inch are 1417."""
    printed = Printed(tmp_path, saved(quarters(400, 400), "PNG"))
    assert len(printed.warnings) == 1
    assert "only 84 dots an inch" in printed.warnings[0]
    assert "1417 x 1417" in printed.warnings[0]
    # 708 x 600 / 2834 = 149.9 dots an inch; 709 are 150.1.
    assert len(Printed(tmp_path, saved(quarters(708, 708), "PNG")).warnings) == 1
    assert Printed(tmp_path, saved(quarters(709, 709), "PNG")).warnings == []
    assert Printed(tmp_path, saved(quarters(400, 400), "PNG"), "ppi=200").warnings == []


def png_with_header(width, height):
    header = b"IHDR" + struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n\0\0\0\r" + header + struct.pack(">I", zlib.crc32(header)) +
            b"\0\0\0\0IDAT" + struct.pack(">I", zlib.crc32(b"IDAT")))


def bad_documents():
    noise = Image.fromarray(numpy.random.default_rng(7).integers(0, 255, (200, 200, 3), "uint8"))
    for kind, settings in (("PNG", {}), ("JPEG", {}), ("JPEG", {"progressive": True}),
                           ("TIFF", {}), ("TIFF", {"compression": "tiff_lzw"}),
                           ("TIFF", {"compression": "jpeg"})):
        document = saved(noise, kind, **settings)
        yield f"{kind} {settings} cut", document[:len(document) * 2 // 3], "damaged"
    flipped = bytearray(saved(noise, "PNG"))
    flipped[len(flipped) // 2] ^= 1
    yield "PNG checksum", bytes(flipped), "damaged"
    yield "empty", b"", "empty file"
    yield "text", b"not a picture at all\n", "no PNG, JPEG or TIFF"
    yield "GIF", saved(noise.convert("P"), "GIF"), "no PNG, JPEG or TIFF"
    yield "huge", png_with_header(60000, 60000), "60000 x 60000"
    yield "no dots", png_with_header(0, 10), "damaged"


@pytest.mark.parametrize("by_file", [True, False])
@pytest.mark.parametrize("name,document,words", list(bad_documents()), ids=lambda v: str(v)[:40])
def test_bad_document_is_refused_in_one_sentence(tmp_path, name, document, words, by_file):
    printed = Printed(tmp_path, document, by_file=by_file)
    assert (printed.status, printed.pages, printed.others) == (1, [], [])
    assert len(printed.errors) == 1, name
    assert words in printed.errors[0]
    assert printed.errors[0].endswith(".")
    assert ";" in printed.errors[0] or "smaller" in printed.errors[0]


def test_pages_before_a_damaged_one_have_gone_on(tmp_path):
    document = saved(one_colour("RGB", RED), "TIFF", save_all=True,
                     append_images=[one_colour("RGB", BLUE)])
    printed = Printed(tmp_path, document[:-1000])
    assert printed.status == 1
    assert len(printed.errors) == 1
    assert len(printed.pages) <= 1


def test_standard_input_leaves_nothing_behind(tmp_path):
    store = tmp_path / "store"
    store.mkdir()
    Printed(tmp_path, saved(quarters(800, 800), "PNG"), by_file=False,
            environment={"TMPDIR": str(store)})
    assert list(store.iterdir()) == []


def no_room():
    """Files may have 1,000 bytes; the pages go through a pipe that is none."""
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))


def test_full_disk_is_told(tmp_path):
    printed = Printed(tmp_path, bytes(200000), by_file=False, preexec_fn=no_room)
    assert printed.status == 1
    assert len(printed.errors) == 1
    assert "make room" in printed.errors[0]
    missing = Printed(tmp_path, b"", by_file=False,
                      environment={"TMPDIR": str(tmp_path / "missing")})
    assert missing.status == 1
    assert len(missing.errors) == 1
    assert "TMPDIR" in missing.errors[0]


@pytest.mark.parametrize("kind,settings", [("JPEG", {}), ("TIFF", {"compression": "tiff_lzw"}),
                                           ("PNG", {"compress_level": 1})])
def test_large_pictures_need_little_memory(tmp_path, kind, settings):
    """36 megapixels are 108 million bytes; the page is 24 million."""
    with open(FILTER, "rb") as file:
        if b"__asan_init" in file.read():
            pytest.skip("the checker needs memory of its own")
    document = saved(quarters(6000, 6000), kind, **settings)
    page = Printed(tmp_path, document, preexec_fn=lambda: resource.setrlimit(
        resource.RLIMIT_DATA, (48_000_000, 48_000_000))).page
    assert near(corners(page), QUARTERS)


def test_next_filter_that_has_gone_is_told(tmp_path):
    document = tmp_path / "document"
    document.write_bytes(saved(quarters(800, 800), "PNG"))
    reading, writing = os.pipe()
    os.close(reading)
    done = subprocess.run([FILTER, "1", "user", "title", "1", "", str(document)], stdout=writing,
                          stderr=subprocess.PIPE, text=True, check=False,
                          env={**os.environ, "PPD": os.environ["ZR7700_PPD"]})
    os.close(writing)
    assert done.returncode == 1
    assert done.stderr.count("ERROR: ") == 1
    assert "has stopped taking the page" in done.stderr


def test_help_and_version():
    for flag, words in (("--help", "Usage: picturetodisc job user"), ("--version", "picturetodisc ")):
        done = subprocess.run([FILTER, flag], capture_output=True, text=True, check=True)
        assert done.stdout.startswith(words)


def test_a_cancel_leaves_the_next_filter_time_to_hear_of_it():
    expect_farewell(FILTER, os.environ["ZR7700_PPD"], saved(quarters(99, 99), "PNG")[:100])
