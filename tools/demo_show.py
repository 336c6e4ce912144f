"""Shows a picture to whoever has asked for it: on the desktop, or else in a terminal that says, by
its environment, that it can."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import base64
import os
import shutil
import subprocess
import sys

import demo_sixel

_KITTY_PIECE = 4096  # the most base64 characters that the protocol takes at once
_SIXEL_TERMINALS = ("foot", "mlterm", "yaft", "contour")


def show(path):
    """Shows the PNG file, or does nothing where that is not possible."""
    desktop = os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")
    if desktop and shutil.which("xdg-open"):
        subprocess.Popen(["xdg-open", path], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                         stderr=subprocess.DEVNULL, cwd="/", start_new_session=True)
        return
    draw = {"kitty": _kitty, "iterm": _iterm, "sixel": demo_sixel.encode}.get(
        protocol(os.environ) if sys.stdout.isatty() else None)
    if draw:
        with open(path, "rb") as file:
            print(draw(file.read()), flush=True)


def protocol(environment):
    """How the terminal of this environment takes pictures: kitty, iterm, sixel or None. A terminal
    in a terminal (tmux, screen) hides the outer one, which its variables still name."""
    term, program = environment.get("TERM", ""), environment.get("TERM_PROGRAM", "")
    if term.startswith(("tmux", "screen")) or "TMUX" in environment or "STY" in environment:
        return None
    if "KITTY_WINDOW_ID" in environment or any(name in term + program
                                               for name in ("kitty", "ghostty")):
        return "kitty"
    if program in ("iTerm.app", "WezTerm", "mintty") or "LC_TERMINAL" in environment:
        return "iterm"
    return "sixel" if "sixel" in term or term.startswith(_SIXEL_TERMINALS) else None


def _kitty(png):
    text = base64.b64encode(png).decode()
    pieces = [text[at:at + _KITTY_PIECE] for at in range(0, len(text), _KITTY_PIECE)]
    out = ""
    for number, piece in enumerate(pieces):
        keys = "a=T,f=100,q=2," if number == 0 else ""
        out += f"\033_G{keys}m={int(number < len(pieces) - 1)};{piece}\033\\"
    return out


def _iterm(png):
    return f"\033]1337;File=inline=1;size={len(png)}:{base64.b64encode(png).decode()}\a"
