"""CUPS in a Debian root: its scheduler, a queue on the virtual printer, and the discs."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import json
import re
import socket
import time

from PIL import Image

from orientation_label import check_disc
from packages import REPOSITORY

MODEL = "drv:///zr7700.drv/ZR7700.PPD"
DEVICE_ID = "MFG:Tessary;MDL:ZR7700;CLS:PRINTER;"


def wait_for(what, happened, seconds=60):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        result = happened()
        if result:
            return result
        time.sleep(0.2)
    raise AssertionError(f"not in {seconds} s: {what}")


class Printing:
    """The scheduler in a root, without a network; the queue is called discs."""

    def __init__(self, root):
        self.root = root

    def start(self):
        self.root.run("mkdir -p /run/cups && unshare --net /usr/sbin/cupsd")
        wait_for("a scheduler that answers", lambda: "scheduler is running" in
                 self.root.run("lpstat -r", check=False)[1])

    def stop(self):
        self.root.run("kill $(pidof cupsd)")
        wait_for("the scheduler's end", lambda: self.root.run("pidof cupsd", check=False)[0] != 0)

    def add_queue(self):
        self.root.run("install -d -o lp -g lp /srv/discs")
        label = Image.open(REPOSITORY / "labels/orientation.png").convert("RGB")
        label.save(self.root.path("srv/label.pdf"), resolution=300)
        self.root.tell(f"lpadmin -p discs -E -v zr7700virtual:/srv/discs -m {MODEL}", keep="zr7700")

    def print(self):
        """Sends the label; the job's number."""
        answer = self.root.tell("lp -d discs /srv/label.pdf")[1]
        return int(re.search(r"request id is discs-(\d+)", answer)[1])

    def report(self, job):
        """The virtual printer's report of a job that has come to its end."""
        def ended():
            completed = self.root.run("lpstat -W completed -o discs")[1]
            return re.search(rf"^discs-{job} ", completed, re.M)
        wait_for(f"the end of job {job}", ended)
        return json.loads(self.root.path(f"srv/discs/job-{job}-report.json").read_text())

    def order(self, text):
        """Tells the printer to do something, as soon as it listens."""
        def told():
            with socket.socket(socket.AF_UNIX) as line:
                line.settimeout(10)
                try:
                    line.connect(str(self.root.path("srv/discs/control")))
                except (ConnectionRefusedError, FileNotFoundError):
                    return False
                line.sendall(text.encode() + b"\n")
                return line.makefile().readline().strip() == "ok"
        wait_for(f"a printer that obeys {text}", told)
        self.root.said.append(f"(at the printer: {text})")

    def check_disc(self, job):
        """The job left one disc with the label on it, the right way up, and an idle queue."""
        report = self.report(job)
        assert (report["violation_count"], report["errors"]) == (0, [])
        disc, = report["discs"]
        check_disc(disc, self.root.path(disc["picture"]))
        wait_for("an idle queue", lambda: "discs is idle" in self.state())
        self.root.said.append(f"(job {job}: the label is on the disc)")

    def state(self):
        return self.root.run("lpstat -l -p discs")[1]
