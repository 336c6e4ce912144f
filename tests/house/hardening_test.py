"""Every program and library is built so that a fault ends it instead of running somebody's code.

Of the release build and, where there is one, of the plain configure-and-build beside it.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import subprocess

import pytest

BUILD = pathlib.Path(os.environ["ZR7700_BUILD"])
PLAIN = BUILD.parent / "build"
PROGRAMS = ["rastertoZR7700", "rastertodisc", "pdftodisc", "texttodisc", "picturetodisc",
            "zr7700-printer", "zr7700-decode", "zr7700virtual"]
LIBRARIES = sorted(BUILD.glob("root/Library/Printers/Tessary/Frameworks/*/tq*"))


def facts_of(file):
    words = ["readelf", "--wide", "--file-header", "--dynamic", "--program-headers", "--dyn-syms"]
    return subprocess.run(words + [file], capture_output=True, text=True, check=True).stdout


def binaries():
    plain = [PLAIN / name for name in PROGRAMS if (PLAIN / name).exists()]
    return [BUILD / name for name in PROGRAMS] + LIBRARIES + plain


@pytest.mark.parametrize("file", binaries(), ids=lambda file: f"{file.parent.name}/{file.name}")
def test_addresses_are_of_chance_and_tables_read_only(file):
    facts = facts_of(file)
    assert "DYN (" in facts
    if file.name in PROGRAMS:
        assert " PIE" in facts
    assert "GNU_RELRO" in facts and "BIND_NOW" in facts
    assert "GNU_STACK" in facts and "RWE" not in facts


@pytest.mark.parametrize("file", [BUILD / PROGRAMS[0], PLAIN / PROGRAMS[0]],
                         ids=["release", "plain"])
def test_the_filter_checks_frames_copies_and_containers(file):
    if not file.exists():
        pytest.skip("there is no plain build")
    facts = facts_of(file)
    for check in ("__stack_chk_fail", "_chk@GLIBC", "glibcxx_assert_fail"):
        assert check in facts, check


def test_there_are_libraries_to_look_at():
    assert len(LIBRARIES) == 8
