"""Status records as they really come: split, shifted, spoiled, late, too many."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import random

import pytest

import compare
import pages
import record
from job import Job

GOOD = record.record()


def of_check(result):
    """The reader's lines of the first check."""
    return result.log[result.log.index("Getting Status"):result.log.index("Got Status") + 1]


def test_the_first_read_does_not_drain():
    result = compare.run(Job())
    assert of_check(result) == ["Getting Status", "ClearBackChannelBuffer called",
                                "ClearBackChannelBuffer returning 1",
                                "     Read 144 bytes cartridgeID: 0x51", "Got Status"]


@pytest.mark.parametrize("kind", ["socketpair", "blocking"])
def test_kinds_of_descriptor(kind):
    compare.run(Job(channel=kind))


def test_a_real_printers_rate():
    """Sixteen records a second and more, whatever the filter reads."""
    compare.run(Job(plan=lambda p: p.rate(GOOD, 20), pages=[pages.small(), pages.small()]))


@pytest.mark.parametrize("shift,wanted", [(1, 2), (37, 2), (100, 2), (141, 2), (142, 3), (143, 3)])
def test_a_read_that_starts_inside_a_record_is_put_right(shift, wanted):
    """A mark that is cut by the buffer's end is seen once the buffer begins with its rest."""
    def plan(p):
        p.send(bytes(shift) + GOOD * 3)
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan))
    lines = of_check(result)
    assert [line for line in lines if "Realigning" in line] == [f"Realigning Buffer: {shift}"]
    reads = [line for line in lines if line.startswith("     Read 144")]
    assert len(reads) == wanted


def test_a_marks_bytes_wrap_round_the_buffers_end():
    """The record's first bytes are the buffer's last, 0x8E the first of the next: here the buffer
    itself begins with the two bytes that make the mark whole."""
    junk = b"\x8e\x5a" + bytes(141)

    def plan(p):
        p.send(junk + GOOD * 3)
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan))
    assert "Realigning Buffer: 143" in result.log


def test_pieces_of_records_are_read_in_the_end():
    """100 bytes and then 188: a record and most of two more."""
    def plan(p):
        p.send(GOOD[:100])
        p.silence(until=p.log("     Read 100 bytes"))
        p.send(GOOD[100:] + GOOD)
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan))
    lines = of_check(result)
    assert "     Read 100 bytes cartridgeID: 0x51" in lines
    assert lines[lines.index("     Read 100 bytes cartridgeID: 0x51") + 1] == (
        "Realigning Buffer: 0")


@pytest.mark.parametrize("at", [0, 142, 143, 77])
def test_a_spoiled_record_is_never_taken(at):
    def plan(p):
        p.fresh(record.spoiled(GOOD, at), until=p.log("FAILED TO GET STATUS"))
        p.drop()
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan), checks={0: [None, GOOD]})
    assert "     ## TIMED OUT TRYING TO GET STATUS FOR 3s ##" in result.log


def test_unused_bytes_do_not_matter():
    odd = record.record(at1=0, at2=0xFF, at40=0xAA, at141=0x77)
    compare.run(Job(record=odd))


@pytest.mark.parametrize("seed", range(3))
def test_noise_never_hurts(seed):
    """Bits of records, nonsense and good records, for the whole job."""
    luck = random.Random(seed)

    def plan(p):
        while p.running() and "Ready to print" not in p.job.log_text():
            pick = luck.random()
            if pick < 0.25:
                p.send(luck.randbytes(luck.randrange(1, 300)))
            elif pick < 0.5:
                p.send(GOOD[:luck.randrange(1, 144)])
            else:
                p.send(GOOD * luck.randrange(1, 4))
            p.sleep(0.02)

    result = Job(plan=plan, limit=120).run()
    assert result.status in (0, 1)
    assert result.log[-1] in ("     Ready to print.",
                              "     StartOfPageJobCheck get status retries failed")
    assert result.stderr.startswith("STATE: -marker-supply-empty\n")


def test_a_flood_is_drained_fifty_records_at_most():
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEStartDoc"))
        p.fresh(GOOD)

    script = {("HPEStartDoc", 1): [("delay", 5000)]}
    job = Job(plan=plan, script=script, pages=[pages.small(), pages.small()])
    result = job.run()
    assert result.status == 0
    drains = [line for line in result.log if line.startswith("!!")]
    assert drains, "five seconds without a read must hit the limit"
    count = int(drains[0].split(" was ")[1].split(".")[0])
    assert 80 <= count <= 120
    assert drains[0] == f"!! ClearBackChannelBuffer times to read was {count}.  SET TO 50"


def test_the_descriptor_is_left_as_the_reader_needs_it():
    """A blocking channel on which the printer falls silent never holds the job."""
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndDoc"))
        p.drop()
        p.silence()

    result = Job(plan=plan, channel="blocking", limit=60).run()
    assert result.status == 0
    assert "No STATUS FOR TOO LONG - GIVE UP WAITING FOR PRINTER STATE" in result.log


def test_a_printer_that_hangs_up_after_the_page():
    def plan(p):
        p.fresh(GOOD, until=p.trace("HPEEndDoc"))
        p.hang_up()

    result = Job(plan=plan, limit=60).run()
    assert result.status == 0
    assert result.log[-2:] == ["Printer Status = ", "     Ready to print."]




def test_a_drain_takes_exactly_the_records_that_it_announces():
    """Sixty records at once, each with its own cartridge byte: the first read gives the first, and
    the drain a second later takes the announced number of those behind it."""
    def plan(p):
        p.send(b"".join(record.record(cartridge=0x60 + k) for k in range(60)))
        p.silence(until=p.log("#### In Error Retry", times=2))
        p.drop()
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    assert result.status == 0
    reads = [line for line in result.log if line.startswith("     Read 144")]
    drains = [line for line in result.log
              if line.startswith("ClearBackChannelBuffer times to read: ")]
    count = int(drains[0].rsplit(" ", 1)[1])
    assert 16 <= count <= 24
    assert reads[0].endswith("cartridgeID: 0x60")
    assert reads[1].endswith(f"cartridgeID: 0x{0x60 + count + 1:x}")


def test_a_drain_that_finds_nothing_says_so():
    def plan(p):
        p.send(record.record(cartridge=0x25))
        p.silence(until=p.log("ClearBackChannelBuffer returning 0"))
        p.fresh(GOOD)

    result = Job(plan=plan).run()
    assert result.status == 0
    assert "ClearBackChannelBuffer returning 0" in result.log


def test_bytes_of_an_earlier_read_are_no_mark():
    """A mark at byte 60, put right; then 50 bytes of nothing, behind which the old mark still stands
    in the buffer."""
    def plan(p):
        p.send(bytes(60) + GOOD)
        p.silence(until=p.log("Realigning Buffer: 60"))
        p.silence(until=lambda: p.queued() == 0)
        p.send(bytes(50))
        p.silence(until=p.log("     Read 50 bytes"))
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan))
    assert sum(line.startswith("Realigning") for line in of_check(result)) == 1


def test_what_a_failed_read_shows_is_the_buffer_as_it_stands():
    def plan(p):
        p.silence(until=p.log("     Read -1 bytes"))
        p.send(record.spoiled(GOOD, 142))
        p.silence(until=p.log("     Read -1 bytes cartridgeID: 0x51"))
        p.fresh(GOOD)

    result = compare.run(Job(plan=plan))
    reads = [line for line in of_check(result) if line.startswith("     Read")]
    assert reads[0] == "     Read -1 bytes cartridgeID: 0x0"
    assert "     Read 144 bytes cartridgeID: 0x51" in reads
