"""A copy of the sources with a build of its own, in which mutants are built and tried."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import contextlib
import os
import re
import shutil
import subprocess
from pathlib import Path

TOP = Path(__file__).resolve().parents[2]

_BUILD_LIMIT_s = 1800
# Every test has its own limit; this one ends a run whose tests all wait for it.
_TESTS_LIMIT_s = 1500
_CASE_LIMIT_s = 90
_NO_CHECKS = ["-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS=-O0 -w", "-DCMAKE_C_FLAGS=-w",
              "-DZR7700_TESTS=ON", "-DZR7700_COMPANIONS=OFF"]


class Workshop:
    """Judges one mutant at a time. The tests go from the nearest to the farthest: the source's own
    unit test, all unit tests, whole jobs."""

    def __init__(self, folder, processors):
        self.sources = Path(folder) / "sources"
        self.build = Path(folder) / "build"
        self._processors = str(processors)
        shutil.copytree(TOP, self.sources, symlinks=True, dirs_exist_ok=True,
                        ignore=shutil.ignore_patterns(".git", "build*", "__pycache__"))
        self._run("cmake", "-G", "Ninja", "-S", self.sources, "-B", self.build, *_NO_CHECKS)
        units = sorted({path.stem for room in ("base", "disc", "engine", "platform",
                                                     "status", "driver")
                        for path in (self.sources / room).glob("*_test.cc")})
        self._units = [name for name in units if self._has_target(name)]

    def _run(self, *command, limit_s=_BUILD_LIMIT_s):
        # A launcher that caches would keep every mutant's objects.
        environment = {**os.environ, "CCACHE_DISABLE": "1", "GTEST_BREAK_ON_FAILURE": "0"}
        return subprocess.run([str(word) for word in command], capture_output=True, text=True,
                              check=False, timeout=limit_s, env=environment, cwd=self.sources)

    def _has_target(self, name):
        return self._run("ninja", "-C", self.build, "-n", name).returncode == 0

    def _make(self, *targets):
        """None, or the compiler's complaint."""
        made = self._run("ninja", "-C", self.build, "-j", self._processors, *targets)
        return None if made.returncode == 0 else made.stdout[-2000:]

    def _failing(self, pattern, at_once):
        """The first test that fails, "(time)" when they hang, or None."""
        try:
            done = self._run("ctest", "--test-dir", self.build, "-R", pattern, "-j", at_once,
                             "--stop-on-failure", "--timeout", _CASE_LIMIT_s, "--no-tests=error",
                             limit_s=_TESTS_LIMIT_s)
        except subprocess.TimeoutExpired:
            return "(time)"
        if done.returncode == 0:
            return None
        return re.search(r"^\s*\d+ - (.*)", done.stdout, re.M)[1]

    @contextlib.contextmanager
    def _changed(self, path, text):
        source = self.sources / path
        original = source.read_text(encoding="utf-8")
        source.write_text(text, encoding="utf-8")
        try:
            yield
        finally:
            source.write_text(original, encoding="utf-8")

    def judge(self, path, text, whole_jobs=True):
        """What noticed that the source at `path` (from the top) is now `text`: a test's name, or
        None when nothing did, or "" when it is no program any more."""
        with self._changed(path, text):
            own = f"{Path(path).stem}_test"
            if own in self._units:
                if self._make(own) is not None:
                    return ""
                killer = self._failing(f"^{own}:", self._processors)
                if killer:
                    return killer
            return self.judge_all(whole_jobs)

    def judge_all(self, whole_jobs):
        """The same of the sources as they are, by all tests."""
        if self._make("whole_job_parts", *self._units) is not None:
            return ""
        return (self._failing(f"^({'|'.join(self._units)}):", self._processors)
                or (whole_jobs and self._failing("^jobs:", 2 * int(self._processors))) or None)
