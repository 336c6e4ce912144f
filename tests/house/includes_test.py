"""The stairs run downward only: no folder includes from one above it, nor from a neighbour.

Reads the #include lines of every source. Run as a program it draws the arrows between the folders.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import collections
import pathlib
import re

import pytest

TOP = pathlib.Path(__file__).resolve().parents[2]

# docs/architecture.md has the same floors. A room may include what lies on the floors below its own.
FLOORS = {"driver": 5, "status": 4, "engine": 3, "base": 2, "disc": 2,
          "platform": 1, "about": 1, "include": 1}
# Of a lower floor only these files, where the whole of it would be too much.
NARROWED = {("status", "engine"): {"engine/engine_loader.h", "engine/job_variables.h"}}

# Houses of their own: exactly the folders and files that each may include.
HOUSES = {"reference_engine": {"include", "base/regular_file.h"},
          "virtual_printer": {"about", "base/regular_file.h"},
          "tools": {"about", "virtual_printer"},
          "page_fitter": {"about", "disc"},
          "picture_filter": {"about", "disc"}}
# Whoever tries everything may look into everything.
OUTSIDE = {"bench", "fuzz", "tests"}

# A test may look further than what it tests, for a reason.
EXCEPTIONS = {
    ("disc/ring_mask_test.cc", "engine"): "the filter's clipping is the second opinion on the ring",
    ("reference_engine/engine_color_test.cc", "virtual_printer"):
        "the printer's ink model is the second opinion on what drops look like",
    ("reference_engine/test_printer.h", "virtual_printer"):
        "the printer's decoder is the second opinion on what the engine writes",
}

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s+"([^"]+)"', re.M)
SOURCES = {".c", ".cc", ".h", ".m", ".mm"}


def sources(top):
    for path in sorted(top.rglob("*")):
        folder = path.relative_to(top).parts[0]
        if path.suffix in SOURCES and folder in FLOORS.keys() | HOUSES.keys() | OUTSIDE:
            yield path


def is_test(name):
    return name.endswith("_test.cc") or "/test_" in name


def folder_of(included, top):
    """The folder at the top that an included file lies in; None for one that is not ours."""
    if (top / "include" / included).is_file():
        return "include"
    if (top / included).is_file():
        return pathlib.PurePath(included).parts[0]
    return None


def arrows(top):
    """Every (including file, included file, its folder) that leaves its folder."""
    for path in sources(top):
        name = path.relative_to(top).as_posix()
        for included in INCLUDE.findall(path.read_text(encoding="utf-8")):
            folder = folder_of(included, top)
            if folder is not None and folder != name.split("/")[0]:
                yield name, included, folder


def may_include(name, included, folder):
    room = name.split("/")[0]
    if room in OUTSIDE:
        return True
    if is_test(name) and (included.startswith("tests/support/") or (name, folder) in EXCEPTIONS):
        return True
    if room in HOUSES:
        return folder in HOUSES[room] or included in HOUSES[room]
    if FLOORS[room] <= FLOORS.get(folder, 99):
        return False
    narrowed = NARROWED.get((room, folder))
    return narrowed is None or included in narrowed or is_test(name)


def wrong_includes(top):
    return [f"{name} includes {included}" for name, included, folder in arrows(top)
            if not may_include(name, included, folder)]


def test_every_arrow_runs_downward():
    assert wrong_includes(TOP) == []


def test_every_folder_with_sources_has_its_place():
    known = FLOORS.keys() | HOUSES.keys() | OUTSIDE
    # Builds hold generated sources; other folders have none.
    found = {path.relative_to(TOP).parts[0] for path in TOP.glob("*/**/*") if path.suffix in SOURCES}
    assert {name for name in found if not name.startswith((".", "build"))} == known


def test_every_exception_is_needed():
    made = {(name, folder) for name, _, folder in arrows(TOP)}
    assert EXCEPTIONS.keys() <= made
    for room, folder in NARROWED:
        used = {included for name, included, where in arrows(TOP)
                if (name.split("/")[0], where) == (room, folder) and not is_test(name)}
        assert used == NARROWED[room, folder]


def test_document_has_the_same_stairs():
    rows = re.findall(r"^\| (\d|house) \| `([a-z_]+)/` \|.*\| ([^|]*) \|$",
                      (TOP / "docs/architecture.md").read_text(encoding="utf-8"), re.M)
    assert {name: int(floor) for floor, name, _ in rows if floor != "house"} == FLOORS
    houses = {name: set(re.findall(r"`([a-z_./0-9]+?)/?`", may)) for floor, name, may in rows
              if floor == "house"}
    assert houses == HOUSES


@pytest.fixture
def house(tmp_path):
    """A house with one file in every folder, none of which includes anything."""
    for folder in FLOORS.keys() | HOUSES.keys() | OUTSIDE | {"tests/support"}:
        (tmp_path / folder).mkdir(parents=True, exist_ok=True)
        (tmp_path / folder / "a.h").write_text("// nothing\n")
    return tmp_path


@pytest.mark.parametrize("name,included", [
    ("base/b.cc", "driver/a.h"),  # upward
    ("engine/b.h", "status/a.h"),
    ("platform/b.mm", "base/a.h"),
    ("base/b.cc", "disc/a.h"),  # a neighbour
    ("about/b.cc", "platform/a.h"),
    ("status/b.cc", "engine/a.h"),  # more of the engine than is meant for it
    ("base/b.cc", "tests/support/a.h"),  # no test
    ("base/b_test.cc", "engine/a.h"),
    ("reference_engine/b.cc", "engine/a.h"),  # another house
    ("reference_engine/b.cc", "base/a.h"),
    ("virtual_printer/b.cc", "status/a.h"),
    ("driver/b.cc", "virtual_printer/a.h"),
    ("driver/b.cc", "tests/a.h")])
def test_a_wrong_include_is_found(house, name, included):
    assert wrong_includes(house) == []
    (house / name).write_text(f'#include <string>\n\n#  include "{included}"\n')
    assert wrong_includes(house) == [f"{name} includes {included}"]


@pytest.mark.parametrize("name,included", [
    ("driver/b.cc", "status/a.h"), ("driver/b.cc", "about/a.h"), ("engine/b.cc", "disc/a.h"),
    ("base/b.cc", "platform/a.h"), ("base/b_test.cc", "tests/support/a.h"),
    ("reference_engine/b.cc", "include/a.h"), ("fuzz/b.cc", "driver/a.h"),
    ("driver/b.cc", "sys/a.h")])
def test_a_right_include_is_left_alone(house, name, included):
    (house / name).write_text(f'#include "{included}"\n')
    assert wrong_includes(house) == []


def draw():
    counted = collections.Counter(
        (name.split("/")[0], folder) for name, _, folder in arrows(TOP) if not is_test(name))
    places = {**FLOORS, **dict.fromkeys(HOUSES, 0)}
    for room in sorted(places, key=lambda room: (-places[room], room)):
        targets = [f"{folder} ({count})" for (source, folder), count in sorted(counted.items())
                   if source == room]
        print(f"{places[room] or 'house'!s:>5}  {room:16} -> {', '.join(targets) or 'nothing'}")


if __name__ == "__main__":
    draw()
