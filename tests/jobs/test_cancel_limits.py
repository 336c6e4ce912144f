"""How long a cancelled job takes, with printers and utilities of every kind."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import pages
import record
from cancelled import LIMIT, WELL_LIMIT, expect_cancelled, expect_document_ended
from job import Job

GOOD = record.record()
# Neither busy, which would hide the error, nor idle, which would end the wait.
EMPTY_BIN = record.record(state="E", error=0x24)
UNALIGNED = record.record(align=1)
INK_LOW = record.record(error=0x10)

# A page that stays in the engine until the test lets it go.
HELD = {("HPESendBand", 20): [("wait", "/bench/go")]}


def cancel_when(line, after=0.0):
    def actions(job):
        if job.until_log(line):
            job.until(lambda: False, seconds=after)
            job.terminate()
        job.release()
    return actions


def cancelled(p):
    return lambda: p.job.terminated is not None


def expect_ended_in_order(job, limit):
    result = job.run()
    expect_cancelled(result, 0, limit)
    expect_document_ended(result)
    return result


@pytest.mark.parametrize("hertz", [1, 3.5, 4, 16])
@pytest.mark.parametrize("channel", ["pipe", "socketpair"])
def test_with_a_printer_that_is_well(hertz, channel):
    job = Job(plan=lambda p: p.rate(GOOD, hertz), channel=channel, script=HELD,
              actions=cancel_when("Error check 0 ", 1))
    expect_ended_in_order(job, WELL_LIMIT)


def test_with_an_empty_bin_and_the_printer_then_switched_off():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(EMPTY_BIN, until=cancelled(p))
        p.drop()
        p.silence()

    expect_ended_in_order(Job(plan=plan, script=HELD, actions=cancel_when("Setting paper out", 1)), LIMIT)


def test_with_an_empty_bin_and_the_cable_pulled_out():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(EMPTY_BIN, until=p.log("Setting paper out"))
        p.hang_up()

    expect_ended_in_order(Job(plan=plan, script=HELD, actions=cancel_when("Setting paper out", 1)), LIMIT)


@pytest.mark.parametrize("hertz", [1, 3.5])
def test_with_an_empty_bin_and_few_records(hertz):
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.rate(EMPTY_BIN, hertz)

    expect_ended_in_order(Job(plan=plan, script=HELD, actions=cancel_when("Setting paper out", 3)), LIMIT)


@pytest.mark.parametrize("utility", ["silent", "full", "drip"])
@pytest.mark.parametrize("hertz", [3.5, None], ids=["few records", "then silent"])
def test_with_a_utility_that_hangs(utility, hertz):
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        if hertz is not None:
            p.rate(INK_LOW, hertz)
        p.fresh(INK_LOW, until=cancelled(p))
        p.drop()
        p.silence()

    job = Job(plan=plan, utility=utility, script=HELD, actions=cancel_when("Error check 0 ", 3))
    expect_ended_in_order(job, LIMIT)


@pytest.mark.parametrize("utility", ["silent", "full"])
def test_with_a_utility_that_hangs_in_a_check(utility):
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.fresh(record.record(cartridge=0x25))

    result = Job(pages=[pages.small(), pages.small()], plan=plan, utility=utility,
                 actions=cancel_when("#### In Error Retry", 1)).run()
    expect_cancelled(result, 1, LIMIT)
    assert result.log[-1] == "     Job Cancelled"


def test_with_alignment_asked_for():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(UNALIGNED)

    job = Job(plan=plan, script=HELD, actions=cancel_when("Setting alignment needed", 1))
    expect_ended_in_order(job, LIMIT)


def test_with_a_printer_that_sends_rubbish():
    """Rubbish for records: every read finds something, and none of it is a record."""
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(record.spoiled(GOOD, 142))

    job = Job(plan=plan, script=HELD, actions=cancel_when("Error check 0 ", 4))
    expect_ended_in_order(job, LIMIT)


@pytest.mark.parametrize("state", [EMPTY_BIN, INK_LOW, UNALIGNED], ids=["bin", "ink", "align"])
@pytest.mark.parametrize("line", ["**** Wait until printer Busy",
                                  "WaitForPrinterState called Looking for I"])
def test_at_the_end_of_a_job_whose_printer_wants_something(state, line):
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.rate(state, 3.5)

    expect_ended_in_order(Job(plan=plan, actions=cancel_when(line, 0.5)), LIMIT)


def test_what_is_shown_last_is_how_the_printer_is():
    """The bin is filled just before the cancel: the reason is withdrawn, not left for the next job."""
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.rate(record.record(error=0x24), 4, until=p.log("Setting paper out"))
        p.drop()
        p.rate(GOOD, 4)

    def actions(job):
        if job.until_log("Setting paper out"):
            job.until(lambda: False, seconds=0.1)
            job.terminate()
        job.release()

    result = expect_ended_in_order(Job(plan=plan, script=HELD, actions=actions), WELL_LIMIT)
    assert result.stderr.count("STATE: +media-needed\n") == 1
    assert result.stderr.count("STATE: -media-needed\n") == 2  # at the start, and now


def test_what_a_silent_printer_showed_last_stays_shown():
    """No record came: neither the alignment nor the empty ink can be known to be over."""
    empty = record.record(error=0x10, ink=(400000001, 1, 1), align=1)

    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(empty, until=p.log("Setting alignment needed"))
        p.drop()
        p.silence()

    def actions(job):
        if job.until_log("Setting alignment needed"):
            job.terminate()
        job.release()

    result = expect_ended_in_order(Job(plan=plan, script=HELD, actions=actions), LIMIT)
    after = result.stderr[result.stderr.index("+marker-supply-empty"):]
    assert "STATE: -marker-supply-empty" not in after and "recovered" not in after
