"""The private root, with a shell script in the filter's place."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

from job import Job

REPORT = """#!/bin/sh
umask
ls /dev/shm /Library /Users /var/tmp
test -e /proc/self/fd/3 && echo has 3 || echo no 3
cat
echo "$6" >&2
"""


@pytest.fixture(name="script")
def script_in_place_of_the_filter(tmp_path, monkeypatch):
    def place(text):
        program = tmp_path / "filter"
        program.write_text(text)
        program.chmod(0o755)
        monkeypatch.setenv("ZR7700_FILTER", str(program))
        monkeypatch.delenv("ZR7700_PLAIN_FILTER", raising=False)
        monkeypatch.setattr(Job, "_place_engine", lambda self: None)
    return place


@pytest.mark.parametrize("channel,third", [("pipe", b"has 3"), ("socketpair", b"has 3"),
                                           ("closed", b"no 3")])
def test_a_job_sees_its_own_folders_only(script, channel, third):
    script(REPORT)
    result = Job(pages=b"raster bytes", from_file=True, channel=channel).run()
    lines = result.stdout.split(b"\n")
    assert result.status == 0
    assert lines[0] in (b"0077", b"077")
    assert b"/dev/shm:" in lines and b"Caches" in lines and b"Shared" in lines
    assert b"tessary" in lines and third in lines
    assert lines[-1] == b"raster bytes"
    assert result.stderr == "/bench/raster\n"


def test_a_signal_reaches_the_filter_itself(script):
    script("#!/bin/sh\ntrap 'echo got it; exit 3' TERM\necho ready > /bench/ready\n"
           "while :; do sleep 0.05; done\n")

    def actions(job):
        assert job.until(lambda: (job.sandbox.bench / "ready").exists())
        job.terminate()

    result = Job(actions=actions, limit=20).run()
    assert result.status == 3
    assert result.stdout == b"got it\n"
    assert result.seconds_after_cancel < 5


def test_a_job_that_hangs_is_ended_and_said_to_hang(script):
    script("#!/bin/sh\nexec sleep 60\n")
    result = Job(limit=1).run()
    assert result.status is None


def fails(_):
    assert False, "beside the job"


@pytest.mark.parametrize("beside", ["plan", "actions"])
def test_an_assertion_beside_a_job_fails_its_test(script, beside):
    script("#!/bin/sh\nsleep 1\n")
    with pytest.raises(AssertionError, match="beside the job"):
        Job(**{beside: fails}).run()
