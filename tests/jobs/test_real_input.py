"""A label as a person would send it, through the system's own filters and then through ours.

The raster that the filter gets is read here once more by the system's reader, and lines all over the
page are followed to the engine byte by byte.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
import subprocess
import zlib

import pytest

import expected_page as page_model
import ppd
import raster_reader
import record
from job import CHOICES, Job

FILTERS = "/usr/lib/cups/filter/"
DISC = dict(CHOICES, InnerDiameter="220", OuterMargin="10", MediaType="WhiteMatteBOPP")
FEED = bytes.fromhex("1b2a076600002710")


def label_pdf():
    """A disc label of bands of colour and a text, 340.157 points square."""
    marks = ["0.2 0.4 0.9 rg 0 0 340.157 340.157 re f"]
    for i in range(20):
        marks.append(f"{i / 20:.2f} {1 - i / 20:.2f} {i % 3 / 3:.2f} rg "
                     f"{i * 17} {i * 8} 90 60 re f")
    marks.append("0 0 0 rg BT /F 40 Tf 60 250 Td (Disc label) Tj ET")
    content = "\n".join(marks).encode()
    objects = [b"<</Type/Catalog/Pages 2 0 R>>", b"<</Type/Pages/Kids[3 0 R]/Count 1>>",
               b"<</Type/Page/Parent 2 0 R/MediaBox[0 0 340.157 340.157]/Contents 4 0 R"
               b"/Resources<</Font<</F 5 0 R>>>>>>",
               b"<</Length %d>>stream\n%s\nendstream" % (len(content), content),
               b"<</Type/Font/Subtype/Type1/BaseFont/Helvetica-Bold>>"]
    out, at = b"%PDF-1.4\n", []
    for number, body in enumerate(objects, 1):
        at.append(len(out))
        out += b"%d 0 obj%s endobj\n" % (number, body)
    table = b"".join(b"%010d 00000 n \n" % offset for offset in at)
    return out + (b"xref\n0 6\n0000000000 65535 f \n%strailer<</Size 6/Root 1 0 R>>\nstartxref\n"
                  b"%d\n%%%%EOF\n" % (table, len(out)))


def label_png():
    """600 dots square, 8-bit RGB."""
    side = 600
    rows = b"".join(b"\0" + b"".join(bytes((x * 255 // side, y * 255 // side, (x ^ y) & 255))
                                     for x in range(side)) for y in range(side))

    def chunk(kind, body):
        return (len(body).to_bytes(4, "big") + kind + body
                + zlib.crc32(kind + body).to_bytes(4, "big"))

    head = side.to_bytes(4, "big") * 2 + b"\x08\x02\0\0\0"
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(rows))
            + chunk(b"IEND", b""))


def through(filter_name, folder, source, mime, raw_ppd):
    """A file through one of the system's filters; its standard output."""
    if not os.access(FILTERS + filter_name, os.X_OK):
        raise RuntimeError(f"The real-input tests need {FILTERS}{filter_name} (package "
                           "cups-filters).")
    (folder / "queue.ppd").write_text(raw_ppd)
    environment = {"PATH": "/usr/bin:/bin", "PPD": str(folder / "queue.ppd"), "CONTENT_TYPE": mime,
                   "FINAL_CONTENT_TYPE": "application/vnd.cups-raster", "TMPDIR": str(folder),
                   "CUPS_SERVERROOT": "/etc/cups", "CUPS_DATADIR": "/usr/share/cups"}
    done = subprocess.run(
        [FILTERS + filter_name, "1", "user", "label", "1", "ppi=127 fit-to-page", str(source)],
        capture_output=True, env=environment, check=False, timeout=120)
    assert done.returncode == 0, done.stderr.decode()[-2000:]
    return done.stdout


def rastered(kind, folder):
    raw_ppd = ppd.text(DISC)
    if kind == "pdf":
        (folder / "label.pdf").write_bytes(label_pdf())
        return through("gstoraster", folder, folder / "label.pdf", "application/pdf", raw_ppd)
    (folder / "label.png").write_bytes(label_png())
    pdf = folder / "picture.pdf"
    pdf.write_bytes(through("imagetopdf", folder, folder / "label.png", "image/png", raw_ppd))
    return through("gstoraster", folder, pdf, "application/pdf", raw_ppd)


def lines_of(stream):
    """The only page's lines, by the system's reader. 120 mm are 2834.6 dots: either way of rounding
    serves."""
    [(fields, pixels)] = raster_reader.pages_of(stream)
    side = fields["width_dots"]
    assert fields["height_dots"] == side and side in (2834, 2835)
    assert fields["bytes_per_line"] == 3 * side
    return [pixels[at:at + 3 * side] for at in range(0, len(pixels), 3 * side)]


@pytest.mark.parametrize("kind", ["pdf", "png"])
def test_a_label_prints(kind, tmp_path):
    source = rastered(kind, tmp_path)
    lines = lines_of(source)
    side = len(lines)
    assert len(set(lines)) > 20, "the label's picture is not in the raster"
    script = {("HPEStartPage", 1): [("emit", "00112233" + FEED.hex())],
              ("HPESendBand", 700): [("emit", (b"rows" * 200 + FEED).hex())]}
    result = Job(pages=source, choices=DISC, script=script, limit=120,
                 record=record.record(cartridge="V")).run()
    shutil.rmtree(tmp_path, ignore_errors=True)
    assert result.status == 0 and result.log[-1] == "     Ready to print."
    # 10 tenths of a millimetre are 23 dots; the lines strictly between the margins are sent.
    sent = [call for call in result.calls if call.startswith("HPESendBand")]
    assert [int(call.split()[3]) for call in sent] == list(range(24, side - 23))
    assert sent and all(call.endswith(f" 1 {side} {4 * side}") for call in sent)
    expect_lines(result.pixels, lines, side)
    expect_bytes(result.stdout)
    assert result.log.count("**Set FEED: 8100, {0x00, 0x00, 0x1f, 0xa4}\n") == 2


def expect_lines(pixels, lines, side):
    geometry = page_model.Geometry(side, side, 23, 220)
    inks = page_model.Inks(100, 1, 5)
    for y in [24, 25, 1416, 1417, side - 24] + list(range(30, side - 30, 97)):
        at = (y - 24) * 4 * side
        wanted = page_model.band(geometry, inks, lines[y], y, 3 * side, 24)
        assert pixels[at:at + 4 * side] == wanted, f"line {y}"


def expect_bytes(out):
    """The header of the largest cartridge: 2455000000 less its eighth."""
    head = bytes.fromhex("1b0b0e010101") + (2455000000 - 306875000).to_bytes(4, "big") + bytes(5)
    moved = FEED[:4] + (8100).to_bytes(4, "big")
    assert out == (head + bytes([sum(head) % 256]) + bytes.fromhex("00112233") + moved
                   + b"rows" * 200 + moved)
