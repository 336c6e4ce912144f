"""Standard input and output that misbehave."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import signal
import time

import pytest

import compare
import pages
import raster
from beside import Beside
from cancelled import GIVEN_UP, LIMIT_WITHOUT_A_READER, WELL_LIMIT
from expected import Model
from job import Job

# How a job ends whose backend has gone: by the signal, which GNUstep, one of the Foundations, switches
# off. The job then ends in order.
FOUNDATION = os.environ.get("ZR7700_PLATFORM") == "foundation"
BACKEND_GONE = 0 if FOUNDATION else 128 + signal.SIGPIPE


def slow_pipe(raw, piece, pause_s):
    """A pipe that a thread fills bit by bit, pausing by our clock."""
    read_end, write_end = os.pipe()

    def fill():
        try:
            for at in range(0, len(raw), piece):
                os.write(write_end, raw[at:at + piece])
                time.sleep(pause_s)
        except BrokenPipeError:
            pass
        os.close(write_end)

    Beside(fill).start()
    return read_end


@pytest.mark.parametrize("version", [2, 3])
def test_a_raster_that_trickles_in(version):
    raw = raster.stream([pages.small(), pages.small(50, 60)], version)
    end = slow_pipe(raw, 997, 0.02)
    job = Job(input=end, pages=[pages.small(), pages.small(50, 60)], version=version)
    compare.run(job)
    os.close(end)


def test_no_standard_input_is_a_job_without_a_page():
    result = Job(input="closed").run()
    assert result.status == 1
    assert result.log[-1] == "     No pages found!"


@pytest.mark.parametrize("path", ["/bench", "/dev/zero", "/dev/null"])
def test_something_else_for_a_raster_file_is_a_job_without_a_page(path):
    result = Job(arguments=["1", "u", "t", "1", "", path], limit=30).run()
    assert result.status == 1
    assert result.log[-1] == "     No pages found!"


def test_a_full_disk_behind_standard_output_is_not_noticed():
    with open("/dev/full", "wb") as full:
        job = Job(output=full.fileno())
        result = job.run()
    model = Model(job.pages, job.choices).run()
    assert result.status == 0 and result.calls == model.calls


def test_a_backend_that_died_ends_the_job_at_the_first_write():
    read_end, write_end = os.pipe()
    os.close(read_end)
    result = Job(output=write_end, pages=[pages.small()] * 5, limit=30).run()
    os.close(write_end)
    assert result.status == BACKEND_GONE
    if not FOUNDATION:
        assert sum(call.startswith("HPEStartPage") for call in result.calls) == 1


def test_a_fifo_for_a_raster_file_waits_for_its_writer():
    def prepare(sandbox):
        os.mkfifo(sandbox.bench / "fifo")

    def actions(job):
        if job.until_log("SETUP_END"):
            job.sleep(0.5)
            (job.sandbox.bench / "fifo").write_bytes(raster.stream([pages.small()]))

    compare.run(Job(arguments=["1", "u", "t", "1", "", "/bench/fifo"], prepare=prepare,
                    actions=actions))


def test_a_fifo_without_a_writer_can_be_cancelled():
    def prepare(sandbox):
        os.mkfifo(sandbox.bench / "fifo")

    def actions(job):
        if job.until_log("SETUP_END"):
            job.sleep(0.5)
            job.terminate()

    result = Job(arguments=["1", "u", "t", "1", "", "/bench/fifo"], prepare=prepare,
                 actions=actions, limit=30).run()
    assert result.status == 1
    assert result.seconds_after_cancel < WELL_LIMIT
    assert not result.shared_memory_left


def test_a_backend_that_stalls_is_no_hindrance_once_it_drains():
    """The pipe is full, the job is cancelled, and then the backend takes everything."""
    read_end, write_end = os.pipe()
    taken = []

    def drain():
        while piece := os.read(read_end, 65536):
            taken.append(piece)

    reader = Beside(drain)

    def actions(job):
        if job.until_trace("HPESendBand"):
            job.sleep(0.7)
            job.terminate()
            job.sleep(0.7)
        reader.start()

    job = Job(output=write_end, actions=actions, limit=40,
              prepare=lambda sandbox: (sandbox.bench / "block").write_bytes(bytes(100000)),
              script={("HPESendBand", "*"): [("emitfile", "/bench/block")]})
    result = job.run()
    os.close(write_end)
    reader.finish()
    assert result.status == 0 and result.seconds_after_cancel < 0.7 + WELL_LIMIT
    assert not result.shared_memory_left
    calls = sum(call.startswith("HPESendBand") for call in result.calls)
    assert sum(map(len, taken)) == 16 + 100000 * calls


def test_a_cancel_takes_effect_while_the_backend_takes_nothing():
    """The pipe is full when the job is cancelled: the status thread stops and the shared memory goes
    all the same, and the job ends once the backend has gone too."""
    read_end, write_end = os.pipe()
    seen = {}

    def actions(job):
        if job.until_trace("HPESendBand"):
            job.sleep(0.7)
            job.terminate()
            seen["released"] = job.until(lambda: not job.shared_memory().exists(), seconds=6)
            seen["stopped"] = "Exit ReadStatusThread" in job.log_text()
        os.close(read_end)

    job = Job(output=write_end, actions=actions, limit=40,
              prepare=lambda sandbox: (sandbox.bench / "block").write_bytes(bytes(100000)),
              script={("HPESendBand", "*"): [("emitfile", "/bench/block")]})
    result = job.run()
    os.close(write_end)
    assert seen == {"released": True, "stopped": True}
    assert result.status == BACKEND_GONE and not result.shared_memory_left


def test_a_cancelled_job_does_not_wait_for_ever_for_a_backend_that_takes_nothing():
    """The pipe is full, and its reader neither reads nor goes: after twenty seconds the rest of the
    output is given up and the job ends in order."""
    read_end, write_end = os.pipe()

    def actions(job):
        if job.until_trace("HPESendBand"):
            job.sleep(0.7)
            job.terminate()

    result = Job(output=write_end, actions=actions, limit=60,
                 prepare=lambda sandbox: (sandbox.bench / "block").write_bytes(bytes(100000)),
                 script={("HPESendBand", "*"): [("emitfile", "/bench/block")]}).run()
    os.close(write_end)
    taken = b"".join(iter(lambda: os.read(read_end, 65536), b""))
    os.close(read_end)
    assert result.status == 0 and not result.shared_memory_left
    assert 19.5 < result.seconds_after_cancel < LIMIT_WITHOUT_A_READER
    assert result.log.count(GIVEN_UP) == 1
    assert result.log[-1] == "     Ready to print."
    # The print header, then zeros as far as the pipe went.
    assert 16 < len(taken) < 100000 and not any(taken[16:])
