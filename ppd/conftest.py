"""Lets the PPD's tests import the modules beside them and names the files that they are about."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

sys.path.insert(0, os.path.dirname(__file__))


@pytest.fixture(scope="session")
def ppd_path():
    """The compiled PPD."""
    return os.environ["ZR7700_PPD"]
