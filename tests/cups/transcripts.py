#!/usr/bin/python3
"""Puts the sessions that the tests have had with CUPS into the documents, or tells differences.

Usage: tests/cups/transcripts.py [--check] BUILD_FOLDER [DOCUMENT...]

A document shows a session in the fenced block after a line "<!-- session: NAME -->"; the tests leave
it in the build folder as NAME. Without --check the blocks are written anew; with it the documents
are left alone, and the exit status is 1 when a block differs in more than chance: what the virtual
printer last said, and how often, depends on the moment that a test looked.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import difflib
import pathlib
import re
import sys

TOP = pathlib.Path(__file__).resolve().parents[2]
_BLOCK = re.compile(r"(<!-- session: (\S+) -->\n+```text\n)(.*?)(^```$)", re.S | re.M)
_CHANCE = re.compile(r"^\t(Ready: |Printing on |Waiting: |disc \d+: |Status|Alerts: none)")


def without_chance(text):
    return [line for line in text.strip().splitlines() if not _CHANCE.match(line)]


def differences(document, build):
    """Lines of a difference between the document's blocks and the sessions in the build folder."""
    found = []
    for _, name, shown, _ in _BLOCK.findall(document.read_text(encoding="utf-8")):
        session = (build / name).read_text(encoding="utf-8")
        found += difflib.unified_diff(without_chance(shown), without_chance(session),
                                      str(document), str(build / name), lineterm="", n=1)
    return found


def update(document, build):
    text = document.read_text(encoding="utf-8")
    document.write_text(_BLOCK.sub(
        lambda block: block[1] + (build / block[2]).read_text(encoding="utf-8").strip() + "\n" + block[4],
        text), encoding="utf-8")


def main(arguments):
    check = arguments[:1] == ["--check"]
    build, *documents = map(pathlib.Path, arguments[check:] or ["--help"])
    if not build.is_dir():
        sys.exit(__doc__.partition("\n\n")[2])
    for document in documents or sorted((TOP / "docs").glob("*.md")):
        try:
            found = differences(document, build)
        except FileNotFoundError as missing:
            sys.exit(f"transcripts: {missing.filename} is missing; run the test that writes it.")
        if check and found:
            sys.exit("\n".join(found) + f"\ntranscripts: {document} shows an older session; run "
                     f"tests/cups/transcripts.py {build} and read what has changed.")
        if not check:
            update(document, build)


if __name__ == "__main__":
    main(sys.argv[1:])
