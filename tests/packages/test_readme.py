"""The README's ways to install, print a first disc and take everything off, in Debian's smallest
system: its very commands, but for the printer, which is a virtual one."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import subprocess
import sys

import pytest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../docs"))

from cups_in_root import Printing, wait_for  # noqa: E402
from debian_root import DebianRoot, bare_root, copy_root  # noqa: E402
from documents import _lines, blocks  # noqa: E402
from packages import OUT, REPOSITORY  # noqa: E402

README = (REPOSITORY / "README.md").read_text(encoding="utf-8")


def section(name):
    """The commands of a section, in their order."""
    text = re.search(rf"^## {name}\n(.*?)^## ", README, re.M | re.S)[1]
    return [line for kind, block in blocks(text) if kind == "sh" for line in _lines(block)]


@pytest.fixture
def fresh(tmp_path):
    """A root without CUPS, with a checkout in /home/zr7700."""
    folder = copy_root(bare_root(OUT / "bare-root"), OUT / "readme-root")
    checkout = folder / "home/zr7700"
    checkout.mkdir(parents=True)
    names = subprocess.run(["git", "ls-files", "-z"], cwd=REPOSITORY, capture_output=True,
                           check=True).stdout
    subprocess.run(["cp", "--parents", "-t", checkout, *names.decode().rstrip("\0").split("\0")],
                   cwd=REPOSITORY, check=True)
    root = DebianRoot(folder, OUT / "archives")
    root.run("apt-get update")
    try:
        yield root
    finally:
        root.close()
        subprocess.run(["rm", "-rf", folder], check=True)


def run(root, command):
    """As root, in the checkout; apt asks nothing."""
    command = re.sub(r"^apt (install|purge)", r"apt-get -y --no-install-recommends \1", command)
    return root.run(f"cd /home/zr7700 && {command}", seconds=1800)[1]


def print_the_first_disc(root):
    """Of the README's section, with the virtual printer's URI; the model is what lpinfo answers."""
    root.run("install -d -o lp -g lp /srv/discs")
    commands = section("The first disc")
    ask, add = commands[1:3]
    model = run(root, ask).split()[0]
    run(root, add.replace("usb://Tessary/ZR7700", "zr7700virtual:/srv/discs").replace(
        "drv:///zr7700.drv/ZR7700.PPD", model))
    run(root, "cp labels/lake.png photo.jpg && cp labels/concert.pdf label.pdf")
    for number, command in enumerate(commands[3:6], 1):
        run(root, command)
        wait_for(f"disc {number}", lambda number=number: root.path(
            f"srv/discs/job-{number}-report.json").exists(), 120)
    discs = list(root.path("srv/discs").glob("*-disc-???.png"))
    assert len(discs) == 1 + 1 + 5
    assert "InnerDiameter" in run(root, commands[6])


def test_from_packages(fresh):
    package, install = section("Installing")[:2]
    run(fresh, package + " --no-check")  # their tests run in other tests
    run(fresh, install + " ./build-packages/zr7700-virtual-printer_*.deb")
    Printing(fresh).start()
    print_the_first_disc(fresh)
    off = section("Taking it off")
    for command in off:
        run(fresh, command)
    assert "zr7700" not in fresh.run("lpinfo -m", check=False)[1].lower()
    assert not fresh.path("Library").exists()


def test_from_source(fresh):
    commands = section("Installing")[2:]
    assert commands[0].startswith("apt install g++") and commands[-1] == "service cups restart"
    for command in commands[:-1]:
        run(fresh, command)
    Printing(fresh).start()  # nothing is in charge of services in a root like this
    print_the_first_disc(fresh)
    run(fresh, "lpadmin -x Discs")
    run(fresh, re.search(r"`(xargs rm [^`]*)`", README)[1])
    left = fresh.run("find /usr/local /usr/lib/cups /usr/share/cups /Library /Users -not -type d "
                     r"\( -iname '*zr7700*' -o -iname '*todisc' -o -name 'tq*' \)")[1]
    # What the filter has written itself stays: its log and its ini files.
    assert [line for line in left.splitlines() if not line.endswith((".log", ".ini"))] == []
