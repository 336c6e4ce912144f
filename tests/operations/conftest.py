"""Lets the tests import the private scheduler and the bench, and gives them hosts with printers."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in (HERE, os.path.join(HERE, "../cups"), os.path.join(HERE, "../jobs"),
               os.path.join(HERE, "../../ppd")):
    sys.path.insert(0, folder)

from farm import Farm  # noqa: E402


@pytest.fixture(scope="session")
def running_farm():
    farm = Farm(4)
    try:
        yield farm
    finally:
        farm.stop()


@pytest.fixture
def farm(running_farm):
    """Four hosts with idle printers behind a front host, and a class of the first two."""
    running_farm.tidy()
    return running_farm
