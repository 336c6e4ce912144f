"""Cancelling a job: SIGTERM at every place that a job can stand still."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import signal

import pytest

import log_compare
import pages
import raster
import record
from cancelled import LIMIT, expect_cancelled, expect_document_ended
from job import Job

GOOD = record.record()


class Upstream:
    """The filter before ours: sends part of a raster and then says nothing more."""

    def __init__(self, raw):
        self.filter_end, self._end = os.pipe()
        os.set_blocking(self._end, False)
        if raw:
            assert os.write(self._end, raw) == len(raw)

    def close(self):
        os.close(self._end)
        os.close(self.filter_end)


def run_with_silent_upstream(raw, actions, **job):
    upstream = Upstream(raw)
    try:
        return Job(input=upstream.filter_end, actions=actions, **job).run()
    finally:
        upstream.close()


def test_before_the_first_check_is_done_a_cancel_has_the_systems_effect():
    def actions(job):
        if job.until_log("     StartOfPageJobCheck"):
            job.terminate()

    result = Job(plan=lambda p: p.silence(), actions=actions, limit=30).run()
    assert result.status in (128 + signal.SIGTERM, -signal.SIGTERM)
    assert result.seconds_after_cancel < 2
    assert result.calls == []


@pytest.mark.parametrize("entry", ["HPEInitialize", "HPEStartDoc"])
def test_during_setup(entry):
    """Setup is finished, then the cancel is seen at the first header."""
    def actions(job):
        if job.until_trace(entry):
            job.terminate()
            job.until(lambda: False, seconds=0.3)
        job.release()

    result = Job(script={(entry, 1): [("wait", "/bench/go")]}, actions=actions).run()
    expect_cancelled(result, 1)
    expect_document_ended(result)
    assert result.log[-1] == "     No pages found!"
    assert "SETUP_END" in result.log and "     Finished print job" in result.log
    assert "PAGE:" not in result.stderr


HEADER = raster.stream([pages.small()])


@pytest.mark.parametrize("sent", [0, 2, 4, 1000])
def test_while_the_header_is_waited_for(sent):
    def actions(job):
        if job.until_log("SETUP_END"):
            job.until(lambda: False, seconds=0.4)
            job.terminate()

    result = run_with_silent_upstream(HEADER[:sent], actions)
    expect_cancelled(result, 1)
    expect_document_ended(result)
    assert result.log[-1] == "     No pages found!"


@pytest.mark.parametrize("lines", [0, 30, 50.5])
@pytest.mark.parametrize("version", [2, 3])
def test_while_a_line_is_waited_for(lines, version):
    whole = raster.stream([pages.small()], version)
    cut = 4 + raster.HEADER_BYTES + int(lines * 300)

    def actions(job):
        if job.until_log("Error check"):
            job.until(lambda: False, seconds=0.3)
            job.terminate()

    result = run_with_silent_upstream(whole[:cut], actions)
    expect_cancelled(result, 0)
    expect_document_ended(result)
    assert "     Bailing due to error or cancel, page 1..." in result.log
    assert "     Finished page 1..." in result.log
    assert not any(call.startswith("HPEEndPage") for call in result.calls)
    assert result.log[-1] == "     Ready to print."


# Where the engine has the job in its hands, as long as it likes.
ENTRIES = [("HPEInitialize", 1), ("HPEStartDoc", 1), ("SetPaperTray", 1), ("HPEStartPage", 1),
           ("HPESendBand", 1), ("HPEEndPage", 1), ("HPEEndDoc", 1), ("HPEStartDoc", 2),
           ("HPEEndDoc", 2), ("DestroyHostPrintEngine", 1)]


def run_cancelled_in_entry(entry, call, then):
    """A job that is cancelled while the engine holds it in this call; what is done a second later
    at most, once the shared memory has gone, and whether it had."""
    gone = []

    def actions(job):
        if job.until_trace(entry, times=call):
            job.terminate()
            gone.append(job.until(lambda: not job.shared_memory().exists(), seconds=1))
            then(job)

    result = Job(script={(entry, call): [("wait", "/bench/go")]}, actions=actions).run()
    return result, gone == [True]


@pytest.mark.parametrize("entry,call", ENTRIES)
def test_in_every_call_of_the_engine(entry, call):
    """The shared memory goes though the engine holds on; then the job ends in order."""
    result, gone = run_cancelled_in_entry(entry, call, lambda job: job.release())
    assert gone
    expect_cancelled(result, 1 if (entry, call) in ENTRIES[:2] else 0)
    expect_document_ended(result)


@pytest.mark.parametrize("entry,call", ENTRIES)
def test_a_job_killed_in_a_call_of_the_engine_leaves_no_shared_memory(entry, call):
    result, gone = run_cancelled_in_entry(entry, call,
                                          lambda job: job.process.signal(signal.SIGKILL))
    assert gone and not result.shared_memory_left
    assert result.status in (128 + signal.SIGKILL, -signal.SIGKILL)


LOW = record.record(error=0x10)
PAUSES = {
    # the printer's state, the line before the pause, the lines that the cancel leaves out
    "for the status thread": (GOOD, "Start ReadStatusThread", ["   ### HPEEndPage"]),
    "for the printer to become busy": (GOOD, "**** Wait until printer Busy", []),
    "for the printer to become idle": (record.record(state="B"), "Printer State: B",
                                       ["WaitForPrinterState RETURNING (1)"]),
    "of the last polls": (LOW, "WaitForPrinterState RETURNING", []),
}


@pytest.mark.parametrize("name", PAUSES)
def test_in_every_pause(name):
    """The pause ends at once, and the shared memory goes."""
    state, line, missing = PAUSES[name]
    gone = []

    def actions(job):
        if job.until_log(line):
            job.until(lambda: False, seconds=0.1)
            job.terminate()
            gone.append(job.until(lambda: not job.shared_memory().exists(), seconds=1))

    result = Job(record=state, actions=actions).run()
    expect_cancelled(result, 0, 1.5)
    expect_document_ended(result)
    assert gone == [True]
    assert not set(missing) & set(result.log)
    assert result.log[-1] == "     Ready to print."


def test_a_job_that_is_cancelled_in_the_last_polls_reads_once_more_at_most():
    def actions(job):
        if job.until_log("WaitForPrinterState RETURNING"):
            job.until(lambda: False, seconds=2.5)
            counts.append(job.log_text().count("Getting Status"))
            job.terminate()

    counts = []
    result = Job(record=LOW, actions=actions).run()
    expect_cancelled(result, 0)
    assert result.log.count("Getting Status") - counts[0] <= 1


def test_a_page_is_left_where_it_stands():
    """The engine holds a line; the cancel is seen before the next one."""
    def actions(job):
        if job.until_trace("HPESendBand", times=20):
            job.terminate()
            job.until(lambda: False, seconds=0.3)
        job.release()

    result = Job(script={("HPESendBand", 20): [("wait", "/bench/go")]}, actions=actions).run()
    expect_cancelled(result, 0)
    expect_document_ended(result)
    assert sum(call.startswith("HPESendBand") for call in result.calls) == 20
    assert not any(call.startswith("HPEEndPage") for call in result.calls)
    tail = log_compare.split(result.log)[0]
    tail = tail[tail.index("     Finished page 1..."):]
    assert tail == ["     Finished page 1...",
                    "     Bailing due to error or cancel, page 1...", "     Finished print job",
                    "   ### HPEEndDoc", "OemClipDataBufsDelete: FREE clipDataBufs",
                    "     Flushing stdout", "**** Wait until printer Busy",
                    "**** Wait until printer not Busy\n",
                    "WaitForPrinterState called Looking for I", "Printer State: I", "Equal: 1",
                    "WaitForPrinterState RETURNING (1)", "Printer Status = I. \n\n",
                    "     Ready to print."]


def test_a_second_and_third_cancel_change_nothing():
    def actions(job):
        if job.until_trace("HPESendBand", times=20):
            job.terminate()
            for _ in range(20):
                job.process.signal()
                job.until(lambda: False, seconds=0.02)
        job.release()
        while not job.until_log("Ready to print", 1) and not job.over.is_set():
            job.process.signal()

    result = Job(script={("HPESendBand", 20): [("wait", "/bench/go")]}, actions=actions).run()
    expect_cancelled(result, 0)
    expect_document_ended(result)


def test_between_pages_while_upstream_is_silent():
    def actions(job):
        if job.until_trace("HPEStartDoc", times=2):
            job.until(lambda: False, seconds=0.4)
            job.terminate()

    result = run_with_silent_upstream(HEADER, actions)
    expect_cancelled(result, 0)
    expect_document_ended(result)
    assert "HPEEndPage H 0" in result.calls
    assert not [line for line in result.log if "Bailing" in line]


def test_during_the_check_before_a_page():
    """The job ends with that check: no document end, and yet no shared memory stays."""
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.fresh(record.record(cartridge=0x25))

    def actions(job):
        if job.until_log("#### In Error Retry"):
            job.terminate()

    result = Job(pages=[pages.small(), pages.small()], plan=plan, actions=actions).run()
    expect_cancelled(result, 1)
    assert result.log[-1] == "     Job Cancelled"
    assert not any(call.startswith("Destroy") for call in result.calls)


def test_during_a_silent_printers_check():
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.silence()

    def actions(job):
        if job.until_log("     Checking Status on Page 1"):
            job.until(lambda: False, seconds=1)
            job.terminate()

    result = Job(pages=[pages.small(), pages.small()], plan=plan, actions=actions).run()
    expect_cancelled(result, 1)
    assert result.log[-1] == "     Job Cancelled"


def test_while_a_busy_printer_is_waited_for():
    def actions(job):
        if job.until_log("Printer State: B"):
            job.terminate()

    result = Job(record=record.record(state="B"), actions=actions).run()
    expect_cancelled(result, 0)
    assert "WaitForPrinterState Job Cancelled" in result.log
    assert not [line for line in result.log if line.startswith("WaitForPrinterState RETURNING")]


def test_while_a_condition_is_polled_at_the_end():
    def actions(job):
        if job.until_log("WaitForPrinterState RETURNING"):
            job.until(lambda: False, seconds=2)
            job.terminate()

    result = Job(record=record.record(error=0x10), actions=actions).run()
    expect_cancelled(result, 0)


def test_while_a_silent_utility_is_waited_for():
    """The status thread stands in its ten seconds, which the cancel ends."""
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(record.record(error=0x10))

    def actions(job):
        job.until_log("Error check 0 ")
        job.until(lambda: False, seconds=2.5)
        job.terminate()
        job.release()

    result = Job(plan=plan, actions=actions, utility="silent",
                 script={("HPESendBand", 20): [("wait", "/bench/go")]}).run()
    expect_cancelled(result, 0, LIMIT)
    expect_document_ended(result)


def test_with_a_printer_that_fell_silent():
    """No read that is still made waits for its three seconds."""
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.drop()
        p.silence()

    def actions(job):
        if job.until_log("Error check 0 "):
            job.until(lambda: False, seconds=1.5)
            job.terminate()
        job.release()

    result = Job(plan=plan, actions=actions,
                 script={("HPESendBand", 20): [("wait", "/bench/go")]}).run()
    expect_cancelled(result, 0, LIMIT)
    expect_document_ended(result)
    assert "WaitForPrinterState Job Cancelled" in result.log
    assert not [line for line in result.log if "TIMED OUT" in line]


def test_a_cancel_before_a_refused_document_still_releases_the_shared_memory():
    """The job ends before it asks about a cancel again."""
    def actions(job):
        if job.until_trace("HPEStartDoc"):
            job.terminate()
            job.until(lambda: False, seconds=0.3)
        job.release()

    script = {("HPEStartDoc", 1): [("wait", "/bench/go"), ("return", -5)]}
    result = Job(script=script, actions=actions).run()
    expect_cancelled(result, 1)
    assert result.log[-1] == "   ### HPEStartDoc Failed 0xfffffffb"


def test_a_cancel_before_a_raster_that_is_not_there_still_releases_the_shared_memory():
    def actions(job):
        if job.until_trace("HPEStartDoc"):
            job.terminate()
            job.until(lambda: False, seconds=0.3)
        job.release()

    result = Job(arguments=["1", "u", "t", "1", "", "/bench/nothing"], actions=actions,
                 script={("HPEStartDoc", 1): [("wait", "/bench/go")]}).run()
    expect_cancelled(result, 1)
    assert result.log[-1].startswith("Unable to open raster file - ")
