"""The printer utility: when it is told, and how it can misbehave."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import pages
import record
from job import Job
from utility import Utility

GOOD = record.record()
MISSING = record.record(cartridge=0x25)


def three_passes(bad=MISSING):
    def plan(p):
        p.fresh(bad, until=p.log("#### In Error Retry", times=3))
        p.drop()
        p.fresh(GOOD)
    return plan


def run_check(utility, options="", limit=90.0):
    return compare.run(Job(plan=three_passes(), utility=utility, options=options, limit=limit),
                       checks={0: [MISSING, MISSING, MISSING, GOOD]})


def test_a_utility_that_answers_is_told_once_per_check():
    result = run_check("ack")
    assert result.utility_connections == 1
    assert result.utility_heard == b""


def test_a_suppressed_utility_is_never_told():
    result = run_check("ack", options="SuppressStartingUtilityOnError=Yes")
    assert result.utility_connections == 0


@pytest.mark.parametrize("utility", ["rubbish", "close", "drip"])
def test_a_utility_that_does_not_answer_as_it_should_is_tried_once(utility):
    result = run_check(utility)
    assert result.utility_connections == 1


def test_a_silent_utility_holds_the_job_ten_seconds_once():
    result = run_check("silent")
    assert result.utility_connections == 1
    seconds, = result.utility_held_open
    assert 8.5 < seconds < 11.5


def test_without_a_utility_the_job_goes_on():
    run_check("absent")


def test_a_utility_with_a_full_backlog_does_not_hold_the_job():
    result = run_check("full", limit=60.0)
    assert result.seconds < 45


def page_with_errors(utility, options=""):
    """Two kinds of error and a pause while a page prints, the check before it being good."""
    low, out = record.record(error=0x10), record.record(error=0x24)

    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(low, until=p.log("Error check 10 ", times=3))
        p.fresh(out, until=p.log("Error check 24 ", times=2))
        p.fresh(GOOD, until=p.log("Clearing paper out"))
        p.job.release()

    script = {("HPESendBand", 5): [("wait", "/bench/go")]}
    return Job(plan=plan, script=script, utility=utility, options=options).run()


def test_the_status_thread_tells_the_utility_of_each_new_error():
    result = page_with_errors("ack")
    assert result.status == 0
    assert result.utility_connections == 2


def test_the_status_thread_keeps_quiet_when_told_to():
    result = page_with_errors("ack", "SuppressStartingUtilityOnError=Yes")
    assert result.status == 0 and result.utility_connections == 0


def test_the_status_thread_tries_a_deaf_utility_once():
    assert page_with_errors("rubbish").utility_connections == 1


def test_a_utility_that_was_not_there_is_not_tried_again():
    """It comes up while the job runs: too late for this job."""

    late = []

    def plan(p):
        p.fresh(MISSING, until=p.log("#### In Error Retry", times=2))
        late.append(Utility(p.job.sandbox.sockets, "ack"))
        p.fresh(MISSING, until=p.log("#### In Error Retry", times=4))
        p.drop()
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    late[0].stop()
    assert result.status == 0
    assert late[0].connections == 0


def test_the_last_polls_never_tell_the_utility():
    low = record.record(error=0x10)

    def plan(p):
        p.fresh(GOOD, until=p.log("WaitForPrinterState called"))
        p.fresh(low)

    result = Job(plan=plan, utility="ack", pages=[pages.small()]).run()
    assert result.utility_connections == 0
