"""The papers beside the code: every file says its licence, links lead somewhere, and the list of
changes knows the version that is built (needs reuse)."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import re
import shutil
import subprocess

import pytest

TOP = pathlib.Path(__file__).resolve().parents[2]
# What git ignores, too: builds and what interpreters leave.
LEFT_OUT = shutil.ignore_patterns("build", "build-*", "build*.log", "__pycache__", ".pytest_cache",
                                  ".git")
PAPERS = sorted(path for path in TOP.rglob("*.md")
                if not path.relative_to(TOP).parts[0].startswith("build"))


@pytest.fixture
def sources(tmp_path):
    """The sources as they would be in an archive."""
    return pathlib.Path(shutil.copytree(TOP, tmp_path / "sources", ignore=LEFT_OUT, symlinks=True))


def lint(folder):
    return subprocess.run(["reuse", "--root", folder, "lint"], capture_output=True, text=True,
                          check=False, timeout=240)


def test_every_file_has_a_licence_and_a_holder(sources):
    checked = lint(sources)
    assert checked.returncode == 0, checked.stdout
    counted = re.search(r"license information: (\d+) / (\d+)", checked.stdout)
    assert counted[1] == counted[2] and int(counted[1]) > 500
    assert "Used licenses: Apache-2.0\n" in checked.stdout


@pytest.mark.parametrize("name,text", [
    ("driver/new.cc", "int answer() { return 42; }\n"),
    ("labels/new.svg", "<svg/>\n"),
    ("tools/new.py", "# SPDX-License-" "Identifier: Apache-2.0\n"),
    ("tools/other.py", "# SPDX-FileCopyrightText: The rastertoZR7700 authors\n"
                       "# SPDX-License-" "Identifier: MIT\n")])
def test_a_file_without_them_is_noticed(sources, name, text):
    (sources / name).write_text(text)
    checked = lint(sources)
    assert checked.returncode != 0
    assert name in checked.stdout


def test_licence_is_the_whole_text():
    text = (TOP / "LICENSE").read_text(encoding="utf-8")
    assert text == (TOP / "LICENSES/Apache-2.0.txt").read_text(encoding="utf-8")
    assert text == pathlib.Path("/usr/share/common-licenses/Apache-2.0").read_text(encoding="utf-8")


def test_newest_section_of_the_changes_is_no_older_than_the_build():
    headings = re.findall(r"^## (\d+)\.(\d+)\.(\d+)( \(unreleased\))?$",
                          (TOP / "CHANGES.md").read_text(encoding="utf-8"), re.M)
    versions = [tuple(map(int, heading[:3])) for heading in headings]
    built = tuple(map(int, os.environ["ZR7700_VERSION"].split(".")))
    assert built in versions
    assert versions == sorted(versions, reverse=True)
    # Only what lies ahead may be unreleased.
    assert [version for version, heading in zip(versions, headings) if heading[3]] in (
        [], [versions[0]])


@pytest.mark.parametrize("paper", PAPERS, ids=lambda path: str(path.relative_to(TOP)))
def test_links_lead_somewhere(paper):
    text = re.sub(r"```.*?```", "", paper.read_text(encoding="utf-8"), flags=re.S)
    for link in re.findall(r"\]\(([^)\s]+)\)", text):
        if "://" not in link:
            assert (paper.parent / link.partition("#")[0]).exists(), link


@pytest.mark.parametrize("paper", ["README.md", "CHANGES.md", "CONTRIBUTING.md",
                                   "REPORTING_ISSUES.md", "SECURITY.md"])
def test_papers_name_no_address_that_nobody_answers(paper):
    text = (TOP / paper).read_text(encoding="utf-8")
    assert re.findall(r"[\w.+-]+@[\w-]+\.\w+", text) == []
