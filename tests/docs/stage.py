"""A throw-away folder in which the documents' commands run: the sources and a build as links, and
stand-ins for programs that would change the machine or take an hour."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import subprocess
import time

from documents import TOP
from scheduler import BUILD, wait_for

# Every package must be one that Debian has; a file must be there. Nothing is installed.
_APT = """#!/bin/sh
[ "$1" = install ] && shift || exit 1
for name; do
  case $name in
    -*) ;;
    */*.deb) [ -f "$name" ] || exit 1 ;;
    *) apt-cache show "$name" >/dev/null 2>&1 || dpkg -s "$name" >/dev/null 2>&1 || {{
         echo "There is no package $name." >&2; exit 1; }} ;;
  esac
done
"""

# Configuring and installing are real, in this folder; ./test does the building.
_CMAKE = """#!/bin/sh
case "$*" in
  --preset*) exec sh -c 'cd {top} && /usr/bin/cmake --list-presets | grep -qF "\\"$1\\""' sh "$2" ;;
  "--build --preset"*)
    exec sh -c 'cd {top} && /usr/bin/cmake --list-presets=build | grep -qF "\\"$1\\""' sh "$3" ;;
  "--build build"*) test -f {stage}/configured/CMakeCache.txt ;;
  "--install build"*) DESTDIR={stage}/installed exec /usr/bin/cmake --install {build} ;;
  "-B build"*) shift 2; exec /usr/bin/cmake -S {top} -B {stage}/configured "$@" ;;
  *) echo "cmake's stand-in does not know: $*" >&2; exit 1 ;;
esac
"""

# Lists the tests instead of running them: there must be some.
_CTEST = """#!/bin/bash
words=()
while [ $# -gt 0 ]; do
  case $1 in --test-dir) shift 2 ;; *) words+=("$1"); shift ;; esac
done
/usr/bin/ctest --test-dir {build} -N "${{words[@]}}" | grep -q '^Total Tests: [1-9]'
"""


class Stage:
    def __init__(self, folder, machine):
        self.folder = folder
        self.machine = machine
        for entry in TOP.iterdir():
            if not entry.name.startswith(("build", ".")):
                (folder / entry.name).symlink_to(entry)
        for name in ("build", "build-dev", "build-release"):
            (folder / name).symlink_to(BUILD)
        (folder / "zr7700.ppd").symlink_to(BUILD / "ppd/zr7700.ppd")
        (folder / "stand-ins").mkdir()
        places = {"top": TOP, "stage": folder, "build": BUILD}
        for name, text in (("apt", _APT), ("cmake", _CMAKE), ("ctest", _CTEST)):
            (folder / "stand-ins" / name).write_text(text.format(**places))
            (folder / "stand-ins" / name).chmod(0o755)
        (folder / "stand-ins/sudo").write_text('#!/bin/sh\nexec "$@"\n')
        (folder / "stand-ins/sudo").chmod(0o755)

    def run(self, command):
        """Runs it as it stands, but for the names of machines: that is the private scheduler."""
        here = f"127.0.0.1:{self.machine.port}"
        command = command.replace("ipp://localhost/", f"ipp://{here}/")
        command = command.replace("-h host2", f"-h {here}")
        path = f"{self.folder}/stand-ins:/usr/sbin:/usr/bin:/sbin:/bin"
        done = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=self.folder,
                              env={**self.machine.environment(), "PATH": path},
                              capture_output=True, text=True, check=False, timeout=120)
        if command.startswith("cupsctl ") and done.returncode == 0:
            wait_for("a scheduler that has read its new settings", self._answers_for_a_second)
        return done

    def _answers_for_a_second(self):
        """A scheduler answers before and after it reads its settings, but not while it does."""
        for _ in range(10):
            if "is running" not in self.machine.client("lpstat", "-r", check=False):
                return False
            time.sleep(0.1)
        return True
