"""A label on its way to a disc: the raster that a queue's filters make of it for the last, that one
with the open engine in a private root, the virtual printer, and the decoded disc."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import functools
import json
import os
import shutil
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

import numpy as np
from PIL import Image

import demo_options
import demo_queue
import raster_reader
import sandbox

REPOSITORY = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("ZR7700_BUILD", REPOSITORY / "build-release"))
FILTER = sandbox.filter_path(BUILD)
PPD = BUILD / "ppd/zr7700.ppd"
PICTURES = BUILD / "picture"


@dataclass
class Disc:
    """What came out: the decoded disc (sRGB, a pixel a dot), its report, the filter's messages, and
    the processor time that filter and engine took."""

    picture: np.ndarray
    report: dict
    messages: str
    processor_seconds: float


@functools.lru_cache(None)
def choices(options):
    """The PPD's choice of every option, for the options asked for; a text of "name=value"."""
    ppd = demo_options.PpdOptions(str(PPD))
    asked = demo_options.parse([options])
    ppd.check(asked)
    return ppd.marked(asked)


@functools.lru_cache(3)
def raster_file(label, options):
    """The raster stream of a label as bytes: what the last filter of its queue gets."""
    with tempfile.TemporaryDirectory(prefix="zr7700-") as folder:
        queue = demo_queue.Queue(os.path.join(folder, "queue"), BUILD, str(PPD))
        told = demo_options.PpdOptions(str(PPD)).told(demo_options.parse([options]))
        environment, data = queue.environment(label, folder), b""
        for program, words in queue.commands(label, 1, demo_options.text(told))[:-1]:
            data = subprocess.run(words, executable=program, input=data, capture_output=True,
                                  check=True, env=environment, timeout=120).stdout
    return data


def raster_pixels(stream):
    """The pixels of a stream's only page: rows, columns, RGB."""
    [(fields, pixels)] = raster_reader.pages_of(stream)
    kind = [fields[name] for name in ("bits_per_pixel", "color_order", "color_space")]
    assert kind == [24, 0, 1], "chunky RGB of 8 bits"
    assert fields["bytes_per_line"] == 3 * fields["width_dots"]
    return np.frombuffer(pixels, np.uint8).reshape(fields["height_dots"], fields["width_dots"], 3)


def _engine_into(box):
    for folder in (sandbox.LIBRARIES, sandbox.ENGINE_DATA):
        shutil.copytree(BUILD / "root" / folder, box.root / folder, dirs_exist_ok=True)


def print_raster(stream, options, cartridge, name):
    """Prints a raster stream; options are a text of "name=value"."""
    sandbox.require()
    box = sandbox.Sandbox()
    try:
        _engine_into(box)
        shutil.copy(PPD, box.bench / "zr7700.ppd")
        (box.bench / "page.ras").write_bytes(stream)
        return _run(box, " ".join(f"{n}={v}" for n, v in choices(options).items()), cartridge, name)
    finally:
        box.remove()


def _run(box, options, cartridge, name):
    back_read, back_write = os.pipe()
    data_read, data_write = os.pipe()
    errors = os.open(box.bench / "errors", os.O_RDWR | os.O_CREAT)
    page = os.open(box.bench / "page.ras", os.O_RDONLY)
    job = sandbox.Process(box, FILTER, [FILTER, "1", "user", "title", "1", options],
                          {"PPD": "/bench/zr7700.ppd"},
                          {0: page, 1: data_write, 2: errors, 3: back_read})
    for fd in (page, data_write, back_read, errors):
        os.close(fd)
    PICTURES.mkdir(exist_ok=True)
    printer = subprocess.run(
        [BUILD / "zr7700-printer", "--out", PICTURES, "--name", name, "--cartridge", cartridge,
         "--report", box.bench / "report.json", "--status-fd", str(back_write)],
        stdin=data_read, pass_fds=[back_write], capture_output=True, text=True, check=False,
        timeout=120)
    for fd in (data_read, back_write):
        os.close(fd)
    messages = (box.bench / "errors").read_text()
    assert job.wait(60) == 0, messages
    assert printer.returncode == 0, printer.stderr
    report = json.loads((box.bench / "report.json").read_text())
    with Image.open(report["discs"][0]["picture"]) as picture:
        return Disc(np.asarray(picture.convert("RGB")), report, messages, job.processor_seconds)
