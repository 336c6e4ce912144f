"""Cancelling a job: SIGTERM at every place that a job can stand still."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import random
import signal

import pytest

import log_compare
import pages
import raster
import record
from job import Job, run_together

GOOD = record.record()
CANCELS = int(os.environ.get("ZR7700_CANCELS", "12"))

# A cancelled job still sleeps two seconds and looks at the printer: with an idle printer all of it
# takes about three seconds. The rest is for a loaded machine and slower builds.
LIMIT = 12.0


def expect_cancelled(result, status, limit=LIMIT):
    """What holds for every cancelled job whose handler was installed."""
    assert result.status == status, result.log[-5:]
    assert result.seconds_after_cancel < limit
    assert not result.shared_memory_left
    assert not [line for line in result.log if line.startswith("     BAILING")]
    log_compare.check_reader(result.log)
    log_compare.split(result.log)


def expect_document_ended(result):
    assert result.calls[-2:] == ["HPEEndDoc H 0", "DestroyHostPrintEngine H"]
    starts = sum(call.startswith("HPEStartDoc") for call in result.calls)
    assert starts == sum(call.startswith("HPEEndDoc") for call in result.calls)


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
    expect_cancelled(result, 0, 8)
    assert "WaitForPrinterState Job Cancelled" in result.log
    assert not [line for line in result.log if line.startswith("WaitForPrinterState RETURNING")]


def test_while_a_condition_is_polled_at_the_end():
    def actions(job):
        if job.until_log("WaitForPrinterState RETURNING"):
            job.until(lambda: False, seconds=2)
            job.terminate()

    result = Job(record=record.record(error=0x10), actions=actions).run()
    expect_cancelled(result, 0, 14)


def test_while_a_silent_utility_is_waited_for():
    """The status thread stands in its ten seconds; no more than they are spent."""
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
    expect_cancelled(result, 0, 30)
    expect_document_ended(result)


def test_with_a_printer_that_fell_silent():
    """Every read that is still made runs into its own limit of three seconds, and no more."""
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
    expect_cancelled(result, 0, 18)
    expect_document_ended(result)
    # Which of the two limits is met first depends on the fraction of a second.
    assert ("WaitForPrinterState Job Cancelled" in result.log) != (
        "No STATUS FOR TOO LONG - GIVE UP WAITING FOR PRINTER STATE" in result.log)


def random_cancel(seed):
    """A job of several slow pages, cancelled at any moment after its first check."""
    luck = random.Random(seed)
    moment = luck.uniform(0, 7)

    def actions(job):
        if job.until_log("#### NOT in Error Continue"):
            job.until_log("   ### HPEInitialize")
            job.until(lambda: False, seconds=moment)
            job.terminate()

    script = {("HPESendBand", "*"): [("delay", luck.choice([0, 2, 8])), ("emit", "0102030405")]}
    raw = record.record(error=luck.choice([0, 0x10, 0x24]))

    def plan(p):
        p.fresh(GOOD, until=p.log("   ### HPEInitialize"))
        if luck.random() < 0.7:
            p.fresh(raw, until=lambda: p.job.terminated is not None)
        else:
            p.rate(raw, 16, until=lambda: p.job.terminated is not None)
        p.fresh(GOOD)

    result = Job(pages=[pages.small(60, 80) for _ in range(4)], plan=plan, actions=actions,
                 script=script, limit=60,
                 utility=luck.choice(["ack", "absent", "close"])).run()
    if result.seconds_after_cancel is None:
        return
    begun = "PAGE: 1 1" in result.stderr
    checking = result.log[-1] == "     Job Cancelled"
    assert result.status == (1 if checking or not begun else 0), f"seed {seed}: {result.log[-9:]}"
    expect_cancelled(result, result.status, 14)
    if not checking:
        expect_document_ended(result)


@pytest.mark.parametrize("group", range((CANCELS + 5) // 6))
def test_at_random_moments(group):
    start = random.SystemRandom().randrange(1 << 30)
    count = min(6, CANCELS - 6 * group)
    run_together([lambda s=start + i: random_cancel(s) for i in range(count)])


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
