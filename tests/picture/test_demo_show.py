"""./demo shows the picture where it can, and says nothing where it cannot."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import base64
import os
import pty
import re
import subprocess
import sys
import time

import pytest
from PIL import Image

import demo_show
import demo_sixel
from disc_job import REPOSITORY


def show(environment, path="/pictures/disc.png"):
    """What demo_show writes to a terminal, for a process of this environment."""
    master, terminal = pty.openpty()
    with subprocess.Popen([sys.executable, "-B", "-c", "import sys, tty; tty.setraw(1); import "
                           "demo_show; demo_show.show(sys.argv[1])", path], stdout=terminal,
                          env={"PATH": "/usr/bin:/bin", "PYTHONPATH": str(REPOSITORY / "tools"),
                               **environment}) as process:
        os.close(terminal)
        said = b""
        try:
            while piece := os.read(master, 65536):
                said += piece
        except OSError:  # the terminal's other end is closed
            pass
    os.close(master)
    assert process.returncode == 0
    return said


def test_a_desktop_opens_the_picture(tmp_path):
    opener = tmp_path / "xdg-open"
    opener.write_text(f'#!/bin/sh\necho noise\necho "$@" >{tmp_path}/opened.part\n'
                      f'mv {tmp_path}/opened.part {tmp_path}/opened\n')
    opener.chmod(0o755)
    path = f"{tmp_path}:/usr/bin:/bin"
    assert show({"PATH": path, "DISPLAY": ":7", "TERM": "xterm-kitty"}) == b""
    deadline = time.monotonic() + 10
    while not (tmp_path / "opened").exists() and time.monotonic() < deadline:
        time.sleep(0.02)
    assert (tmp_path / "opened").read_text() == "/pictures/disc.png\n"


@pytest.mark.parametrize("environment, kind", [
    ({"TERM": "xterm-kitty"}, "kitty"), ({"KITTY_WINDOW_ID": "1"}, "kitty"),
    ({"TERM": "xterm-ghostty"}, "kitty"), ({"TERM_PROGRAM": "iTerm.app"}, "iterm"),
    ({"TERM_PROGRAM": "WezTerm"}, "iterm"), ({"TERM": "foot"}, "sixel"),
    ({"TERM": "xterm-sixel"}, "sixel"), ({"TERM": "xterm-256color"}, None), ({}, None),
    ({"TERM": "tmux-256color", "KITTY_WINDOW_ID": "1"}, None), ({"TERM": "linux"}, None),
])
def test_terminals_that_take_pictures(environment, kind):
    assert demo_show.protocol(environment) == kind


def small_picture(path):
    picture = Image.new("RGB", (80, 40), "red")
    picture.paste("blue", (40, 0, 80, 40))
    picture.save(path)
    return path.read_bytes()


def test_pictures_in_a_terminal(tmp_path):
    png = small_picture(tmp_path / "p.png")
    said = show({"TERM": "xterm-kitty"}, tmp_path / "p.png")
    pieces = re.findall(rb"\033_G([^;]*);([^\033]*)\033\\", said)
    assert base64.b64decode(b"".join(text for _, text in pieces)) == png
    assert pieces[0][0].startswith(b"a=T,f=100,") and pieces[-1][0].endswith(b"m=0")
    said = show({"TERM_PROGRAM": "iTerm.app"}, tmp_path / "p.png")
    text = re.search(rb"\033]1337;File=inline=1;size=(\d+):(.*)\a", said)
    assert base64.b64decode(text[2]) == png and int(text[1]) == len(png)
    assert show({"TERM": "xterm"}, tmp_path / "p.png") == b""


def test_a_picture_in_sixels(tmp_path):
    """40 x 20 dots: bands of six rows, the last of two; the left half red, the right blue."""
    said = demo_sixel.encode(small_picture(tmp_path / "p.png"))
    body = re.fullmatch(r'\033P0;1q"1;1;40;20(.*)\033\\', said)[1]
    assert "#180;2;100;0;0" in body and "#5;2;0;0;100" in body
    bands = body[body.index("#215;2;100;100;100") + len("#215;2;100;100;100"):].split("-")
    assert bands == ["#180!20~!20?$#5!20?!20~"] * 3 + ["#180!20B!20?$#5!20?!20B"]


@pytest.mark.parametrize("mode", ["L", "RGBA"])
def test_a_picture_of_another_kind_is_not_shown_wrong(mode, tmp_path):
    Image.new(mode, (4, 4)).save(tmp_path / "p.png")
    with pytest.raises(ValueError):
        demo_sixel.encode((tmp_path / "p.png").read_bytes())


def test_lines_of_every_png_filter():
    """PNG's five filters, on bytes reckoned by hand: above 10 20 30 40 50 60."""
    above, line = bytes((10, 20, 30, 40, 50, 60)), bytes((1, 2, 3, 4, 5, 6))
    wanted = [(1, 2, 3, 4, 5, 6), (1, 2, 3, 5, 7, 9), (11, 22, 33, 44, 55, 66),
              (6, 12, 18, 27, 36, 45), (11, 22, 33, 44, 55, 66)]
    for kind, values in enumerate(wanted):
        assert tuple(demo_sixel._unfiltered(kind, line, above)) == values
