"""Every program and script answers --help and --version, and does nothing else then."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import re
import subprocess

import pytest

TOP = pathlib.Path(__file__).resolve().parents[2]
VERSION = re.search(r"VERSION (\d+\.\d+\.\d+)", (TOP / "CMakeLists.txt").read_text())[1]
PROGRAMS = [pathlib.Path(path) for path in os.environ["ZR7700_PROGRAMS"].split(":")]
SCRIPTS = [TOP / "demo", TOP / "test", TOP / "macos/package"]
ALL = [*PROGRAMS, *SCRIPTS]


def ask(program, *words, **settings):
    settings = {"stdout": subprocess.PIPE, **settings}
    return subprocess.run([program, *words], stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          text=True, check=False, timeout=30, **settings)


@pytest.mark.parametrize("program", ALL, ids=lambda path: path.name)
def test_version_is_the_projects(program, tmp_path):
    told = ask(program, "--version", cwd=tmp_path)
    assert (told.returncode, told.stderr) == (0, "")
    assert told.stdout == f"{program.name} {VERSION}\n"
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("program", ALL, ids=lambda path: path.name)
def test_help_says_how_it_is_used(program, tmp_path):
    told = ask(program, "--help", cwd=tmp_path)
    assert (told.returncode, told.stderr) == (0, "")
    assert re.match(rf"Usage: (\S*/)?{program.name}\b", told.stdout)
    assert re.search(r"^ +--help +\S", told.stdout, re.M)
    assert re.search(r"^ +--version +\S", told.stdout, re.M)
    assert max(map(len, told.stdout.splitlines())) <= 100
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("program", PROGRAMS, ids=lambda path: path.name)
@pytest.mark.parametrize("question", ["--help", "--version"])
def test_an_answer_that_cannot_be_written_is_no_success(program, question):
    with open("/dev/full", "w", encoding="ascii") as full:
        assert ask(program, question, stdout=full).returncode == 1


@pytest.mark.parametrize("word", ["--Version", "quik", "--help --version"])
def test_other_words_do_not_start_the_tests(word):
    told = ask(TOP / "test", word)
    assert told.returncode == 1 and told.stdout == ""
    assert told.stderr == (f'test: There is no argument "{word}"; '
                           "./test --help tells what there is.\n")
