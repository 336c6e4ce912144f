"""The packages, built once for all tests here, and a root with CUPS that each test has a copy of."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in (HERE, os.path.join(HERE, "../../debian/tests")):
    sys.path.insert(0, folder)

from debian_root import DebianRoot, bare_root, copy_root  # noqa: E402
from packages import OUT, build, release_debs, repository  # noqa: E402

# What the driver depends on beside the C library.
_WITH = "cups cups-filters libplist3 liblcms2-2 libpng16-16 poppler-utils ghostscript"


@pytest.fixture(scope="session")
def debs():
    """The machine's own packages."""
    folder = OUT / "own"
    if not (os.environ.get("ZR7700_PACKAGES_BUILT") and release_debs(folder)):
        build(folder)
    return release_debs(folder)


@pytest.fixture(scope="session")
def cups_root():
    """A folder with Debian and CUPS."""
    folder = OUT / "cups-root"
    if not (folder / "usr/sbin/cupsd").exists():
        copy_root(bare_root(OUT / "bare-root"), folder)
        root = DebianRoot(folder, OUT / "archives")
        try:
            root.apt("update")
            root.apt(f"install {_WITH}")
        finally:
            root.close()
    return folder


@pytest.fixture
def root(cups_root, debs, tmp_path):
    """A running root with CUPS whose apt finds our packages."""
    repository(OUT / "repository", debs)
    running = DebianRoot(copy_root(cups_root, OUT / "root"), OUT / "archives",
                         [(OUT / "repository", "repository")])
    running.path("etc/apt/sources.list.d/zr7700.list").write_text(
        "deb [trusted=yes] file:/repository ./\n")
    running.apt("update")
    try:
        yield running
    finally:
        running.close()
        if "ZR7700_KEEP" not in os.environ:
            shutil.rmtree(OUT / "root", ignore_errors=True)
