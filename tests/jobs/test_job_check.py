"""The check before the job and before every page."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import pages
import record
from expected_text import ALIGN, INVALID, MISSING, OUT_OF_INK, RECOVERED_ALL, STATES_WITHDRAWN
from job import Job, run_together

GOOD = record.record()


def cured_after_one_retry(bad, good=GOOD):
    def plan(p):
        p.fresh(bad, until=p.log("#### In Error Retry"))
        p.drop()
        p.fresh(good)
    return plan


ERRORS = {
    "missing": (record.record(cartridge=0x25), f"ERROR: recoverable: {MISSING}"),
    "missing, lowest code": (record.record(cartridge=0x20), f"ERROR: recoverable: {MISSING}"),
    "missing, highest code": (record.record(cartridge=0x2F), f"ERROR: recoverable: {MISSING}"),
    "invalid": (record.record(cartridge="q"), f"ERROR: recoverable: {INVALID}"),
    "invalid, code 0": (record.record(cartridge=0), f"ERROR: recoverable: {INVALID}"),
    "invalid, code 0x30": (record.record(cartridge=0x30), f"ERROR: recoverable: {INVALID}"),
    "alignment": (record.record(align=1), f"ERROR: recoverable: {ALIGN}"),
    "out of ink": (record.record(ink=(1, 400000001, 2)), f"ERROR: unrecoverable: {OUT_OF_INK}"),
}


@pytest.mark.parametrize("name", ERRORS)
def test_an_error_holds_the_job_until_it_is_cured(name):
    bad, said = ERRORS[name]
    job = Job(plan=cured_after_one_retry(bad))
    result = compare.run(job, checks={0: [bad, GOOD]})
    assert result.stderr.startswith(STATES_WITHDRAWN + said + RECOVERED_ALL)


def test_everything_wrong_at_once_is_said_in_order():
    bad = record.record(cartridge=0x21, align=1, ink=(3000000001, 0, 0))
    compare.run(Job(plan=cured_after_one_retry(bad)), checks={0: [bad, GOOD]})


def test_an_error_is_said_again_on_every_pass():
    bad = record.record(cartridge=0x25)

    def plan(p):
        p.fresh(bad, until=p.log("#### In Error Retry", times=3))
        p.drop()
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan), checks={0: [bad, bad, bad, GOOD]})
    assert result.stderr.count("ERROR: recoverable: The Color cartridge is missing!") == 3


def test_an_error_before_the_second_page_holds_that_page():
    bad = record.record(cartridge=0x25, letter26="H")
    good = record.record(letter26="I", align6=99)

    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.fresh(bad, until=p.log("#### In Error Retry", times=2))
        p.drop()
        p.fresh(good)

    job = Job(pages=[pages.small(), pages.small()], plan=plan, settings={"OutputDest": 7})
    result = compare.run(job, checks={1: [bad, bad, good]})
    assert (result.stdout[5], result.stdout[16 + 5]) == (7, 1)


def test_one_error_gives_way_to_another():
    missing, align = record.record(cartridge=0x25), record.record(align=1)

    def plan(p):
        p.fresh(missing, until=p.log("#### In Error Retry"))
        p.drop()
        p.fresh(align, until=p.log("#### In Error Retry", times=2))
        p.drop()
        p.fresh(GOOD)

    compare.run(Job(plan=plan), checks={0: [missing, align, GOOD]})


def test_a_cartridge_changed_for_the_other_family_during_the_check_loads_that_family():
    missing, heron = record.record(cartridge=0x20), record.record(cartridge="U")
    job = Job(plan=cured_after_one_retry(missing, heron), record=heron)
    result = compare.run(job, checks={0: [missing, heron]})
    assert result.loaded == ["tqheflib", "tqhehpec", "tqhehpeh", "tqhehpep"]


def test_a_cartridge_changed_between_pages_keeps_the_family_but_not_the_ink_levels():
    heron = record.record(cartridge="V")

    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.fresh(heron)

    job = Job(pages=[pages.small(), pages.small()], plan=plan)
    result = compare.run(job, checks={1: [heron]})
    assert result.loaded == ["tqgrflib", "tqgrhpec", "tqgrhpeh", "tqgrhpep"]
    # 2455000000 less its eighth.
    assert result.stdout[16 + 6:16 + 10] == (2455000000 - 306875000).to_bytes(4, "big")


@pytest.mark.parametrize("align", [2, 255])
def test_only_an_alignment_byte_of_one_stops_the_check(align):
    other = record.record(align=align)

    def plan(p):
        p.fresh(other, until=p.trace("HPEStartDoc"))
        p.drop()
        p.fresh(GOOD, seconds=0.1)
        p.job.release()

    script = {("HPEStartDoc", 1): [("wait", "/bench/go")]}
    compare.run(Job(plan=plan, script=script), checks={0: [other]})


LEVELS = [("Q", 190000000), ("Q", 190000001), ("Q", 400000000), ("P", 463000001),
          ("P", 700000000), ("U", 1820000000), ("V", 3000000000), ("V", 0), ("Q", 1)]


def test_ink_levels_short_of_empty_go_on():
    def one(cartridge, level):
        raw = record.record(cartridge=cartridge, ink=(1, level, level))
        compare.run(Job(record=raw))
    run_together([lambda c=c, n=n: one(c, n) for c, n in LEVELS])


@pytest.mark.parametrize("cartridge,level", [("P", 700000001), ("U", 1820000001),
                                             ("V", 3000000001), ("V", 4294967295)])
def test_ink_levels_beyond_empty_stop(cartridge, level):
    bad = record.record(cartridge=cartridge, ink=(0, 0, level))
    good = record.record(cartridge=cartridge)
    job = Job(plan=cured_after_one_retry(bad, good), record=good)
    compare.run(job, checks={0: [bad, good]})


@pytest.mark.parametrize("letter,byte5", [("H", 1), ("I", 1), ("J", 2), ("h", 2)])
def test_the_status_letter_decides_the_headers_destination(letter, byte5):
    raw = record.record(letter26=letter)
    result = compare.run(Job(record=raw, settings={"OutputDest": 2}))
    assert result.stdout[5] == byte5


def test_a_first_check_gives_up_after_sixteen_failed_reads():
    """Silence in every form, each about a minute long."""
    def silent(p):
        p.silence()

    def gone(p):
        p.hang_up()

    def spoiled(p):
        p.fresh(record.spoiled(GOOD, 142))

    def one(plan, channel):
        result = Job(plan=plan, channel=channel, limit=150).run()
        assert result.status == 1
        assert result.log[-1] == "     StartOfPageJobCheck get status retries failed"
        assert result.log.count("FAILED TO GET STATUS") == 16
        assert result.stderr == STATES_WITHDRAWN
        assert result.calls == [] and result.loaded == []
        assert result.seconds > 45
        assert result.processor_seconds < 5, "a silent printer must not burn a processor"

    run_together([lambda: one(silent, "pipe"), lambda: one(silent, "blocking"),
                  lambda: one(gone, "pipe"), lambda: one(None, "closed"),
                  lambda: one(spoiled, "socketpair")])


def test_failed_reads_within_the_budget_are_forgiven():
    def plan(p):
        p.silence(until=p.log("FAILED TO GET STATUS", times=2))
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan), checks={0: [None, None, GOOD]})
    assert result.status == 0


def test_good_reads_between_do_not_restore_the_budget():
    bad = record.record(cartridge=0x25)

    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndPage"))
        p.drop()
        p.silence(until=p.log("FAILED TO GET STATUS", times=3))
        p.fresh(bad, until=p.log("#### In Error Retry"))
        p.drop()
        p.silence()

    job = Job(pages=[pages.small(), pages.small()], plan=plan)
    result = job.run()
    assert result.status == 1
    assert result.log[-1] == "     StartOfPageJobCheck get status retries failed"
    check = result.log[result.log.index("     Checking Status on Page 1"):]
    assert check.count("FAILED TO GET STATUS") == 6
    assert check.count("     #### In Error Retry") == 1


