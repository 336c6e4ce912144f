"""Every text of the PPD in every language, in the file and through libcups."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import json
import os
import re
import subprocess
import sys

import pytest

from cups_ppd import Ppd

HERE = os.path.dirname(__file__)
LANGUAGES = ("de", "es", "fr", "ja")
REASONS = ("marker-supply-low", "marker-supply-empty", "media-needed")
# Texts that may read the same in another language: lengths, percentages, and these.
SAME_WORDS = {"de": {"Disc, 120 mm", "Normal", "Disc", "600 dpi"},
              "es": {"Color", "Normal", "No"}, "fr": set(), "ja": {"600 dpi"}}


def catalogue(language):
    """{English text: text} of a catalogue."""
    with open(os.path.join(HERE, "po", f"{language}.po"), encoding="utf-8") as file:
        pairs = re.findall(r'^msgid "(.+)"\nmsgstr "(.*)"$', file.read(), re.MULTILINE)
    return dict(pairs)


def localized(ppd_path, language):
    """The PPD's texts from a process that speaks the language."""
    environment = {**os.environ, "LANG": f"{language}.UTF-8", "LC_ALL": f"{language}.UTF-8"}
    printed = subprocess.run([sys.executable, os.path.join(HERE, "localized_texts.py"), ppd_path,
                              *REASONS], env=environment, capture_output=True, check=True)
    return json.loads(printed.stdout)


@pytest.fixture(scope="module")
def ppd_text(ppd_path):
    with open(ppd_path, encoding="utf-8") as file:
        return file.read()


@pytest.fixture(scope="module")
def english(ppd_path):
    with Ppd(ppd_path) as ppd:
        return {keyword: [text, choices] for keyword, (text, _, choices) in ppd.options().items()}


def test_languages_are_announced(ppd_text):
    assert f'*cupsLanguages: "en {" ".join(LANGUAGES)}"' in ppd_text


@pytest.mark.parametrize("language", LANGUAGES)
def test_every_english_text_is_translated(ppd_text, language):
    """Options, choices, groups, presets and reasons: each has a line in the language, with the text
    of the catalogue."""
    entries = re.findall(r"^\*(?:Open(?:UI|Group):? )?\*?(\w+)(?: ([\w.-]+))?/([^:\n]+):", ppd_text,
                         re.MULTILINE)
    texts = catalogue(language)
    plain = [entry for entry in entries if entry[0] not in ("ImageableArea", "PaperDimension",
                                                           "PageRegion")]
    assert len(plain) > 60
    for keyword, choice, text in plain:
        name = f"{keyword} {choice}" if choice else f"Translation {keyword}"
        assert f"\n*{language}.{name}/{texts[text]}: " in ppd_text, f"{name} in {language}"


@pytest.mark.parametrize("language", LANGUAGES)
def test_catalogues_hold_no_empty_or_english_text(language):
    for english_text, text in catalogue(language).items():
        assert text
        if not re.fullmatch(r"\d+(\.\d+)? (mm|%)", english_text):
            assert text != english_text or text in SAME_WORDS[language]


def test_catalogues_translate_the_same_texts():
    texts = set(catalogue("de"))
    assert all(set(catalogue(language)) == texts for language in LANGUAGES)


@pytest.mark.parametrize("language", LANGUAGES)
def test_draft_is_one_thing_in_every_language(language):
    """One word for the 300 dpi and its lengths, which no print quality bears as well."""
    texts = catalogue(language)
    draft = re.fullmatch(r"300 \w+ ?[（(](\w+)[）)]", texts["300 dpi (draft)"]).group(1)
    for english_text, text in texts.items():
        assert ("draft" in english_text.lower()) == (draft.lower() in text.lower()), english_text
    assert texts["Fast"] != texts["Draft"]


@pytest.mark.parametrize("language", LANGUAGES)
def test_texts_that_must_differ_do(language):
    texts = catalogue(language)
    for words in (("Fast", "Normal", "Better", "Best"), ("Color", "Grayscale", "Colors"),
                  ("High gloss", "High gloss, type 2", "White polyester", "Semi-gloss",
                   "White, matte")):
        assert len({texts[word] for word in words}) == len(words)


@pytest.mark.parametrize("language", LANGUAGES)
def test_libcups_shows_the_language(ppd_path, english, language):
    texts, shown = catalogue(language), localized(ppd_path, language)["options"]
    assert shown.keys() == english.keys()
    for keyword, (text, choices) in english.items():
        if keyword == "PageRegion":  # The same list again, which nobody is shown.
            continue
        assert shown[keyword][0] == texts[text]
        assert shown[keyword][1] == {choice: texts[name] for choice, name in choices.items()}


@pytest.mark.parametrize("language", LANGUAGES)
def test_libcups_shows_the_reasons(ppd_path, language):
    shown = localized(ppd_path, language)["reasons"]
    texts = catalogue(language)
    assert shown == {"marker-supply-low": texts["The ink is running low."],
                     "marker-supply-empty": texts["The ink cartridge is empty."],
                     "media-needed": texts["The disc input bin is empty."]}
