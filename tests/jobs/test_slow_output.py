"""Standard output that is slow, non-blocking or interrupted, also when a job ends early."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import time

import pytest

import pages
import record
from backend import Backend
from cancelled import GIVEN_UP, LIMIT_WITHOUT_A_READER
from job import Job, run_together

GOOD = record.record()
HEADER_BYTES = 16

# No two stretches of it are alike, so that a byte lost or said twice shows; no feed command in it.
BLOCK = b" ".join(b"%d" % i for i in range(20000))[:100000]


def place_block(sandbox):
    (sandbox.bench / "block").write_bytes(BLOCK)


@pytest.mark.parametrize("blocking", [True, False], ids=["blocking", "non-blocking"])
@pytest.mark.parametrize("storm", [None, "300"], ids=["calm", "storm"])
def test_no_byte_is_lost(blocking, storm):
    """The reader is slow and takes odd pieces; a timer signal interrupts whatever it can."""
    script = {("HPESendBand", "*"): [("emitfile", "/bench/block")]}
    if storm is not None:
        script[("HPEInitialize", 1)] = [("storm", storm)]
    with Backend(blocking=blocking) as backend:
        backend.take(piece=9001, pause=0.0005)
        result = Job(pages=[pages.small(100, 50)], output=backend.filter_end, prepare=place_block,
                     script=script).run()
        taken = backend.all_taken()
    bands = sum(call.startswith("HPESendBand") for call in result.calls)
    assert result.status == 0 and bands > 20
    assert taken[HEADER_BYTES:] == BLOCK * bands


def test_a_pipe_that_is_full_for_seconds_loses_nothing_either():
    """Non-blocking, and the reader sleeps: the job waits."""
    def actions(job):
        job.until_trace("HPESendBand")
        time.sleep(2)
        backend.take()

    with Backend(blocking=False) as backend:
        result = Job(pages=[pages.small(100, 50)], output=backend.filter_end, prepare=place_block,
                     actions=actions,
                     script={("HPESendBand", "*"): [("emitfile", "/bench/block")]}).run()
        taken = backend.all_taken()
    bands = sum(call.startswith("HPESendBand") for call in result.calls)
    assert result.status == 0 and taken[HEADER_BYTES:] == BLOCK * bands


# Two jobs that end early, before a document's end would flush, with output in the buffer and a full
# pipe: a page of the pipe is used, the engine emits 6,000 bytes, 4,096 of them fill the pipe.
PIPE_BYTES = 8192
EMITTED = bytes(range(1, 251)) * 24


def second_page_without_a_cartridge(**job):
    """The engine emits in the document that follows page 1; the check of page 2 waits."""
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.fresh(record.record(cartridge=0x25))

    return {"pages": [pages.small(), pages.small()], "plan": plan,
            "script": {("HPEStartDoc", 2): [("emit", EMITTED.hex())]}, **job}


def refused_document(**job):
    script = {("HPEStartDoc", 1): [("emit", EMITTED.hex()), ("return", "-5")]}
    return {"script": script, **job}


EARLY_ENDS = {
    # what the job is, its last line before the cancel, what the pipe holds at first, the header
    "a later check": (second_page_without_a_cartridge, "#### In Error Retry", 0, HEADER_BYTES),
    "a refused document": (refused_document, "   ### HPEStartDoc Failed", 4096, 0),
}


def cancelled_early_end(name, after_cancel=lambda backend: None):
    """The result of such a job, and what its backend got of the engine's bytes."""
    describe, line, filled, header = EARLY_ENDS[name]
    waited = []

    def actions(job):
        job.until_log(line)
        time.sleep(0.5)
        waited.append(not job.over.is_set())
        job.terminate()
        after_cancel(backend)

    with Backend(PIPE_BYTES, filled) as backend:
        result = Job(**describe(output=backend.filter_end, actions=actions, limit=60)).run()
        taken = backend.all_taken()
    assert waited == [True]
    assert result.status == 1 and not result.shared_memory_left
    return result, taken[header:]


def expect_given_up(name):
    result, taken = cancelled_early_end(name)
    assert 19.5 < result.seconds_after_cancel < LIMIT_WITHOUT_A_READER
    assert result.log.count(GIVEN_UP) == 1
    assert taken == EMITTED[:4096]


def test_a_cancelled_job_that_ends_early_does_not_wait_for_ever_for_its_reader():
    run_together([lambda n=name: expect_given_up(n) for name in EARLY_ENDS])


@pytest.mark.parametrize("name", EARLY_ENDS)
def test_a_cancelled_job_that_ends_early_still_hands_everything_to_a_late_reader(name):
    def after_cancel(backend):
        time.sleep(1)
        backend.take()

    result, taken = cancelled_early_end(name, after_cancel)
    assert result.seconds_after_cancel < 4
    assert taken == EMITTED and GIVEN_UP not in result.log


@pytest.mark.parametrize("blocking", [True, False], ids=["blocking", "non-blocking"])
@pytest.mark.parametrize("storm", [None, "300"], ids=["calm", "storm"])
def test_a_job_that_ends_early_waits_for_its_reader(blocking, storm):
    """Without a cancel as long as it takes, and neither signals nor a pipe that refuses for a moment
    make it lose what it still has."""
    def actions(job):
        job.until_log("   ### HPEStartDoc Failed")
        time.sleep(3)
        backend.take()

    job = refused_document()
    if storm is not None:
        job["script"][("HPEInitialize", 1)] = [("storm", storm)]
    with Backend(PIPE_BYTES, 4096, blocking) as backend:
        result = Job(output=backend.filter_end, actions=actions, **job).run()
        taken = backend.all_taken()
    assert result.status == 1 and result.seconds > 3
    assert taken == EMITTED


def test_a_reader_that_takes_a_little_now_and_then_does_not_prolong_a_cancelled_job():
    """Each byte that it takes is one; the bound is counted from SIGTERM."""
    def actions(job):
        job.until_trace("HPESendBand")
        time.sleep(0.5)
        job.terminate()
        backend.take(piece=1500, pause=2)

    with Backend(PIPE_BYTES) as backend:
        job = Job(output=backend.filter_end, actions=actions, limit=60, prepare=place_block,
                  script={("HPESendBand", 1): [("emitfile", "/bench/block")]})
        result = job.run()
    assert result.status == 0 and not result.shared_memory_left
    assert 19.5 < result.seconds_after_cancel < LIMIT_WITHOUT_A_READER
    assert result.log.count(GIVEN_UP) == 1
    assert result.log[-1] == "     Ready to print."


def test_an_empty_bin_is_told_while_the_printer_takes_nothing():
    """Which is why it takes nothing: the page begins all the same, and the printer is watched."""
    watched = []

    def actions(job):
        watched.append(job.until_log("Error check 24 "))
        backend.take()

    with Backend(PIPE_BYTES, PIPE_BYTES) as backend:
        result = Job(output=backend.filter_end, record=record.record(error=0x24), actions=actions).run()
        taken = backend.all_taken()
    assert watched == [True] and "STATE: +media-needed\n" in result.stderr
    assert result.status == 0 and len(taken) == 16
