"""The scripted printer utility on its Unix-domain socket."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import socket
import threading
import time

import pace
from beside import Beside

NAME = "com.tessary.zr7700.socket"


class Utility:
    """Listens in `folder`. behaviour: "ack", "silent", "rubbish", "close" (hangs up without a
    word), "drip" (one letter at first), or "full" (never accepts, and its backlog is full)."""

    def __init__(self, folder, behaviour, clock=pace.RealClock()):
        self._clock = clock
        self._behaviour = behaviour
        self._stopped = threading.Event()
        self._held, self._talks = [], []
        self.connections = 0
        self.heard = b""
        self.held_open = []
        self._socket = socket.socket(socket.AF_UNIX)
        self._path = str(folder / NAME)
        self._socket.bind(self._path)
        self._socket.listen(0 if behaviour == "full" else 16)
        self._socket.settimeout(0.05)
        if behaviour == "full":
            self._fill()
        self._thread = Beside(self._serve)
        self._thread.start()

    def _fill(self):
        for _ in range(4):
            client = socket.socket(socket.AF_UNIX)
            client.setblocking(False)
            client.connect_ex(self._path)
            self._held.append(client)

    def _serve(self):
        while not self._stopped.is_set():
            if self._behaviour == "full":
                time.sleep(0.05)
                continue
            try:
                peer, _ = self._socket.accept()
            except socket.timeout:
                continue
            self.connections += 1
            self._talks.append(Beside(self._talk, peer))
            self._talks[-1].start()

    def _talk(self, peer):
        """Answers one connection and measures how many of its seconds the filter
        holds it open."""
        opened = self._clock.now()
        answer = {"ack": b"Ack\0", "rubbish": b"\xffNak" * 500, "drip": b"A"}.get(self._behaviour)
        try:
            if answer is not None:
                peer.sendall(answer)
            if self._behaviour == "close":
                peer.close()
                return
            peer.settimeout(30)
            while data := peer.recv(4096):
                self.heard += data
        except OSError:
            pass
        self.held_open.append(self._clock.now() - opened)
        peer.close()

    def raise_failure(self):
        for thread in (self._thread, *self._talks):
            thread.raise_failure()

    def stop(self):
        self._stopped.set()
        self._thread.join()
        for client in self._held:
            client.close()
        self._socket.close()
