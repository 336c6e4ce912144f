"""Makes a job's log comparable: what depends on time is checked by its grammar and taken out.

- Addresses become PTR and the errno of a short read #.
- The reader's lines (drain, reads, realignments, time-outs) depend on timing: they must follow one
  another as the reader's steps do, for the whole job, and are then left out.
- Lines of the status thread may stand between any two lines of the main thread: those between its
  start and its exit are taken out into a list per page.
What remains is compared exactly and in order.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re

_READER = re.compile(
    r"Getting Status|Got Status|FAILED TO GET STATUS|ClearBackChannelBuffer |"
    r"!! ClearBackChannelBuffer |     Read -?\d+ bytes cartridgeID: |Realigning Buffer: |"
    r"     ## TIMED OUT TRYING TO GET STATUS FOR 3s ##")
_THREAD = re.compile(
    r"Start ReadStatusThread|Exit ReadStatusThread|Error check [0-9A-F]+ $|"
    r"(Setting|Clearing) (ink empty|ink low|paper out|alignment needed)$")

# The reader's steps as letters: see _letter.
_GRAMMAR = re.compile(r"(?:GC(?:T|S)?D(?:RA?)+(?:K|O?F))*\Z")


def _letter(line):
    for start, letter in (
            ("Getting Status", "G"), ("ClearBackChannelBuffer called", "C"),
            ("ClearBackChannelBuffer times to read: ", "T"), ("!! ClearBackChannelBuffer", "S"),
            ("ClearBackChannelBuffer returning ", "D"), ("     Read ", "R"),
            ("Realigning Buffer: ", "A"), ("Got Status", "K"), ("     ## TIMED OUT", "O"),
            ("FAILED TO GET STATUS", "F")):
        if line.startswith(start):
            return letter
    raise AssertionError(f"not a line of the reader: {line!r}")


def reader_lines(log):
    return [line for line in log if _READER.match(line)]


def check_reader(log, complete=True):
    """The reader's lines of a whole job follow its steps; the last steps may be missing when the
    job was killed (complete=False)."""
    letters = "".join(_letter(line) for line in reader_lines(log))
    if not complete:
        letters = letters[:letters.rfind("G")] if "G" in letters else letters
    assert _GRAMMAR.match(letters), f"the reader's lines are out of order: {letters}"
    if letters:
        assert letters[2] == "D", "the first read of a job must not drain"
    for line in reader_lines(log):
        if line.startswith("!!"):
            assert int(re.search(r"was (-?\d+)\.  SET TO 50$", line)[1]) > 50
        if line.startswith("ClearBackChannelBuffer times"):
            assert 0 <= int(line.rsplit(" ", 1)[1]) <= 50


def plain(line):
    line = re.sub(r"( at |StartPage Passsed |StartPage Failed |ScanLine )(0x[0-9a-f]+|\(nil\))",
                  r"\1PTR", line)
    return re.sub(r"(BAILING on print, num bytes read \d+) \d+", r"\1 #", line)


def split(log):
    """(the main thread's lines, the status thread's lines page by page)."""
    main, pages, inside = [], [], False
    for line in log:
        if _READER.match(line):
            continue
        if line == "Start ReadStatusThread":
            assert not inside, "a second status thread"
            inside = True
            pages.append([])
        if inside and _THREAD.match(line):
            pages[-1].append(line)
            inside = line != "Exit ReadStatusThread"
            continue
        main.append(plain(line))
    assert not inside, "the status thread did not end"
    return main, pages


def collapse(lines):
    """Runs of the same line count once."""
    return [line for i, line in enumerate(lines) if i == 0 or lines[i - 1] != line]
