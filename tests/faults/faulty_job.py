"""A job in which one call of a kind fails, or all from there on, and what may come of it."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import errno
import functools
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "jobs"))
import job  # pylint: disable=wrong-import-position

INI = b"; first line\n[Configuration]\nColor=9\n[ESwathBuilder]\n; last line\n"
FIRST, LAST = b"; first line\n", b"; last line\n"

# Where other people's code does not survive a lack of memory: docs/reliability.md has this list too.
THIRD_PARTY = {("libcups.so.2", "_ppdOpenFile"), ("libcups.so.2", "_cupsRasterClearError")}


class FaultyJob:
    """fault: "KIND NUMBER once|ever ERRNO", or None for a job without one."""

    def __init__(self, fault=None):
        self.fault = fault
        environment = {"ZR7700_FAULT": fault, "ZR7700_FAULT_COUNTS": "/bench/counts",
                       "ZR7700_FAULT_CRASH": "/bench/crash"}
        self.job = job.Job(ini=INI, environment=environment, limit=60,
                           preloaded=[job.engine_folder() / "faults.so"],
                           script={("HPESendBand", "*"): [("emit", "78" * 100)]})
        self.counts, self.crash = {}, ""
        self._remove = self.job.sandbox.remove
        self.job.sandbox.remove = self._keep_notes
        self.result = self.job.run()

    def _keep_notes(self):
        self.counts = {kind: int(count) for kind, count in
                       (line.split() for line in self._note("counts").splitlines())}
        self.crash = self._note("crash")
        self._remove()

    def _note(self, name):
        path = self.job.sandbox.bench / name
        return path.read_text() if path.exists() else ""

    def crashed_in(self):
        """Library and function that the process died in; the C library counts for its caller."""
        for line in self.crash.splitlines():
            found = re.match(r"(?:.*/)?([^/(]+)\(([^+)]*)", line)
            if found and found[1] not in ("faults.so", "libc.so.6"):
                return found.groups()
        return None

    def is_hung(self):
        return self.result.status is None

    def is_killed(self):
        return not self.is_hung() and self.result.status not in (0, 1)

    def is_of_output(self):
        """A write that is refused for good may be one to the printer, and that stays unnoticed: whoever
        reads the output knows what is missing."""
        kind, _, _, error = (self.fault or "none 0 once 0").split()
        return kind == "write" and int(error) not in (errno.EINTR, errno.EAGAIN)

    def errors(self):
        return self.result.stderr.count("ERROR: ")

    def complaints(self, plain):
        """What a fault must never do; `plain` is the job without one."""
        out = []
        if self.is_hung():
            out.append("hung")
        elif self.is_killed() and self.crashed_in() not in THIRD_PARTY:
            out.append(f"killed ({self.result.status}) in {self.crashed_in()}")
        if (self.result.status == 0 and self.result.stdout != plain.result.stdout
                and not self.is_of_output()):
            out.append(f"lost output, {len(self.result.stdout)} bytes are left")
        ini = self.result.ini or b""
        if not (ini.startswith(FIRST) and LAST in ini):
            out.append(f"lost its ini file: {ini!r}")
        if not self.is_of_output() and not plain.result.stdout.startswith(self.result.stdout):
            out.append("other output")
        return [f"{self.fault}: {complaint}" for complaint in out]


@functools.lru_cache(None)
def plain_job():
    plain = FaultyJob()
    assert plain.result.status == 0 and len(plain.result.stdout) > 16
    return plain


def number(name):
    return getattr(errno, name)


def run_faults(faults):
    plain_job()
    return job.run_together([functools.partial(FaultyJob, fault) for fault in faults])
