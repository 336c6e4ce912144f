"""clang-tidy and cppcheck, run over sources of a build with at most two processes."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import concurrent.futures
import fnmatch
import json
import os
import pathlib
import shlex
import subprocess

TOP = pathlib.Path(__file__).resolve().parents[2]
SUPPRESSIONS = pathlib.Path(__file__).with_name("cppcheck_suppressions.txt")
ROOMS = ("about", "base", "disc", "driver", "engine", "page_fitter", "picture_filter", "platform",
         "reference_engine", "status", "tools", "virtual_printer")
PROCESSES = min(2, os.cpu_count() or 1)

# What GCC alone knows.
GCC_FLAGS = ("-fno-gnu-unique", "-Winvalid-pch", "-Wno-restrict", "-Wno-stringop-overflow", "-Werror")
# Checks for every run: what is likely to be a fault. Those that take longest for what they find are
# for the long run, with everything else that is on in .clang-tidy.
QUICK = ("bugprone-*", "performance-*")
DEAR = ("bugprone-reserved-identifier", "bugprone-stringview-nullptr",
        "bugprone-suspicious-string-compare", "bugprone-unused-raii", "bugprone-infinite-loop",
        "bugprone-assert-side-effect", "bugprone-suspicious-semicolon",
        "bugprone-multiple-statement-macro", "bugprone-dangling-handle")


def is_production(source):
    """Whether a path below the top is a source of what ships, not of a test."""
    room, name = source.parts[0], source.name
    return room in ROOMS and not name.startswith("test_") and not name.endswith("_test.cc")


def plain_arguments(command):
    """A compiler's command without its launcher, precompiled headers and what GCC alone knows."""
    words = shlex.split(command)
    while len(words) > 1 and not words[1].startswith("-"):
        del words[0]
    out = []
    for word in words:
        if out and out[-1] == "-include":
            out.pop()
        elif word not in GCC_FLAGS:
            out.append(word)
    return out


def commands(build):
    """How each production source of a build is compiled; a source that is compiled more than once
    (for tests, for both families) counts once, as it ships where it ships."""
    chosen = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(entry["file"])
        is_below = source.is_relative_to(TOP) and not source.is_relative_to(build)
        if not is_below or not is_production(source.relative_to(TOP)):
            continue
        if source not in chosen or "_test.dir" in chosen[source]["command"]:
            chosen[source] = entry
    return [{"directory": entry["directory"], "file": str(source),
             "arguments": plain_arguments(entry["command"])}
            for source, entry in sorted(chosen.items())]


def write_commands(entries, folder):
    (folder / "compile_commands.json").write_text(json.dumps(entries))
    return entries


def enabled_checks():
    said = subprocess.run(["clang-tidy", f"--config-file={TOP / '.clang-tidy'}", "--list-checks"],
                          capture_output=True, text=True, check=True).stdout
    return [line.strip() for line in said.splitlines() if line.startswith("    ")]


def quick_checks():
    return [check for check in enabled_checks() if check not in DEAR
            and any(fnmatch.fnmatch(check, pattern) for pattern in QUICK)]


def _tidy(checks, folder, files):
    words = ["clang-tidy", f"--config-file={TOP / '.clang-tidy'}", "-p", str(folder), "--quiet"]
    if checks is not None:
        words.append("--checks=-*," + ",".join(checks))
    done = subprocess.run(words + files, capture_output=True, text=True, check=False)
    if done.returncode == 0:
        return []
    return (done.stdout or done.stderr).splitlines()


def tidy_findings(entries, folder, checks=None):
    """What clang-tidy says, line by line; empty when it finds nothing. All that is on in .clang-tidy
    unless `checks` names some."""
    write_commands(entries, folder)
    files = [entry["file"] for entry in entries]
    groups = [files[i:i + 4] for i in range(0, len(files), 4)]
    with concurrent.futures.ThreadPoolExecutor(PROCESSES) as pool:
        said = pool.map(lambda group: _tidy(checks, folder, group), groups)
    return [line for lines in said for line in lines]


def cppcheck_findings(entries, folder):
    """What cppcheck says, line by line; empty when it finds nothing."""
    write_commands(entries, folder)
    done = subprocess.run(
        ["cppcheck", f"-j{PROCESSES}", f"--project={folder / 'compile_commands.json'}", "--quiet",
         "--enable=warning,style,performance,portability", "--std=c++20", "--error-exitcode=1",
         f"--suppressions-list={SUPPRESSIONS}"],
        capture_output=True, text=True, check=False)
    return done.stderr.splitlines() if done.returncode != 0 or done.stderr else []
