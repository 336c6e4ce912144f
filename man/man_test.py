"""The manual pages: clean for both formatters, and true to what the filter's sources and the PPD's
source say (needs mandoc and man-db)."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import re
import subprocess

import pytest

HERE = pathlib.Path(__file__).parent
TOP = HERE.parent
PAGES = sorted(path for path in HERE.iterdir() if re.fullmatch(r"\.\d", path.suffix))
FILTER_PAGE = (HERE / "rastertoZR7700.8").read_text(encoding="utf-8")


def source(name):
    return (TOP / name).read_text(encoding="utf-8")


def expanded(text, macros):
    """C string literals with macros between them as one text."""
    parts = re.findall(r'"([^"]*)"|(\w+)', text)
    return "".join(literal if not name else expanded(macros[name], macros)
                   for literal, name in parts)


def section(name):
    return re.search(rf"^\.Sh {name}\n(.*?)(?=^\.Sh |\Z)", FILTER_PAGE, re.M | re.S).group(1)


def test_there_are_pages():
    assert HERE / "rastertoZR7700.8" in PAGES


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_mandoc_finds_nothing(page):
    """Whether the pages referred to are installed is not what counts here."""
    lint = subprocess.run(["mandoc", "-Tlint", "-Wstyle", page], capture_output=True, text=True)
    found = [line for line in (lint.stdout + lint.stderr).splitlines()
             if "outdated mandoc.db" not in line and "referenced manual not found" not in line]
    assert found == []


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_man_formats_without_warnings(page):
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80"}
    man = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page],
                         capture_output=True, text=True, env=environment)
    assert man.stderr == ""
    assert man.returncode == 0
    assert len(man.stdout) > 1000


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_pages_name_the_release(page):
    release = re.search(r"project\(zr7700 VERSION (\d+\.\d+)", source("CMakeLists.txt"))[1]
    assert f'\n.Os "zr7700 {release}"\n' in page.read_text(encoding="utf-8")


def test_settings_and_their_defaults():
    documented = dict(re.findall(r"^\.It Va (\w+) Ta (-?\d+) Ta .+$", section("SETTINGS"), re.M))
    built_in = dict(re.findall(r"^  int32_t (\w+) = (-?\d+);", source("base/settings.h"), re.M))
    assert len(built_in) == 11
    assert documented == built_in


def test_every_path_is_documented():
    """Each path of the filter is named in FILES, itself or the folder that holds it."""
    text = re.sub(r"//.*", "", source("base/paths.h"))
    macros = dict(re.findall(r'#define (\w+) (ZR7700_ROOT "[^"]*")', text))
    macros.update({"ZR7700_ROOT": '""', "ZR7700_SHM_PREFIX": '""'})
    values = re.findall(r'((?:(?:ZR7700_\w+|"[^"]*")\s+)*"[^"]*")\s*[,;}]', text)
    paths = {path for path in (expanded(value, macros) for value in values) if "/" in path}
    documented = re.findall(r"^\.It Pa (\S+)$", section("FILES"), re.M)
    assert len(paths) > 20
    for path in paths:
        assert any(path == known or path.startswith(known + "/") for known in documented), path


def test_every_choice_of_the_ppd_is_documented():
    """Options and keywords of the PPD stand in OPTIONS, each under its own entry, and defaults are
    called so."""
    entries = dict(re.findall(r"^\.It Cm (\w+) Ns = .*?\n(.*?)(?=^\.It |^\.El)", section("OPTIONS"),
                              re.M | re.S))
    drv = source("ppd/zr7700.drv")
    assert set(entries) == set(re.findall(r'Option "(\w+)/', drv)) | {"PageSize", "Resolution"}
    bodies = re.findall(r'Option "(\w+)/(.*?)(?=Option "|\nGroup|\nUIConstr)', drv, re.S)
    for option, body in bodies:
        for star, keyword in re.findall(r'^\s*(\*?)Choice "(\w+)/', body, re.M):
            plain = entries[option].replace("\\&", "")
            if option.startswith("S") and option != "Saturation" and keyword == "No":
                continue  # Yes is what matters there.
            assert re.search(rf"\b{keyword}\b", plain), f"{option} {keyword}"
            if star and len(re.findall("Choice", body)) > 2:
                assert re.search(rf"\b{keyword}\n\((?:\w+, )?the default", plain), option


def test_every_option_of_the_virtual_printer_is_documented():
    page = (HERE / "zr7700-printer.1").read_text(encoding="utf-8")
    usage = re.findall(r'^    "  --([\w-]+) ', source("virtual_printer/main.cc"), re.M)
    documented = re.findall(r"^\.It Fl Fl ([\w-]+)", page, re.M)
    assert len(usage) == 13
    assert documented == usage
    assert re.findall(r"^\.Op Fl Fl ([\w-]+)", page, re.M) == usage


@pytest.mark.parametrize("page", [page for page in PAGES if page.suffix in (".1", ".8")],
                         ids=lambda page: page.name)
def test_every_program_says_how_it_is_asked(page):
    """Both questions stand in the synopsis and in the text."""
    synopsis, text = re.search(r"^\.Sh SYNOPSIS\n(.*?)^\.Sh (.*)", page.read_text(encoding="utf-8"),
                               re.M | re.S).groups()
    for question in ("help", "version"):
        assert f"Fl Fl {question}" in synopsis
        assert f"Fl Fl {question}" in text


def test_pages_name_no_ppd_that_nobody_installs():
    """A path below a prefix is somewhere else on the next machine: CUPS's own names are not."""
    for page in PAGES:
        assert re.findall(r"/usr/(?:local/)?share/ppd", page.read_text(encoding="utf-8")) == []


def test_every_order_of_the_virtual_printer_is_documented():
    page = (HERE / "zr7700-printer.1").read_text(encoding="utf-8")
    words = re.findall(r'^    \{"(\w+)", "\w*", Verb::', source("virtual_printer/command.cc"), re.M)
    phrases = {*words, "silence"}
    documented = set(re.findall(r"^\.It Cm (\w+)", page, re.M)) - {"at", "on", "after"}
    assert len(phrases) > 8
    assert documented == phrases


@pytest.mark.parametrize("name,sources", [
    ("marker-supply-low", "status/condition_reports.cc"),
    ("marker-supply-empty", "status/condition_reports.cc"),
    ("media-needed", "status/condition_reports.cc"),
    ("ERROR: recoverable: ", "status/user_texts.h"),
    ("ERROR: unrecoverable: ", "status/user_texts.h"),
    ("ERROR: recovered: ", "status/user_texts.h"),
    ("The print engine's settings are too long", "engine/fatal_limit.cc"),
    ("Unable to open PPD file: ", "driver/command_line.cc"),
    ("StartOfPageJobCheck get status retries failed", "status/job_check.cc"),
    ("Invalid Dimension wOd", "engine/clip_geometry.cc"),
])
def test_quoted_texts_are_the_programs(name, sources):
    assert name in source(sources)
    assert name in FILTER_PAGE
