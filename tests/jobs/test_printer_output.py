"""What reaches the printer: the page's header and the engine's bytes."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import pages
from job import Job

FEED = "1b2a0766"


def test_header_of_a_standard_cartridge():
    """190000000 less its eighth is 166250000, 0x09E8C610; the bytes before the last add up to 0xFE."""
    result = compare.run(Job())
    assert result.stdout.hex() == "1b0b0e010101" + "09e8c610" + "0000000000" + "fe"


BLOCKS = {
    "one feed": [FEED + "00002710"],
    "text around it": ["aabbcc" + FEED + "00002710" + "ddee"],
    "two feeds in a block": [FEED + "00002710" + FEED + "00002710"],
    "a feed in each of two blocks": [FEED + "00002710", FEED + "00004e20"],
    "a feed below the adjustment": [FEED + "00000001"],
    "the largest feed": [FEED + "ffffffff"],
    "a command cut at the block's end": ["0011" + FEED],
    "a value cut at the block's end": ["0011" + FEED + "000027"],
    "a command split over blocks": ["001b2a", "0766" + "00002710"],
    "a cut command before a whole one in the next": [FEED + "0000", FEED + "00002710"],
    "a false start": ["1b1b2a" + FEED + "00002710"],
    "nearly a command": ["1b2a0767" + "00002710"],
    "short blocks": ["01", "0203", "040506", "1b2a07", ""],
    "command letters in the value": [FEED + FEED + "00002710"],
}


@pytest.mark.parametrize("name", BLOCKS)
def test_feed_commands_are_moved(name):
    emits = [("emit", block) for block in BLOCKS[name] if block]
    compare.run(Job(script={("HPESendBand", 3): emits}))


@pytest.mark.parametrize("adjust", [0, 1900, -2147483648, 2147483647])
def test_the_adjustment_is_a_signed_setting(adjust):
    compare.run(Job(settings={"FeedAdjust": adjust},
                    script={("HPEStartPage", 1): [("emit", FEED + "00002710")]}))


def test_output_at_every_step_keeps_its_place():
    entries = ["HPEInitialize", "HPEStartDoc", "SetPaperTray", "HPEStartPage", "HPESendBand",
               "HPEEndPage", "HPEEndDoc"]
    script = {(entry, 1): [("emit", f"{i:02x}" * 5)] for i, entry in enumerate(entries, 1)}
    script[("HPEStartDoc", 2)] = [("emit", "a0a0a0a0")]
    script[("HPEEndDoc", 2)] = [("emit", FEED + "00010000")]
    del script[("HPEInitialize", 1)]
    result = compare.run(Job(script=script))
    assert result.stdout.startswith(b"\2" * 5 + b"\x1b\x0b\x0e")


def test_a_header_stands_before_each_page():
    script = {("HPESendBand", "*"): [("emit", "5555")]}
    result = compare.run(Job(pages=[pages.small(), pages.small()], script=script))
    assert result.stdout.count(b"\x1b\x0b\x0e\x01") == 2


def test_a_large_block_goes_out_whole():
    block = bytes(range(256)) * 4096 + bytes.fromhex(FEED + "00002710")

    def prepare(sandbox):
        (sandbox.bench / "block").write_bytes(block)

    job = Job(prepare=prepare, script={("HPEStartPage", 1): [("emitfile", "/bench/block")]})
    result = job.run()
    assert result.stdout[16:] == block[:-4] + (8100).to_bytes(4, "big")


def test_everything_is_out_when_a_page_is_done():
    """The document's end flushes: the next page's bytes wait, this page's do not."""
    seen = []

    def actions(job):
        if job.until_trace("HPESendBand", times=86 + 1):
            seen.append((job.sandbox.bench / "out").read_bytes())
            job.release()

    script = {("HPEEndDoc", 1): [("emit", "77" * 9)], ("HPESendBand", 87): [("wait", "/bench/go")]}
    job = Job(pages=[pages.small(), pages.small()], script=script, actions=actions)
    result = job.run()
    sent = sum(call.startswith("HPESendBand") for call in result.calls)
    assert sent == 2 * 85 and result.status == 0
    assert seen and seen[0][16:25] == b"\x77" * 9
