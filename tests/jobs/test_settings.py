"""The settings file: what it changes, and what a bad one leaves alone."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import plistlib

import pytest

import compare
import job as jobs
import log_compare
import planted
from expected import Model
from job import Job

ALL = {"LeftMarginOffset": -7, "TopMarginOffset": 12, "TopMarginOffsetHeron": 13,
       "LeftMarginOffsetHeron": 14, "LeftMarginOffsetHeronHighQuality": 15,
       "ImageSharpeningLevel": 3, "RunComp": 2, "RunCompDiv": 1000, "dwStatusFrequency": 60,
       "FeedAdjust": -1800, "OutputDest": 258}


def test_without_a_file_every_setting_has_its_default():
    result = compare.run(Job())
    assert "   Feed Adjust: -1900" in result.log
    assert "   ImageSharpeningLevel: 11" in result.log


def test_every_setting_comes_from_the_file():
    result = compare.run(Job(settings=ALL))
    # The low byte of OutputDest stands in the print header.
    assert result.stdout[5] == 2


@pytest.mark.parametrize("key,value", [("FeedAdjust", -1800), ("TopMarginOffset", -100),
                                       ("ImageSharpeningLevel", 0), ("ImageSharpeningLevel", 13),
                                       ("ImageSharpeningLevel", 12), ("LeftMarginOffset", -1916),
                                       ("OutputDest", -1)])
def test_one_key_alone_changes_that_setting(key, value):
    compare.run(Job(settings={key: value, "Unknown": 4}))


@pytest.mark.parametrize("raw", [b"", b"no property list", b"<plist><dict><key>FeedAdjust",
                                 plistlib.dumps([1, 2]), plistlib.dumps("FeedAdjust")],
                         ids=["empty", "text", "cut-short", "array", "string"])
def test_a_file_that_holds_no_dictionary_leaves_every_default(raw):
    compare.run(Job(settings=raw))


def test_values_that_are_no_numbers_leave_their_defaults():
    odd = {"FeedAdjust": "-1800", "RunComp": [2], "RunCompDiv": {"a": 1}, "OutputDest": True,
           "LeftMarginOffset": b"1", "ImageSharpeningLevel": 5}
    raw = plistlib.dumps(odd)
    compare.run(Job(settings=raw), settings={"ImageSharpeningLevel": 5})


def test_a_binary_list_is_read_too():
    raw = plistlib.dumps(ALL, fmt=plistlib.FMT_BINARY)
    compare.run(Job(settings=raw), settings=ALL)


def test_a_divisor_of_zero_switches_the_ink_limit_off_and_says_so():
    choices = dict(jobs.CHOICES, MediaType="WhiteMatteBOPP")
    job = Job(settings={"RunCompDiv": 0}, choices=choices)

    model = Model(job.pages, choices, {"RunCompDiv": 0}).run()
    result = job.run()
    compare.engine(result, model)
    main, _ = log_compare.split(result.log)
    extra = [line for line in main if line not in model.log]
    assert result.status == 0
    assert len(extra) == 1 and len(main) == len(model.log) + 1, extra
    assert "RunCompDiv" in extra[0]
    assert main.index("SETUP") < main.index(extra[0]) <= main.index("SETUP_END")


@pytest.mark.parametrize("plant", planted.ALL)
def test_something_else_in_the_files_place_leaves_every_default(plant):
    compare.run(Job(prepare=lambda s: plant(s.path(jobs.SETTINGS)), limit=30))




@pytest.mark.parametrize("text", ["a&#10;b", "a&#9;b", "&#x1F600;", "plain &amp; simple"])
def test_odd_characters_under_other_keys_do_not_hide_the_settings(text):
    raw = ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
           f"<key>Note</key><string>{text}</string>"
           "<key>FeedAdjust</key><integer>-1800</integer></dict></plist>\n")
    assert plistlib.loads(raw.encode())["FeedAdjust"] == -1800
    result = Job(settings=raw.encode()).run()
    assert "   Feed Adjust: -1800" in result.log


@pytest.mark.parametrize("raw", [
    b"<plist><dict><?ours?><key>FeedAdjust</key><integer>-1800</integer></dict></plist>",
    b"<?xml version='1.0' encoding='ISO-8859-1'?><plist><dict><key>Note</key><string>\xfc</string>"
    b"<key>FeedAdjust</key><integer>-1800</integer></dict></plist>",
    b"<!DOCTYPE plist [<!ENTITY note 'ours'>]><plist><dict><key>FeedAdjust</key>"
    b"<integer>-1800</integer></dict></plist>",
    b"<plist><dict><key>Note</key><string>&#x00000020AC;</string><key>FeedAdjust</key>"
    b"<integer>-1800</integer></dict></plist>",
    b"<plist><dict><key>Note</key><integer>99999999999999999999999</integer><key>FeedAdjust</key>"
    b"<integer>-1800</integer></dict></plist>",
    b"<plist><dict><key/><true/><key>FeedAdjust</key><integer>-1800</integer></dict></plist>",
    b"<plist><dict><key>Note</key><string>" + 400_000 * b"x" + b"</string><key>FeedAdjust</key>"
    b"<integer>-1800</integer></dict></plist>"],
    ids=["instruction", "encoding", "subset", "reference", "integer", "empty key", "long"])
def test_every_well_formed_list_is_read(raw):
    assert "   Feed Adjust: -1800" in Job(settings=raw).run().log


def test_a_list_that_no_parser_survives_leaves_every_default():
    raw = b"<plist>" + 200_000 * b"<array>" + 200_000 * b"</array>" + b"</plist>"
    compare.run(Job(settings=raw))
