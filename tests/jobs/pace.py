"""A job's clock: whatever a test says of seconds is in those of the job.

The filter's time runs faster while it waits (tests/time/faster_time.c), and it tells its clock in a
file, so that the scripted printer, the utility and a job's actions wait by the same clock as it does.
In real time the clock is the machine's.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import mmap
import os
import struct
import time

FAST = float(os.environ.get("ZR7700_TIMES_FASTER", "8"))
REAL = 1.0

_PAGE = struct.Struct("=Qqqqqd")  # ClockPage
_times_faster = FAST


def set_times_faster(times):
    """For the jobs that start from now on."""
    global _times_faster
    _times_faster = times


def times_faster():
    return _times_faster


class RealClock:
    """The machine's clock."""

    @staticmethod
    def now():
        return time.monotonic()

    def sleep(self, seconds, is_over=lambda: False):
        """Sleeps; is_over() ends it early."""
        end = self.now() + seconds
        while not is_over() and (rest := end - self.now()) > 0:
            time.sleep(min(self.shortest(rest), 0.05))

    @staticmethod
    def shortest(rest):
        """What so many seconds of this clock take of ours, at least."""
        return rest


class JobClock(RealClock):
    """The clock of a filter that runs so many times faster, from the file in which it tells it. It
    stands still until the filter starts."""

    def __init__(self, path, times):
        path.write_bytes(bytes(_PAGE.size))
        with open(path, "rb") as file:
            self._page = mmap.mmap(file.fileno(), _PAGE.size, access=mmap.ACCESS_READ)
        self._times = times

    def _read(self):
        while True:
            first, second = _PAGE.unpack(self._page), _PAGE.unpack(self._page)
            if first == second and first[0] % 2 == 0:
                return first

    def now(self):
        """Seconds since the filter started."""
        _, start, shown, real, cap, rate = self._read()
        return (min(shown + (time.monotonic_ns() - real) * rate, cap) - start) / 1e9

    def shortest(self, rest):
        return max(rest / self._times, 0.001)


def clock(path):
    """The clock of a job that will tell it in a file of this path."""
    return RealClock() if _times_faster == REAL else JobClock(path, _times_faster)
