"""The demonstration in a private root, with nothing printed yet."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
import subprocess
import sys

import demo_queue
import disc_job
import sandbox
from disc_job import BUILD, REPOSITORY


class DemoBox(sandbox.Sandbox):
    """A private root in which the demonstration runs, whose filter has the fixed paths; and a build
    folder with the programs as links and nothing printed yet."""

    def __init__(self, folder):
        sandbox.require()
        super().__init__()
        self.folder = folder
        self.build = folder / "build"
        self.build.mkdir()
        for name in ("ppd", "zr7700-printer", *demo_queue.OURS):
            (self.build / name).symlink_to(BUILD / name)
        (self.build / "root").symlink_to("/")
        for place in (sandbox.LIBRARIES, sandbox.ENGINE_DATA):
            shutil.copytree(BUILD / "root" / place, self.root / place, dirs_exist_ok=True)

    def run(self, *command, mounts=(), **more):
        bwrap = [*self.command(disc_job.FILTER), "--ro-bind", REPOSITORY, REPOSITORY, "--bind",
                 BUILD, BUILD, "--bind", self.folder, self.folder, *mounts]
        return subprocess.run([*bwrap, *command], capture_output=True, text=True, check=False,
                              timeout=120, **more)

    def demo(self, *words, mounts=(), **more):
        return self.run(sys.executable, "-B", REPOSITORY / "tools/demo_print.py", "--build",
                        self.build, "--no-show", *map(str, words), mounts=mounts, **more)

    def refusal(self, *words, mounts=()):
        """What a call that must fail says, without its line end."""
        done = self.demo(*words, mounts=mounts)
        assert done.returncode == 1
        assert done.stderr.startswith("demo: ") and done.stderr.count("\n") == 1, done.stderr
        left = [name for _, _, names in os.walk(self.build / "discs") for name in names]
        assert left == [] and not list(self.build.glob("job-*"))
        assert os.listdir(self.root / "shm") == []
        return done.stderr.strip()
