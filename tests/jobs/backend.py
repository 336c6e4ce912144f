"""The scripted backend: whoever takes the filter's standard output, or does not."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import fcntl
import os
import threading
import time


class Backend:
    """A pipe; `filter_end` is for the job. It takes nothing before take(). pipe_bytes: what the pipe
    holds; filled: how many bytes it holds from the start. Use it in a with statement."""

    def __init__(self, pipe_bytes=None, filled=0, blocking=True):
        self._end, self.filter_end = os.pipe()
        if pipe_bytes is not None:
            fcntl.fcntl(self.filter_end, fcntl.F_SETPIPE_SZ, pipe_bytes)
        if filled:
            assert os.write(self.filter_end, b"\xee" * filled) == filled
        os.set_blocking(self.filter_end, blocking)
        self._filled = filled
        self._taken = []
        self._pause = 0.0
        self._thread = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.filter_end is not None:
            os.close(self.filter_end)
        self._pause = 0.0
        if self._thread is not None:
            self._thread.join(30)
        os.close(self._end)

    def take(self, piece=65536, pause=0.0):
        """From now on takes up to `piece` bytes at a time, with a pause after each."""
        self._pause = pause

        def run():
            while data := os.read(self._end, piece):
                self._taken.append(data)
                time.sleep(self._pause)

        self._thread = threading.Thread(target=run, daemon=True)
        self._thread.start()

    def all_taken(self):
        """Everything that the job wrote and left in the pipe; once the job has ended."""
        os.close(self.filter_end)
        self.filter_end = None
        self._pause = 0.0
        if self._thread is None:
            self.take()
        self._thread.join(30)
        assert not self._thread.is_alive()
        return b"".join(self._taken)[self._filled:]
