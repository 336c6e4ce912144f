"""One print job: what goes in, how it is run, and everything that came out."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import concurrent.futures
import functools
import os
import plistlib
import re
import shutil
import stat
import threading
import time
from dataclasses import dataclass, field
from pathlib import Path

import pace
import pages
import ppd
import raster
import record
import sandbox
from beside import Beside
from printer import Printer, steady
from sandbox import filter_path
from utility import Utility

LOG = "/Library/Caches/ZR7700Filter.log"
SETTINGS = f"/{sandbox.RESOURCES}/ZR7700Config.plist"
FAMILIES = {"Q": "tqgr", "P": "tqgr", "U": "tqhe", "V": "tqhe"}
CHOICES = {"InnerDiameter": "20", "Saturation": "100", "OuterMargin": "3",
           "MediaType": "HighGloss", "PrintQuality": "Quality2", "ColorMatching": "Standard",
           "Bidi": "Yes"}

_STAMP = re.compile(rb"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d [+-]\d{4} ")


def engine_folder():
    """Where the test engine's libraries were built."""
    return Path(os.environ.get("ZR7700_TEST_ENGINE", Path(filter_path()).parent / "test_engine"))


def faster_time():
    """The library that makes time run faster for the filter; none when this test is in real time."""
    if pace.times_faster() == pace.REAL:
        return []
    library = engine_folder() / "faster_time.so"
    if not library.exists():
        raise RuntimeError(f"There is no {library}: build it, or set ZR7700_TIMES_FASTER=1.")
    return [library]


@dataclass
class Job:
    """The description of a job; every field has the value of a plain good job of one small page.

    choices: PPD defaults, see ppd.text; ppd_text overrides the whole PPD; None leaves it out.
    settings: a dictionary, raw bytes for the file, or None for no file.
    pages: raster.Page list, or raw bytes for the whole stream.
    script: engine actions as {(entry, call): [(action, argument), ...]}; call may be "*".
    preloaded: libraries that the filter loads before all others.
    limit: after so many of our seconds a job is taken to hang.
    input, output: descriptors in the place of standard input and output; input "closed" for none.
    prepare: called with the sandbox just before the start. actions: called with the job, in a
    thread of its own, once it runs.
    """

    pages: object = field(default_factory=lambda: [pages.small()])
    choices: dict = field(default_factory=lambda: dict(CHOICES))
    options: str = ""
    ppd_text: str = ""
    settings: object = None
    ini: object = None
    record: bytes = field(default_factory=record.record)
    plan: object = None
    channel: str = "pipe"
    utility: str = "absent"
    script: dict = field(default_factory=dict)
    engine: str = "recording_engine"
    missing_libraries: tuple = ()
    arguments: list = None
    from_file: bool = False
    version: int = 3
    order: str = "<"
    environment: dict = field(default_factory=dict)
    preloaded: list = field(default_factory=list)
    prepare: object = None
    actions: object = None
    limit: float = 90.0
    input: object = None
    output: object = None

    def __post_init__(self):
        self.process = None

    @functools.cached_property
    def sandbox(self):
        """The job's private root, made when it is first asked for."""
        return sandbox.Sandbox()

    @functools.cached_property
    def clock(self):
        """The clock of the job's seconds."""
        return pace.clock(self.sandbox.bench / "clock")

    # What can be asked while the job runs.

    def log_text(self):
        return _read(self.sandbox.path(LOG)).decode("latin-1")

    def trace_text(self):
        return _read(self.sandbox.bench / "trace").decode("latin-1")

    def shared_memory(self):
        return self.sandbox.path(f"/shm/{sandbox.SHARED_MEMORY}")

    def until(self, condition, seconds=None):
        """Waits for a condition, for so many of the job's seconds or a minute of ours; false when it
        did not come about while the job ran."""
        clock = pace.RealClock() if seconds is None else self.clock
        end = clock.now() + (60 if seconds is None else seconds)
        while clock.now() < end and not self.over.is_set():
            if condition():
                return True
            time.sleep(0.003)
        return condition()

    def sleep(self, seconds):
        """Sleeps so many of the job's seconds, or to its end."""
        self.clock.sleep(seconds, self.over.is_set)

    def until_log(self, text, times=1):
        return self.until(lambda: self.log_text().count(text) >= times)

    def until_trace(self, text, times=1):
        return self.until(lambda: self.trace_text().count(text) >= times)

    def terminate(self):
        self.terminated = self.clock.now()
        self.process.signal()

    def process_folder(self):
        """What the system tells of the filter's process while it runs."""
        return Path("/proc", str(self.process.pid))

    def release(self, name="go"):
        """Lets an engine call go on that waits for /bench/<name>."""
        (self.sandbox.bench / name).touch()

    # Preparation.

    def _place_engine(self):
        built = engine_folder()
        for family in ("tqhe", "tqgr"):
            for member in ("flib", "hpec", "hpeh", "hpep"):
                name = family + member
                if name in self.missing_libraries:
                    continue
                folder = self.sandbox.path(f"/{sandbox.LIBRARIES}/{name}.framework")
                folder.mkdir(exist_ok=True)
                library = self.engine if member == "hpec" else "companion"
                shutil.copy(built / f"{library}.so", folder / name)

    def _place_files(self):
        bench = self.sandbox.bench
        if self.ppd_text is not None:
            (bench / "job.ppd").write_text(self.ppd_text or ppd.text(self.choices))
        if isinstance(self.settings, bytes):
            self.sandbox.path(SETTINGS).write_bytes(self.settings)
        elif self.settings is not None:
            self.sandbox.path(SETTINGS).write_bytes(plistlib.dumps(self.settings))
        if self.ini is not None:
            self.ini_path().write_bytes(self.ini)
        lines = [f"{entry} {call} {action} {argument}\n"
                 for (entry, call), steps in self.script.items() for action, argument in steps]
        (bench / "script").write_text("".join(lines))
        (bench / "raster").write_bytes(self.stream())

    def letter(self):
        return chr(self.record[98])

    def ini_path(self):
        prefix = FAMILIES.get(self.letter(), "tqgr")
        return self.sandbox.path(f"/{sandbox.ENGINE_DATA}/{prefix}cfg.ini")

    def stream(self):
        if isinstance(self.pages, bytes):
            return self.pages
        return raster.stream(self.pages, self.version, self.order)

    def _arguments(self):
        if self.arguments is not None:
            return [filter_path()] + self.arguments
        out = [filter_path(), "77", "user", "title", "1", self.options]
        return out + ["/bench/raster"] if self.from_file else out

    def _environment(self):
        out = {"PPD": "/bench/job.ppd", "LANG": "C",
               "ZR7700_ENGINE_TRACE": "/bench/trace", "ZR7700_ENGINE_PIXELS": "/bench/pixels",
               "ZR7700_ENGINE_SCRIPT": "/bench/script"}
        out.update(self.environment)
        return out

    # The run.

    def run(self):
        sandbox.require()
        if not os.access(filter_path(), os.X_OK):
            raise RuntimeError(f"There is no filter at {filter_path()}: build it, or name one in "
                               "ZR7700_FILTER.")
        self._place_engine()
        self._place_files()
        if self.prepare is not None:
            self.prepare(self.sandbox)
        self.over = threading.Event()
        self.terminated = None
        helper = Utility(self.sandbox.sockets, self.utility, self.clock) if self.utility != "absent" else None
        machine = None
        if self.channel != "closed":
            machine = Printer(self.plan or steady(self.record), self, self.channel)
            machine.start()
        try:
            result = self._run_filter(machine, helper)
        finally:
            self.over.set()
            for other in filter(None, (machine, helper)):
                other.stop()
            self.sandbox.remove()
        for other in filter(None, (machine, helper)):
            other.raise_failure()
        return result

    def _run_filter(self, machine, helper):
        bench = self.sandbox.bench
        with open(bench / "raster", "rb") as source, open(bench / "out", "wb") as out, \
                open(bench / "err", "wb") as err:
            stdin = source.fileno() if self.input in (None, "closed") else self.input
            stdout = out.fileno() if self.output is None else self.output
            descriptors = {0: stdin, 1: stdout, 2: err.fileno()}
            if self.input == "closed":
                del descriptors[0]
            if machine is not None:
                os.set_blocking(machine.filter_end, self.channel == "blocking")
                descriptors[3] = machine.filter_end
            started = self.clock.now()
            self.process = sandbox.Process(self.sandbox, filter_path(), self._arguments(),
                                           self._environment(), descriptors,
                                           [*self.preloaded, *faster_time()])
            side = Beside(self.actions or (lambda job: None), self)
            side.start()
            status = self.process.wait(self.limit)
            ended = self.clock.now()
            self.over.set()
            side.finish()
        return Result(self, status, ended - started, helper,
                      None if self.terminated is None else ended - self.terminated)


def run_together(tasks, at_once=6):
    """Runs functions in threads, jobs being mostly waiting, and gives their results in order; the
    first exception of any comes out of here."""
    with concurrent.futures.ThreadPoolExecutor(at_once) as pool:
        return [future.result() for future in [pool.submit(task) for task in tasks]]


class Result:
    """Everything that a job left behind, read before its root is removed."""

    def __init__(self, job, status, seconds, helper, seconds_after_cancel):
        bench = job.sandbox.bench
        self.job = job
        self.status = status
        self.seconds = seconds
        self.seconds_after_cancel = seconds_after_cancel
        self.processor_seconds = job.process.processor_seconds
        self.stdout = _read(bench / "out")
        self.stderr = _read(bench / "err").decode("utf-8", "replace")
        self.pixels = _read(bench / "pixels")
        self.trace = _read(bench / "trace").decode("latin-1").splitlines()
        self.loaded = [line.split("/")[-1] for line in self.trace if line.startswith("LOADED")]
        self.calls = [line for line in self.trace
                      if not line.startswith(("LOADED", "callback"))]
        self.ini = _read(job.ini_path()) if job.ini_path().is_file() else None
        self.raw_log = _read(job.sandbox.path(LOG))
        self.log_mode = _mode(job.sandbox.path(LOG))
        self.shared_memory_left = job.shared_memory().exists()
        self.utility_connections = helper.connections if helper else 0
        self.utility_heard = helper.heard if helper else b""
        self.utility_held_open = list(helper.held_open) if helper else []
        self.log = split_log(self.raw_log)


def split_log(raw):
    """The log's messages without time stamp and line end. Every entry must have both."""
    if not raw:
        return []
    assert raw.endswith(b"\r\n"), f"the log's last line has no end: {raw[-80:]!r}"
    out = []
    for entry in raw[:-2].split(b"\r\n"):
        stamp = _STAMP.match(entry)
        assert stamp, f"a log line without a time stamp: {entry!r}"
        out.append(entry[stamp.end():].decode("latin-1"))
    return out


def _read(path):
    try:
        return path.read_bytes() if stat.S_ISREG(path.stat().st_mode) else b""
    except OSError:
        return b""


def _mode(path):
    try:
        return stat.S_IMODE(path.lstat().st_mode)
    except OSError:
        return None
