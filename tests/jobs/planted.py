"""Things that others may have put where the filter expects a file of its own."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os

NOBODY = 65534


def fifo(path):
    """Whoever opens it waits for the other side."""
    os.mkfifo(path)


def link_to_fifo(path):
    os.mkfifo(path.parent / "fifo")
    path.symlink_to("fifo")


def folder(path):
    path.mkdir()


def link_to_nowhere(path):
    path.symlink_to("/nowhere/at/all")


def link_to_endless(path):
    """A file without an end."""
    path.symlink_to("/dev/zero")


def foreign_link(path, target):
    """A link of somebody who is neither root nor the filter's user; only root can make one."""
    path.symlink_to(target)
    os.lchown(path, NOBODY, NOBODY)


ALL = [fifo, link_to_fifo, folder, link_to_nowhere, link_to_endless]
