"""The PPD as CUPS's own checker sees it."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
import subprocess

import pytest


@pytest.fixture
def root_with_filter(tmp_path):
    """A root folder in which the filter stands where the PPD says."""
    folder = tmp_path / "usr/lib/cups/filter"
    folder.mkdir(parents=True)
    shutil.copy(os.environ["ZR7700_FILTER"], folder / "rastertoZR7700")
    for place in (folder, folder / "rastertoZR7700"):
        place.chmod(0o755)
    return tmp_path


def test_checker_finds_no_error_and_no_warning(ppd_path, root_with_filter):
    checker = subprocess.run(["cupstestppd", "-W", "none", "-R", root_with_filter, ppd_path],
                             capture_output=True, text=True)
    assert checker.stderr == ""
    assert checker.stdout.split() == [f"{ppd_path}:", "PASS"]
    assert checker.returncode == 0


def test_checker_misses_the_filter_where_there_is_none(ppd_path, tmp_path):
    """The check above would notice: without the filter the same file fails."""
    checker = subprocess.run(["cupstestppd", "-W", "none", "-R", tmp_path, ppd_path],
                             capture_output=True, text=True)
    assert checker.returncode != 0
    assert "rastertoZR7700" in checker.stdout


def test_filter_and_names(ppd_path):
    with open(ppd_path, encoding="utf-8") as file:
        lines = file.read().splitlines()
    assert '*cupsFilter: "application/vnd.tessary-zr7700-disc 0 rastertoZR7700"' in lines
    assert '*Manufacturer: "Tessary"' in lines
    assert '*ModelName: "Tessary ZR7700"' in lines
    assert '*ColorDevice: True' in lines
    assert '*cupsManualCopies: True' in lines
