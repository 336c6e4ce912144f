"""How a filter before the last one leaves when its job is cancelled."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import subprocess

import pytest


def expect_farewell(program, ppd, beginning):
    """The filter, cancelled after the beginning of a document, stays until the next filter has had
    time to hear of it too: that one would take the end of its input for the end of the page."""
    with subprocess.Popen([program, "1", "u", "t", "1", ""], stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE, env={"PPD": ppd}) as process:
        process.stdin.write(beginning)
        process.stdin.flush()
        with pytest.raises(subprocess.TimeoutExpired):
            process.wait(0.3)
        process.terminate()
        with pytest.raises(subprocess.TimeoutExpired):
            process.wait(0.5)
        assert process.wait(5) == 0
