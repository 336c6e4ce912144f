"""Lets the tests import the bench's modules, which lie beside them; splits a file's tests into
shares that run side by side: with ZR7700_SHARE=2/3 every third test runs, from the second on; and
says which tests are in real time.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

HERE = os.path.dirname(__file__)
sys.path[:0] = [HERE, os.path.join(HERE, "../../ppd")]

import pace  # noqa: E402

# Everything else runs so many times faster (pace.py), which makes the machine's own delays so many
# times as long by the job's clock. Here a test's subject is how long something takes.
IN_REAL_TIME = {
    "test_bench_sandbox.py": "no filter, but shell scripts",
    **{file: "what whoever cancels has to wait for" for file in (
        "test_cancel.py", "test_cancel_limits.py", "test_random_cancels.py", "test_slow_output.py",
        "test_streams.py::test_a_fifo_without_a_writer_can_be_cancelled",
        "test_streams.py::test_a_backend_that_stalls_is_no_hindrance_once_it_drains",
        "test_streams.py::test_a_cancel_takes_effect_while_the_backend_takes_nothing",
        "test_streams.py::test_a_cancelled_job_does_not_wait_for_ever_for_a_backend_that_takes_"
        "nothing")},
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
