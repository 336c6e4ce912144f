"""The mutator changes code and nothing else, one thing at a time."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import survey
from mutants import code_of, mutants_of


def changed(text):
    return {mutant.applied(text) for mutant in mutants_of(text)}


@pytest.mark.parametrize("before, after", [
    ("x = a + b;", "x = a - b;"),
    ("x = a < b;", "x = a <= b;"),
    ("x = a && b;", "x = a || b;"),
    ("x = std::min(a, b);", "x = std::max(a, b);"),
    ("x = kRows[7];", "x = kRows[8];"),
    ("x = 0x1FU;", "x = 32U;"),
    ("x = 0644;", "x = 421;"),
    ("x = 20'000;", "x = 20001;"),
    ("x = !Done();", "x = Done();"),
    ("return true;", "return false;"),
    ("++count;", "--count;"),
    ("if (Ready(a)) Go();", "if (!(Ready(a))) Go();"),
    ("  Close(file);\n", "  ;\n"),
    ("  state.open = now;\n", "  ;\n"),
])
def test_a_change(before, after):
    assert after in changed(before)


@pytest.mark.parametrize("text", [
    "// a + b 7 true\n", '"a + b 7 true" "\\" 8"', "/* x == 3\n  Go(); */", "#if ZR == 1\n",
    "std::vector<int> a;", "char* p;", "Foo&& foo;", "static_assert(kSize == 1796);\n",
    "const int32_t k_ms = kOther_ms;", "case kOther:\n", "x = 1.5;",
    "x = '7';"])
def test_nothing_to_change(text):
    assert mutants_of(text) == []


def test_code_keeps_its_places():
    text = 'a("b\\"c"); // d\ne'
    assert code_of(text) == "a(" + " " * 6 + ");" + " " * 5 + "\ne"


def test_a_loop_is_no_statement_to_leave_out():
    assert not any(mutant.after == ";" for mutant in mutants_of("  for (;;) {\n  return f(x);\n"))


def test_the_sample_is_the_seeds():
    first, again, other = (survey.sample(["base"], seed)[:20] for seed in (1, 1, 2))
    assert first == again != other
    assert all(mutant.applied(text) != text for _, text, mutant in first)


def test_a_row_is_a_line_of_a_table():
    text = "a\nb = c ||\n  d;\n"
    mutant, = mutants_of(text)
    assert survey.row("driver/x.cc", text, mutant) == "| driver/x.cc:2 | \\|\\| | && |"
