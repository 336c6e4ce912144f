"""clang-tidy and cppcheck find nothing in the production sources, and would find a fault.

ZR7700_LONG=1 looks for everything that is on in .clang-tidy; otherwise for a part that takes a minute."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import re

import pytest

import checkers

BUILD = pathlib.Path(os.environ["ZR7700_BUILD"])
CHECKS = None if os.environ.get("ZR7700_LONG") else checkers.quick_checks()

USE_AFTER_MOVE = """#include <string>
#include <utility>
size_t Twice(std::string text) {
  const std::string taken = std::move(text);
  return taken.size() + text.size();
}
"""
OUT_OF_BOUNDS = """int Last() {
  int numbers[3] = {1, 2, 3};
  return numbers[3];
}
"""
NULL_POINTER = """int Value(bool is_there) {
  int number = 1;
  int* where = is_there ? &number : nullptr;
  return *where;
}
"""


@pytest.fixture(name="production", scope="module")
def production_of_the_build():
    return checkers.commands(BUILD)


def planted(folder, text):
    source = folder / "planted.cc"
    source.write_text(text)
    arguments = ["c++", "-std=c++20", "-c", str(source)]
    return [{"directory": str(folder), "file": str(source), "arguments": arguments}]


def test_every_production_source_is_looked_at(production):
    listed = {pathlib.Path(entry["file"]).relative_to(checkers.TOP) for entry in production}
    there = {source.relative_to(checkers.TOP) for room in checkers.ROOMS
             for source in (checkers.TOP / room).rglob("*.cc")}
    elsewhere = {source for source in there if "foundation" in source.parts}
    assert {s for s in there - elsewhere if checkers.is_production(s)} == listed


def test_clang_tidy_finds_nothing(production, tmp_path):
    assert checkers.tidy_findings(production, tmp_path, CHECKS) == []


def test_cppcheck_finds_nothing(production, tmp_path):
    assert checkers.cppcheck_findings(production, tmp_path) == []


def test_clang_tidy_finds_a_planted_fault(tmp_path):
    found = "\n".join(checkers.tidy_findings(planted(tmp_path, USE_AFTER_MOVE), tmp_path, CHECKS))
    assert "planted.cc:5" in found and "bugprone-use-after-move" in found


@pytest.mark.skipif(CHECKS is not None, reason="the analyzer is for the long run")
def test_the_analyzer_finds_a_planted_fault(tmp_path):
    found = "\n".join(checkers.tidy_findings(planted(tmp_path, NULL_POINTER), tmp_path, CHECKS))
    assert "planted.cc:4" in found and "clang-analyzer-core.NullDereference" in found


def test_cppcheck_finds_a_planted_fault(tmp_path):
    found = "\n".join(checkers.cppcheck_findings(planted(tmp_path, OUT_OF_BOUNDS), tmp_path))
    assert "planted.cc:3" in found and "arrayIndexOutOfBounds" in found


def test_every_check_that_is_off_is_off_with_a_reason():
    """A line of the list is read by clang-tidy as we read it, comment and all."""
    lines = (checkers.TOP / ".clang-tidy").read_text().splitlines()
    switched_off = [line for line in lines if re.match(r"\s+-[a-z]", line)]
    reasoned = [re.fullmatch(r"  -([\w.-]+),  # (\w[^*]{7,}),", line) for line in switched_off]
    assert switched_off and all(reasoned)
    enabled = set(checkers.enabled_checks())
    assert [found[1] for found in reasoned if found[1] in enabled] == []


def test_every_suppression_of_cppcheck_has_a_reason():
    lines = checkers.SUPPRESSIONS.read_text().split("\n\n", 1)[1].splitlines()
    for before, line in zip([""] + lines, lines):
        grouped = not before.startswith("#") and before != ""
        assert line.startswith("# ") or before.startswith("# ") or grouped, line
