"""Two builds that differ in everything around them give the same packages, byte for byte."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import hashlib
import shutil

import pytest

from debian_root import DebianRoot, bare_root, copy_root
from packages import OUT, REPOSITORY

# Of the second build: a year later, elsewhere, in another language and zone, under another name.
OTHERWISE = ("cd /elsewhere/and/deeper && umask 027 && mkdir -p /var/tmp/a-longer-path && "
             "TMPDIR=/var/tmp/a-longer-path TZ=Pacific/Kiritimati LC_ALL=C LANG=de_DE.UTF-8 "
             "LANGUAGE=de HOME=/nowhere USER=other DEB_BUILD_OPTIONS=parallel=1 "
             "unshare --uts sh -c 'hostname elsewhere && exec faketime \"+370 days 11 hours\" "
             "./package --no-check --out /second'")


@pytest.fixture
def root():
    folder = copy_root(bare_root(OUT / "bare-root"), OUT / "root-reproducible")
    running = DebianRoot(folder, OUT / "archives", [(REPOSITORY, "source"),
                                                    (REPOSITORY, "elsewhere/and/deeper")])
    try:
        yield running
    finally:
        running.close()
        shutil.rmtree(folder, ignore_errors=True)


def sums(folder):
    """What is handed out; the protocols of the two builds tell their times and machines."""
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in folder.iterdir()
            if path.suffix in (".deb", ".dsc", ".xz")}


def test_two_builds_are_equal(root):
    root.run("/source/package --no-check --out /first", seconds=1800)
    root.apt("install faketime")
    root.run(OTHERWISE, seconds=1800)
    first, second = sums(root.path("first")), sums(root.path("second"))
    # Four packages with their debugging symbols, and the source in two files.
    assert len(first) == 10
    assert first == second
