"""Lets the tests import the bench's modules, which lie beside them; splits a file's tests into
shares that run side by side: with ZR7700_SHARE=2/3 every third test runs, from the second on; and
says which tests are in real time.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

sys.path.insert(0, os.path.dirname(__file__))

import pace  # noqa: E402

# Everything else runs so many times faster (pace.py), which makes the machine's own delays so many
# times as long by the job's clock. Here a test's subject is how long something takes.
IN_REAL_TIME = {
    "test_bench_sandbox.py": "no filter, but shell scripts",
    "test_cancel.py": "what whoever cancels has to wait for",
    "test_log_file.py::test_the_stamp_is_local_time_with_its_offset": "compared with our own clock",
}


def is_in_real_time(test):
    file = test.path.name
    return file in IN_REAL_TIME or f"{file}::{test.originalname}" in IN_REAL_TIME


def pytest_collection_modifyitems(items):
    number, count = map(int, os.environ.get("ZR7700_SHARE", "1/1").split("/"))
    items[:] = items[number - 1::count]


@pytest.fixture(autouse=True, scope="function")
def pace_of_the_test(request):
    pace.set_times_faster(1 if is_in_real_time(request.node) else pace.FAST)
