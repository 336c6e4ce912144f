#!/usr/bin/python3
"""How many small mistakes in the production filter the tests would notice.

Usage: tests/mutation/survey.py [--count N] [--seed N] [--units] [--out FILE] [FOLDER...]

Changes a sample of places in the sources of the filter's rooms (driver, status, engine and base
unless folders are named), one at a time, in a copy; builds each and runs the tests until one fails.
Prints a line a mutant and the share that was noticed; a mutant that does not compile does not count.

  --count N   how many mutants to judge (500)
  --seed N    which sample (1)
  --units     unit tests only, which is quick
  --out FILE  a table of those that nothing noticed
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import argparse
import os
import random
import sys
import tempfile

from mutants import mutants_of
from workshop import TOP, Workshop

ROOMS = ["driver", "status", "engine", "base"]
_NEEDED = 95  # of a hundred that compile


def sources(rooms):
    """The rooms' own sources, without tests and what only tests use, from the top."""
    return sorted(path.relative_to(TOP) for room in rooms for path in (TOP / room).glob("*.cc")
                  if not path.stem.endswith("_test") and not path.stem.startswith("test_"))


def sample(rooms, seed):
    """All mutants of the rooms in an order that the seed decides: source, its text, mutant."""
    texts = {path: (TOP / path).read_text(encoding="utf-8") for path in sources(rooms)}
    everything = [(path, text, mutant) for path, text in texts.items()
                  for mutant in mutants_of(text)]
    random.Random(seed).shuffle(everything)
    return everything


def row(path, text, mutant):
    """A line of a table: where, what it was, what it became."""
    cells = (f"{path}:{mutant.line(text)}", mutant.before, mutant.after or "(nothing)")
    return "| " + " | ".join(cell.replace("|", "\\|").replace("\n", " ") for cell in cells) + " |"


def survey(options, workshop):
    """How many were noticed, and the rows of those that were not."""
    wrong = workshop.judge_all(not options.units)
    if wrong is not None:
        sys.exit(f"survey: The sources as they are do not pass: {wrong or 'they do not build'}.")
    noticed, missed = 0, []
    for path, text, mutant in sample(options.rooms, options.seed):
        if noticed + len(missed) == options.count:
            break
        killer = workshop.judge(path, mutant.applied(text), not options.units)
        if killer == "":
            continue
        if killer is None:
            missed.append(row(path, text, mutant))
        else:
            noticed += 1
        print(row(path, text, mutant), killer or "NOT NOTICED", flush=True)
    return noticed, missed


def parse(words):
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[1][len("Usage: "):])
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--units", action="store_true")
    parser.add_argument("--out")
    parser.add_argument("rooms", nargs="*", default=ROOMS)
    return parser.parse_args(words)


def main(words):
    options = parse(words)
    with tempfile.TemporaryDirectory(prefix="zr7700-mutants-") as folder:
        noticed, missed = survey(options, Workshop(folder, os.cpu_count()))
    judged = noticed + len(missed)
    print(f"{noticed} of {judged} mutants were noticed (seed {options.seed}).")
    if options.out:
        with open(options.out, "w", encoding="utf-8") as out:
            print("| where | what it is | what it became |", "| --- | --- | --- |", *missed, sep="\n",
                  file=out)
    return 0 if judged and 100 * noticed >= _NEEDED * judged else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
