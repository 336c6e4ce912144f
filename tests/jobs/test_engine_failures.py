"""An engine that is missing, incomplete, or refuses."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os

import pytest

import compare
import log_compare
import pages
import planted
import record
from expected import Model
from expected_text import STATES_WITHDRAWN
from job import Job, run_together
from sandbox import LIBRARIES

MEMBERS = ["flib", "hpec", "hpeh", "hpep"]
CHECKED = ["SetInputResolution", "SetLeftMargin", "SetTopMargin", "SetPhysicalWidth",
           "SetPrintableWidth", "SetPrintableHeight", "SetInstalledCartridge", "SetMediaType",
           "SetOutputPrintQuality", "SetPaperTray", "SetPageIntent", "SetImageSharpeningLevel",
           "SetHPERasterFormat"]


def main_log(result):
    log_compare.check_reader(result.log)
    return log_compare.split(result.log)[0]


def check_lines(raw):
    """The log of a job up to the end of its first check."""
    model = Model([], {}, record=raw)
    model._start()
    model._check(0)
    return model.log


def missing_library(cartridge, family, prefix, member):
    name = prefix + member
    raw = record.record(cartridge=cartridge)
    result = Job(record=raw, missing_libraries=(name,)).run()
    assert result.status == 1
    assert main_log(result) == check_lines(raw) + [f"   Failed to load {family} libraries",
                                                   "Error loading cartridge based library."]
    assert result.loaded == [prefix + m for m in MEMBERS if m != member]
    assert result.calls == [] and result.stderr == STATES_WITHDRAWN


@pytest.mark.parametrize("cartridge,family,prefix", [("Q", "Granite", "tqgr"),
                                                     ("V", "Heron", "tqhe")])
def test_each_missing_library_ends_the_job_and_the_others_are_opened(cartridge, family, prefix):
    run_together([lambda m=m: missing_library(cartridge, family, prefix, m) for m in MEMBERS])


@pytest.mark.parametrize("entry", ["CreateHostPrintEngine", "SetPaperTray",
                                   "SetImageSharpeningLevel"])
def test_a_missing_entry_ends_the_job(entry):
    raw = record.record(cartridge="P")
    result = Job(record=raw, engine=f"engine_without_{entry}").run()
    assert result.status == 1
    assert main_log(result) == check_lines(raw) + ["   Successfully loaded Granite libraries",
                                                   "   Failed to load HPE functions",
                                                   "Error loading cartridge based library."]
    assert result.calls == []


def test_the_other_family_need_not_be_there():
    others = tuple("tqhe" + member for member in MEMBERS)
    compare.run(Job(missing_libraries=others))


@pytest.mark.parametrize("entry,code", [("HPEInitialize", 5), ("HPEInitialize", -1),
                                        ("HPEStartDoc", 0x1234)])
def test_a_setup_that_fails_ends_the_job(entry, code):
    job = Job(script={(entry, 1): [("return", code)]})
    model = Model(job.pages, job.choices, script=job.script).run()
    result = job.run()
    assert result.status == 1
    assert main_log(result) == model.log
    assert result.calls == model.calls and result.stdout == b""
    assert result.stderr == STATES_WITHDRAWN
    assert result.ini == model.ini
    assert result.shared_memory_left


def test_a_null_engine_is_handed_on():
    job = Job(script={("CreateHostPrintEngine", 1): [("return", 0)]})
    result = compare.run(job)
    assert "HPEInitialize NULL" in result.calls[1]


def test_each_refused_property_is_said_and_abandons_the_page():
    def one(entry, code):
        job = Job(script={(entry, 1): [("return", code)]})
        result = compare.run(job)
        assert "   ### SetHPEProperties Failed" in result.log
        assert result.status == 0 and len(result.stdout) == 16
        assert not any(call.startswith("HPEStartPage") for call in result.calls)
    run_together([lambda e=e, c=c: one(e, c) for e, c in zip(CHECKED, range(-6, 100))
                  if c != 0])


def test_all_properties_refused_at_once_are_still_all_tried():
    script = {(entry, "*"): [("return", 0x1F00 + i)] for i, entry in enumerate(CHECKED)}
    compare.run(Job(script=script))


def write_for_all(path):
    path.chmod(0o757)


def give_away(path):
    os.chown(path, planted.NOBODY, planted.NOBODY)


@pytest.mark.skipif(os.geteuid() != 0, reason="it is about root's jobs")
@pytest.mark.parametrize("spoil", [write_for_all, give_away])
@pytest.mark.parametrize("inside", ["", "/tqgrhpep"])
def test_root_loads_nothing_that_others_may_write_or_own(spoil, inside):
    folder = f"/{LIBRARIES}/tqgrhpep.framework"
    result = Job(prepare=lambda sandbox: spoil(sandbox.path(folder + inside))).run()
    assert result.status == 1
    named = f"   Not loaded as root, others may write or own it: {folder}/tqgrhpep"
    assert main_log(result) == check_lines(record.record()) + [
        named, "   Failed to load Granite libraries", "Error loading cartridge based library."]
    assert result.loaded == ["tqgr" + member for member in MEMBERS if member != "hpep"]


def test_second_calls_of_properties_that_are_refused():
    script = {("SetInputResolution", 2): [("return", 77)],
              ("SetInstalledCartridge", 2): [("return", -2)]}
    compare.run(Job(script=script))


def test_refused_alignment_values_do_not_matter():
    compare.run(Job(script={("SetAlignmentInformation", "*"): [("return", 9)]}))


@pytest.mark.parametrize("code", [3, -3])
def test_a_refused_page_is_left(code):
    result = compare.run(Job(script={("HPEStartPage", 1): [("return", code)]}))
    assert result.status == 0 and len(result.stdout) == 16


def test_refused_lines_are_said_and_the_page_goes_on():
    script = {("HPESendBand", 7): [("return", 7)], ("HPESendBand", 9): [("return", -1)]}
    result = compare.run(Job(script=script))
    assert result.status == 0


def test_ends_that_fail_are_said_and_the_job_goes_on():
    script = {("HPEEndPage", 1): [("return", 31)], ("HPEEndDoc", "*"): [("return", -31)],
              ("HPEStartDoc", 2): [("return", 5)], ("HPEStartDoc", 3): [("return", 6)]}
    result = compare.run(Job(pages=[pages.small(), pages.small()], script=script))
    assert result.status == 0
    assert result.log.count("HPEEndDoc Failed 0xffffffe1") == 1


def test_every_engine_call_comes_on_the_main_thread():
    result = Job().run()
    assert not [line for line in result.trace if line.startswith("!")]
