"""Any picture lands on the disc, printed by the packages as they are installed."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in ("../cups", "../jobs", "../../ppd"):
    sys.path.insert(0, os.path.join(HERE, folder))

from debian_root import DebianRoot, copy_root  # noqa: E402
from installed_scheduler import InstalledScheduler  # noqa: E402
from packages import OUT, repository  # noqa: E402
from test_any_picture import *  # noqa: E402,F401,F403 pylint: disable=wildcard-import,unused-wildcard-import


@pytest.fixture(scope="session")
def scheduler(cups_root, debs):
    repository(OUT / "repository", debs)
    root = DebianRoot(copy_root(cups_root, OUT / "pictures-root"), OUT / "archives",
                      [(OUT / "repository", "repository")])
    root.path("etc/apt/sources.list.d/zr7700.list").write_text(
        "deb [trusted=yes] file:/repository ./\n")
    try:
        root.apt("update")
        root.apt("install printer-driver-zr7700 zr7700-virtual-printer")
        yield InstalledScheduler(root)
    finally:
        root.close()
        shutil.rmtree(OUT / "pictures-root", ignore_errors=True)
