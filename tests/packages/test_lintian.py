"""Debian's own checker finds nothing, and every override gives its reason."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

from packages import REPOSITORY, run


def test_lintian_finds_nothing(debs):
    changes, = debs[0].parent.glob("*.changes")
    said = run("lintian", "--allow-root", "--pedantic", "--display-experimental", "--display-info",
               "--fail-on", "error,warning,info,pedantic,experimental", changes)
    assert said.strip() == ""


def test_every_override_has_a_reason_and_is_needed(debs):
    changes, = debs[0].parent.glob("*.changes")
    said = run("lintian", "--allow-root", "--tags", "unused-override,mismatched-override", changes)
    assert said.strip() == ""
    files = [*REPOSITORY.glob("debian/*.lintian-overrides"),
             REPOSITORY / "debian/source/lintian-overrides"]
    assert len(files) >= 2
    for file in files:
        lines = [""] + file.read_text().splitlines()
        for before, line in zip(lines, lines[1:]):
            assert line.startswith("# ") or before, f"{file.name}: {line}"


def test_hardening(debs, tmp_path):
    """Position-independent, bound at start, protected stacks: asked of the filter itself."""
    driver, = (deb for deb in debs if deb.name.startswith("printer-driver-"))
    run("dpkg", "-x", driver, tmp_path)
    filter_program = tmp_path / "usr/lib/cups/filter/rastertoZR7700"
    facts = run("readelf", "--wide", "--file-header", "--dynamic", "--program-headers",
                "--dyn-syms", filter_program)
    for fact in ("Type:                              DYN", "BIND_NOW", "GNU_RELRO",
                 "__stack_chk_fail", "_chk@GLIBC"):
        assert fact in facts, fact
