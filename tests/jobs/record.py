"""Builds the printer's 144-byte status records."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

RECORD_BYTES = 144

# The ink-use levels of each cartridge: when the printer warns, and when it is empty.
INK_LIMITS = {
    "Q": (190000000, 400000000),
    "P": (463000000, 700000000),
    "U": (1440000000, 1820000000),
    "V": (2455000000, 3000000000),
}


def checksum(record):
    return sum(record[1:142]) % 256


def record(state="I", error=0, ink=(1000000, 3000000, 2000000), cartridge="Q", align=0,
           align6=17, align14=23, letter26="R", **overwrite):
    """A well-formed record. cartridge is a letter or a byte; overwrite sets single bytes, given as
    at30=0x10 and so on, before the checksum is taken."""
    raw = bytearray(RECORD_BYTES)
    raw[0:3] = b"\x01\x8e\x5a"
    raw[3:26] = b"ZR7700 status" + bytes(10)
    raw[26] = ord(letter26)
    raw[29] = ord(state)
    raw[30:33] = error.to_bytes(3, "little")
    for at, use in zip((49, 53, 57), ink):
        raw[at:at + 4] = use.to_bytes(4, "big")
    raw[98] = ord(cartridge) if isinstance(cartridge, str) else cartridge
    raw[99] = align
    raw[102], raw[103] = align6, align14
    for name, value in overwrite.items():
        raw[int(name[2:])] = value
    raw[142] = checksum(raw)
    raw[143] = 0x04
    return bytes(raw)


def spoiled(raw, at, value=None):
    """The record with one byte changed and its checksum left as it was."""
    out = bytearray(raw)
    out[at] = (out[at] ^ 0x55) if value is None else value
    return bytes(out)


def state(raw):
    return raw[29]


def error_word(raw):
    return raw[30] | raw[31] << 8 | raw[32] << 16


def ink(raw):
    return [int.from_bytes(raw[at:at + 4], "big") for at in (49, 53, 57)]
