"""Lets the tests import the bench's modules, which lie beside them, and splits a file's tests into
shares that run side by side: with ZR7700_SHARE=2/3 every third test runs, from the second on.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

sys.path.insert(0, os.path.dirname(__file__))


def pytest_collection_modifyitems(items):
    number, count = map(int, os.environ.get("ZR7700_SHARE", "1/1").split("/"))
    items[:] = items[number - 1::count]
