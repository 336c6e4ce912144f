"""Lets the tests import their own modules and the bench's, and gives them a running scheduler."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in (HERE, os.path.join(HERE, "../jobs"), os.path.join(HERE, "../../ppd")):
    sys.path.insert(0, folder)

from scheduler import running  # noqa: E402


@pytest.fixture(scope="session")
def scheduler():
    """A private scheduler with one queue; every test prints on the machine it asks for."""
    with running() as machine:
        yield machine
