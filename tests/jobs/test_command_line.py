"""The command line, the PPD and the job options."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import gettext
import os
import struct

import pytest

import compare
import job as jobs
from expected import Model
from expected_text import STATES_WITHDRAWN
from job import Job

PPD_ERROR = "ERROR: Unable to open PPD file: "


def settings_lines():
    return Model([], {}, checks={0: []}).run().log[:14]


def expect_early_end(result, stderr=None):
    assert result.status == 1
    assert result.log == settings_lines()
    assert result.stdout == b"" and result.calls == [] and not result.shared_memory_left
    if stderr is not None:
        assert result.stderr == STATES_WITHDRAWN + stderr


@pytest.mark.parametrize("arguments", [[], ["1"], [""], ["-h"], ["--helpful"], ["--Version"],
                                       ["--help", "--version"], ["--version", "1"],
                                       ["1", "u", "t", "1"],
                                       ["1", "u", "t", "1", "", "file", "more"]])
def test_a_wrong_number_of_arguments_prints_the_usage(arguments):
    usage = f"Usage: {jobs.filter_path()} job user title copies options [filename]\n"
    expect_early_end(Job(arguments=arguments).run(), usage)


@pytest.mark.parametrize("question,answer", [("--help", "Usage: rastertoZR7700 job user title "),
                                             ("--version", "rastertoZR7700 ")])
def test_a_question_is_no_job(question, answer):
    """No log, no state withdrawn, nothing read and nothing left."""
    result = Job(arguments=[question]).run()
    assert result.status == 0
    assert result.stdout.decode().startswith(answer) and result.stdout.endswith(b"\n")
    assert result.stderr == "" and result.trace == []
    assert result.log_mode is None and not result.shared_memory_left


def test_a_question_among_a_jobs_arguments_is_the_jobs():
    result = Job(arguments=["1", "--help", "--version", "1", "--help"]).run()
    assert result.status == 0
    assert result.stderr.startswith(STATES_WITHDRAWN) and b"Usage" not in result.stdout


def test_an_unset_ppd_is_a_failed_open():
    result = Job(environment={"PPD": None}).run()
    expect_early_end(result)
    assert result.stderr.startswith(STATES_WITHDRAWN + PPD_ERROR)
    assert result.stderr.endswith("\n") and result.stderr.count("\n") == 4


def test_a_ppd_that_is_not_there():
    expect_early_end(Job(ppd_text=None).run(), PPD_ERROR + "No such file or directory\n")


@pytest.mark.parametrize("text", ["\n", "not a PPD at all\n", "\1\2\3*PPD-Adobe: 4"])
def test_a_broken_ppd_ends_the_job(text):
    result = Job(ppd_text=text).run()
    expect_early_end(result)
    assert result.stderr.startswith(STATES_WITHDRAWN + PPD_ERROR)


def catalogue(key, text):
    """A compiled message catalogue of one text, UTF-8."""
    meta = b"Content-Type: text/plain; charset=UTF-8\n"
    pairs = [(b"", meta), (key.encode(), text.encode())]
    keys, texts, at = b"", b"", 28 + 16 * len(pairs)
    key_table, text_table = [], []
    for k, _ in pairs:
        key_table.append((len(k), at + len(keys)))
        keys += k + b"\0"
    for _, t in pairs:
        text_table.append((len(t), at + len(keys) + len(texts)))
        texts += t + b"\0"
    head = struct.pack("<7I", 0x950412DE, 0, len(pairs), 28, 28 + 8 * len(pairs), 0, at)
    tables = b"".join(struct.pack("<2I", *entry) for entry in key_table + text_table)
    return head + tables + keys + texts


@pytest.mark.skipif(os.environ.get("ZR7700_PLATFORM") == "foundation",
                    reason="the program's own bundle holds the texts there, not a catalogue")
@pytest.mark.parametrize("environment,german", [
    ({"APPLE_LANGUAGE": "de", "LANG": "C.UTF-8"}, True),
    ({"APPLE_LANGUAGE": None, "LANG": "de_DE.UTF-8"}, True),
    ({"APPLE_LANGUAGE": "de-DE", "LANG": "C"}, True),
    ({"APPLE_LANGUAGE": None, "LANG": "de-AT", "LC_ALL": "C"}, True),
    ({"APPLE_LANGUAGE": "fr", "LANG": "de_DE.UTF-8"}, False),
    ({"APPLE_LANGUAGE": None, "LANG": None}, False)])
def test_the_message_language_follows_the_job(environment, german):
    def prepare(sandbox):
        folder = sandbox.path("/Library/Printers/Tessary/ZR7700.bundle/Contents/Resources/"
                              "locale/de/LC_MESSAGES")
        folder.mkdir(parents=True)
        (folder / "rastertoZR7700.mo").write_bytes(
            catalogue("Unable to open PPD file: %s", "PPD-Datei lässt sich nicht öffnen: %s"))

    result = Job(ppd_text=None, prepare=prepare, environment=environment).run()
    expected = "ERROR: PPD-Datei lässt sich nicht öffnen: " if german else PPD_ERROR
    assert result.status == 1
    assert result.stderr.startswith(STATES_WITHDRAWN + expected)


SYSTEM_TEXTS = "/usr/share/locale/ja/LC_MESSAGES/libc.mo"


@pytest.mark.skipif(os.environ.get("ZR7700_PLATFORM") == "foundation",
                    reason="the C library's texts go by installed locales there")
@pytest.mark.skipif(not os.path.exists(SYSTEM_TEXTS), reason="the package libc-l10n is not here")
def test_the_systems_error_text_keeps_its_letters():
    with open(SYSTEM_TEXTS, "rb") as file:
        text = gettext.GNUTranslations(file).gettext("No such file or directory")
    result = Job(ppd_text=None, environment={"LANG": "ja_JP.UTF-8"}).run()
    assert result.stderr.endswith(f": {text}\n")


def test_plain_texts_of_the_system_stay_english():
    """LC_ALL=C is about the system's texts, whatever language the job's own are in."""
    environment = {"APPLE_LANGUAGE": "ja", "LANG": "ja_JP.UTF-8", "LC_ALL": "C"}
    result = Job(ppd_text=None, environment=environment).run()
    assert result.stderr.endswith(": No such file or directory\n")


def test_the_raster_comes_from_a_named_file():
    compare.run(Job(from_file=True))


def test_a_raster_file_that_cannot_be_opened_ends_the_job_after_setup():
    result = Job(arguments=["1", "u", "t", "1", "", "/bench/nothing"]).run()
    assert result.status == 1
    assert result.log[-2:] == ["SETUP_END",
                               "Unable to open raster file - No such file or directory"]
    assert result.calls[-1].startswith("HPEStartDoc")
    assert result.stdout == b""


@pytest.mark.parametrize("options,flags", [
    ("SkipLowInkFWCheck=Yes SuppressStartingUtilityOnError=No", ["SkipLowInkFWCheck"]),
    ("SkipLowInkFWCheck=yes", []), ("SkipLowInkFWCheck=true", []), ("SkipLowInkFWCheck", []),
    ("skiplowinkfwcheck=Yes", []),
    ("Other=1 SkipLowInkFWCheck=Yes job-uuid=x", ["SkipLowInkFWCheck"])])
def test_the_low_ink_option_wants_exactly_yes(options, flags):
    result = compare.run(Job(options=options), flags=flags)
    warning = 400000000 if flags else 166250000
    assert result.stdout[6:10] == warning.to_bytes(4, "big")


def test_job_options_override_the_ppds_defaults():
    changed = {"Saturation": "90", "MediaType": "SemiGloss", "PrintQuality": "Quality3",
               "ColorMatching": "BestForPhotos", "Bidi": "No", "InnerDiameter": "0",
               "OuterMargin": "10"}
    options = " ".join(f"{name}={keyword}" for name, keyword in changed.items())
    compare.run(Job(options=options), marked=changed)


def test_a_ppd_without_any_of_the_options_leaves_every_choice_unset():
    result = compare.run(Job(choices={}))
    assert "     Setting print direction to BIDI" in result.log
    assert "   ColorMatching: 0" in result.log
