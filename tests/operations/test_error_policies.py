"""What each error policy makes of a printer that fails: a backend that ends with an error, as one
does whose cable was pulled."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re

import pytest

from farm import Host
from scheduler import REPOSITORY, running, wait_for

# Fails as long as the file is there; says which jobs it has printed.
BACKEND = """#!/bin/sh
DEVICE_URI=zr7700virtual:{root}/out {root}/bin/backend/zr7700virtual "$@"
[ ! -e {root}/unplugged ] || exit 1
echo $1 >>{root}/out/printed
"""


@pytest.fixture(scope="module")
def host():
    with running(Host) as machine:
        program = machine.root / "bin/backend/cable"
        program.write_text(BACKEND.format(root=machine.root))
        program.chmod(0o755)
        yield machine


def policy(host, name):
    host.client("lpadmin", "-p", "cable", "-E", "-v", "cable:/", "-P", host.ppd, "-o",
                f"printer-error-policy={name}")
    (host.out / "printed").unlink(missing_ok=True)
    (host.root / "unplugged").touch()
    jobs = [int(re.search(r"cable-(\d+)", host.client(
        "lp", "-d", "cable", "-o", "print-quality=3", str(REPOSITORY / "labels/lake.png")))[1])
        for _ in range(2)]
    wait_for("a failure", lambda: failures(host, jobs[0]) >= 1)
    return jobs


def failures(host, job):
    return len(re.findall(r"bin/backend/cable\) stopped with status 1", host.job_log(job)))


def printed(host):
    path = host.out / "printed"
    return [int(line) for line in path.read_text().split()] if path.exists() else []


def printed_in_the_end(host, jobs):
    for job in jobs:
        host.wait_for_state(job, "completed")
    return printed(host)


def plug_in(host):
    (host.root / "unplugged").unlink()


def test_abort_job_loses_the_job(host):
    jobs = policy(host, "abort-job")
    for job in jobs:
        host.wait_for_state(job, "aborted")
    plug_in(host)
    assert printed(host) == []


def test_stop_printer_waits_for_the_administrator(host):
    jobs = policy(host, "stop-printer")
    wait_for("a stopped queue", lambda: "disabled" in host.client("lpstat", "-p", "cable"))
    plug_in(host)
    assert printed(host) == []
    host.client("cupsenable", "cable")
    assert printed_in_the_end(host, jobs) == jobs


def test_retry_current_job_keeps_the_order(host):
    jobs = policy(host, "retry-current-job")
    wait_for("another trial", lambda: failures(host, jobs[0]) >= 2)
    assert failures(host, jobs[1]) == 0
    plug_in(host)
    assert printed_in_the_end(host, jobs) == jobs


def test_retry_job_tries_the_others_meanwhile(host):
    jobs = policy(host, "retry-job")
    wait_for("the second job's trial", lambda: failures(host, jobs[1]) >= 1)
    plug_in(host)
    assert sorted(printed_in_the_end(host, jobs)) == jobs
