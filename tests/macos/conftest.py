"""A Mac that is not there: a folder for its root, and programs of its that only write down how they
were called."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import pwd
import subprocess

import pytest

TOP = pathlib.Path(__file__).resolve().parents[2]
USER = pwd.getpwuid(os.getuid()).pw_name


class Mac:
    def __init__(self, folder):
        self.root = folder / "root"
        self.programs = folder / "programs"
        self.calls_file = folder / "calls"
        for place in (self.root, self.programs):
            place.mkdir()

    def program(self, name, body="exit 0"):
        """A program that writes down its name and arguments, each in brackets, and does `body`."""
        path = self.programs / name
        path.write_text(f'#!/bin/bash\n{{ printf "{name}"; printf " [%s]" "$@"; echo; }} '
                        f'>>"{self.calls_file}"\n{body}\n')
        path.chmod(0o755)

    def calls(self, *names):
        """The calls so far, of these programs only."""
        lines = self.calls_file.read_text().splitlines() if self.calls_file.exists() else []
        return [line for line in lines if not names or line.split(" ")[0] in names]

    def run(self, *words, root=True, **environment):
        """A script's run with these programs in front of the machine's."""
        variables = {**os.environ, "PATH": f"{self.programs}:/usr/bin:/bin:/usr/sbin:/sbin",
                     "ZR7700_FILTER_USER": USER, "ZR7700_FILTER_GROUP": "_lp",
                     "ZR7700_MANAGERS": "_lpadmin", **environment}
        if root:
            variables["ZR7700_PACKAGE_ROOT"] = str(self.root)
        return subprocess.run([str(word) for word in words], env=variables, capture_output=True,
                              text=True, check=False, timeout=60)


@pytest.fixture
def mac(tmp_path):
    return Mac(tmp_path)
