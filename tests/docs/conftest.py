"""Lets the tests import the private scheduler and the bench, and gives them a queue as the
documents call it."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in (HERE, os.path.join(HERE, "../cups"), os.path.join(HERE, "../jobs"),
               os.path.join(HERE, "../../ppd")):
    sys.path.insert(0, folder)

from scheduler import Scheduler, running  # noqa: E402


class Machine(Scheduler):
    """A machine on which USB and network printers can be added."""
    BACKENDS = ("usb", "ipp")

    def environment(self):
        """For commands that are typed at the machine."""
        return {"CUPS_SERVER": f"127.0.0.1:{self.port}", "LC_ALL": "C.UTF-8", "HOME": str(self.out)}


@pytest.fixture(scope="session")
def machine():
    with running(Machine) as found:
        found.client("lpadmin", "-p", "Discs", "-E", "-v", found.uri(), "-P", found.ppd)
        yield found
