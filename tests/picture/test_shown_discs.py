"""The discs that the documents show are what a label gives today."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import numpy as np
import pytest
from PIL import Image

import draw_pictures

_LEVELS = 0.5  # the most of 256, as a mean, that another release of Pillow may round otherwise


def difference(one, other):
    """The mean difference of two pictures of one size, in levels of 256."""
    assert one.size == other.size
    return np.abs(np.asarray(one.convert("RGB"), int) - np.asarray(other.convert("RGB"), int)).mean()


@pytest.mark.parametrize("shown", draw_pictures.SHOWN, ids=lambda shown: shown.name)
def test_documents_show_what_is_printed(box, tmp_path, shown):
    assert box.demo(*draw_pictures.demo_words(shown)).returncode == 0
    now = tmp_path / shown.name
    draw_pictures.save(draw_pictures.drawn(shown, box.build / "discs"), now)
    assert difference(Image.open(draw_pictures.PICTURES / shown.name), Image.open(now)) < _LEVELS


def test_another_disc_is_a_difference():
    pictures = [Image.open(draw_pictures.PICTURES / f"{name}-granite.jpg") for name in
                ("lake", "concert")]
    assert difference(*pictures) > 5 * _LEVELS


def test_every_picture_is_drawn():
    assert {shown.name for shown in draw_pictures.SHOWN} == {
        path.name for path in draw_pictures.PICTURES.iterdir()}
