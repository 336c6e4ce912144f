"""A thread beside a job whose failure is the test's: an assertion in it is raised where it is joined."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import threading


class Beside(threading.Thread):
    def __init__(self, task, *arguments):
        super().__init__(daemon=True)
        self._task, self._arguments, self._failure = task, arguments, None

    def run(self):
        try:
            self._task(*self._arguments)
        except BaseException as failure:  # pytest's own failures are no Exceptions
            self._failure = failure

    def raise_failure(self):
        if self._failure is not None:
            raise self._failure

    def finish(self, seconds=10):
        """Joins the thread; raises what it raised."""
        self.join(seconds)
        self.raise_failure()
        assert not self.is_alive(), f"what runs beside the job does not end: {self._task}"
