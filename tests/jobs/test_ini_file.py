"""The engine's ini file over jobs."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import functools
import os
import random
import signal
import time

import pytest

import compare
import log_compare
import pages
import planted
import record
from expected import Model
from expected_text import STATES_WITHDRAWN
from job import CHOICES, Job, run_together
from sandbox import ENGINE_DATA

LONG = b"; " + b"x" * 3000 + b"\n"
FILES = {
    "created": None,
    "empty": b"",
    "no section": b"Other=1\n",
    "keys in other sections": b"[Other]\nColor=9\nXColor=5\nSlot1NumPassesOverride=3\n",
    "target last, no line end": b"[ESwathBuilder]\nA=1\n[Configuration]\nB=2",
    "target twice": b"[Configuration]\na\n[Configuration]\nb\n",
    "key twice": b"[Configuration]\nColor=1\nColor=3\n[ESwathBuilder]\n",
    "header within a longer one": b"[x][Configuration]\n[y]\n",
    "key in a header": b"[Color=]\n[Configuration]\n",
    "passes in the section": b"[ESwathBuilder]\nSlot1NumPassesOverride=4 \n[Configuration]\n",
    "passes elsewhere": b"[Configuration]\nSlot1NumPassesOverride=4 \n",
    "carriage returns": b"[Configuration]\r\nColor=1\r\n",
    "a very long line": b"[Configuration]\n" + LONG + b"[ESwathBuilder]\n",
    "a header of 98 letters": b"[" + b"h" * 96 + b"]\n",
}


@pytest.mark.parametrize("name", FILES)
@pytest.mark.parametrize("quality", ["Quality2", "Quality4"])
def test_edits_of_one_job(name, quality):
    compare.run(Job(ini=FILES[name], choices=dict(CHOICES, PrintQuality=quality)))


def test_jobs_in_sequence_see_what_the_last_left():
    """Granite keeps the pass count at quality 3 and removes it at quality 2."""
    ini = None
    for cartridge, quality, wanted in (("Q", "Quality1", b"1"), ("Q", "Quality3", b"1"),
                                       ("Q", "Quality2", None), ("Q", "Quality4", b"8"),
                                       ("P", "Quality3", b"8")):
        job = Job(ini=ini, record=record.record(cartridge=cartridge),
                  choices=dict(CHOICES, PrintQuality=quality,
                               Bidi="No" if quality == "Quality4" else "Yes"))
        ini = compare.run(job).ini
        line = b"Slot1NumPassesOverride=" + (wanted or b"") + b" \n"
        assert (line in ini) if wanted else (b"NumPasses" not in ini)


@pytest.mark.parametrize("quality,passes", [("Quality1", "1"), ("Quality2", "2"),
                                            ("Quality3", "4"), ("Quality4", "8")])
def test_pass_counts_of_the_heron_family(quality, passes):
    result = compare.run(Job(record=record.record(cartridge="U"),
                             choices=dict(CHOICES, PrintQuality=quality)))
    assert f"Slot1NumPassesOverride={passes} \n".encode() in result.ini


@pytest.mark.parametrize("quality", ["Quality2", "Quality4"])
def test_a_folder_that_is_not_there_only_costs_the_settings(quality):
    def prepare(sandbox):
        os.rename(sandbox.path(f"/{ENGINE_DATA}"), sandbox.path(f"/{ENGINE_DATA}-away"))
    compare.run(Job(prepare=prepare, choices=dict(CHOICES, PrintQuality=quality)),
                ini_works=False)


@pytest.mark.parametrize("text", [b"[Configuration]\n",
                                  b"[ESwathBuilder]\nSlot1NumPassesOverride=4 \n"])
def test_a_file_that_cannot_be_written_stays_as_it_is(text):
    def prepare(sandbox):
        sandbox.read_only.append(f"/{ENGINE_DATA}/tqgrcfg.ini")
    result = compare.run(Job(ini=text, prepare=prepare), ini_works=False)
    assert result.ini == text


@pytest.mark.parametrize("plant", planted.ALL)
def test_something_else_in_the_files_place_never_holds_the_job(plant):
    def prepare(sandbox):
        plant(sandbox.path(f"/{ENGINE_DATA}/tqgrcfg.ini"))

    result = Job(prepare=prepare, limit=30).run()
    assert result.status == 0
    assert result.log[-1] == "     Ready to print."
    assert "WriteFerroIniFile failed" in result.log
    assert "     Slot1 set print direction FAILED" in result.log


def job_through_a_link(make_link):
    """What stands in the file to which a link in the ini file's place leads, after a job."""
    def prepare(sandbox):
        sandbox.path("/Users/target").write_bytes(b"precious\n")
        make_link(sandbox.path(f"/{ENGINE_DATA}/tqgrcfg.ini"), "/Users/target")

    kept = []
    job = Job(prepare=prepare)
    job.actions = lambda running: kept.append(
        running.until_log("     Ready to print.")
        and running.sandbox.path("/Users/target").read_bytes())
    result = job.run()
    assert result.status == 0
    return result, kept[0]


def test_a_link_of_the_filters_own_user_is_followed():
    result, text = job_through_a_link(lambda path, target: path.symlink_to(target))
    assert "WriteFerroIniFile failed" not in result.log
    assert text.startswith(b"precious\n[Configuration]\nUseDebugSettings=1 \n")


@pytest.mark.skipif(os.geteuid() != 0, reason="only root makes links of others")
def test_a_link_of_another_leads_nowhere():
    """Others may write to the folder: what a link there points to is not the filter's to change."""
    result, text = job_through_a_link(planted.foreign_link)
    assert text == b"precious\n"
    assert "WriteFerroIniFile failed" in result.log


def test_nothing_is_left_beside_the_file():
    seen = []
    job = Job(ini=b"[Configuration]\n")
    job.actions = lambda running: seen.append(
        running.until_log("     Ready to print.")
        and sorted(os.listdir(running.ini_path().parent)))
    assert job.run().status == 0
    assert seen == [["tqgrcfg.ini"]]


def test_a_job_that_changes_nothing_does_not_write():
    ini = compare.run(Job()).ini
    facts = []

    def prepare(sandbox):
        os.utime(sandbox.path(f"/{ENGINE_DATA}/tqgrcfg.ini"), (1, 1))

    job = Job(ini=ini, prepare=prepare)
    job.actions = lambda running: facts.append(
        running.until_log("     Ready to print.") and os.stat(running.ini_path()).st_mtime)
    compare.run(job)
    assert facts == [1]


def test_readers_never_find_the_file_empty_or_half():
    """A job of many pages rewrites the file again and again, as its direction is taken out between
    pages; whoever reads meanwhile finds whole lines, from the first to the last."""
    first, last = b"; first line\n", b"; last line\n"
    text = first + b"[Configuration]\n" + b"; " + b"x" * 900 + b"\n[ESwathBuilder]\n" + last
    seen = []

    def watch(job):
        while not job.over.is_set():
            seen.append(job.ini_path().read_bytes())

    result = Job(ini=text, pages=[pages.small()] * 3, actions=watch).run()
    assert result.status == 0 and len(set(seen)) > 1
    assert all(found.startswith(first) and last in found for found in seen)


KILLS = int(os.environ.get("ZR7700_KILLS", "60"))


def killed_while_writing(delay):
    """The file after a kill so many seconds after the engine was initialised: then it is written."""
    text = b"; first line\n[Configuration]\n" + b"; padding padding\n" * 300 + b"; last line\n"

    def kill(job):
        job.until(lambda: "### HPEInitialize" in job.log_text())
        time.sleep(delay)
        job.process.signal(signal.SIGKILL)

    return text, Job(ini=text, actions=kill).run().ini


def test_a_kill_at_any_moment_leaves_a_whole_file():
    chance = random.Random(7700)
    tasks = [functools.partial(killed_while_writing, chance.uniform(0, 0.02))
             for _ in range(KILLS)]
    found = run_together(tasks, 4)
    for _, ini in found:
        assert ini.startswith(b"; first line\n[Configuration]\n")
        assert b"; last line\n" in ini and ini.endswith(b"\n")
    # Some came before the last write, some after the first.
    assert len({ini for _, ini in found}) > 1


def _of_size(total):
    """A file that is `total` bytes long once the first key of a job has been set."""
    head, entry = b"[Configuration]\n", b"UseDebugSettings=1 \n"
    filler = total - len(head) - len(entry)
    lines = [b";" * 99 + b"\n"] * (filler // 100) + [b";" * (filler % 100 - 1) + b"\n"]
    return head + b"".join(lines) + entry


def expect_limit(ini, choices=None):
    job = Job(ini=ini, **({"choices": choices} if choices else {}))
    result = job.run()
    assert result.status == 1
    assert result.ini == ini
    assert "cfg.ini" in result.log[-1] and "SETUP_END" not in result.log
    rest = result.stderr[len(STATES_WITHDRAWN):]
    assert rest.startswith("ERROR: ") and rest.count("\n") == 1 and rest.endswith("\n")
    assert not any(call.startswith("HPEStartDoc") for call in result.calls)
    main, _ = log_compare.split(result.log)
    model = Model(job.pages, job.choices, ini=b"").run()
    assert main[:-1] == model.log[:len(main) - 1]
    return result.log[-1]


def test_a_rewritten_file_of_8000_bytes_ends_the_process():
    said = expect_limit(_of_size(8000))
    assert "8000" in said or "7999" in said


def test_a_file_far_beyond_the_limit_ends_the_process():
    expect_limit(b"[Configuration]\n" + b"; padding\n" * 100000)


def test_a_header_line_of_100_letters_ends_the_process():
    said = expect_limit(b"[Configuration]\n[" + b"h" * 97 + b"]\n")
    assert "100" in said or "99" in said


def test_a_file_just_within_the_limit_is_rewritten():
    """With every key of the job in place no edit makes the file longer."""
    keys = (b"[Configuration]\nUseDebugSettings=1 \nPrinter=1 \nColor=1 \n[ESwathBuilder]\n"
            b"Slot1PrintDirection=0 \nSlot2PrintDirection=0 \n")
    filler = 7999 - len(keys)
    ini = keys + (b";" * 499 + b"\n") * (filler // 500) + b";" * (filler % 500 - 1) + b"\n"
    assert len(ini) == 7999
    compare.run(Job(ini=ini))


def test_bytes_that_are_no_text_pass_through():
    ini = b"[Configuration]\n\xff\xfe\x80 \x01\n[ESwathBuilder]\n"
    compare.run(Job(ini=ini))


def between_pages(change):
    """A job of two pages; change(path of the ini file) is called between them."""
    def actions(job):
        if job.until_trace("HPEEndDoc"):
            change(job.ini_path())
        job.release()

    script = {("HPEEndDoc", 1): [("wait", "/bench/go")]}
    return Job(pages=[pages.small(), pages.small()], script=script, actions=actions).run()


def test_a_file_that_vanishes_between_pages_is_made_again():
    result = between_pages(os.unlink)
    assert result.status == 0
    assert result.ini == b"[ESwathBuilder]\nSlot1PrintDirection=0 \n\nSlot2PrintDirection=0 \n"
    assert result.log.count("ferro ini file not present trying to create") == 2


def test_a_file_that_outgrows_the_limit_between_pages_ends_the_process():
    grown = b"[ESwathBuilder]\n" + b"; padding\n" * 900
    result = between_pages(lambda path: path.write_bytes(grown))
    assert result.status == 1 and result.ini == grown
    # CUPS acts on whole lines only, and the page line before has no line end of its own.
    page, error = result.stderr.rstrip("\n").split("\n")[-2:]
    assert page == "     PAGE: 1 1     PAGE: 2 1"
    assert error.startswith("ERROR: ")
    assert "cfg.ini" in result.log[-1]
    # The second page's header went out before its properties.
    assert len(result.stdout) == 32
