"""The diagnostic log as a file."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import calendar
import os
import resource
import time
from pathlib import Path

import pytest

import compare
import job as jobs
import pages
import planted
from job import Job

OLD_LINE = b"2024-01-01 00:00:00 +0000 old line\r\n"


def old_log(lines, mode=0o644):
    def prepare(sandbox):
        path = sandbox.path(jobs.LOG)
        path.write_bytes(OLD_LINE * lines)
        path.chmod(mode)
    return prepare


def log_of(size):
    return lambda sandbox: sandbox.path(jobs.LOG).write_bytes(b"x" * size)


def is_sanitized():
    return b"__sanitizer_" in Path(jobs.filter_path()).read_bytes()


def test_a_new_log_is_whole_and_stamped():
    result = compare.run(Job())
    assert result.raw_log.count(b"\r\n") == len(result.log)
    assert b"**** Wait until printer not Busy\n\r\n" in result.raw_log


@pytest.mark.parametrize("zone,shown,offset", [("IST-5:30", "+0530", 19800),
                                               ("XYZ3:15", "-0315", -11700), ("UTC0", "+0000", 0)])
def test_the_stamp_is_local_time_with_its_offset(zone, shown, offset):
    before = time.time() - 1
    result = Job(arguments=[], environment={"TZ": zone}).run()
    for line in result.raw_log.rstrip().split(b"\r\n"):
        text = line[:25].decode()
        assert text[20:] == shown
        stamp = calendar.timegm(time.strptime(text[:19], "%Y-%m-%d %H:%M:%S")) - offset
        assert before <= stamp <= time.time() + 1


def test_a_job_is_appended_to_what_is_there():
    result = Job(prepare=old_log(10)).run()
    assert result.raw_log.startswith(OLD_LINE * 10)
    assert result.log[10] == "FILTER_STARTED"


@pytest.mark.parametrize("size,kept", [(2999999, True), (3000000, False), (3500000, False)])
def test_a_log_of_three_million_bytes_starts_afresh(size, kept):
    result = Job(prepare=log_of(size)).run()
    if kept:
        # The first line is still appended; the next one finds the limit passed.
        assert result.raw_log.split(b"\r\n")[0].endswith(b"Getting Settings...")
    else:
        assert result.log[0] == "FILTER_STARTED"
    assert len(result.raw_log) < 100000


@pytest.mark.parametrize("before,after", [(0o600, 0o644), (0o644, 0o644), (0o640, 0o644),
                                          (0o664, 0o664), (0o700, 0o744)])
def test_an_existing_log_becomes_readable_by_all(before, after):
    result = Job(prepare=old_log(3, before), arguments=["too", "few"])
    assert result.run().log_mode == after


@pytest.mark.skipif(is_sanitized(), reason="a sanitizer's run-time needs /proc")
def test_the_mode_is_mended_in_a_root_without_proc():
    def prepare(sandbox):
        old_log(1, 0o600)(sandbox)
        sandbox.emptied.append("/proc")

    assert Job(arguments=[], prepare=prepare).run().log_mode == 0o644


def test_a_log_made_by_the_first_line_follows_the_mask():
    """0777 less the scheduler's 077; the next job opens it to all."""
    assert Job(arguments=[]).run().log_mode == 0o700


@pytest.mark.parametrize("plant", planted.ALL)
def test_something_else_in_the_logs_place_never_holds_the_job(plant):
    def prepare(sandbox):
        plant(sandbox.path(jobs.LOG))

    job = Job(prepare=prepare, limit=30)
    result = job.run()
    assert result.status == 0
    assert len(result.stdout) == 16
    assert result.calls[-1] == "DestroyHostPrintEngine H"


def job_with_log_at(make):
    """What stands in the file to which the log's name leads, after a job."""
    def prepare(sandbox):
        sandbox.path("/Users/target").write_bytes(OLD_LINE)
        make(sandbox.path(jobs.LOG), sandbox.path("/Users/target"))

    kept = []
    job = Job(prepare=prepare)
    job.actions = lambda running: kept.append(
        running.until_trace("DestroyHostPrintEngine")
        and running.sandbox.path("/Users/target").read_bytes())
    assert job.run().status == 0
    return kept[0]


def test_a_link_of_the_filters_own_user_is_followed():
    text = job_with_log_at(lambda log, target: log.symlink_to("/Users/target"))
    assert text.startswith(OLD_LINE) and b"FILTER_STARTED" in text


@pytest.mark.skipif(os.geteuid() != 0, reason="only root makes links of others")
def test_a_link_of_another_is_not_followed():
    text = job_with_log_at(lambda log, target: planted.foreign_link(log, "/Users/target"))
    assert text == OLD_LINE


@pytest.mark.skipif(os.geteuid() != 0, reason="only root gives files away")
def test_another_users_file_with_a_second_name_is_left_alone():
    def make(log, target):
        os.chown(target, planted.NOBODY, planted.NOBODY)
        os.link(target, log)

    assert job_with_log_at(make) == OLD_LINE


def test_a_log_folder_that_is_not_there_costs_only_the_log():
    def prepare(sandbox):
        os.rename(sandbox.path("/Library/Caches"), sandbox.path("/Library/Away"))

    assert Job(prepare=prepare, limit=30).run().status == 0


def test_a_jobs_texts_cannot_forge_a_line():
    forged = b"x\r\n2024-01-01 00:00:00 +0000 FORGED\x1b[2J\x7f"
    page = pages.small(MediaColor=forged, MediaClass=forged, MediaType=forged, OutputType=forged,
                       cupsPageSizeName=forged)
    result = Job(pages=[page]).run()
    shown = "x??2024-01-01 00:00:00 +0000 FORGED?[2J?"
    assert f"     cupsColorOrder {shown} {shown} {shown} {shown} " in result.log
    assert f"   Cups Page Size {shown}" in result.log
    assert not any(line.startswith("FORGED") for line in result.log)


def test_a_limit_on_the_size_of_files_costs_only_what_is_beyond_it():
    """The system would kill the job at the first byte too many."""
    def actions(job):
        if job.until_log("FILTER_STARTED"):
            resource.prlimit(job.process.pid, resource.RLIMIT_FSIZE, (1000, 1000))

    result = Job(prepare=old_log(20), actions=actions).run()
    assert result.status == 0
    assert len(result.stdout) == 16
    assert len(result.raw_log) >= 1000 and "     Ready to print." not in result.log


def test_a_very_long_file_name_is_no_part_of_the_log():
    """What is long in a job is the name of a raster file that is not there: only the system's reason
    stands in the log."""
    result = Job(arguments=["1", "u", "t", "1", "", "/bench/" + "n" * 3000]).run()
    assert result.status == 1
    assert result.log[-1] == "Unable to open raster file - File name too long"
