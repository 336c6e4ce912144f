"""The end of a job: waiting for the printer, the last polls, the shared memory."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import stat

import pytest

import log_compare
import record
from expected_text import STATES_WITHDRAWN, condition_off, condition_on
from job import Job

GOOD = record.record()
BUSY = record.record(state="B")


def end_of(result):
    main, _ = log_compare.split(result.log)
    return log_compare.collapse(main[main.index("WaitForPrinterState called Looking for I"):])


def test_a_busy_printer_is_waited_for():
    def plan(p):
        p.fresh(BUSY, until=p.log("Printer State: B", times=3))
        p.drop()
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    main, _ = log_compare.split(result.log)
    waits = main[main.index("WaitForPrinterState called Looking for I") + 1:]
    assert waits == (["Printer State: B", "Equal: 1"] * 3
                     + ["Printer State: I", "Equal: 1", "WaitForPrinterState RETURNING (1)",
                        "Printer Status = I. \n\n", "     Ready to print."])
    assert result.status == 0


def test_a_printer_that_stays_busy_is_given_up_after_twenty_seconds():
    result = Job(record=BUSY, limit=90).run()
    assert end_of(result)[-4:] == [
        "Printer state did not change - GIVE UP WAITING FOR PRINTER STATE",
        "WaitForPrinterState RETURNING (0)", "Printer Status = B. \n\n", "     Ready to print."]
    assert result.seconds > 20
    # A look takes a second at least and three at most, by its own clock.
    assert 7 <= result.log.count("Printer State: B") <= 21
    assert result.status == 0


def test_a_printer_that_falls_silent_is_given_up_early():
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndDoc"))
        p.drop()
        p.silence()

    result = Job(plan=plan, limit=60).run()
    assert end_of(result) == [
        "WaitForPrinterState called Looking for I",
        "No STATUS FOR TOO LONG - GIVE UP WAITING FOR PRINTER STATE",
        "WaitForPrinterState RETURNING (0)", "Printer Status = ", "     Ready to print."]
    wait = result.log[result.log.index("WaitForPrinterState called Looking for I"):
                      result.log.index("WaitForPrinterState RETURNING (0)")]
    assert 1 <= wait.count("FAILED TO GET STATUS") <= 2
    assert result.seconds < 25


@pytest.mark.parametrize("letter", ["X", "\x7f", "0"])
def test_other_states_are_waited_through(letter):
    odd = record.record(state=letter)

    def plan(p):
        p.fresh(odd, until=p.log(f"Printer State: {letter}"))
        p.drop()
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    assert end_of(result)[-1] == "     Ready to print."
    assert f"Printer State: {letter}" in result.log


def test_the_last_polls_end_when_the_printer_is_well_again():
    low = record.record(error=0x24)

    def plan(p):
        p.fresh(GOOD, until=p.log("WaitForPrinterState RETURNING"))
        p.drop()
        p.fresh(low, until=p.log("Setting paper out"))
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    # The last polls may begin before the change is there; then the job ends well at once.
    said = result.stderr[len(STATES_WITHDRAWN) + len("     PAGE: 1 1"):]
    assert said in ("", condition_on("paper out") + condition_off("paper out"))
    assert result.status == 0


def test_shared_memory_holds_the_latest_record_while_the_job_runs():
    seen = {}

    def look(job, name):
        path = job.shared_memory()
        seen[name] = (path.read_bytes(), stat.S_IMODE(path.stat().st_mode))

    def actions(job):
        if job.until_log("Error check 0 "):
            look(job, "page")
        job.release()

    job = Job(actions=actions, script={("HPESendBand", 5): [("wait", "/bench/go")]})
    result = job.run()
    assert result.status == 0 and not result.shared_memory_left
    assert seen["page"][0] == GOOD
    assert seen["page"][1] & 0o044 == 0o044 and seen["page"][1] & 0o600 == 0o600


def test_shared_memory_is_there_and_empty_before_the_first_record():
    seen = []

    def plan(p):
        p.silence(until=p.log("Getting Status"))
        path = p.job.shared_memory()
        seen.append((path.read_bytes(), stat.S_IMODE(path.stat().st_mode)))
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    assert result.status == 0
    assert seen == [(bytes(144), 0o644)]


def test_shared_memory_left_by_another_job_is_used_and_removed():
    def prepare(sandbox):
        sandbox.path("/shm/TessaryZR7700PrinterMMap").write_bytes(b"\xff" * 4000)

    result = Job(prepare=prepare).run()
    assert result.status == 0 and not result.shared_memory_left


def in_the_way_folder(path):
    path.mkdir()


def in_the_way_link(path):
    path.symlink_to("/tmp/elsewhere")


@pytest.mark.parametrize("plant", [in_the_way_folder, in_the_way_link])
def test_without_shared_memory_the_job_prints(plant):
    def prepare(sandbox):
        plant(sandbox.path("/shm/TessaryZR7700PrinterMMap"))

    result = Job(prepare=prepare).run()
    assert result.status == 0
    assert len(result.stdout) == 16


def test_shared_memory_that_another_one_empties_does_not_end_the_job():
    def actions(job):
        if job.until_log("Error check 0 "):
            os.truncate(job.shared_memory(), 0)
            job.until_log("Error check 0 ", times=3)
        job.release()

    job = Job(actions=actions, script={("HPESendBand", 5): [("wait", "/bench/go")]})
    assert job.run().status == 0


def test_no_file_is_left_but_log_and_ini():
    before, after = set(), set()

    def files(root, into):
        for folder, _, names in os.walk(root):
            into.update(os.path.join(folder, name) for name in names
                        if not re.search("/bench$", folder))

    job = Job(prepare=lambda sandbox: files(sandbox.root, before))
    real_remove = job.sandbox.remove

    def remove():
        files(job.sandbox.root, after)
        real_remove()

    job.sandbox.remove = remove
    job.run()
    new = {os.path.basename(path) for path in after - before}
    assert new == {"ZR7700Filter.log", "tqgrcfg.ini"}
