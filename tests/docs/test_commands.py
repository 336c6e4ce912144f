"""Every command that a document tells people to type works: it is run here or by another test.

A new command in a document is run by test_commands_work as it stands, in a throw-away folder with
stand-ins (stage.py) and a private scheduler with the queues "Discs" and "discs". When that cannot
be, a row of RUN_ELSEWHERE names the test that runs it, and a text that stands in that test.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re

import pytest

from documents import DOCUMENTS, KINDS, TOP, blocks, commands
from stage import Stage

# A pattern of whole commands, the test that runs them, and what is to be found in that.
RUN_ELSEWHERE = [
    (r"\./package( --.*)?", "tests/packages/packages.py", 'REPOSITORY / "package"'),
    (r"apt install \./build-packages/.*", "tests/packages/test_readme.py", 'section("Installing")'),
    (r"service cups restart", "tests/packages/test_readme.py", '"service cups restart"'),
    (r"lpinfo .*", "tests/packages/test_readme.py", 'section("The first disc")'),
    (r"lpadmin -p Discs -E -v usb.*", "tests/packages/test_readme.py", 'section("The first disc")'),
    (r"lp -d Discs .*(photo|label)\..*", "tests/packages/test_readme.py",
     'section("The first disc")'),
    (r"lpadmin -x Discs", "tests/packages/test_readme.py", 'section("Taking it off")'),
    (r"apt purge .*", "tests/packages/test_readme.py", 'section("Taking it off")'),
    (r"\./test --long", "tests/packages/CMakeLists.txt", "packages;long"),
    (r"\./demo( .*)?", "tests/picture/test_demo.py", "tools/demo_print.py"),
    (r"\./test( quick)?", "tests/papers/test_questions.py", 'TOP / "test"'),
    (r"docs/draw_pictures\.py", "tests/picture/test_shown_discs.py", "draw_pictures.SHOWN"),
    (r"lp -o \.\.\.", "tests/cups/test_cups.py", 'scheduler.print("-o"'),
    (r"lpadmin -p Discs -v 'zr7700virtual:/path.*", "tests/cups/scheduler.py", "zr7700virtual:"),
    (r"macos/package --sign .*", "tests/macos/test_build_package.py", "--sign"),
    (r"sudo '/Library/Application Support/.*/uninstall'", "tests/macos/test_installed_scripts.py",
     "uninstall"),
    (r"lpmove farm-7 disc1", "tests/operations/test_farm.py", '"lpmove"'),
    (r"cancel 12", "tests/operations/test_farm.py", '"cancel", bad'),
    (r"tests/cups/transcripts\.py build-release", "tests/cups/test_transcripts.py",
     "run(tmp_path)"),
    (r"bench/peers\.py build-release", "tests/docs/test_commands.py",
     "bench/peers.py build-release 1"),
    (r"lpinfo -m \| grep ZR7700", "ppd/driver_lookup_test.py", "lpinfo"),
]


def elsewhere(command):
    return next((row for row in RUN_ELSEWHERE if re.fullmatch(row[0], command)), None)


@pytest.mark.parametrize("document", DOCUMENTS, ids=lambda path: path.name)
def test_blocks_say_what_they_are(document):
    kinds = {kind for kind, _ in blocks(document.read_text(encoding="utf-8"))}
    assert kinds <= KINDS, "mark a fenced block with commands sh, any other text"


@pytest.mark.parametrize("document", DOCUMENTS, ids=lambda path: path.name)
def test_commands_work(document, machine, tmp_path):
    tmp_path.chmod(0o755)
    stage = Stage(tmp_path, machine)
    for command in commands(document):
        if not elsewhere(command):
            done = stage.run(command)
            assert done.returncode == 0, f"{document.name}: {command}: {done.stdout}{done.stderr}"


@pytest.mark.parametrize("row", RUN_ELSEWHERE, ids=lambda row: row[0])
def test_named_tests_are_there_and_needed(row):
    pattern, test, text = row
    assert text in (TOP / test).read_text(encoding="utf-8")
    assert any(re.fullmatch(pattern, command) for document in DOCUMENTS
               for command in commands(document)), "no document has this command any more"


def test_bench(machine, tmp_path):
    """Once a row, and without the other filters when they are not installed."""
    done = Stage(tmp_path, machine).run("bench/peers.py build-release 1")
    assert done.returncode == 0, done.stderr
    assert len(re.findall(r"^\| rastertoZR7700, \w+, Quality\d \| 0\.\d+ s \| [\d,]+ \|$",
                          done.stdout, re.M)) == 8


@pytest.mark.parametrize("command", ["apt install no-such-package-of-debian", "cmake --preset none",
                                     "ctest --test-dir build-dev -L none", "lpstat -p NoSuchQueue",
                                     "no-such-program", "cmake --bild build"])
def test_a_wrong_command_is_noticed(machine, tmp_path, command):
    assert Stage(tmp_path, machine).run(command).returncode != 0


def test_commands_are_found(tmp_path):
    paper = tmp_path / "paper.md"
    paper.write_text("Run `lpstat -p Discs` or `lp`.\n```sh\ncmake -B b && \\\n  make  # both\n"
                     "# no\nlp a#1\n```\n```text\nlp b\n```\n")
    assert commands(paper) == ["cmake -B b", "make", "lp a#1", "lpstat -p Discs"]
