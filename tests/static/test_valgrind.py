"""Two whole jobs under valgrind, in real time: no memory is misused, and none is definitely lost.

The filter that the bench starts is a script here, which starts the real one, copied beside it."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import shutil
import subprocess
import sys

import pytest

os.environ["ZR7700_TIMES_FASTER"] = "1"
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "jobs"))
import job  # pylint: disable=wrong-import-position
import pages  # pylint: disable=wrong-import-position
import raster  # pylint: disable=wrong-import-position
import sandbox  # pylint: disable=wrong-import-position

FAULT = 99
EMIT = {("HPESendBand", "*"): [("emit", "78" * 100)]}
SCRIPT = f"""#!/bin/sh
folder=${{0%/*}}
exec valgrind --quiet --vgdb=no --leak-check=full --errors-for-leak-kinds=definite \\
  --show-leak-kinds=definite --num-callers=30 --error-exitcode={FAULT} \\
  --log-file="$folder/report" "$folder/examined" "$@"
"""


def put_before(program, folder):
    """A script in a folder of its own that runs a copy of the program under valgrind."""
    folder.mkdir()
    shutil.copy(program, folder / "examined")
    script = folder / "filter"
    script.write_text(SCRIPT)
    script.chmod(0o755)
    return script


@pytest.fixture(name="examine")
def job_under_valgrind(tmp_path, monkeypatch):
    """Runs a job twice, plainly and under valgrind: both results and valgrind's report."""
    def examine(**description):
        plain = job.Job(script=EMIT, **description).run()
        script = put_before(sandbox.filter_path(), tmp_path / "valgrind")
        # The engine and its companions are the ones of the build, not beside the script.
        monkeypatch.setenv("ZR7700_TEST_ENGINE", str(job.engine_folder()))
        monkeypatch.setenv("ZR7700_PLAIN_FILTER", str(script))
        examined = job.Job(script=EMIT, limit=600, **description).run()
        return plain, examined, (script.parent / "report").read_text()
    return examine


def test_a_job_of_two_pages(examine):
    plain, examined, report = examine(pages=[pages.small(), pages.small()], utility="answer")
    assert report == ""
    assert (plain.status, examined.status) == (0, 0)
    assert plain.stdout != b"" and examined.stdout == plain.stdout
    assert examined.calls == plain.calls


def test_a_job_whose_page_is_cut_short(examine):
    plain, examined, report = examine(pages=raster.stream([pages.small()], 3, "<")[:-15000])
    assert report == ""
    assert plain.status == examined.status != FAULT
    assert 0 < len(plain.calls) and examined.calls == plain.calls


@pytest.mark.parametrize("body", ["malloc(7) == 0", "*(volatile char*)malloc(1) == 3"],
                         ids=["lost", "never written"])
def test_a_planted_fault_is_found(body, tmp_path):
    source = tmp_path / "planted.c"
    source.write_text(f"#include <stdlib.h>\nint main(void) {{ return {body} ? 1 : 0; }}\n")
    subprocess.run(["cc", "-g", "-O0", source, "-o", tmp_path / "planted"], check=True)
    script = put_before(tmp_path / "planted", tmp_path / "valgrind")
    assert subprocess.run([script], check=False).returncode == FAULT
    assert "planted.c:2" in (script.parent / "report").read_text()
