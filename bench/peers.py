#!/usr/bin/env python3
"""Processor time of this filter beside two raster filters from Debian, on the same page.

Usage: bench/peers.py BUILD_FOLDER [RUNS]

Prints a row for each engine family and print quality, and one for each other filter.
BUILD_FOLDER is a build with ZR7700_COMPANIONS=ON and no ZR7700_ROOT. The page is 2834 x 2834 pixels
of a photograph-like picture, an uncompressed CUPS raster. A filter's time is the least user + system
time of RUNS runs (default 5); its waiting for a printer costs none. This filter runs with the
defaults of its PPD but for the quality, the others with all of theirs. Needs bubblewrap, numpy and
the packages printer-driver-gutenprint and printer-driver-hpcups; a filter that is not installed
gets no row.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys
import tempfile

import numpy

TOP = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TOP / "tests/jobs"), str(TOP / "ppd")]
import cups_ppd  # noqa: E402
import job  # noqa: E402
import raster  # noqa: E402
import record  # noqa: E402

SIDE_DOTS = 2834

# A letter of each family's cartridges.
FAMILIES = {"Heron": "U", "Granite": "Q"}
QUALITIES = ("Quality1", "Quality2", "Quality3", "Quality4")
# The defaults that say how much work a page is.
NAMED_OPTIONS = ("Resolution", "MediaType", "ColorMatching", "InnerDiameter", "OuterMargin",
                 "Saturation", "Bidi")

FILTERS = "/usr/lib/cups/filter"
# The other filters: their names, and what prints their PPDs.
PEERS = {
    "rastertogutenprint (Epson R300)": ("rastertogutenprint.5.3", [
        "/usr/lib/cups/driver/gutenprint.5.3", "cat", "gutenprint.5.3://escp2-r300/expert"]),
    "hpcups (HP Photosmart D5300)": ("hpcups", [
        "/usr/lib/cups/daemon/cups-driverd", "cat",
        "drv:///hpcups.drv/hp-photosmart_d5300_series.ppd"]),
}


def photograph():
    """A picture with smooth light, texture and grain, as 8-bit RGB."""
    y, x = numpy.mgrid[0:SIDE_DOTS, 0:SIDE_DOTS] / SIDE_DOTS
    light = 0.55 + 0.35 * numpy.sin(3 * x + 2 * numpy.sin(4 * y)) * numpy.cos(2.5 * y)
    texture = 0.08 * numpy.sin(90 * x + 40 * numpy.sin(11 * y))
    colors = [light + texture, 0.9 * light - texture, 1 - 0.8 * y + texture]
    picture = numpy.stack(colors, axis=-1)
    picture += numpy.random.default_rng(7).normal(0, 0.03, picture.shape)
    return (numpy.clip(picture, 0, 1) * 255).astype(numpy.uint8)


def processor_seconds():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def run_ours(build, page, family, ppd):
    """Seconds and bytes of one job with the open engine, in a private root."""
    os.environ["ZR7700_FILTER"] = str(build / "rastertoZR7700")

    def place_engine(sandbox):
        shutil.copytree(build / "root", sandbox.root, dirs_exist_ok=True)

    status = record.record(cartridge=FAMILIES[family])
    before = processor_seconds()
    result = job.Job(pages=page, ppd_text=ppd, record=status, from_file=True,
                     prepare=place_engine).run()
    if result.status != 0:
        sys.exit("rastertoZR7700 failed:\n" + result.stderr)
    return processor_seconds() - before, len(result.stdout)


def ours(build, page, family, quality):
    """A function that prints the page once in one quality."""
    ppd = (build / "ppd/zr7700.ppd").read_text()
    ppd, replaced = re.subn(r"(?m)^(\*DefaultPrintQuality:).*", rf"\1 {quality}", ppd)
    assert replaced == 1
    return lambda: run_ours(build, page, family, ppd)


def run_peer(command, ppd, page_file):
    """Seconds and bytes of one run of another filter."""
    before = processor_seconds()
    with tempfile.TemporaryFile() as output:
        subprocess.run([command, "1", "me", "title", "1", "", str(page_file)],
                       env={**os.environ, "PPD": str(ppd)}, stdout=output,
                       stderr=subprocess.DEVNULL, check=True)
        return processor_seconds() - before, os.fstat(output.fileno()).st_size


def peer(folder, page_file, name, ppd_command):
    """A function that runs the filter once, with the PPD that the command prints."""
    ppd = folder / f"{name}.ppd"
    with open(ppd, "wb") as output:
        subprocess.run(ppd_command, stdout=output, stderr=subprocess.DEVNULL, check=True)
    return lambda: run_peer(f"{FILTERS}/{name}", ppd, page_file)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    picture = photograph()
    lines = [line.tobytes() for line in picture]
    fields = raster.rgb_page(SIDE_DOTS, 0, None, cupsHeight=SIDE_DOTS).fields
    page = raster.stream([raster.Page(fields, lines)])
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        page_file = folder / "page.ras"
        page_file.write_bytes(page)
        rows = {f"rastertoZR7700, {family}, {quality}": ours(build, page, family, quality)
                for family in FAMILIES for quality in QUALITIES}
        rows |= {label: peer(folder, page_file, name, command)
                 for label, (name, command) in PEERS.items()
                 if pathlib.Path(FILTERS, name).exists()}
        with cups_ppd.Ppd(str(build / "ppd/zr7700.ppd")) as ppd:
            print("rastertoZR7700:", ", ".join(f"{option}={ppd.marked(option)}"
                                               for option in NAMED_OPTIONS), end="\n\n")
        print("| filter | processor time | bytes written |\n| --- | --- | --- |")
        for label, run in rows.items():
            seconds, size = min(run() for _ in range(runs))
            print(f"| {label} | {seconds:.3f} s | {size:,} |")


if __name__ == "__main__":
    main()
