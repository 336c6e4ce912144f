"""The scripted printer: the other end of the filter's back channel.

A plan is a function that is given the Printer and runs in a thread of its own beside the job. It
says what the printer sends and when:

    def plan(p):
        p.fresh(bad, until=p.log("#### In Error Retry"))
        p.fresh(good)

fresh() keeps one record waiting in the channel at any time, so the filter reads the present state,
however fast it reads. rate() sends at a given rate whatever the filter does, as a real one does.
Seconds are the job's (pace.py).
When the plan returns, the printer goes on with the last state given to fresh(), unless the plan
ended with silence() or hang_up().
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import array
import fcntl
import os
import socket
import termios
import threading
import time

from beside import Beside
from record import RECORD_BYTES

_TICK = 0.004


class Printer:
    def __init__(self, plan, job, kind="pipe"):
        self._plan, self.job = plan, job
        self._stopped = threading.Event()
        self._last = None
        self._thread = Beside(self._run)
        self.filter_end, self._end = self._open(kind)

    @staticmethod
    def _open(kind):
        if kind == "socketpair":
            ours, theirs = socket.socketpair()
            return theirs.detach(), ours.detach()
        return os.pipe()

    def start(self):
        os.set_blocking(self._end, False)
        self._thread.start()
        deadline = time.monotonic() + 0.5
        while not self.queued() and self._thread.is_alive() and time.monotonic() < deadline:
            time.sleep(_TICK)

    def stop(self):
        self._stopped.set()
        self._thread.join()
        for end in (self.filter_end, self._end):
            if end is not None:
                os.close(end)

    def raise_failure(self):
        """Raises what the plan raised."""
        self._thread.raise_failure()

    def _run(self):
        self._plan(self)
        if self._last is not None:
            self.fresh(self._last)

    def running(self):
        return not self._stopped.is_set()

    def queued(self):
        """Bytes that the filter has not read yet."""
        count = array.array("i", [0])
        fcntl.ioctl(self.filter_end, termios.FIONREAD, count)
        return count[0]

    def send(self, raw):
        if self._end is None:
            return
        try:
            os.write(self._end, raw)
        except (BlockingIOError, BrokenPipeError):
            pass

    def sleep(self, seconds):
        self.job.clock.sleep(seconds, self._stopped.is_set)

    def fresh(self, raw, until=lambda: False, seconds=None):
        """Keeps at least one record waiting until the condition holds or the time is over. On a
        change the state that waits unread is the old one: it is read first, as in life."""
        self._last = raw
        clock = self.job.clock
        end = None if seconds is None else clock.now() + seconds
        while self.running() and not until() and (end is None or clock.now() < end):
            if self.queued() < RECORD_BYTES:
                self.send(raw)
            time.sleep(_TICK)

    def rate(self, raw, hertz, until=lambda: False, seconds=None):
        clock = self.job.clock
        end = None if seconds is None else clock.now() + seconds
        while self.running() and not until() and (end is None or clock.now() < end):
            self.send(raw)
            self.sleep(1 / hertz)

    def silence(self, until=None):
        """Sends nothing until the condition holds; without one, for good."""
        if until is None:
            self._last = None
            return
        while self.running() and not until():
            time.sleep(_TICK)

    def drop(self):
        """Takes back what the filter has not read yet."""
        was_blocking = os.get_blocking(self.filter_end)
        os.set_blocking(self.filter_end, False)
        try:
            while os.read(self.filter_end, 4096):
                pass
        except BlockingIOError:
            pass
        os.set_blocking(self.filter_end, was_blocking)

    def hang_up(self):
        self._last = None
        os.close(self._end)
        self._end = None

    def log(self, text, times=1):
        """A condition: the log holds the text so many times."""
        return lambda: self.job.log_text().count(text) >= times

    def trace(self, text, times=1):
        """A condition: the engine's trace holds the text so many times."""
        return lambda: self.job.trace_text().count(text) >= times


def steady(raw):
    """The plan of a printer that never changes."""
    return lambda p: p.fresh(raw)
