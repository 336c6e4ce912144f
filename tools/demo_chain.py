"""One label on its way to the disc: the processes between the file and the picture, started as the
scheduler starts them.

label ─► filters before ours ─► rastertoZR7700 ─► zr7700-printer ─► picture
                                       ▲                │
                                       └─ descriptor 3 ─┘ status records
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import errno
import os
import re
import shutil
import signal
import socket
import subprocess
import time

import demo_stop
from demo_label import Refused

PATIENCE_S = 90  # a job that gets no further for so long will never end
SCARCE_BYTES = 30 << 20  # with less than this left on the disk, a failure is put down to it
FAREWELL_S = 1.0  # what the filter gets to clean up; its wait for an idle printer is cut short
CHANNELS = (3, 4)  # where filters expect the back channel and the side channel


def keep_channels_free():
    """Takes the channels' descriptors from whoever has left them open, before anything else can get
    them: the processes are given descriptors by the numbers that they have here."""
    null = os.open(os.devnull, os.O_RDWR)
    for number in CHANNELS:
        if number != null:
            os.dup2(null, number, inheritable=False)
    if null not in CHANNELS:
        os.close(null)


class Chain:
    """The processes; their standard errors go to files in `folder`. Nothing runs before start, and
    stop is due after it, however it ended."""

    def __init__(self, label, commands, environment, printer_command, folder, filter_log):
        self.label = label
        self.folder = folder
        self.processes = {}
        self._commands = commands
        self._environment = environment
        self._printer_command = printer_command
        self._filter_log = filter_log

    def start(self):
        with demo_stop.Held():
            self._start_all()

    def _start_all(self):
        back_read, back_write = os.pipe()
        os.set_blocking(back_read, False)
        os.dup2(back_read, CHANNELS[0], inheritable=False)
        os.close(back_read)
        # Nobody answers on the side channel, like a backend that knows none of its questions.
        self._side, filters_side = socket.socketpair()
        os.dup2(filters_side.fileno(), CHANNELS[1], inheritable=False)
        filters_side.close()
        data = subprocess.DEVNULL
        for program, words in self._commands:
            data = self._start(os.path.basename(program), words, data, CHANNELS,
                               executable=program, umask=0o077)
        self._start("zr7700-printer", [*self._printer_command, "--status-fd", str(back_write)],
                    data, [back_write], stdout=subprocess.DEVNULL)
        os.close(back_write)
        keep_channels_free()

    def _start(self, name, words, data, pass_on, **more):
        with open(self._errors(name), "wb") as errors:
            # A session of its own: an interrupt from the keyboard is ours to handle.
            process = subprocess.Popen(
                words, **{"stdout": subprocess.PIPE, **more}, stdin=data, stderr=errors,
                env=self._environment, cwd="/", pass_fds=pass_on, start_new_session=True)
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
        log, moved = LogTail(self._filter_log), time.monotonic()
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
                f"{f' ({wanted[-1]})' if wanted else ''}; look into {self._filter_log} and try "
                "again.")

    def _watch_disk(self):
        """A large picture is unpacked on the disk; what else is there needs some room too."""
        if shutil.disk_usage(self.folder).free < SCARCE_BYTES // 3:
            raise OSError(errno.ENOSPC, os.strerror(errno.ENOSPC))

    def _check(self):
        """The first sentence of the first filter that has one is what the scheduler shows."""
        failed = [name for name, process in self.processes.items()
                  if process.returncode != 0 and name != "zr7700-printer"]
        for name in failed:
            sentences = re.findall(r"^ERROR: (?!recovered:)(.+)", self.errors(name), re.M)
            if sentences:
                raise Refused(f"The label {self.label} is not printed: {sentences[0].strip()}")
        if failed:
            raise Refused(f"The label {self.label} is not printed: the filter {failed[0]} stopped "
                          f"without a word; give another label, or look into {self._filter_log}.")

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
        log, deadline = LogTail(self._filter_log), time.monotonic() + FAREWELL_S
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
