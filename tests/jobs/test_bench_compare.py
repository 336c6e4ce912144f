"""The comparison itself: a model that is wrong in one respect must not agree with a good job."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

import compare
import record
from expected import Model
from job import CHOICES, Job


@pytest.fixture(name="finished", scope="module")
def one_good_job():
    job = Job(script={("HPESendBand", 2): [("emit", "1b2a076600002710")]})
    return job, job.run()


def model_of(job, **changes):
    arguments = {"pages": job.pages, "marked": job.choices, "script": job.script}
    arguments.update(changes)
    return Model(**arguments).run()


WRONG = {
    "feed": {"settings": {"FeedAdjust": -1899}},
    "log only": {"settings": {"dwStatusFrequency": 51}},
    "colour": {"marked": dict(CHOICES, Saturation="101")},
    "one line of the ring": {"marked": dict(CHOICES, InnerDiameter="21")},
    "direction": {"marked": dict(CHOICES, Bidi="No")},
    "ini": {"ini": b""},
    "cartridge": {"record": record.record(cartridge="P")},
    "alignment value": {"record": record.record(align14=24)},
    "ink": {"record": record.record(ink=(0, 0, 0))},
    "condition": {"thread_record": record.record(error=0x10)},
    "block": {"script": {}},
    "flag": {"flags": ["SkipLowInkFWCheck"]},
}


def test_the_right_model_agrees(finished):
    job, result = finished
    compare.job(result, model_of(job))


@pytest.mark.parametrize("name", WRONG)
def test_a_model_that_is_wrong_in_one_respect_does_not_agree(finished, name):
    job, result = finished
    with pytest.raises(AssertionError):
        compare.job(result, model_of(job, **WRONG[name]))


@pytest.mark.parametrize("part", ["stdout", "stderr", "pixels", "ini"])
def test_one_changed_byte_is_seen(finished, part):
    job, result = finished
    kept = getattr(result, part)
    flipped = kept[:-1] + ("~" if isinstance(kept, str) else bytes([kept[-1] ^ 1]))
    setattr(result, part, flipped)
    with pytest.raises(AssertionError):
        compare.job(result, model_of(job))
    setattr(result, part, kept)


@pytest.mark.parametrize("part", ["log", "calls"])
def test_a_missing_or_swapped_line_is_seen(finished, part):
    job, result = finished
    kept = getattr(result, part)
    for wrong in (kept[:9] + kept[10:], kept[:8] + [kept[9], kept[8]] + kept[10:]):
        setattr(result, part, wrong)
        with pytest.raises(AssertionError):
            compare.job(result, model_of(job))
    setattr(result, part, kept)
