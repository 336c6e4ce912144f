"""What can be changed in a C++ source so that a test should notice: one small change each."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re
from typing import NamedTuple

# Comments, literals and directives hold no code to change; their characters are blanked out.
_NO_CODE = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|(?<!\w)\'(?:\\.|[^\'\\\n])+\''
    r"|^[ \t]*#[^\n]*(?:\\\n[^\n]*)*|^[ \t]*static_assert\(.*?\);", re.S | re.M)

# Operators as clang-format writes them: with blanks around, so that no template or pointer is meant.
_SWAPS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&",
          "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "<<": ">>",
          ">>": "<<", "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|="}
_OPERATOR = re.compile(r"(?<= )(?:" + "|".join(
    re.escape(sign) for sign in sorted(_SWAPS, key=len, reverse=True)) + r")(?= |\n)")
_WORDS = {"true": "false", "false": "true", "min": "max", "max": "min", "break": "continue"}
_WORD = re.compile(r"(?<![\w.])(?:std::)?\b(true|false|min|max|break)\b(?!:)")
_NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f']+|\d[\d']*)([uUlL]*)(?![\w.'])")
_STEP = re.compile(r"\+\+|--")
_NOT = re.compile(r"!(?=[A-Za-z_(])")
_IF = re.compile(r"\b(?:if|while) \(")
_STATEMENT = re.compile(r"^(?P<indent> {2,})(?!return|break|continue|const |auto |using |case |throw |goto )"
                        r"[\w:.>\[\]*()-]+(?:\(.*\)| (?:[-+|&*/]|<<|>>)?= .*);$", re.M)


class Mutant(NamedTuple):
    """A change: at `start` of the text the characters `before` become `after`."""

    start: int
    before: str
    after: str

    def applied(self, text):
        end = self.start + len(self.before)
        assert text[self.start:end] == self.before
        return text[:self.start] + self.after + text[end:]

    def line(self, text):
        return text.count("\n", 0, self.start) + 1


def code_of(text):
    """The text with everything that is no code as blanks, each character in its place."""
    return _NO_CODE.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)


def _closing(code, opening):
    depth = 0
    for at in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return None


def _conditions(text, code):
    """A condition the other way round."""
    for found in _IF.finditer(code):
        end = _closing(code, found.end() - 1)
        inside = text[found.end():end]
        if end is not None and ";" not in inside and not re.match(r"\w+ .*\bconst\b|const ", inside):
            yield Mutant(found.end(), inside, f"!({inside})")


def _statements(text, code):
    """A statement left out: a call, or an assignment that declares nothing."""
    for found in _STATEMENT.finditer(code):
        if code[found.start():found.end()].count("(") == code[found.start():found.end()].count(")"):
            begin = found.end("indent")
            yield Mutant(begin, text[begin:found.end()], ";")


def _next_number(found):
    number = found[1].replace("'", "")
    octal = re.fullmatch("0[0-7]+", number)
    return f"{int(number, 8 if octal else 0) + 1}{found[2]}"


def mutants_of(text):
    """All mutants of a source's text, in the order of their places."""
    code = code_of(text)
    made = [Mutant(f.start(), f[0], _SWAPS[f[0]]) for f in _OPERATOR.finditer(code)]
    made += [Mutant(f.start(1), f[1], _WORDS[f[1]]) for f in _WORD.finditer(code)]
    made += [Mutant(f.start(), f[0], _next_number(f)) for f in _NUMBER.finditer(code)]
    made += [Mutant(f.start(), f[0], {"++": "--", "--": "++"}[f[0]]) for f in _STEP.finditer(code)]
    made += [Mutant(f.start(), f[0], "") for f in _NOT.finditer(code)]
    made += _conditions(text, code)
    made += _statements(text, code)
    return sorted(made)
