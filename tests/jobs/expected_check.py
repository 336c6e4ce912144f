"""The start-of-page check as it is expected: log lines and standard-error texts."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import math

import record as records
from expected_page import u32
from expected_text import ALIGN, INVALID, MISSING, OUT_OF_INK, RECOVERED_ALL

_CARTRIDGES = {
    "Q": "CheckCartridges: ** Cartridges are ok",
    "P": "CheckCartridges: ** Cartridges are ok (PRO Cart Installed)",
    "U": "CheckCartridges: ** Cartridges are ok (HERON Cart Installed)",
    "V": "CheckCartridges: ** Cartridges are ok (HERON QX Cart Installed)",
}


def percent(low, current):
    """What the log calls the percentage: it wraps when the level is passed, 16 bits are kept."""
    value = math.floor(u32(low - current) * 100.0 / low + 0.5) & 0xFFFF
    return value - 65536 if value >= 32768 else value


class Check:
    """One call of the check. `passes` holds the record of each pass, None for a failed read."""

    def __init__(self, page, passes, log, err):
        self._page, self._passes = page, passes
        self._log, self._err = log, err
        self._told = False
        self.limits = records.INK_LIMITS["Q"]

    def run(self):
        """True when the check lets the job go on; false when the passes end before that."""
        self._log("     StartOfPageJobCheck")
        budget = 5 if self._page else 15
        for raw in self._passes:
            if raw is None:
                if budget == 0:
                    self._log("     StartOfPageJobCheck get status retries failed")
                    return False
                budget -= 1
                continue
            if self._pass(raw):
                self._log("     #### NOT in Error Continue")
                if self._told:
                    self._log("     clear all errors")
                    self._err(RECOVERED_ALL)
                return True
            self._told = True
            self._log("     #### In Error Retry")
        return False

    def _pass(self, raw):
        good = [self._cartridge(raw), self._alignment(raw), self._ink(raw)]
        return all(good)

    def _complain(self, line, severity, text, last_line):
        self._log(line)
        self._err(f"ERROR: {severity}: {text}")
        self._log(last_line)
        return False

    def _cartridge(self, raw):
        letter = chr(raw[98])
        missing = 0x20 <= raw[98] <= 0x2F
        self._log("     Checking Cartridges...")
        self._log("In CheckCartridges")
        if letter in _CARTRIDGES:
            self._log(_CARTRIDGES[letter])
        else:
            self._log("CheckCartridges: No cartridges installed" if missing
                      else "CheckCartridges: Invalid cartridges (CMY) installed")
        self._log("     Checking Cartridges Finished...")
        self._log(f"     Cart info {raw[98]:X}")
        if letter in _CARTRIDGES:
            self.limits = records.INK_LIMITS[letter]
            return True
        return self._complain("     Missing Cart" if missing else "     Invalid Cart",
                              "recoverable", MISSING if missing else INVALID,
                              "     Cartridge Error. Tell user.")

    def _alignment(self, raw):
        self._log("     Checking Alignment")
        if raw[99] != 1:
            return True
        return self._complain("     Cart needs align", "recoverable", ALIGN,
                              "     Alignment Needed. Tell user.")

    def _ink(self, raw):
        low, high = self.limits
        current = max(records.ink(raw))
        for line in ("     Checking Ink", "     Checking Color Ink Level... ",
                     f"          Current: {current}", f"          Max {low}",
                     f"          Final {high}", f"          Percent {percent(low, current)}"):
            self._log(line)
        if current <= high:
            return True
        return self._complain("     Cart out of ink", "unrecoverable", OUT_OF_INK,
                              "     Final Ink Empty Error.")


def conditions(raw, word):
    """The set of conditions that a record and the error word in force come to."""
    out = set()
    if word == 0 and raw[99] == 0:
        return out
    if word & 0x24 == 0x24:
        out.add("paper out")
    if word & 0x10:
        full = records.INK_LIMITS.get(chr(raw[98]))
        empty = full is not None and max(records.ink(raw)) > full[1]
        out.add("ink empty" if empty else "ink low")
    if raw[99] != 0:
        out.add("alignment needed")
    return out
