"""A machine's life with the packages: installed, printed with, upgraded while the queue is in use,
removed and purged, after which nothing is left. The transcript goes to the build folder."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re

import pytest

from cups_in_root import DEVICE_ID, MODEL, Printing, wait_for
from debian_root import snapshot
from packages import NAMES, OUT, next_version, repository
from steps import DRIVER, install, print_a_label

HIGHER = "9.0"
# What apt, dpkg and CUPS keep of what they have done, and the test's own folders.
LEFT_OUT = {"/proc", "/dev", "/sys", "/tmp", "/repository", "/srv", "/run/cups", "/var/cache/apt",
            "/var/lib/apt", "/var/log/apt", "/var/log/dpkg.log", "/var/lib/dpkg/status",
            "/var/lib/dpkg/status-old", "/var/lib/dpkg/available", "/etc/cups", "/var/log/cups",
            "/var/log/alternatives.log", "/var/spool/cups", "/var/cache/cups",
            "/var/cache/ldconfig",
            "/etc/ld.so.cache", "/var/lib/dpkg/lock", "/var/lib/dpkg/triggers",
            "/var/cache/debconf", "/root", "/etc/printcap", "/var/lib/dpkg/updates"}


@pytest.fixture
def printing(root):
    return Printing(root)


def write_transcript(root):
    (OUT.parent / "package-transcript.txt").write_text("\n".join(root.said) + "\n")


def find_the_model(root):
    assert f"{MODEL} Tessary ZR7700" in root.tell("lpinfo -m", keep="Tessary")[1]
    by_id = root.tell(f"lpinfo --device-id '{DEVICE_ID}' -m")[1]
    assert by_id.startswith(f"{MODEL} Tessary ZR7700")
    assert set(by_id.splitlines()[1:]) <= {"everywhere IPP Everywhere"}  # which CUPS adds to all
    assert "zr7700virtual" in root.run("lpinfo -v")[1]


def settings_reach_the_filter(root, printing):
    """The administrator's file in /etc is the one that the filter reads: the picture moves."""
    settings = root.path("etc/zr7700/ZR7700Config.plist")
    offset = "<key>TopMarginOffset</key> <integer>20</integer>"
    text = settings.read_text().replace("<dict>\n</dict>", f"<dict>\n{offset}\n</dict>")
    settings.write_text(text)
    boxes = [printing.report(job)["discs"][0]["bounding_box"] for job in (1, printing.print())]
    assert boxes[1]["top"] - boxes[0]["top"] == 20
    root.said.append("(TopMarginOffset in /etc/zr7700/ZR7700Config.plist moves the picture)")


def upgrade_while_printing(root, printing, debs, tmp_path):
    root.run("lpadmin -p discs -o PrintQuality=Quality3")
    root.tell("lpadmin -p discs -v 'zr7700virtual:/srv/discs?discs=0&control=/srv/discs/control'",
              keep="zr7700")
    job = printing.print()
    wait_for("a job that waits for a disc", lambda: "bin is empty" in printing.state())
    newer = [next_version(deb, tmp_path, HIGHER) for deb in debs]
    repository(OUT / "repository", [*debs, *newer])
    root.run("apt-get update")
    said = root.apt(f"install --only-upgrade {' '.join(NAMES)}", told=True)[1]
    assert f"Setting up {DRIVER} ({HIGHER})" in said and "PPD for printer discs updated" in said
    # CUPS begins the job again with the new PPD.
    printing.order("bin 5")
    printing.check_disc(job)
    ppd = root.path("etc/cups/ppd/discs.ppd").read_text()
    assert "Best of all" in ppd and "*NickName: \"Tessary ZR7700, 9.0\"" in ppd
    assert "*DefaultPrintQuality: Quality3" in ppd
    assert "TopMarginOffset" in root.path("etc/zr7700/ZR7700Config.plist").read_text()
    root.tell("lpadmin -p discs -v zr7700virtual:/srv/discs", keep="zr7700")
    printing.check_disc(printing.print())


def remove(root, printing):
    root.apt(f"remove {DRIVER}", told=True)
    for place in ("/Library", "/Users", "/usr/share/zr7700/fixed-paths"):
        assert not root.path(place).exists(), place
    job = printing.print()
    cause = wait_for("a cause in the queue's message", lambda: re.search(
        r".*(rastertoZR7700|[Ff]ilter).*", printing.state()))
    root.said += [f"# lpstat -l -p discs  (job {job})", cause[0].strip()]


def purge(root, printing):
    root.run("cancel -a -x; lpadmin -x discs")
    root.apt(f"purge {' '.join(NAMES)}", told=True)
    printing.stop()
    assert "zr7700" not in root.run("dpkg-query -W")[1]


def test_life(root, printing, debs, tmp_path):
    printing.start()
    printing.stop()
    before = snapshot(root.folder, LEFT_OUT)
    try:
        install(root, printing)
        find_the_model(root)
        print_a_label(root, printing)
        settings_reach_the_filter(root, printing)
        upgrade_while_printing(root, printing, debs, tmp_path)
        remove(root, printing)
        purge(root, printing)
    finally:
        write_transcript(root)
    after = snapshot(root.folder, LEFT_OUT)
    assert {path for path in before.keys() | after.keys()
            if before.get(path) != after.get(path)} == set()
