"""What docs/desktops.md says of the queue is what the queue says of itself."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re
import subprocess

import pytest

from scheduler import REPOSITORY

PAPER = (REPOSITORY / "docs/desktops.md").read_text(encoding="utf-8")
ROWS = [tuple(cell.strip() for cell in line.strip("|").split("|"))
        for line in PAPER.splitlines() if line.startswith("| `")]
OPTIONS = [row for row in ROWS if len(row) == 3]
ATTRIBUTES = [row for row in ROWS if len(row) == 2]


@pytest.fixture(scope="module")
def told(machine):
    """Option by option what lpoptions says: its text, and its choices."""
    said = subprocess.run(["lpoptions", "-p", "Discs", "-l"], env={
        "PATH": "/usr/bin:/bin", **machine.environment()}, capture_output=True, text=True,
        check=True).stdout
    return {name: (text, choices.split()) for name, text, choices in
            re.findall(r"^(\w+)/([^:]*): (.*)$", said, re.M)}


def test_all_options_are_in_the_table(told):
    assert {row[0].strip("`") for row in OPTIONS} == set(told)


@pytest.mark.parametrize("row", OPTIONS, ids=lambda row: row[0].strip("`"))
def test_option(told, row):
    text, choices = told[row[0].strip("`")]
    assert text == row[1]
    assert re.findall(r"`([^`]+)`", row[2]) == [name for name in choices if "Draft" not in name]
    drafts = len([name for name in choices if "Draft" in name])
    said = re.search(r"and (two|four) for drafts", row[2])
    assert {"two": 2, "four": 4}.get(said[1] if said else "", 0) == drafts


@pytest.mark.parametrize("row", ATTRIBUTES, ids=lambda row: row[0].strip("`"))
def test_attribute(machine, row):
    name = row[0].strip("`")
    assert machine.attributes(name)[name] == row[1].strip("`")


def test_formats(machine):
    sentence = re.search(r"\(`document-format-supported`\) are (.*?)\.\n", PAPER, re.S)[1]
    named = re.findall(r"`([^`]+)`", sentence)
    assert len(named) == 6
    formats = machine.attributes("document-format-supported")["document-format-supported"]
    assert set(named) <= set(formats.split(","))
