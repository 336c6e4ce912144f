"""Documents as people send them, each with four coloured quarters that tell which way is up:
red and green above, blue and black below."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import struct
import subprocess

from PIL import Image, ImageDraw

from raster_pages import pdf_file

QUARTERS = {"red": (220, 20, 20), "green": (20, 160, 20), "blue": (20, 20, 220),
            "black": (10, 10, 10)}
FILTERS = "/usr/lib/cups/filter/"
_EXIF_ORIENTATION = 0x0112


def quarters(width, height):
    """A picture: the upper left quarter red, the upper right green, below them blue and black."""
    picture = Image.new("RGB", (width, height))
    draw = ImageDraw.Draw(picture)
    for name, x, y in (("red", 0, 0), ("green", 1, 0), ("blue", 0, 1), ("black", 1, 1)):
        draw.rectangle((x * width // 2, y * height // 2, (x + 1) * width // 2 - 1,
                        (y + 1) * height // 2 - 1), fill=QUARTERS[name])
    return picture


def picture(path, size, dpi=300, **save):
    quarters(*size).save(path, dpi=(dpi, dpi), **save)


# What has to be done with the upright picture to get the one in the file.
_TURNED = {2: [Image.FLIP_LEFT_RIGHT], 3: [Image.ROTATE_180], 4: [Image.FLIP_TOP_BOTTOM],
           5: [Image.TRANSPOSE], 6: [Image.ROTATE_90], 7: [Image.TRANSVERSE],
           8: [Image.ROTATE_270]}


def turned_photo(path, size, orientation):
    """A JPEG whose dots lie turned and whose Exif data say so; upright it is of `size`."""
    photo = quarters(*size)
    for step in _TURNED[orientation]:
        photo = photo.transpose(step)
    exif = Image.Exif()
    exif[_EXIF_ORIENTATION] = orientation
    photo.save(path, quality=92, dpi=(300, 300), exif=exif.tobytes())


def pdf(path, pages):
    """A PDF; `pages` are sizes in points."""
    objects, kids = [], []
    for width, height in pages:
        number = 3 + 2 * len(kids)
        kids.append(f"{number} 0 R")
        colors = [f"{r / 255:.3f} {g / 255:.3f} {b / 255:.3f} rg" for r, g, b in QUARTERS.values()]
        places = [(0, height / 2), (width / 2, height / 2), (0, 0), (width / 2, 0)]
        content = "".join(f"{color} {x} {y} {width / 2} {height / 2} re f\n"
                          for color, (x, y) in zip(colors, places))
        objects.append(f"<</Type/Page/Parent 2 0 R/MediaBox[0 0 {width} {height}]/Resources<<>>"
                       f"/Contents {number + 1} 0 R>>")
        objects.append(f"<</Length {len(content)}>>stream\n{content}\nendstream")
    head = ["<</Type/Catalog/Pages 2 0 R>>",
            f"<</Type/Pages/Kids[{' '.join(kids)}]/Count {len(kids)}>>"]
    path.write_bytes(pdf_file(head + objects))


def _packed(line, dot_bytes):
    """A line of an Apple or PWG raster: runs of equal dots, up to 128 in one."""
    dots = [line[i:i + dot_bytes] for i in range(0, len(line), dot_bytes)]
    out, at = bytearray(), 0
    while at < len(dots):
        run = 1
        while run < 128 and at + run < len(dots) and dots[at + run] == dots[at]:
            run += 1
        out += bytes([run - 1]) + dots[at]
        at += run
    return bytes(out)


def _packed_page(image):
    dot_bytes = len(image.getbands())
    data, line_bytes = image.tobytes(), image.width * dot_bytes
    lines = [data[y * line_bytes:(y + 1) * line_bytes] for y in range(image.height)]
    out, at = bytearray(), 0
    while at < len(lines):
        repeat = 1
        while repeat < 256 and at + repeat < len(lines) and lines[at + repeat] == lines[at]:
            repeat += 1
        out += bytes([repeat - 1]) + _packed(lines[at], dot_bytes)
        at += repeat
    return bytes(out)


def urf(path, size, dpi, mode="RGB"):
    """Apple raster, as telephones send it: one page, sRGB of 24 bits or ("L") grey of 8."""
    bits, colors = {"RGB": (24, 1), "L": (8, 0)}[mode]
    header = struct.pack(">BBBBIIIIIII", bits, colors, 1, 4, 0, 0, *size, dpi, 0, 0)
    path.write_bytes(b"UNIRAST\0" + struct.pack(">I", 1) + header
                     + _packed_page(quarters(*size).convert(mode)))


def pwg(path, size, dpi, mode="RGB"):
    """PWG raster: one page, sRGB of 24 bits or ("L") grey of 8."""
    samples, colors = {"RGB": (3, 19), "L": (1, 18)}[mode]
    words = [0] * ((1796 - 256) // 4)

    def put(offset, *values):
        words[(offset - 256) // 4:(offset - 256) // 4 + len(values)] = values
    put(276, dpi, dpi)
    put(340, 1)
    put(352, *(round(side * 72 / dpi) for side in size))
    put(372, *size)
    put(384, 8, 8 * samples, size[0] * samples, 0, colors)
    put(420, samples)
    texts = b"PwgRaster".ljust(64, b"\0") + bytes(192)
    path.write_bytes(b"RaS2" + texts + struct.pack(f">{len(words)}I", *words)
                     + _packed_page(quarters(*size).convert(mode)))


def postscript(path, size):
    width, height = (side / 2 for side in size)
    body = "".join(f"{r / 255:.3f} {g / 255:.3f} {b / 255:.3f} setrgbcolor {x} {y} {width} {height} "
                   "rectfill\n" for (r, g, b), (x, y) in
                   zip(QUARTERS.values(), [(0, height), (width, height), (0, 0), (width, 0)]))
    path.write_text(f"%!PS-Adobe-3.0\n%%BoundingBox: 0 0 {int(size[0])} {int(size[1])}\n"
                    f"<</PageSize[{size[0]} {size[1]}]>>setpagedevice\n{body}showpage\n%%EOF\n")


def cups_raster(path, picture_path, ppd):
    """What imagetoraster makes of a picture: sent as it is by programs that make raster."""
    with open(path, "wb") as out:
        subprocess.run([FILTERS + "imagetoraster", "1", "user", "title", "1", "", picture_path],
                       stdout=out, stderr=subprocess.DEVNULL, env={"PPD": ppd}, check=True)
