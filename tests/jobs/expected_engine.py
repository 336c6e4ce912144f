"""A model of the print engine as the tests script it: what it is called with and what it emits."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

from expected_page import i32, u32

FEED = b"\x1b\x2a\x07\x66"


def hex_bytes(raw):
    return ", ".join(f"0x{b:02x}" for b in raw)


class Engine:
    """Collects the calls that are expected, and plays the script's emissions and results."""

    def __init__(self, script, feed_adjust, log):
        self._script = script
        self._feed_adjust = feed_adjust
        self._log = log
        self._counts = {}
        self.handle = "H"
        self.calls = []
        self.stdout = b""

    def call(self, entry, *arguments, has_handle=True):
        """The entry's scripted result."""
        words = ([self.handle] if has_handle else []) + [str(a) for a in arguments]
        self.calls.append(" ".join([entry] + words))
        number = self._counts[entry] = self._counts.get(entry, 0) + 1
        result = 0
        for (name, which), steps in self._script.items():
            if name != entry or which not in ("*", number):
                continue
            for action, argument in steps:
                if action == "return":
                    result = i32(int(argument))
                if action == "emit":
                    self._emit(bytes.fromhex(argument))
        return result

    def create(self):
        steps = [s for (name, _), all_steps in self._script.items()
                 if name == "CreateHostPrintEngine" for s in all_steps]
        self.call("CreateHostPrintEngine", has_handle=False)
        if ("return", 0) in steps:
            self.handle = "NULL"

    def _emit(self, block):
        self.stdout += self.adjusted(block)

    def adjusted(self, block):
        """The block with its first whole feed command moved by the setting, as it is logged."""
        at = block.find(FEED)
        if at < 0 or at + 8 > len(block):
            return block
        old = int.from_bytes(block[at + 4:at + 8], "big")
        new = u32(old + self._feed_adjust)
        raw = new.to_bytes(4, "big")
        self._log(f"**Found FEED: {old}, {{{hex_bytes(block[at + 4:at + 8])}}}\n")
        self._log(f"**Set FEED: {new}, {{{hex_bytes(raw)}}}\n")
        return block[:at + 4] + raw + block[at + 8:]
