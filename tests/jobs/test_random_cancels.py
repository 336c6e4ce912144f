"""Cancels at random moments: a few every time, two thousand in the long form.

ZR7700_LONG=1 asks for the long form, ZR7700_CANCELS for another number of cancels, and
ZR7700_CANCEL_SEED for the jobs of an earlier run, which printed its seed. A cancel that came when the
job's end was already written does not count.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import random

import pytest

from random_cancels import KINDS, cancel_many, table

LONG = os.environ.get("ZR7700_LONG") == "1"
CANCELS = int(os.environ.get("ZR7700_CANCELS", "2000" if LONG else "14"))
AT_ONCE = 12 if LONG else 7


def first_seed():
    given = os.environ.get("ZR7700_CANCEL_SEED")
    return random.SystemRandom().randrange(1 << 30) if given is None else int(given)


def check_many(count):
    seed = first_seed()
    print(f"\nZR7700_CANCELS={count} ZR7700_CANCEL_SEED={seed}", flush=True)
    outcomes = cancel_many(count, seed, AT_ONCE)
    print(table(outcomes), flush=True)
    faults = [f"{one.kind}, seed {one.seed}: {one.fault}" for one in outcomes if one.fault]
    assert not faults, "\n".join(faults)
    assert len(outcomes) == count
    return outcomes


@pytest.mark.skipif(LONG, reason="the long form has more")
def test_at_random_moments():
    check_many(CANCELS)


@pytest.mark.skipif(not LONG, reason="takes half an hour; ZR7700_LONG=1 asks for it")
def test_at_very_many_random_moments():
    outcomes = check_many(CANCELS)
    assert {one.kind for one in outcomes} == set(KINDS)
