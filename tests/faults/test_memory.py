"""A job that finds no memory: the chosen allocation fails, or all from there on.

ZR7700_LONG=1 tries every allocation of a job; otherwise a sample."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib

import pytest

import faulty_job
from faulty_job import THIRD_PARTY, number, plain_job, run_faults

PAPER = pathlib.Path(__file__).resolve().parents[2] / "docs/reliability.md"


def chosen(count):
    step = 1 if os.environ.get("ZR7700_LONG") else max(count // 40, 1)
    return range(1, count + 1, step)


@pytest.mark.parametrize("mode", ["once", "ever"])
def test_a_job_without_memory_prints_all_or_ends_with_one_error_line(mode):
    numbers = chosen(plain_job().counts["memory"])
    jobs = run_faults([f"memory {n} {mode} {number('ENOMEM')}" for n in numbers])
    complaints = [text for tried in jobs for text in tried.complaints(plain_job())]
    complaints += [f"{tried.fault}: {tried.errors()} error lines" for tried in jobs
                   if tried.result.status == 1 and tried.errors() != 1]
    assert complaints == []
    assert any(tried.result.status == 1 for tried in jobs)


def test_a_line_of_the_log_needs_no_heap():
    """From some allocation before the first page on the job has no memory; the log is whole up to the
    line that says so."""
    plain = plain_job()
    tried, = run_faults([f"memory {plain.counts['memory'] * 9 // 10} ever {number('ENOMEM')}"])
    lines = tried.result.log
    assert tried.result.status == 1 and len(lines) > 30
    assert lines == plain.result.log[:len(lines) - 1] + ["     Out of memory: the job ends here"]


def test_the_paper_names_whoever_does_not_survive_it():
    text = PAPER.read_text()
    for library, function in THIRD_PARTY:
        assert f"`{function}` of {library.split('.')[0]}" in text


def test_the_faults_are_real():
    """The very first descriptor that a job opens is refused for good: it has no log."""
    tried, = run_faults([f"open 1 ever {number('EMFILE')}"])
    assert tried.result.log == [] and tried.result.status == 1
    assert faulty_job.plain_job().result.log != []
