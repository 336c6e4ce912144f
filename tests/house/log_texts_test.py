"""A text that stands in the log, or that CUPS shows, stands in the code in one piece: whoever searches
for it finds its line."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pathlib
import re

import pytest

TOP = pathlib.Path(__file__).resolve().parents[2]
ROOMS = ["base", "engine", "status", "driver"]

LITERAL = r'"(?:[^"\\\n]|\\.)*"'
# Two literals side by side are one text in pieces, but where the first ends a line of the text.
BROKEN = re.compile(rf'({LITERAL})\s*(?:\\\n)?\s*(?:PRI\w+\s*)?({LITERAL})')


def sources():
    return [path for room in ROOMS for path in sorted((TOP / room).glob("*.*"))
            if path.suffix in (".cc", ".h") and not path.name.endswith("_test.cc")
            and not path.name.startswith("test_")]


def calls(text):
    """The arguments of every call that writes to the log or to CUPS, and every text for CUPS."""
    for found in re.finditer(r"\b(?:LogMessage|TellCups|BeginLineToCups|Report\w*|Log\w*)\(", text):
        yield text[found.end():text.index(";", found.end())]
    for found in re.finditer(r"#define ZR7700_TEXT_\w+ ((?:.*\\\n)*.*)\n", text):
        yield found[1]


def pieces(text):
    return [first + second for arguments in calls(text)
            for first, second in BROKEN.findall(arguments) if not first.endswith('\\n"')]


@pytest.mark.parametrize("path", sources(), ids=lambda path: path.relative_to(TOP).as_posix())
def test_texts_stand_in_one_piece(path):
    assert pieces(path.read_text(encoding="utf-8")) == []


def test_a_broken_text_is_found():
    assert pieces('LogMessage(kLogDetail, "one text "\n    "in pieces %u", 1);')
    assert pieces('LogMessage(1, "Width = (%" PRId32 ")", width);')
    assert pieces('#define ZR7700_TEXT_X \\\n  "one " \\\n  "two"\n')
    assert not pieces('LogMessage(kLogDetail, ok ? "one" : "two", "three");')
    assert not pieces('#define ZR7700_TEXT_X \\\n  "one\\n" \\\n  "two"\n')


def test_the_log_is_written_where_this_looks():
    """Else the test above would look at nothing."""
    assert sum(path.read_text(encoding="utf-8").count("LogMessage(") for path in sources()) > 100
