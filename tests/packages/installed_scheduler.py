"""The scheduler of a Debian root with our packages, used as the private scheduler of the other tests
is: a queue that an administrator has added from the list of models, without any option."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import json
import shlex
import shutil
import socket
from pathlib import Path

from cups_in_root import MODEL
from scheduler import QUEUE, Scheduler, wait_for

_DISCS = "/srv/discs"

def _free_port():
    with socket.socket() as trial:
        trial.bind(("127.0.0.1", 0))
        return trial.getsockname()[1]

class InstalledScheduler(Scheduler):
    def __init__(self, root):  # pylint: disable=super-init-not-called
        self._machine = root
        self.root = root.folder
        self.port = _free_port()
        self.transcript = []
        self.ppd = self.root / "etc/cups/ppd" / f"{QUEUE}.ppd"
        root.run(f"install -d -o lp -g lp {_DISCS}; install -d /srv/in; mkdir -p /run/cups")
        root.run(f"sed -i 's/^Listen localhost:.*/Listen 127.0.0.1:{self.port}/' "
                 "/etc/cups/cupsd.conf; echo 'MaxJobs 0' >>/etc/cups/cupsd.conf; /usr/sbin/cupsd")
        wait_for("a scheduler that answers", lambda: self.client("lpstat", "-r", check=False)
                 .startswith("scheduler is running"))
        self.client("lpadmin", "-p", QUEUE, "-E", "-v", f"zr7700virtual:{_DISCS}", "-m", MODEL)

    def client(self, name, *words, check=True):
        return self._machine.run(shlex.join([name, *words]), check)[1]

    def machine(self, script="", **parameters):
        """One machine prints on all discs: it takes the size from the page."""

    def print(self, *words):
        """The document, the last of the words, lies outside the root."""
        *options, document = words
        inside = Path("/srv/in") / Path(document).name
        copy = self.root / str(inside).lstrip("/")
        shutil.copyfile(document, copy)
        copy.chmod(0o644)
        return super().print(*options, inside)

    def report(self, number):
        path = self.root / f"{_DISCS.lstrip('/')}/job-{number}-report.json"
        wait_for(f"a report of job {number}", path.exists)
        report = json.loads(path.read_text())
        for disc in report["discs"]:
            disc["picture"] = str(self.root / disc["picture"].lstrip("/"))
        return report
