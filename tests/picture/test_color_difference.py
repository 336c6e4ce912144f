"""The colour difference against the published test pairs, the low-pass against its definition."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import numpy as np
import pytest

from color_difference import ciede2000, lab, linear_light, low_pass

# From the test data that the formula was published with; each row exercises another branch.
PAIRS = [
    ((50, 2.6772, -79.7751), (50, 0, -82.7485), 2.0425),
    ((50, 3.1571, -77.2803), (50, 0, -82.7485), 2.8615),
    ((50, 2.8361, -74.0200), (50, 0, -82.7485), 3.4412),
    ((50, -1.3802, -84.2814), (50, 0, -82.7485), 1.0000),
    ((50, 0, 0), (50, -1, 2), 2.3669),
    ((50, 2.5, 0), (50, 0, -2.5), 4.3065),
    ((50, 2.5, 0), (73, 25, -18), 27.1492),
    ((50, 2.5, 0), (61, -5, 29), 22.8977),
    ((60.2574, -34.0099, 36.2677), (60.4626, -34.1751, 39.4387), 1.2644),
    ((2.0776, 0.0795, -1.1350), (0.9033, -0.0636, -0.5514), 0.9082),
]


@pytest.mark.parametrize("first, second, expected", PAIRS)
def test_published_pairs(first, second, expected):
    assert ciede2000(np.array(first), np.array(second)) == pytest.approx(expected, abs=1e-4)
    assert ciede2000(np.array(second), np.array(first)) == pytest.approx(expected, abs=1e-4)


def test_known_colors_of_srgb():
    values = np.array([[255, 255, 255], [0, 0, 0], [255, 0, 0]], dtype=np.uint8)
    expected = [(100, 0, 0), (0, 0, 0), (53.24, 80.09, 67.20)]
    assert np.abs(lab(linear_light(values)) - expected).max() < 0.05


def test_low_pass_of_a_point_is_the_gaussian():
    light = np.zeros((101, 101, 1), dtype=np.float32)
    light[50, 50] = 1
    blurred = low_pass(light, 300)[..., 0]
    assert blurred.sum() == pytest.approx(1, abs=1e-4)
    # 0.25 mm are 2.9528 dots: at that distance the bell is down to exp(-1/2).
    at = np.interp(50 + 2.9528, np.arange(101), np.log(blurred[50].clip(1e-12)))
    assert at - np.log(blurred[50, 50]) == pytest.approx(-0.5, abs=0.02)


def test_low_pass_keeps_an_even_area():
    light = np.full((60, 80, 3), 0.37, dtype=np.float32)
    assert np.abs(low_pass(light, 600) - 0.37).max() < 1e-5
    assert low_pass(light, 600).shape == (30, 40, 3)
