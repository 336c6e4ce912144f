"""The library that makes time run faster: every clock and every wait of a program keeps step."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import json
import os
import re
import subprocess
import sys
import time

import pytest

import job as jobs
import pace
from job import Job

LIBRARY = jobs.engine_folder() / "faster_time.so"
FASTER = 20

# A program that waits ten seconds in one way. It says what its clocks have counted.
PROGRAM = """
import ctypes, json, os, signal, socket, sys
C = ctypes.CDLL(None, use_errno=True)
class Span(ctypes.Structure):
    _fields_ = [("s", ctypes.c_long), ("fraction", ctypes.c_long)]
class Watched(ctypes.Structure):
    _fields_ = [("fd", ctypes.c_int), ("events", ctypes.c_short), ("seen", ctypes.c_short)]
class Address(ctypes.Structure):
    _fields_ = [("family", ctypes.c_ushort), ("path", ctypes.c_char * 108)]
limit = ctypes.byref(Span(10, 0))
quiet, other = socket.socketpair()
buffer = ctypes.create_string_buffer(100000)
def select():
    left, there = Span(10, 0), ctypes.create_string_buffer(128)
    there[quiet.fileno() // 8] = 1 << quiet.fileno() % 8
    assert C.select(quiet.fileno() + 1, there, None, None, ctypes.byref(left)) == 0
    assert (left.s, left.fraction) == (0, 0) and there.raw == bytes(128)
def select_that_is_served():
    other.send(b"x")
    left, there = Span(60, 0), ctypes.create_string_buffer(128)
    there[quiet.fileno() // 8] = 1 << quiet.fileno() % 8
    assert C.select(quiet.fileno() + 1, there, None, None, ctypes.byref(left)) == 1
    assert 50 <= left.s < 60 and there.raw != bytes(128)
    C.usleep(10000000)
def limited(option, call):
    def run():
        C.setsockopt(quiet.fileno(), socket.SOL_SOCKET, option, limit, 16)
        while (result := call()) > 0:
            pass
        assert result == -1
    return run
def connect():
    full, client = socket.socket(socket.AF_UNIX), socket.socket(socket.AF_UNIX)
    full.bind("\\0zr7700 %d" % os.getpid())
    full.listen(0)
    C.setsockopt(client.fileno(), socket.SOL_SOCKET, socket.SO_SNDTIMEO, limit, 16)
    first = socket.socket(socket.AF_UNIX)
    first.connect("\\0zr7700 %d" % os.getpid())
    name = b"\\0zr7700 %d" % os.getpid()
    assert C.connect(client.fileno(), b"\\1\\0" + name, 2 + len(name)) == -1
def sleep_cut_short():
    signal.signal(signal.SIGALRM, lambda *_: None)
    signal.setitimer(signal.ITIMER_REAL, 0.1)  # two seconds of the program's, more or less
    assert 1 <= C.sleep(10) <= 9
fd = ctypes.byref(Watched(quiet.fileno(), 1, 0))
WAITS = {
    "sleep": lambda: C.sleep(10),
    "sleep cut short": sleep_cut_short,
    "usleep": lambda: C.usleep(10000000),
    "nanosleep": lambda: C.nanosleep(limit, None),
    "poll": lambda: C.poll(fd, 1, 10000),
    "__poll_chk": lambda: C.__poll_chk(fd, 1, 10000, 8),
    "ppoll": lambda: C.ppoll(fd, 1, limit, None),
    "select": select,
    "select that is served": select_that_is_served,
    "pselect": lambda: C.pselect(0, None, None, None, limit, None),
    "recv": limited(socket.SO_RCVTIMEO, lambda: C.recv(quiet.fileno(), buffer, 9, 0)),
    "send": limited(socket.SO_SNDTIMEO, lambda: C.send(quiet.fileno(), buffer, 100000, 0)),
    "connect": connect,
}
def clocks():
    day, now = Span(), Span()
    C.gettimeofday(ctypes.byref(day), None)
    C.clock_gettime(1, ctypes.byref(now))
    return [day.s + day.fraction / 1e6, now.s + now.fraction / 1e9, C.time(None)]
before = clocks()
WAITS[sys.argv[1]]()
print(json.dumps([b - a for a, b in zip(before, clocks())]))
"""


def run(faster, *command):
    """What a program says, and how long it ran from start to end by our clock."""
    start = time.monotonic()
    done = subprocess.run(command, capture_output=True, text=True, check=True, timeout=60,
                          env={**os.environ, "LD_PRELOAD": str(LIBRARY),
                               "ZR7700_TIMES_FASTER": str(faster)})
    return done.stdout, time.monotonic() - start


@pytest.mark.parametrize("way", re.findall(r'^    "([^"]*)": ', PROGRAM, re.M))
def test_a_wait_is_as_long_as_ever_by_the_programs_clocks_and_a_fraction_by_ours(way):
    said, ours = run(FASTER, sys.executable, "-c", PROGRAM, way)
    day, monotonic, whole = json.loads(said)
    assert monotonic >= 10 or "cut short" in way, "a wait that ended before its time"
    assert abs(day - monotonic) < 0.1 and abs(whole - monotonic) <= 1.1
    assert ours < monotonic or "cut short" in way, "time did not run faster"


def test_without_a_factor_time_runs_as_ever():
    said, ours = run("", sys.executable, "-c", PROGRAM, "usleep")
    assert 10 <= json.loads(said)[1] <= ours


def test_waits_end_in_the_order_of_their_ends_however_slow_the_machine_is():
    """At a hundred times the speed the work takes longer than the waits by our clock."""
    said, ours = run(100, LIBRARY.parent / "wait_in_turn")
    lines = [line.split() for line in said.splitlines()]
    assert [line[:2] for line in lines] == (
        [["started", "0"], ["worked", "0"]] + [["waited", str(n)] for n in range(10)]
        + [["joined", "0"]])
    times = [float(line[2]) for line in lines]
    for number, at in enumerate(times[2:12]):
        assert at >= 10 + number - 0.001
    assert ours < times[-1]


# What of the C library waits or tells the time.
TIMED = re.compile(r"(clock_gettime|gettimeofday|timespec_get|time|\w*sleep|p?poll|__p?poll_chk|"
                   r"p?select|epoll_\w*wait\w*|alarm|setitimer|timer_settime|timerfd_settime|"
                   r"pthread_\w*(timed|clock|wait)\w*|pthread_create|pthread_join|thrd_\w+|sem_\w*wait|"
                   r"sigtimedwait|mq_timed\w*|cnd_\w*wait|mtx_timedlock|recv\w*|send|connect)$")


def symbols(path, kinds):
    said = subprocess.run(["nm", "-D", path], capture_output=True, text=True, check=True).stdout
    return set(re.findall(rf" [{kinds}] (\w+)", said))


def test_nothing_that_the_filter_waits_with_is_left_out():
    used = {name for name in symbols(jobs.filter_path(), "Uw") if TIMED.match(name)}
    assert {"poll", "clock_gettime", "pthread_join"} <= used
    assert used <= symbols(LIBRARY, "TW")


def test_a_job_is_as_long_as_ever_by_its_own_clock():
    """A page whose start the engine holds up for twenty seconds."""
    if pace.times_faster() == pace.REAL:
        pytest.skip("time runs as ever")
    started = time.monotonic()
    result = Job(script={("HPEStartPage", 1): [("delay", 20000)]}).run()
    assert result.status == 0
    assert 22 < result.seconds < 60
    assert time.monotonic() - started < result.seconds
