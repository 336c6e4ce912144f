"""How different two pictures look: sRGB to CIELAB, CIEDE2000, and the eye's low-pass.

Written from the formulas, in numpy, independently of what the engine and the printer compute.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import numpy as np

SIGMA_MM = 0.25  # of the low-pass: 2 minutes of arc at reading distance (40 cm)

# sRGB primaries and the D65 white point.
_TO_XYZ = np.array([[0.4124564, 0.3575761, 0.1804375],
                    [0.2126729, 0.7151522, 0.0721750],
                    [0.0193339, 0.1191920, 0.9503041]], dtype=np.float32)
_WHITE = _TO_XYZ.sum(axis=1)

_LINEAR = np.array([v / 12.92 if v <= 0.04045 else ((v + 0.055) / 1.055) ** 2.4
                    for v in np.arange(256) / 255], dtype=np.float32)


def linear_light(srgb):
    """8-bit sRGB values as linear light from 0 to 1."""
    return _LINEAR[srgb]


def lab(light):
    """CIELAB (D65) of linear-light RGB."""
    t = (light @ _TO_XYZ.T) / _WHITE
    f = np.where(t > (6 / 29) ** 3, np.cbrt(t), t * ((29 / 6) ** 2 / 3) + 4 / 29)
    return np.stack([116 * f[..., 1] - 16, 500 * (f[..., 0] - f[..., 1]),
                     200 * (f[..., 1] - f[..., 2])], axis=-1)


def _hue(a, b):
    return np.degrees(np.arctan2(b, a)) % 360


def ciede2000(first, second):
    """The CIEDE2000 difference of CIELAB values, all weights 1."""
    light1, a1, b1 = np.moveaxis(np.asarray(first, dtype=np.float64), -1, 0)
    light2, a2, b2 = np.moveaxis(np.asarray(second, dtype=np.float64), -1, 0)
    mean7 = ((np.hypot(a1, b1) + np.hypot(a2, b2)) / 2) ** 7
    stretch = 1.5 - 0.5 * np.sqrt(mean7 / (mean7 + 25.0 ** 7))
    a1, a2 = a1 * stretch, a2 * stretch
    chroma1, chroma2 = np.hypot(a1, b1), np.hypot(a2, b2)
    hue1, hue2 = _hue(a1, b1), _hue(a2, b2)
    grey = chroma1 * chroma2 == 0

    turn = (hue2 - hue1 + 180) % 360 - 180
    # Exactly opposite hues count as a turn of +180 or -180 by which of them is larger.
    turn = np.where((turn == -180) & (hue2 > hue1), 180, turn)
    turn = np.where(grey, 0, turn)
    d_light, d_chroma = light2 - light1, chroma2 - chroma1
    d_hue = 2 * np.sqrt(chroma1 * chroma2) * np.sin(np.radians(turn / 2))

    mean_light, mean_chroma = (light1 + light2) / 2, (chroma1 + chroma2) / 2
    total = hue1 + hue2
    mean_hue = np.where(np.abs(hue1 - hue2) <= 180, total / 2,
                        np.where(total < 360, total / 2 + 180, total / 2 - 180))
    mean_hue = np.where(grey, total, mean_hue)
    cosine = lambda factor, offset: np.cos(np.radians(factor * mean_hue + offset))
    t = (1 - 0.17 * cosine(1, -30) + 0.24 * cosine(2, 0) + 0.32 * cosine(3, 6)
         - 0.20 * cosine(4, -63))
    rotation = 60 * np.exp(-((mean_hue - 275) / 25) ** 2)
    chroma7 = mean_chroma ** 7
    twist = -2 * np.sqrt(chroma7 / (chroma7 + 25.0 ** 7)) * np.sin(np.radians(rotation))
    off_middle = (mean_light - 50) ** 2
    by_light = d_light / (1 + 0.015 * off_middle / np.sqrt(20 + off_middle))
    by_chroma = d_chroma / (1 + 0.045 * mean_chroma)
    by_hue = d_hue / (1 + 0.015 * mean_chroma * t)
    return np.sqrt(np.maximum(by_light ** 2 + by_chroma ** 2 + by_hue ** 2
                              + twist * by_chroma * by_hue, 0))


def low_pass(light, dpi):
    """What is left of linear light at reading distance: at 600 dpi means of 2 x 2 dots, then a
    Gaussian of SIGMA_MM; the edges are continued."""
    if dpi == 600:
        rows, columns = light.shape[0] // 2 * 2, light.shape[1] // 2 * 2
        whole = light[:rows, :columns]
        light = (whole[::2, ::2] + whole[1::2, ::2] + whole[::2, 1::2] + whole[1::2, 1::2]) / 4
    sigma = SIGMA_MM / 25.4 * 300
    reach = int(np.ceil(3.5 * sigma))
    weights = np.exp(-0.5 * (np.arange(-reach, reach + 1) / sigma) ** 2)
    weights = (weights / weights.sum()).astype(np.float32)
    for axis in (0, 1):
        border = [(reach, reach) if a == axis else (0, 0) for a in range(light.ndim)]
        wide = np.pad(light, border, mode="edge")
        blurred = np.zeros_like(light)
        for i, weight in enumerate(weights):
            at = [slice(None)] * light.ndim
            at[axis] = slice(i, i + light.shape[axis])
            blurred += weight * wide[tuple(at)]
        light = blurred
    return light
