"""rastertodisc as CUPS starts it: raster in, exactly the disc's page out, with the real PPD."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import random
import resource
import subprocess
import sys

import numpy as np
import pytest

HERE = os.path.dirname(__file__)
for folder in ("../disc", "../ppd", "../tests/jobs"):
    sys.path.insert(0, os.path.join(HERE, folder))
from farewell import expect_farewell  # pylint: disable=wrong-import-position
import raster  # pylint: disable=wrong-import-position
from raster_reader import pages_of  # pylint: disable=wrong-import-position

PROGRAM = os.environ["ZR7700_RASTERTODISC"]
PPD = os.environ["ZR7700_PPD"]
DISC = 2834
INK = (10, 20, 30)


def run(data, options="", copies="1", file=None, ppd=PPD):
    words = [PROGRAM, "1", "user", "title", copies, options] + ([str(file)] if file else [])
    environment = {name: value for name, value in os.environ.items() if name != "PPD"}
    if ppd:
        environment["PPD"] = str(ppd)
    return subprocess.run(words, input=data, capture_output=True, env=environment, check=False,
                          timeout=120)


def said(done):
    return [line for line in done.stderr.decode().split("\n") if line]


def pictures_of(done):
    return [(fields, np.frombuffer(pixels, np.uint8).reshape(fields["height_dots"], -1, 3))
            for fields, pixels in pages_of(done.stdout)]


def even_page(width, height, color=INK, **fields):
    """A page of one colour, quickly made."""
    page = raster.rgb_page(1, 1, lambda x, y: (0, 0, 0))
    page.fields.update({"cupsWidth": width, "cupsHeight": height, "cupsBytesPerLine": 3 * width,
                        **fields})
    page.lines = [bytes(color) * width] * height
    return page


def stream(*pages, version=2):
    return raster.stream(list(pages), version=version)


def box(picture):
    rows, columns = np.nonzero((picture != 255).any(axis=2))
    return columns.min(), columns.max(), rows.min(), rows.max()


def only_page(done):
    assert done.returncode == 0, done.stderr
    (fields, picture), = pictures_of(done)
    assert (fields["width_dots"], fields["height_dots"]) == picture.shape[1::-1]
    assert (fields["color_space"], fields["bits_per_pixel"]) == (1, 24)
    return picture


def test_a_page_that_fits_passes_unchanged_inside_the_ring():
    noise = random.Random(7)
    page = even_page(DISC, DISC)
    page.lines = [noise.randbytes(3 * DISC) for _ in range(DISC)]
    picture = only_page(run(stream(page, version=3)))
    sent = np.frombuffer(b"".join(page.lines), np.uint8).reshape(DISC, DISC, 3)
    axis = np.arange(DISC) - (DISC - 1) / 2
    distance = np.hypot(axis[None, :], axis[:, None])
    # 1 mm are 23 dots, 22 mm have a radius of 259; the ring is 2.4 dots narrower than tall.
    inside = (distance < 1417 - 23 - 4) & (distance > 259 + 2)
    outside = (distance > 1417 - 23 + 2) | (distance < 259 - 3)
    assert (picture[inside] == sent[inside]).all()
    assert (picture[outside] == 255).all()


def test_its_header_passes_too(tmp_path):
    page = even_page(DISC, DISC, MediaType="Mine", cupsPageSizeName="Own", PageSize=(340, 340))
    path = tmp_path / "out"
    path.write_bytes(run(stream(page)).stdout)
    header = path.read_bytes()[4:]
    assert header[128:132] == b"Mine" and header[1732:1735] == b"Own"


# Width, height, box, then first and last column and row of the ink. The middle of 2834 is 1417.
PLACES = [
    ("tall", 1417, 2834, (85, 0, 255, 340), (708, 2124, 24, 2810)),
    ("wide", 2834, 1417, (0, 85, 340, 255), (26, 2808, 708, 2124)),
    ("small", 602, 401, (133, 145, 206, 194), (1116, 1717, 1216, 1616)),
    ("without a box", 1000, 1000, (0, 0, 0, 0), (917, 1916, 917, 1916)),
]


@pytest.mark.parametrize("name,width,height,bounds,ink", PLACES, ids=[p[0] for p in PLACES])
def test_a_picture_goes_to_its_place(name, width, height, bounds, ink):
    page = even_page(width, height, ImagingBoundingBox=bounds, PageSize=(340, 340))
    picture = only_page(run(stream(page)))
    assert picture.shape == (DISC, DISC, 3)
    assert box(picture) == ink


@pytest.mark.parametrize("options,side", [
    ("", 2834), ("Resolution=300dpi", 1417), ("PageSize=80x80mm.Fullbleed", 1890),
    ("PageSize=80x80mm.Fullbleed Resolution=300dpi", 945), ("print-quality=3", 1417)])
def test_the_page_is_what_the_job_asks_for(options, side):
    picture = only_page(run(stream(even_page(500, 500)), options))
    assert picture.shape == (side, side, 3)


def test_the_middle_line_of_a_rough_disc_does_not_run_out():
    picture = only_page(run(stream(even_page(1417, 1417, HWResolution=(300, 300))),
                            "print-quality=3"))
    # 5 x 600 / 254 = 11 dots of margin.
    inked = np.nonzero((picture[708] != 255).any(axis=1))[0]
    assert inked.min() >= 11 and inked.max() <= 1417 - 11
    assert (picture[700] != 255).any(axis=1).sum() <= (picture[708] != 255).any(axis=1).sum() + 2


@pytest.mark.parametrize("space,bits,dot,color", [
    (1, 24, INK, INK), (19, 24, INK, INK), (0, 8, (77,), (77, 77, 77)),
    (18, 8, (77,), (77, 77, 77)), (3, 8, (200,), (55, 55, 55))])
def test_greys_and_colours_become_chunky_rgb(space, bits, dot, color):
    page = even_page(100, 300, dot, cupsColorSpace=space, cupsBitsPerPixel=bits,
                     cupsNumColors=bits // 8)
    page.fields["cupsBytesPerLine"] = 100 * bits // 8
    page.fields["ImagingBoundingBox"] = (160, 40, 180, 80)  # beside the hole
    picture = only_page(run(stream(page)))
    left, right, top, bottom = box(picture)
    assert (right - left + 1, bottom - top + 1) == (100, 300)
    assert (picture[top:bottom + 1, left:right + 1] == color).all()


@pytest.mark.parametrize("version", [1, 2, 3])
@pytest.mark.parametrize("order", ["<", ">"])
def test_every_kind_of_stream(version, order):
    done = run(raster.stream([even_page(1417, 2834)], version=version, order=order))
    assert box(only_page(done)) == (708, 2124, 24, 2810)


def test_every_page_is_counted_on_a_line_of_its_own():
    done = run(stream(even_page(900, 900), even_page(1000, 1000, NumCopies=2)))
    assert done.returncode == 0
    # Whatever stands before on standard error must not swallow the line.
    assert done.stderr == b"\nPAGE: 1 1\n\nPAGE: 2 2\n"
    # The printer knows no copies: they are pages.
    assert len(pictures_of(done)) == 3
    assert [fields["copies"] for fields, _ in pictures_of(done)] == [1, 1, 1]


def test_the_first_filter_makes_the_copies(tmp_path):
    file = tmp_path / "label.raster"
    file.write_bytes(stream(even_page(900, 900), even_page(1000, 1000)))
    done = run(b"", copies="2", file=file)
    assert [line.split()[1] for line in said(done)] == ["1", "2", "3", "4"]
    assert len(pictures_of(done)) == 4
    done = run(file.read_bytes(), copies="2")
    assert len(pictures_of(done)) == 2


def test_a_coarse_page_is_warned_of_once():
    coarse = even_page(140, 140, HWResolution=(100, 100), cupsPageSize=(101, 101))
    done = run(stream(coarse, coarse))
    assert done.returncode == 0
    warnings = [line for line in said(done) if line.startswith("WARNING: ")]
    assert len(warnings) == 1 and "100 dots an inch" in warnings[0]
    fine = even_page(140, 140, HWResolution=(150, 150), cupsPageSize=(67, 67))
    assert said(run(stream(fine))) == ["PAGE: 1 1"]


def test_greys_only_when_the_job_wants_no_colours():
    with open(PPD, encoding="utf-8") as file:
        if "*OpenUI *ColorModel" not in file.read():
            pytest.skip("this PPD has no greys")
    picture = only_page(run(stream(even_page(DISC, DISC, (100, 0, 0))), "ColorModel=Gray"))
    assert (picture[100, 1417] == 31).all()


def header_of(done):
    """Resolution, width and height as the stream's first header tells them."""
    fields = pages_of(done.stdout)[0][0]
    return fields["x_dpi"], fields["width_dots"], fields["height_dots"]


@pytest.mark.parametrize("dpi,points", [(300, 680), (72, 2834), (600, 340)])
def test_the_header_has_the_discs_resolution(dpi, points):
    page = even_page(DISC, DISC, HWResolution=(dpi, dpi), cupsPageSize=(points, points))
    assert header_of(run(stream(page), "print-scaling=none")) == (600, DISC, DISC)


def test_margins_tell_the_place_when_there_is_no_box():
    # 600 dots at 300 dpi are 144 points or 1200 dots of the disc: from the left edge, and 176 points
    # (1467 dots) above the lower one: 2834 - 1467 - 1200 = 167, of a page of 340 points, 2833 dots.
    page = even_page(600, 600, HWResolution=(300, 300), PageSize=(340, 340), cupsPageSize=(0, 0),
                     Margins=(98, 176))
    left, right, top, bottom = box(only_page(run(stream(page))))
    assert abs(top - 167) <= 1 and abs(bottom - 1366) <= 1
    assert abs((left + right) / 2 - 1416.5) <= 1


def test_a_page_that_misses_the_disc_is_warned_of():
    done = run(stream(even_page(100, 100)))
    assert done.returncode == 0
    assert any(line.startswith("WARNING: All of the page lies in the hole") for line in said(done))
    assert said(run(stream(even_page(100, 100, (255, 255, 255))))) == ["PAGE: 1 1"]


def test_a_draft_ring_at_full_resolution_is_as_wide_as_its_name():
    done = run(stream(even_page(DISC, DISC)), "print-quality=3 Resolution=600dpi")
    picture = only_page(done)
    assert any("meant for another resolution" in line for line in said(done))
    # 22 mm: 259 dots from the middle, and 1 mm of margin, 23 dots.
    assert (picture[1417, 1417 - 255:1417 + 255] == 255).all()
    assert (picture[23] == 255).all() and (picture[24] != 255).any()


def test_a_document_that_cannot_be_read_is_told(tmp_path):
    done = run(b"", file=tmp_path)
    told, = said(done)
    assert done.returncode == 1 and "Is a directory" in told


@pytest.mark.parametrize("closed", ["0<&-", "1>&-", "0<&- 1>&-"])
def test_closed_descriptors_are_no_files(tmp_path, closed):
    file = tmp_path / "page.raster"
    file.write_bytes(stream(even_page(999, 999)))
    source = "" if "0" in closed else str(file)
    done = subprocess.run(["bash", "-c", f'"$0" 1 u t 1 "" {source} {closed}', PROGRAM],
                          env={"PPD": PPD}, capture_output=True, check=False)
    assert done.returncode == 1
    assert said(done)[0].startswith("ERROR: ")


def lines_cut(data, share):
    return data[:int(len(data) * share)]


REFUSED = [
    ("nothing", b"", "No page came"),
    ("a raster without pages", raster.stream([]), "No page came"),
    ("no raster", b"hello, this is text\n" * 100, "no CUPS raster"),
    ("cut in the header", lines_cut(raster.stream([even_page(99, 99)], version=3), 0.02), "broke off"),
    ("cut in the lines", lines_cut(raster.stream([even_page(99, 99)], version=3), 0.9), "broke off"),
    ("planar", stream(even_page(99, 99, cupsColorOrder=2)), "colours are of a kind"),
    ("16 bits", stream(even_page(99, 99, cupsBitsPerColor=16, cupsBitsPerPixel=48,
                                 cupsBytesPerLine=594)), "colours are of a kind"),
    ("CMYK", stream(even_page(99, 99, cupsColorSpace=6, cupsBitsPerPixel=32, cupsNumColors=4,
                              cupsBytesPerLine=396)), "colour space 6"),
    ("too wide", stream(even_page(200000, 1)), "200000 x 1 dots"),
    ("no resolution", stream(even_page(99, 99, HWResolution=(0, 0))), "0 x 0 dots an inch"),
    ("many copies", stream(even_page(99, 99, NumCopies=4000000000)), "4000000000 copies"),
]


@pytest.mark.parametrize("name,data,sentence", REFUSED, ids=[r[0] for r in REFUSED])
def test_what_cannot_be_printed_is_told_in_one_sentence(name, data, sentence):
    done = run(data)
    assert done.returncode == 1
    told, = said(done)
    assert told.startswith("ERROR: ") and sentence in told and told.endswith(".")
    assert pictures_of(done) == [] if done.stdout else True


def test_pages_before_a_damaged_one_are_whole():
    good = raster.stream([even_page(800, 800), even_page(900, 900)], version=3)
    done = run(good[:-1000])
    assert done.returncode == 1
    assert len(pictures_of(done)) == 1
    assert said(done)[0] == "PAGE: 1 1" and said(done)[1].startswith("ERROR: The page broke off")


@pytest.mark.parametrize("options", ["PageSize=80x80mm.Fullbleed Resolution=300dpi InnerDiameter=460"])
def test_a_ring_that_leaves_nothing_is_told(options):
    done = run(stream(even_page(99, 99)), options)
    told, = said(done)
    assert done.returncode == 1 and "choose a smaller InnerDiameter or OuterMargin" in told


def test_a_queue_without_ppd_is_told(tmp_path):
    for ppd in (None, tmp_path / "missing.ppd", "/dev/null"):
        done = run(stream(even_page(99, 99)), ppd=ppd)
        told, = said(done)
        assert done.returncode == 1 and "(PPD) cannot be read" in told


def test_a_missing_file_is_told(tmp_path):
    done = run(b"", file=tmp_path / "missing")
    told, = said(done)
    assert done.returncode == 1 and "No such file or directory" in told


def test_a_next_filter_that_has_gone_is_told():
    with open("/dev/full", "wb") as full:
        done = subprocess.run([PROGRAM, "1", "u", "t", "1", ""], stdout=full, env={"PPD": PPD},
                              stderr=subprocess.PIPE, input=stream(even_page(99, 99)), check=False)
    assert done.returncode == 1
    assert "has stopped taking the page" in done.stderr.decode()


def test_a_cancel_leaves_the_next_filter_time_to_hear_of_it():
    expect_farewell(PROGRAM, PPD, stream(even_page(99, 99))[:100])


@pytest.mark.parametrize("mebibytes", range(28, 64, 4))
def test_a_lack_of_memory_is_told(mebibytes):
    """A page of 120 mm takes 24 MB, and what the libraries take differs."""
    with open(PROGRAM, "rb") as file:
        if b"__asan_init" in file.read():
            pytest.skip("the checker needs memory of its own")
    page = stream(even_page(9000, 300, cupsPageSize=(1080, 36)))
    limit = mebibytes << 20
    done = subprocess.run([PROGRAM, "1", "u", "t", "1", ""], env={"PPD": PPD}, input=page,
                          capture_output=True, check=False,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
    assert done.returncode in (0, 1)
    first = said(done)[0]
    assert first == "PAGE: 1 1" if done.returncode == 0 else "There is no memory" in first


@pytest.mark.parametrize("version", [1, 2, 3])
@pytest.mark.parametrize("size,sentence", [((1431655765, 4294967295), "which no disc needs"),
                                           ((99, 0x7FFFFFFE), "the length of its width")])
def test_a_header_alone_costs_no_memory(version, size, sentence):
    """A header that asks for gigabytes, and room for little more than the disc's page."""
    width, line_bytes = size
    page = even_page(1, 1, cupsWidth=width, cupsBytesPerLine=line_bytes)
    page.lines = []
    limit = 256 << 20
    with open(PROGRAM, "rb") as file:
        if b"__asan_init" in file.read():
            limit = resource.RLIM_INFINITY  # the checker needs memory of its own
    done = subprocess.run([PROGRAM, "1", "u", "t", "1", ""], env={"PPD": PPD},
                          input=raster.stream([page], version), capture_output=True, check=False,
                          preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
    told, = said(done)
    assert done.returncode == 1 and sentence in told


def test_wrong_arguments_are_told():
    for words in ([], ["1", "2", "3", "4"], list("12345678")):
        done = subprocess.run([PROGRAM, *words], capture_output=True, text=True, check=False)
        assert (done.returncode, done.stdout) == (1, "")
        assert done.stderr == "Usage: rastertodisc job user title copies options [file]\n"
