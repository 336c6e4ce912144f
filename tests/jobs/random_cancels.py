"""Jobs of every kind, cancelled at any moment between their first check and their end."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import random
import statistics
from dataclasses import dataclass

import pages
import record
from backend import Backend
from cancelled import LIMIT, LIMIT_WITHOUT_A_READER, WELL_LIMIT, expect_cancelled
from job import Job, run_together

GOOD = record.record()
BUSY = record.record(state="B")
EMPTY_BINS = [record.record(state=state, error=0x24) for state in "IBE"]
UNWELL = [record.record(error=0x10), record.record(align=1)] + EMPTY_BINS
ENDS = ("     Ready to print.", "     No pages found!", "     Job Cancelled")
BLOCK = bytes(2000)


@dataclass
class Kind:
    """printer: what it says once the job is under way, as a function of the Printer and of luck.
    utility and takes: of the bench's parts. limit: seconds from SIGTERM to the end."""

    printer: object
    utility: tuple = ("absent", "ack", "close")
    takes: str = "all"
    limit: float = LIMIT


def says(choices, rates):
    return lambda p, luck: p.rate(luck.choice(choices), luck.choice(rates))


KINDS = {
    "a printer that is well": Kind(says([GOOD], [4, 8, 16]), limit=WELL_LIMIT),
    "a printer that says little": Kind(says([GOOD, BUSY] + UNWELL, [0.5, 1, 2, 3.5])),
    "a silent printer": Kind(lambda p, luck: p.silence()),
    "a full printer": Kind(says([BUSY], [3.5, 16]), takes="little"),
    "an empty bin": Kind(says(EMPTY_BINS, [1, 3.5, 16])),
    "a hanging utility": Kind(says(UNWELL, [3.5, 16]), utility=("silent", "full", "drip")),
    "a backend that takes nothing": Kind(says([GOOD] + EMPTY_BINS, [3.5, 16]), takes="nothing",
                                         limit=LIMIT_WITHOUT_A_READER),
}


@dataclass
class Outcome:
    """seconds: from SIGTERM to the end; None for a job that had to be killed."""

    kind: str
    seed: int
    seconds: float
    memory_left: bool
    fault: str


def plan_of(kind, luck):
    def plan(p):
        p.fresh(GOOD, until=p.log("   ### HPEInitialize"))
        if luck.random() < 0.5:
            p.drop()
        kind.printer(p, luck)
    return plan


def cancel(name, seed):
    """One job; nothing when its end was written before the cancel came."""
    kind, luck = KINDS[name], random.Random(seed)
    moment = luck.uniform(0, 5)
    in_time = []

    def actions(job):
        if job.until_log("#### NOT in Error Continue") and job.until_log("   ### HPEInitialize"):
            job.until(lambda: False, seconds=moment)
            job.terminate()
            in_time.append(not job.log_text().rstrip("\r\n").endswith(ENDS))

    script = {("HPESendBand", "*"): [("delay", luck.choice([0, 2, 8])),
                                     ("emitfile", "/bench/block")],
              ("HPEEndDoc", "*"): [("emitfile", "/bench/block")]}
    with Backend(65536 if kind.takes == "all" else 8192) as backend:
        if kind.takes != "nothing":
            backend.take(*(65536, 0) if kind.takes == "all" else (4096, 0.1))
        result = Job(pages=[pages.small(60, 80) for _ in range(luck.randint(1, 4))],
                     plan=plan_of(kind, luck), actions=actions, script=script, limit=60,
                     utility=luck.choice(kind.utility), output=backend.filter_end,
                     prepare=lambda s: (s.bench / "block").write_bytes(BLOCK)).run()
    return outcome(name, seed, result, kind.limit) if in_time == [True] else None


def outcome(name, seed, result, limit):
    hangs = result.status is None
    return Outcome(name, seed, None if hangs else result.seconds_after_cancel,
                   result.shared_memory_left, "it hangs" if hangs else fault_of(result, limit))


def fault_of(result, limit):
    begun = "PAGE: 1 1" in result.stderr
    in_check = result.log[-1] == "     Job Cancelled"
    try:
        expect_cancelled(result, 1 if in_check or not begun else 0, limit)
    except AssertionError as error:
        return str(error).splitlines()[0] or "wrong"
    return ""


def cancel_many(count, first_seed, at_once):
    """So many jobs that were cancelled before their end, the kinds in turn, and their outcomes."""
    names, outcomes, seed = list(KINDS), [], first_seed
    while len(outcomes) < count:
        batch = range(seed, seed + min(count - len(outcomes), 10 * at_once))
        seed = batch.stop
        done = run_together([lambda s=s: cancel(names[s % len(names)], s) for s in batch], at_once)
        outcomes += [one for one in done if one is not None]
    return outcomes


def table(outcomes):
    """What the outcomes come to, kind by kind, as a table of a document."""
    rows = ["| with | cancels | median s | largest s | memory left | hangs |",
            "| --- | ---: | ---: | ---: | ---: | ---: |"]
    for name in list(KINDS) + ["all"]:
        some = [one for one in outcomes if name in (one.kind, "all")]
        seconds = [one.seconds for one in some if one.seconds is not None]
        if some:
            rows.append(f"| {name} | {len(some)} | {statistics.median(seconds or [0]):.1f} | "
                        f"{max(seconds, default=0):.1f} | {sum(one.memory_left for one in some)} | "
                        f"{len(some) - len(seconds)} |")
    return "\n".join(rows)
