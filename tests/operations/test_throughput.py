"""Four printers behind a class print at nearly four times the pace of one."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import time

from scheduler import BUILD, REPOSITORY, wait_for

DISCS = 16
# Of a disc in the printer. Long beside the processor time of a disc (a draft takes well under a
# second), so that four printers leave two processors idle most of the time.
PACE_S = 6


def seconds_for_all(farm, printers):
    """From the first job until the last disc is done."""
    for host in farm.hosts:
        host.machine(pace=f"{PACE_S}s", discs=DISCS)
    farm.front.make_class(printers)
    start = time.monotonic()
    jobs = [farm.front.send("-o", "print-quality=3", REPOSITORY / "labels/lake.png")
            for _ in range(DISCS)]
    for job in jobs:
        wait_for(f"job {job}", lambda number=job: farm.front.state(number) == "completed", 600)
    return time.monotonic() - start


def test_four_printers_print_four_times_as_much(farm):
    farm.front.transcript.clear()
    before = sum(host.processor_seconds() for host in (*farm.hosts,))
    one = seconds_for_all(farm, 1)
    assert len(farm.hosts[0].discs()) == DISCS
    four = seconds_for_all(farm, 4)
    shares = [len(host.discs()) for host in farm.hosts]
    assert shares == [DISCS + 4, 4, 4, 4]
    spent = sum(host.processor_seconds() for host in farm.hosts) - before
    (BUILD / "throughput.txt").write_text(
        f"{DISCS} discs, {PACE_S} s each in the printer\n"
        f"one printer:   {one:.0f} s\nfour printers: {four:.0f} s\nratio: {one / four:.2f}\n"
        f"processor time of a disc on its host: {spent / (2 * DISCS):.2f} s\n")
    assert one >= DISCS * PACE_S
    assert one / four >= 3.5
