"""Lets the tests import the bench's modules and those of the demonstration."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in (HERE, os.path.join(HERE, "../jobs"), os.path.join(HERE, "../../tools"),
               os.path.join(HERE, "../cups"), os.path.join(HERE, "../../ppd"),
               os.path.join(HERE, "../../docs")):
    sys.path.insert(0, folder)

from demo_box import DemoBox  # noqa: E402


@pytest.fixture
def box(tmp_path):
    made = DemoBox(tmp_path)
    yield made
    made.remove()
