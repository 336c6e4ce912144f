"""The session that a document shows is the one that the tests have just had; what is chance does
not count, and everything else does."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import subprocess
import sys

import pytest

import transcripts
from scheduler import BUILD, REPOSITORY

SHOWN = """Words.

<!-- session: session.txt -->
```text
$ lp -d discs a.pdf
request id is discs-1 (1 file(s))
printer discs is idle.  enabled
\tReady: 2 discs.
```

More words.
"""
SAME = "$ lp -d discs a.pdf\nrequest id is discs-1 (1 file(s))\nprinter discs is idle.  enabled\n"


@pytest.mark.skipif("ZR7700_SESSION" not in os.environ, reason="after the session's own test only")
def test_document_shows_the_last_session():
    document = REPOSITORY / os.environ["ZR7700_SESSION"]
    assert "<!-- session: " in document.read_text(encoding="utf-8")
    assert transcripts.differences(document, BUILD) == []


@pytest.fixture
def document(tmp_path):
    (tmp_path / "paper.md").write_text(SHOWN)
    return tmp_path / "paper.md"


def run(folder, *words):
    return subprocess.run([sys.executable, "-B", transcripts.__file__, *words, folder,
                           folder / "paper.md"], capture_output=True, text=True, check=False)


def test_chance_is_no_difference(document, tmp_path):
    (tmp_path / "session.txt").write_text(SAME + "\tAlerts: none\n")
    assert run(tmp_path, "--check").returncode == 0
    assert document.read_text() == SHOWN


@pytest.mark.parametrize("old,new", [("a.pdf", "b.pdf"), ("idle", "disabled"),
                                     ("discs-1 (", "discs-2 (")])
def test_anything_else_is_one(document, tmp_path, old, new):
    (tmp_path / "session.txt").write_text(SAME.replace(old, new))
    checked = run(tmp_path, "--check")
    assert checked.returncode == 1 and new in checked.stderr
    assert document.read_text() == SHOWN
    assert run(tmp_path).returncode == 0
    assert new in document.read_text() and document.read_text().endswith("```\n\nMore words.\n")
    assert run(tmp_path, "--check").returncode == 0


def test_a_session_that_nobody_had_is_told(document, tmp_path):
    checked = run(tmp_path, "--check")
    assert checked.returncode == 1
    assert checked.stderr.endswith("session.txt is missing; run the test that writes it.\n")
    assert document.read_text() == SHOWN
