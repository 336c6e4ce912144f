"""Where the dots of a printed disc lie, measured on its picture."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import numpy as np
from PIL import Image

from documents import QUARTERS

# The ring's half-widths are cut to whole dots.
_TOLERANCE_DOTS = 2

_GAMMA = 2.2  # about that of sRGB


class Disc:
    def __init__(self, disc, hole_mm=22.0, margin_mm=1.0):
        self.picture = np.asarray(Image.open(disc["picture"]).convert("RGB")).astype(int)
        self.dpi = disc["resolution_dpi"]
        self.side = self.picture.shape[0]
        self._inked = self.picture.sum(axis=2) < 3 * 255
        # Margins and holes are cut to whole dots as well.
        self.outer_dots = self.side / 2 - int(margin_mm / 25.4 * self.dpi)
        self.hole_dots = int(hole_mm / 2 / 25.4 * self.dpi)

    def _distances(self):
        # The filter counts the dots of a line from the right, and takes the one in the middle of the
        # count for the disc's: half a dot, or one, beside the page's.
        across = np.arange(self.side) - (self.side - self.side // 2)
        down = np.arange(self.side) - (self.side - 1) / 2
        return np.hypot(across[None, :], down[:, None])

    def dots_off_the_ring(self):
        distance = self._distances()
        off = (distance > self.outer_dots + _TOLERANCE_DOTS) | (
            distance < self.hole_dots - _TOLERANCE_DOTS)
        return int((self._inked & off).sum())

    def box(self):
        """First and last column, first and last row with ink."""
        rows, columns = np.nonzero(self._inked)
        return columns.min(), columns.max(), rows.min(), rows.max()

    def center_offset(self):
        left, right, top, bottom = self.box()
        return (left + right + 1 - self.side) / 2, (top + bottom + 1 - self.side) / 2

    def has_ink(self):
        return bool(self._inked.any())

    def color(self, right, down):
        """What the eye makes of the drops in a patch so many dots right of and below the disc's
        middle: their mean in linear light."""
        x, y = round(self.side / 2 + right), round(self.side / 2 + down)
        patch = self.picture[y - 15:y + 15, x - 15:x + 15].reshape(-1, 3)
        return 255 * ((patch / 255) ** _GAMMA).mean(axis=0) ** (1 / _GAMMA)

    def quarter(self, right, down):
        """The name of the document's colour there."""
        seen = self.color(right, down)
        return min(QUARTERS, key=lambda name: np.abs(seen - QUARTERS[name]).sum())
