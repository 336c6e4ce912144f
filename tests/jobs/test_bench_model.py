"""The model itself, against numbers worked out by hand."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import expected_ini as ini
import expected_text
from expected_check import conditions, percent
from expected_engine import Engine
from expected_page import Geometry, Inks, atoi, band, quotient
from record import record, spoiled, checksum

CLEAR = Inks(100, 1, 1)


def test_a_record_adds_up():
    raw = record()
    assert len(raw) == 144 and raw[0] == 1 and raw[143] == 4
    assert raw[142] == checksum(raw) == sum(raw[1:142]) % 256
    assert spoiled(raw, 142)[142] != raw[142]


def test_numbers_in_keywords():
    assert [atoi(t) for t in ("12", "-3", "+7x", "x", "", " 5")] == [12, -3, 7, 0, 0, 5]
    assert quotient(1800, 254) == 7 and quotient(-1800, 254) == -7


def test_only_lines_strictly_between_the_margins_print():
    g = Geometry(2834, 2834, 600, 0)
    assert (g.top, g.bottom) == (600, 2234)
    assert [g.prints(y) for y in (600, 601, 2233, 2234)] == [False, True, True, False]


def test_a_round_disc_is_a_little_narrower_than_tall():
    g = Geometry(1000, 1000, 0, 0)
    assert g.table[0][0] == 31
    assert g.table[0][499] == 499
    assert g.table[0][500] == 499 and g.table[0][999] == 31


def test_the_hole_starts_at_nothing_and_nears_its_radius():
    g = Geometry(1000, 1000, 0, 254)
    assert g.hole_radius == 300
    inner = g.table[1]
    assert inner[199] == 0 and inner[200] == 0 and inner[201] > 0
    # The last entry of the upper half: the square root of 600^2 - 2^2, halved.
    assert inner[499] == 299 and inner[500] == 299


def test_counters_outside_the_ring_are_white():
    g = Geometry(2834, 2834, 0, 0)
    g.table[0][50], g.table[1][50] = 1400, 300
    white = g.white(50, 2834)
    by_counter = {2834 - i: value for i, value in enumerate(white)}
    assert by_counter[2834] and by_counter[2818] and not by_counter[2817]
    assert by_counter[16] and not by_counter[17]
    assert not by_counter[1117] and by_counter[1118]
    assert by_counter[1716] and not by_counter[1717]


def test_saturation_scales_and_wraps():
    assert Inks(90, 1, 1).convert(bytes([55, 55, 55])) == bytes([255 - 184] * 3)
    assert Inks(120, 1, 1).convert(bytes([0, 255, 255])) == bytes([255 - 38, 255, 255])


def test_the_ink_limit_lightens_black():
    assert Inks(100, 1, 5).convert(b"\0\0\0") == bytes([43, 43, 43])
    # Limit 700: excess 65, 65 x 255 / 3000 = 5.
    assert Inks(100, 2, 1).convert(b"\0\0\0") == bytes([5, 5, 5])
    assert CLEAR.convert(b"\1\2\3") == b"\1\2\3"


def test_a_clipped_pixel_is_white_with_a_clear_pad():
    g = Geometry(1000, 1000, 0, 0)
    out = band(g, Inks(90, 1, 1), bytes(3000), 1, 3000, 24)
    assert out[:4] == b"\xff\xff\xff\0"


def test_feed_commands_move_once_in_a_block():
    log = []
    engine = Engine({}, -1900, log.append)
    first = bytes.fromhex("aa1b2a076600002710")
    assert engine.adjusted(first + first) == bytes.fromhex("aa1b2a076600001fa4") + first
    assert log == ["**Found FEED: 10000, {0x00, 0x00, 0x27, 0x10}\n",
                   "**Set FEED: 8100, {0x00, 0x00, 0x1f, 0xa4}\n"]
    assert engine.adjusted(bytes.fromhex("1b2a0766000027")) == bytes.fromhex("1b2a0766000027")
    assert engine.adjusted(bytes.fromhex("1b2a076600000001"))[4:] == bytes.fromhex("fffff895")


def test_ink_percent_wraps_above_the_warning_level():
    assert percent(190000000, 0) == 100
    assert percent(190000000, 95000000) == 50
    # 2^32 - 10000000 = 4284967296; x 100 / 190000000 + 0.5 = 2255.74.
    assert percent(190000000, 200000000) == 2255


def test_conditions():
    assert conditions(record(error=0x24), 0x24) == {"paper out"}
    assert conditions(record(error=0x04), 0x04) == set()
    assert conditions(record(), 0x10) == {"ink low"}
    assert conditions(record(ink=(400000001, 0, 0)), 0x10) == {"ink empty"}
    assert conditions(record(align=1), 0) == {"alignment needed"}


def test_setting_a_key():
    assert ini.write(None, "[Configuration]", "UseDebugSettings=", "1") == (
        b"[Configuration]\nUseDebugSettings=1 \n")
    assert ini.write(b"[Configuration]\nColor=1\n", "[Configuration]", "Color=", "2") == (
        b"[Configuration]\nColor=2 \n")
    before = b"[Configuration]\nUseDebugSettings=1\n[ESwathBuilder]\nSlot1PrintDirection=0\n"
    assert ini.write(before, "[Configuration]", "Printer=", "1") == (
        b"[Configuration]\nUseDebugSettings=1\nPrinter=1 \n[ESwathBuilder]\n"
        b"Slot1PrintDirection=0\n")
    assert ini.write(b"[A]\nx=1", "[ESwathBuilder]", "K=", "8") == (
        b"[A]\nx=1[ESwathBuilder]\nK=8 \n")
    assert ini.write(b"[A]\n", "[A]", "K=", "8") == b"[A]\n\nK=8 \n"
    assert ini.write(b"[B]\nXColor=5\n", "[Configuration]", "Color=", "2") == b"[B]\nColor=2 \n"


def test_removing_a_key():
    kept = b"[Configuration]\nK=1\n"
    assert ini.remove(kept, "[ESwathBuilder]", "K=") == kept
    assert ini.remove(b"[E]\nXK=1\na\n[F]\nK=1\n", "[E]", "K=") == b"[E]\na\n[F]\nK=1\n"


def test_conditions_speak_in_their_order():
    assert list(expected_text.CONDITIONS) == ["ink empty", "ink low", "paper out",
                                              "alignment needed"]
