"""How the demonstration is stopped: by Ctrl-C, SIGTERM, or the end of its terminal (unless nohup
has started it)."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import signal
import sys

_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


def _stop(number, _):
    """Once: what follows is cleaning up, which is not to be interrupted. A signal that has already
    come meanwhile must find a handler, or Python complains."""
    for other in _SIGNALS:
        signal.signal(other, lambda *_: None)
    sys.exit(128 + number)


def prepare():
    """From now on a stop is an orderly exit, with the signal's number and 128 as its status."""
    for number in _SIGNALS:
        if number != signal.SIGHUP or signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, _stop)


class Held:
    """While one is entered a stop waits: no process is started and then forgotten."""

    def __init__(self):
        self._came = []

    def __enter__(self):
        self._old = [signal.signal(number, lambda number, _: self._came.append(number))
                     for number in _SIGNALS]

    def __exit__(self, *_):
        for number, handler in zip(_SIGNALS, self._old):
            signal.signal(number, handler)
        if self._came:
            signal.raise_signal(self._came[0])
