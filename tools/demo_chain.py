"""One label on its way to the disc: the processes between the file and the picture.

label ─► (imagetopdf | pdftopdf) ─► gstoraster ─► rastertoZR7700 ─► zr7700-printer ─► picture
                                                        ▲                 │
                                                        └─ descriptor 3 ──┘ status records
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import errno
import os
import re
import shutil
import signal
import subprocess
import time

import demo_options
import demo_stop
from demo_label import Refused

FILTERS = "/usr/lib/cups/filter"
PATIENCE_S = 90  # a job that gets no further for so long will never end
SCARCE_BYTES = 30 << 20  # with less than this left on the disk, a failure is put down to it
FAREWELL_S = 1.0  # what the filter gets to clean up; its wait for an idle printer is cut short

_SCALING = ("print-scaling", "fit-to-page", "natural-scaling", "scaling", "ppi")


class Job:
    """What is to be printed. `filter_command` starts the filter, which reads the PPD `ppd`."""

    def __init__(self, label, label_type, options, copies, ppd, filter_command, filter_log):
        self.label = os.path.abspath(label)
        self.label_type = label_type
        self.options = dict(options)
        # A label fills its disc, unless somebody asks for something else.
        if not any(name in options for name in _SCALING):
            self.options["print-scaling"] = "fill"
        self.copies = copies
        self.ppd = ppd
        self.filter_command = filter_command
        self.filter_log = filter_log

    def arguments(self, copies=1):
        title = os.path.basename(self.label)
        return ["1", "demo", title, str(copies), demo_options.text(self.options)]

    def raster_commands(self):
        """The distribution's filters, as the scheduler would chain them."""
        first = "pdftopdf" if self.label_type == "application/pdf" else "imagetopdf"
        return [[f"{FILTERS}/{first}", *self.arguments(self.copies), self.label],
                [f"{FILTERS}/gstoraster", *self.arguments()]]

    def environment(self, folder):
        """The processes' environment, with their temporary files in `folder`."""
        keep = {name: os.environ[name] for name in ("LANG", "TZ") if name in os.environ}
        return keep | {"PATH": "/usr/bin:/bin", "PPD": self.ppd, "PRINTER": "ZR7700",
                       "CONTENT_TYPE": self.label_type, "CHARSET": "utf-8", "TMPDIR": folder,
                       "HOME": folder, "CUPS_DATADIR": "/usr/share/cups",
                       "CUPS_SERVERBIN": "/usr/lib/cups"}


class Chain:
    """The processes; their standard errors go to files in `folder`. Nothing runs before start, and
    stop is due after it, however it ended."""

    def __init__(self, job, printer_command, folder):
        self.job = job
        self.folder = folder
        self.processes = {}
        self._printer_command = printer_command
        self._environment = job.environment(folder)

    def start(self):
        with demo_stop.Held():
            self._start_all()

    def _start_all(self):
        job = self.job
        back_read, back_write = os.pipe()
        data = subprocess.DEVNULL
        for command in job.raster_commands():
            data = self._start(os.path.basename(command[0]), command, data)
        # The filter expects the back channel at descriptor 3.
        shell = ["/bin/sh", "-c", f'exec "$@" 3<&{back_read} {back_read}<&-', "sh"]
        data = self._start("rastertoZR7700",
                           [*shell, *job.filter_command, *job.arguments()], data, [back_read])
        self._start("zr7700-printer", [*self._printer_command, "--status-fd", str(back_write)], data,
                    [back_write], last=True)
        os.close(back_read)
        os.close(back_write)

    def _start(self, name, command, data, pass_on=(), last=False):
        with open(self._errors(name), "wb") as errors:
            # A session of its own: an interrupt from the keyboard is ours to handle.
            process = subprocess.Popen(
                command, stdin=data, stdout=subprocess.DEVNULL if last else subprocess.PIPE,
                stderr=errors, env=self._environment, pass_fds=pass_on, start_new_session=True)
        if data != subprocess.DEVNULL:
            data.close()
        self.processes[name] = process
        return process.stdout

    def _errors(self, name):
        return os.path.join(self.folder, name + ".stderr")

    def errors(self, name):
        with open(self._errors(name), encoding="utf-8", errors="replace") as file:
            return file.read()

    def run(self, tell):
        """Waits for the end of all; tell(page, percent) hears of the filter's progress."""
        log, moved = LogTail(self.job.filter_log), time.monotonic()
        while any(process.poll() is None for process in self.processes.values()):
            lines = log.read()
            steps = re.findall(r"Printing page (\d+), (\d+)% complete", lines)
            steps += [(page, 100) for page in re.findall(r"Finished page (\d+)", lines)]
            for page, percent in steps:
                moved = time.monotonic()
                tell(int(page), int(percent))
            if time.monotonic() - moved > PATIENCE_S:
                raise Refused(self._stuck())
            self._watch_disk()
            time.sleep(0.03)
        self._check()

    def _stuck(self):
        wanted = [line for line in self.errors("rastertoZR7700").splitlines()
                  if line.startswith("ERROR: ") and "recovered:" not in line]
        return (f"The job has got no further for {PATIENCE_S} seconds"
                f"{f' ({wanted[-1]})' if wanted else ''}; look into {self.job.filter_log} and try "
                "again.")

    def _watch_disk(self):
        """A large picture is unpacked on the disk; what else is there needs some room too."""
        if shutil.disk_usage(self.folder).free < SCARCE_BYTES // 3:
            raise OSError(errno.ENOSPC, os.strerror(errno.ENOSPC))

    def _check(self):
        raster_programs = [os.path.basename(command[0]) for command in self.job.raster_commands()]
        for name in raster_programs:
            # The programs after one that failed only see its output end.
            if self.processes[name].returncode != 0:
                raise Refused(f"The label {self.job.label} cannot be turned into a page; "
                              f"save it again or give another ({name}: {self._last(name)}).")
        name = "rastertoZR7700"
        if self.processes[name].returncode == 0:
            return
        if "No pages found" in LogTail(self.job.filter_log).read():
            raise Refused(f"No page came out of the label {self.job.label}; choose a page range "
                          "that it has, or give another label.")
        raise Refused(f"The filter stopped ({self._last(name)}); look into "
                      f"{self.job.filter_log} and try again.")

    def _last(self, name):
        lines = [line.strip() for line in self.errors(name).splitlines() if line.strip()]
        wrong = [line for line in lines if line.startswith("ERROR")] or lines
        return wrong[-1] if wrong else f"exit status {self.processes[name].returncode}"

    def stop(self):
        """Ends what still runs, the filter first: it gives its shared memory back."""
        with demo_stop.Held():
            self._stop_all()

    def _stop_all(self):
        last = self.processes.get("rastertoZR7700")
        if last is not None and last.poll() is None:
            self._wait_for_setup(last)
            last.terminate()
            try:
                last.wait(FAREWELL_S)
            except subprocess.TimeoutExpired:
                pass
        for process in self.processes.values():
            if process.poll() is None:
                # With what it has started itself.
                os.killpg(process.pid, signal.SIGKILL)
        for process in self.processes.values():
            process.wait()

    def _wait_for_setup(self, process):
        """Before its setup the filter does not know of cancels and would give nothing back."""
        log, deadline = LogTail(self.job.filter_log), time.monotonic() + FAREWELL_S
        text = ""
        while "SETUP" not in text and process.poll() is None and time.monotonic() < deadline:
            text += log.read()
            time.sleep(0.01)


class LogTail:
    """What a log has got since it was last read."""

    def __init__(self, path):
        self._path = path
        self._at = 0

    def read(self):
        try:
            with open(self._path, "rb") as file:
                file.seek(self._at)
                text = file.read()
        except FileNotFoundError:
            return ""
        # A line may still be on its way.
        text = text[:text.rfind(b"\n") + 1]
        self._at += len(text)
        return text.decode("utf-8", "replace")
