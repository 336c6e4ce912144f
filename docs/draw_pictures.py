#!/usr/bin/python3
"""Draws the pictures of printed discs that the documents show, with ./demo.

Usage: docs/draw_pictures.py

Each is what a stranger gets who prints that label: the demonstration's small picture of the disc, or
a piece of the one that has every dot.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

from PIL import Image

TOP = Path(__file__).resolve().parents[1]
PICTURES = TOP / "docs/pictures"

_PIECE_dots = (1085, 330, 1085 + 280, 330 + 160)  # left, upper, right, lower: of "Larkfield"
_PIECE_TIMES = 3


class Shown(NamedTuple):
    """A picture of the documents: its file, the label, the cartridge, its side (0: the piece)."""

    name: str
    label: str
    cartridge: str
    side_pixels: int


SHOWN = [
    Shown("concert-granite.jpg", "concert.pdf", "Q", 560),
    Shown("concert-heron.jpg", "concert.pdf", "U", 560),
    Shown("lake-granite.jpg", "lake.png", "Q", 560),
    Shown("lake-heron.jpg", "lake.png", "U", 560),
    Shown("orientation.png", "orientation.png", "Q", 360),
    Shown("dots.png", "concert.pdf", "Q", 0),
]


def demo_words(shown):
    """What ./demo is called with."""
    return [str(TOP / "labels" / shown.label), "-o", "PrintQuality=Quality3", "--cartridge",
            shown.cartridge]


def drawn(shown, discs):
    """The picture, from the folder in which the demonstration has left its own."""
    stem = Path(shown.label).stem
    if shown.side_pixels == 0:
        piece = Image.open(discs / f"{stem}-001.png").convert("RGB").crop(_PIECE_dots)
        return piece.resize([_PIECE_TIMES * side for side in piece.size], Image.Resampling.NEAREST)
    small = Image.open(discs / f"{stem}-001-small.png").convert("RGB")
    return small.resize([shown.side_pixels] * 2, Image.Resampling.LANCZOS)


def save(picture, path):
    """Writes it small."""
    few_colours = path.suffix == ".png"
    (picture.quantize(64) if few_colours else picture).save(path, quality=88, optimize=True)


def main():
    for shown in SHOWN:
        subprocess.run([TOP / "demo", "--no-show", *demo_words(shown)], check=True)
        save(drawn(shown, TOP / "build-demo/discs"), PICTURES / shown.name)
    return 0


if __name__ == "__main__":
    sys.exit(main() if len(sys.argv) == 1 else __doc__.partition("\n\n")[2])
