"""The printer's conditions while a page prints."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import log_compare
import pages
import record
from expected import Model
from expected_text import (CONDITIONS, STATES_WITHDRAWN, condition_off, condition_on)
from job import Job, run_together

GOOD = record.record()
HELD = {("HPESendBand", 5): [("wait", "/bench/go")]}
STATES = {
    "ink low": record.record(error=0x10),
    "ink empty": record.record(error=0x10, ink=(0, 400000001, 0)),
    "paper out": record.record(error=0x24),
    "alignment needed": record.record(align=3),
}


def held_page(plan, **job):
    """A job whose page stays open until the plan has run: it calls p.job.release()."""
    made = Job(plan=plan, script=HELD, **job)
    result = made.run()
    model = Model(made.pages, made.choices, script=HELD).run()
    log_compare.check_reader(result.log)
    main, threads = log_compare.split(result.log)
    assert main == model.log
    assert result.calls == model.calls and result.pixels == model.bands
    assert result.status == 0
    return result, [log_compare.collapse(page) for page in threads]


def after_page_line(result):
    start = STATES_WITHDRAWN + "     PAGE: 1 1"
    assert result.stderr.startswith(start)
    return result.stderr[len(start):]


def comes_and_goes(name):
    """A condition during the page, gone before its end."""
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(STATES[name], until=p.log(f"Setting {name}"))
        p.fresh(STATES[name], seconds=1.8)
        p.fresh(GOOD, until=p.log(f"Clearing {name}"))
        p.job.release()

    result, threads = held_page(plan)
    word = "0" if name == "alignment needed" else f"{record.error_word(STATES[name]):X}"
    middle = [f"Setting {name}"] + ([] if word == "0" else [f"Error check {word} "])
    expected = (["Start ReadStatusThread", "Error check 0 "] + middle
                + (["Error check 0 "] if word == "0" else [])
                + [f"Clearing {name}", "Error check 0 ", "Exit ReadStatusThread"])
    assert threads == [expected]
    assert after_page_line(result) == condition_on(name) + condition_off(name)


@pytest.mark.parametrize("name", CONDITIONS)
def test_a_condition_is_said_once_when_it_comes_and_once_when_it_goes(name):
    comes_and_goes(name)


def test_conditions_that_come_together_are_said_in_order():
    everything = record.record(error=0x34, align=1)

    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(everything, until=p.log("Error check 34 "))
        p.fresh(GOOD, until=p.log("Clearing alignment needed"))
        p.job.release()

    result, threads = held_page(plan)
    names = ["ink low", "paper out", "alignment needed"]
    assert after_page_line(result) == ("".join(map(condition_on, names))
                                       + "".join(map(condition_off, names)))
    assert threads[0][2:6] == [f"Setting {name}" for name in names] + ["Error check 34 "]


def test_low_ink_that_runs_out_changes_the_reason():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(STATES["ink low"], until=p.log("Setting ink low"))
        p.fresh(STATES["ink empty"], until=p.log("Setting ink empty"))
        p.fresh(GOOD, until=p.log("Clearing ink empty"))
        p.job.release()

    result, _ = held_page(plan)
    assert after_page_line(result) == (condition_on("ink low") + condition_on("ink empty")
                                       + condition_off("ink low") + condition_off("ink empty"))


@pytest.mark.parametrize("word", [0x04, 0x20, 0x01, 0x800000])
def test_other_errors_are_logged_and_not_reported(word):
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(record.record(error=word), until=p.log(f"Error check {word:X} "))
        p.fresh(GOOD, until=p.log("Error check 0 ", times=2))
        p.job.release()

    result, _ = held_page(plan)
    assert after_page_line(result) == ""


def test_a_busy_printer_changes_nothing():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(STATES["paper out"], until=p.log("Setting paper out"))
        p.fresh(record.record(state="B"), seconds=2.5)
        assert "Clearing" not in p.job.log_text()
        p.fresh(GOOD, until=p.log("Clearing paper out"))
        p.job.release()

    result, _ = held_page(plan)
    assert after_page_line(result) == condition_on("paper out") + condition_off("paper out")


def test_a_busy_printers_error_is_not_taken():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(record.record(state="B", error=0x24), seconds=2.5)
        p.fresh(GOOD, seconds=0.5)
        p.job.release()

    result, threads = held_page(plan)
    assert after_page_line(result) == ""
    assert threads == [["Start ReadStatusThread", "Error check 0 ", "Exit ReadStatusThread"]]


def test_a_lost_record_does_not_clear_a_condition():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(STATES["paper out"], until=p.log("Setting paper out"))
        p.drop()
        p.silence(until=p.log("FAILED TO GET STATUS"))
        p.fresh(GOOD, until=p.log("Clearing paper out"))
        p.job.release()

    result, threads = held_page(plan)
    assert threads[0].count("Clearing paper out") == 1
    failed = result.log.index("FAILED TO GET STATUS")
    assert result.log.index("Clearing paper out") > failed
    assert result.log[failed + 1] == "Error check 24 "


def test_a_lost_record_does_clear_alignment():
    """Its byte is read from the record, which a failed read leaves at zero."""
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(STATES["alignment needed"], until=p.log("Setting alignment needed"))
        p.drop()
        p.silence(until=p.log("Clearing alignment needed"))
        p.fresh(GOOD, seconds=0.3)
        p.job.release()

    result, _ = held_page(plan)
    failed = result.log.index("FAILED TO GET STATUS")
    assert result.log[failed + 1] == "Clearing alignment needed"


def test_a_condition_lasts_over_pages_and_is_said_once():
    low = STATES["ink low"]

    def plan(p):
        p.fresh(low, until=p.log("WaitForPrinterState RETURNING"))
        p.fresh(GOOD)

    result = Job(pages=[pages.small()] * 3, plan=plan).run()
    assert result.stderr == (STATES_WITHDRAWN + "     PAGE: 1 1" + condition_on("ink low")
                             + "     PAGE: 2 1     PAGE: 3 1" + condition_off("ink low"))
    _, threads = log_compare.split(result.log)
    assert [log_compare.collapse(page)[1] for page in threads] == [
        "Setting ink low", "Error check 10 ", "Error check 10 "]


def test_a_steady_condition_is_withdrawn_by_nobody_at_the_end():
    """Ten polls, one second apart, and the reason stays."""
    low = STATES["ink low"]
    result = compare.run(Job(record=low))
    assert "STATE: -marker-supply-low" not in result.stderr[len(STATES_WITHDRAWN):]
    end = result.log[result.log.index("WaitForPrinterState RETURNING (1)"):]
    assert end.count("Getting Status") == 10
    assert result.seconds > 12


def test_the_thread_looks_about_every_four_fifths_of_a_second():
    def plan(p):
        p.fresh(GOOD, until=p.log("Error check 0 "))
        p.fresh(GOOD, seconds=4.0)
        p.job.release()

    result, _ = held_page(plan)
    looks = result.log.count("Error check 0 ")
    assert 4 <= looks <= 7


def test_each_page_has_a_thread_of_its_own():
    def one(count):
        result = compare.run(Job(pages=[pages.small() for _ in range(count)]))
        assert result.log.count("Start ReadStatusThread") == count
        assert result.log.count("Exit ReadStatusThread") == count
    run_together([lambda n=n: one(n) for n in (1, 2, 6)])
