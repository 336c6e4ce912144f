"""The packages under test: built by ./package, laid into a folder that apt takes for a repository,
and packed again under a higher version."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import shutil
import subprocess
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("ZR7700_BUILD", REPOSITORY / "build-release"))
OUT = BUILD / "packages"  # everything that these tests make
NAMES = ["printer-driver-zr7700", "zr7700-open-engine", "zr7700-tools", "zr7700-virtual-printer"]


def run(*words, **more):
    command = list(map(str, words))
    done = subprocess.run(command, capture_output=True, text=True, check=False, **more)
    if done.returncode != 0:
        raise AssertionError(f"{words}: {done.stdout[-6000:]}{done.stderr[-6000:]}")
    return done.stdout


def build(folder, *options, **more):
    """Builds the packages without their unit tests, which the other builds run."""
    shutil.rmtree(folder, ignore_errors=True)
    run(REPOSITORY / "package", "--no-check", "--out", folder, *options, **more)
    return folder


def repository(folder, debs):
    """Makes the folder, which may be mounted somewhere, a repository of these packages."""
    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.iterdir():
        old.unlink()
    for deb in debs:
        shutil.copy(deb, folder)
    (folder / "Packages").write_text(run("dpkg-scanpackages", "--multiversion", ".", cwd=folder))


def release_debs(folder):
    return [deb for deb in sorted(folder.glob("*.deb")) if "dbgsym" not in deb.name]


def next_version(deb, folder, version):
    """The package as a later release might be: another version, and a changed text in the PPD."""
    tree = folder / deb.stem
    run("dpkg-deb", "-R", deb, tree)
    control = tree / "DEBIAN/control"
    control.write_text(re.sub("^Version: .*", f"Version: {version}", control.read_text(),
                              flags=re.M))
    for source in tree.glob("usr/share/cups/drv/zr7700.drv"):
        changed = source.read_text().replace("Version 1.4", "Version 9.0").replace(
            '"Quality4/Best"', '"Quality4/Best of all"')
        source.write_text(changed)
    for updater in tree.glob("usr/share/cups/ppd-updaters/*"):
        updater.touch()  # as every release has a time of its own
    new = folder / deb.name.replace(deb.name.split("_")[1], version)
    run("dpkg-deb", "--root-owner-group", "-b", tree, new)
    return new
