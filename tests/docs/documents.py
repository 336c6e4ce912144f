"""Finds the commands in the documents: the lines of fenced blocks marked sh."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]
DOCUMENTS = [*(TOP / name for name in ("README.md", "CONTRIBUTING.md", "REPORTING_ISSUES.md",
                                 "SECURITY.md")),
             *sorted((TOP / "docs").glob("*.md"))]
# What a fenced block may be.
KINDS = {"sh", "text", "c"}
# Words with which inline code is a command, and not the name of something.
_PROGRAMS = {"apt", "bench/peers.py", "cmake", "ctest", "cups-config", "cupsctl", "lp", "lpadmin",
             "lpoptions", "lpstat", "cancel", "cupsdisable", "cupsenable", "lpmove", "uname",
             "ipptool", "./demo", "./test", "tests/cups/transcripts.py"}
# Those that are commands without an argument too.
_ALONE = {"./demo", "./test", "docs/draw_pictures.py"}


def blocks(text):
    """Kind and text of each fenced block."""
    return re.findall(r"^```(\S*)\n(.*?)^```", text, re.M | re.S)


def _lines(block):
    """A block's commands, one a line, without what only a reader needs."""
    joined = re.sub(r"\\\n\s*", "", block)
    for line in joined.splitlines():
        line = re.sub(r"(^|\s+)#.*", "", line).strip()
        yield from filter(None, (part.strip() for part in line.split(" && ")))


def commands(document):
    """All commands of a document, in their order, each once."""
    text = document.read_text(encoding="utf-8")
    found = [line for kind, block in blocks(text) if kind == "sh" for line in _lines(block)]
    without_blocks = re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)
    for inline in re.findall(r"`([^`\n]+)`", without_blocks):
        words = inline.split()
        # A program's name alone is no command, unless it is run by its path.
        if words[0] in (_ALONE if len(words) == 1 else _PROGRAMS):
            found += _lines(inline)
    return list(dict.fromkeys(found))
