#!/usr/bin/env python3
"""orientation_label.py make PDF: the label labels/orientation.png as a page.
orientation_label.py check REPORT: the virtual printer's report of that page tells of one good disc,
whose picture has the label's four colours where they belong."""

import json
import sys

import numpy as np
from PIL import Image

# Right and down of the disc's middle, as labels/draw_orientation.py draws them.
QUARTERS = {(1, -1): "red", (1, 1): "green", (-1, 1): "blue", (-1, -1): "yellow"}


def make(path):
    label = Image.open("labels/orientation.png").convert("RGB")
    label.save(path, resolution=300)


def color_name(color):
    """What a person would call a strong colour."""
    red, green, blue = color
    if red > 140:
        return "yellow" if green > 140 else "red"
    return "blue" if blue > green else "green"


def quarters(picture):
    """The colours 53 mm from the disc's middle, at half past one, four, seven and ten o'clock."""
    pixels = np.asarray(Image.open(picture).convert("RGB")).astype(float)
    side = pixels.shape[0]
    away = 53 / 120 * side / 2 ** 0.5
    found = {}
    for right, down in QUARTERS:
        column, row = int(side / 2 + right * away), int(side / 2 + down * away)
        patch = pixels[row - 20:row + 20, column - 20:column + 20].reshape(-1, 3)
        found[right, down] = color_name(patch.mean(axis=0))
    return found


def check_disc(disc, picture):
    """Fails unless the disc came out whole with the label on it."""
    assert not disc["spoilt"] and disc["dots_outside_disc"] == 0, disc
    assert quarters(picture) == QUARTERS, quarters(picture)


def check(path):
    with open(path, encoding="utf-8") as report:
        facts = json.load(report)
    assert (facts["violation_count"], facts["errors"]) == (0, []), facts
    disc, = facts["discs"]
    check_disc(disc, disc["picture"])
    print("The label is on the disc, the right way up.")


if __name__ == "__main__":
    {"make": make, "check": check}[sys.argv[1]](sys.argv[2])
