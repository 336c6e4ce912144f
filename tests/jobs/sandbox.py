"""A private root for one job: the filter's fixed paths without touching the machine.

Every job gets a folder of its own that is mounted, by bubblewrap, where the filter looks: /Library,
/Users, /var/tmp, /tmp and /dev/shm. Everything else is the machine's, read-only.
"""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import fcntl
import functools
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

import pace

RESOURCES = "Library/Printers/Tessary/ZR7700.bundle/Contents/Resources"
LIBRARIES = "Library/Printers/Tessary/Frameworks"
ENGINE_DATA = "Users/Shared/Tessary/ZR7700/Frameworks"
SHARED_MEMORY = "TessaryZR7700PrinterMMap"

_SYSTEM = ["usr", "bin", "sbin", "lib", "lib32", "lib64", "libx32", "etc", "proc", "opt"]
_DEVICES = ["null", "zero", "full", "random", "urandom"]
_PASSED_ON = ("ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "GCOV_PREFIX",
              "GCOV_PREFIX_STRIP", "LLVM_PROFILE_FILE", "TZ")


def filter_path(build=Path(__file__).resolve().parents[2] / "build"):
    """The filter under test: the one that a plain configure-and-build makes, where that is named,
    before the one of the build that a test belongs to."""
    return os.environ.get("ZR7700_PLAIN_FILTER") or os.environ.get(
        "ZR7700_FILTER", str(build / "rastertoZR7700"))


@functools.lru_cache(None)
def require():
    """Fails with one sentence when private roots cannot be made on this machine."""
    trial = ["bwrap", "--ro-bind", "/", "/", "--tmpfs", "/tmp", "true"]
    try:
        done = subprocess.run(trial, capture_output=True, check=False)
    except FileNotFoundError:
        raise RuntimeError("The whole-job tests need the package bubblewrap.") from None
    if done.returncode != 0:
        raise RuntimeError("The whole-job tests need mount name spaces, which bubblewrap may not "
                           "make here: " + done.stderr.decode().strip())


class Sandbox:
    def __init__(self):
        self.root = Path(tempfile.mkdtemp(prefix="zr7700-", dir="/tmp"))
        for folder in ("Library/Caches", RESOURCES, LIBRARIES, ENGINE_DATA, "var-tmp/tessary",
                       "shm", "tmp", "bench"):
            (self.root / folder).mkdir(parents=True)
        self.bench = self.root / "bench"
        self.sockets = self.root / "var-tmp/tessary"
        self.read_only = []
        self.emptied = []

    def path(self, inside):
        """Where a path of the job lies outside."""
        return self.root / inside.lstrip("/")

    def remove(self):
        shutil.rmtree(self.root, ignore_errors=True)

    def command(self, program):
        out = ["bwrap", "--die-with-parent"]
        for name in _SYSTEM:
            outside = Path("/") / name
            if outside.is_symlink():
                out += ["--symlink", os.readlink(outside), str(outside)]
            elif outside.exists():
                out += ["--ro-bind", str(outside), str(outside)]
        for name in _DEVICES:
            out += ["--dev-bind", f"/dev/{name}", f"/dev/{name}"]
        binds = {"Library": "/Library", "Users": "/Users", "var-tmp": "/var/tmp", "tmp": "/tmp",
                 "bench": "/bench", "shm": "/dev/shm"}
        for inside, mounted in binds.items():
            out += ["--bind", str(self.root / inside), mounted]
        for inside in self.read_only:
            out += ["--ro-bind", str(self.path(inside)), inside]
        for inside in self.emptied:
            out += ["--tmpfs", inside]
        # Writable for the sake of coverage builds, whose counters lie beside the objects.
        folder = os.path.dirname(os.path.realpath(program))
        return out + ["--bind", folder, folder, "--chdir", "/tmp"]


@functools.lru_cache(None)
def _sanitizer(program):
    """The run-time library of the address sanitizer, which must come before any other."""
    said = subprocess.run(["ldd", program], capture_output=True, text=True, check=False).stdout
    return re.findall(r"=> (\S+/libasan\.so\S*)", said)


def _preloading(libraries, program):
    """Loads libraries before what runs in the sandbox, and before nothing else."""
    inside = {str(library): "/" + os.path.basename(library) for library in libraries}
    binds = [word for pair in inside.items() for word in ("--ro-bind", *pair)]
    return [*binds, "--setenv", "LD_PRELOAD", ":".join([*_sanitizer(program), *inside.values()]),
            "--setenv", "ZR7700_TIMES_FASTER", str(pace.times_faster()),
            "--setenv", "ZR7700_CLOCK", "/bench/clock"]


class Process:
    """A filter running in a sandbox; descriptors maps its descriptor numbers to ours. preloaded are
    libraries that it loads before all others."""

    def __init__(self, sandbox, program, arguments, environment, descriptors, preloaded=()):
        info_read, info_write = os.pipe()
        # Ours are moved out of the way first: the numbers below 10 are the filter's.
        moved = {number: fcntl_dup(ours) for number, ours in descriptors.items()}
        info = fcntl_dup(info_write)
        actions = [(os.POSIX_SPAWN_DUP2, ours, number) for number, ours in moved.items()]
        actions += [(os.POSIX_SPAWN_CLOSE, n) for n in (0, 1, 2, 3) if n not in descriptors]
        actions.append((os.POSIX_SPAWN_DUP2, info, 9))
        bwrap = sandbox.command(program)
        if preloaded:
            bwrap += _preloading(preloaded, program)
        bwrap += ["--info-fd", "9", program] + arguments[1:]
        if arguments[0] != program:
            raise ValueError("argv[0] is the program")
        # The scheduler runs filters with this file mode mask.
        shell = ["/bin/sh", "-c", 'umask 077; exec "$@"', "sh"] + bwrap
        self._bwrap = os.posix_spawn("/bin/sh", shell, environment_of(environment),
                                     file_actions=actions, setsigdef=[signal.SIGPIPE])
        for fd in list(moved.values()) + [info, info_write]:
            os.close(fd)
        self.status = None
        self.processor_seconds = 0.0
        self.pid = self._child_pid(info_read)

    @staticmethod
    def _child_pid(info_read):
        text = b""
        while b"}" not in text:
            piece = os.read(info_read, 512)
            if not piece:
                raise RuntimeError("bubblewrap could not start the filter")
            text += piece
        os.close(info_read)
        return json.loads(text)["child-pid"]

    def signal(self, number=signal.SIGTERM):
        try:
            os.kill(self.pid, number)
        except ProcessLookupError:
            pass

    def wait(self, seconds):
        """The exit status, 128 + n for a signal n; None when it still runs after so long (it is
        then killed)."""
        deadline = time.monotonic() + seconds
        while self.status is None and time.monotonic() < deadline:
            done, raw, usage = os.wait4(self._bwrap, os.WNOHANG)
            if done:
                self.status = os.waitstatus_to_exitcode(raw)
                self.processor_seconds = usage.ru_utime + usage.ru_stime
                return self.status
            time.sleep(0.01)
        self.signal(signal.SIGKILL)
        os.waitpid(self._bwrap, 0)
        return None


def fcntl_dup(fd):
    return fcntl.fcntl(fd, fcntl.F_DUPFD_CLOEXEC, 20)


def environment_of(extra):
    out = {"PATH": "/usr/bin:/bin", "HOME": "/tmp", "TMPDIR": "/tmp"}
    out.update({name: os.environ[name] for name in _PASSED_ON if name in os.environ})
    out.update({name: value for name, value in extra.items() if value is not None})
    return out
