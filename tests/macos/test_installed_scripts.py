"""The scripts that run on the Mac itself: when the package is installed, at every start of the
system, and when it is removed."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import pathlib
import plistlib
import shutil
import stat

import pytest

from conftest import TOP, USER

SUPPORT = "Library/Application Support/Tessary/ZR7700"
RESOURCES = "Library/Printers/Tessary/ZR7700.bundle/Contents/Resources"
PLIST = "com.tessary.zr7700.folders.plist"
FOLDERS = {"private/var/tmp/tessary": 0o1775, "Users/Shared/Tessary": 0o755,
           "Users/Shared/Tessary/ZR7700": 0o755, "Users/Shared/Tessary/ZR7700/Frameworks": 0o755}
OWNERS = {"private/var/tmp/tessary": f"{USER}:_lpadmin", "Users/Shared/Tessary": "0:0",
          "Users/Shared/Tessary/ZR7700": "0:0",
          "Users/Shared/Tessary/ZR7700/Frameworks": f"{USER}:_lp"}


@pytest.fixture
def installed(mac):
    """A Mac on which the Installer has just put the files in their places, with two queues."""
    (mac.root / SUPPORT).mkdir(parents=True)
    (mac.root / "Library/LaunchDaemons").mkdir()
    for name in ("make-folders", "uninstall"):
        shutil.copy(TOP / "macos/support" / name, mac.root / SUPPORT)
    shutil.copy(TOP / "macos/support" / PLIST, mac.root / "Library/LaunchDaemons")
    queues = mac.root / "private/etc/cups/ppd"
    queues.mkdir(parents=True)
    (queues / "Discs.ppd").write_text('*PPD-Adobe: "4.3"\n*ModelName: "Tessary ZR7700"\n')
    (queues / "Paper.ppd").write_text('*PPD-Adobe: "4.3"\n*ModelName: "Other 1"\n')
    for name in ("chown", "launchctl", "lpadmin"):
        mac.program(name)
    return mac


def postinstall(mac, volume="/"):
    return mac.run(TOP / "macos/scripts/postinstall", "/tmp/zr7700.pkg", "/", volume, "/")


def check_folders(mac):
    owners = {}
    for call in mac.calls("chown"):
        _, link, owner, path = (word.strip("[]") for word in call.split(" "))
        assert link == "-h"
        owners[os.path.relpath(path, mac.root)] = owner
    assert owners == OWNERS
    for name, mode in FOLDERS.items():
        facts = (mac.root / name).lstat()
        assert stat.S_ISDIR(facts.st_mode) and stat.S_IMODE(facts.st_mode) == mode, name


def test_folders_are_made_with_their_owners(installed):
    done = postinstall(installed)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
    check_folders(installed)
    assert (installed.root / "Library/Caches").is_dir()


def test_daemon_is_started_and_cups_told(installed):
    assert postinstall(installed).returncode == 0
    assert installed.calls("launchctl") == [
        "launchctl [bootout] [system/com.tessary.zr7700.folders]",
        f"launchctl [bootstrap] [system] [{installed.root}/Library/LaunchDaemons/{PLIST}]",
        "launchctl [kill] [HUP] [system/org.cups.cupsd]"]


def test_only_our_queues_get_the_new_ppd(installed):
    assert postinstall(installed).returncode == 0
    assert installed.calls("lpadmin") == [
        f"lpadmin [-p] [Discs] [-P] [{installed.root}/Library/Printers/PPDs/Contents/Resources/"
        "ZR7700.ppd.gz]"]


def test_a_queue_that_cannot_be_reached_does_not_fail_the_installation(installed):
    installed.program("lpadmin", "exit 1")
    installed.program("launchctl", "[ $1 = bootstrap ]")
    done = postinstall(installed)
    assert done.returncode == 0
    assert done.stdout == "The queue Discs keeps its old PPD.\n"


def test_a_daemon_that_does_not_start_fails_the_installation(installed):
    installed.program("launchctl", "[ $1 != bootstrap ]")
    assert postinstall(installed).returncode != 0


def test_another_volume_gets_folders_only(installed):
    """Its programs do not run now, and the running system is not to be told of them."""
    done = installed.run(TOP / "macos/scripts/postinstall", "/tmp/zr7700.pkg", "/",
                         f"{installed.root}/", "/", root=False)
    assert done.returncode == 0, done.stderr
    check_folders(installed)
    assert installed.calls("launchctl", "lpadmin") == []


def test_folders_that_are_there_keep_what_is_in_them(installed):
    assert postinstall(installed).returncode == 0
    kept = installed.root / "Users/Shared/Tessary/ZR7700/Frameworks/tqgrcfg.ini"
    kept.write_text("[Configuration]\n")
    (installed.root / "private/var/tmp/tessary").chmod(0o700)
    installed.calls_file.unlink()
    assert postinstall(installed).returncode == 0
    check_folders(installed)
    assert kept.read_text() == "[Configuration]\n"


@pytest.mark.parametrize("planted", ["link", "file"])
def test_what_others_put_in_the_way_is_moved_aside(installed, planted):
    """/var/tmp is everybody's: root must not give away what a link there points to."""
    place = installed.root / "private/var/tmp/tessary"
    place.parent.mkdir(parents=True)
    victim = installed.root / "victim"
    victim.mkdir(mode=0o700)
    if planted == "link":
        place.symlink_to(victim)
    else:
        place.write_text("mine")
    assert postinstall(installed).returncode == 0
    check_folders(installed)
    aside, = place.parent.glob("tessary.put-aside.*")
    assert aside.is_symlink() == (planted == "link")
    assert stat.S_IMODE(victim.stat().st_mode) == 0o700


def test_launchd_runs_what_is_installed():
    with open(TOP / "macos/support" / PLIST, "rb") as file:
        daemon = plistlib.load(file)
    assert daemon == {"Label": "com.tessary.zr7700.folders", "RunAtLoad": True,
                      "ProgramArguments": [f"/{SUPPORT}/make-folders"]}


def files_below(root):
    return sorted(str(path.relative_to(root)) for path in root.rglob("*") if not path.is_dir())


@pytest.fixture
def in_use(installed):
    """Installed, printed with, and known to the system's receipts."""
    assert postinstall(installed).returncode == 0
    names = [f"{SUPPORT}/make-folders", f"{SUPPORT}/uninstall", f"Library/LaunchDaemons/{PLIST}",
             "usr/libexec/cups/filter/rastertoZR7700",
             f"{RESOURCES}/de.lproj/Localizable.strings"]
    others = ["usr/libexec/cups/filter/rastertoother", "private/var/tmp/other",
              "Library/Printers/Tessary/Frameworks/tqgrhpec.framework/tqgrhpec",
              "Users/Shared/Tessary/ZR7700/Frameworks/tqgrcfg.ini"]
    leavings = ["Library/Caches/ZR7700Filter.log",
                "private/var/tmp/tessary/com.tessary.zr77002.socket"]
    for name in (*names, *others, *leavings):
        path = installed.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.exists() or path.write_text(name)
    folders = {str(parent) for name in names for parent in pathlib.Path(name).parents
               if str(parent) != "."}
    installed.program("pkgutil", f"""case "$1" in
--only-files) printf '%s\\n' {' '.join(f"'{name}'" for name in names)} ;;
--only-dirs) printf '%s\\n' {' '.join(f"'{name}'" for name in sorted(folders))} ;;
esac""")
    return installed, others


def test_uninstall_removes_ours_and_nothing_else(in_use):
    mac, others = in_use
    done = mac.run(mac.root / SUPPORT / "uninstall")
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout == "The queue Discs can no longer print; remove it with: lpadmin -x Discs\n"
    queues = ["private/etc/cups/ppd/Discs.ppd", "private/etc/cups/ppd/Paper.ppd"]
    assert files_below(mac.root) == sorted([*others, *queues])
    for folder in ("private/var/tmp/tessary", "Library/Application Support/Tessary",
                   "Library/Printers/Tessary/ZR7700.bundle"):
        assert not (mac.root / folder).exists()
    assert (mac.root / "Library/LaunchDaemons").is_dir()
    assert mac.calls("pkgutil")[-1] == "pkgutil [--forget] [com.tessary.zr7700]"
    assert "launchctl [bootout] [system/com.tessary.zr7700.folders]" in mac.calls("launchctl")[3:]


def test_uninstall_without_a_receipt_touches_nothing(in_use):
    mac, _ = in_use
    before = files_below(mac.root)
    mac.program("pkgutil", "exit 1")
    done = mac.run(mac.root / SUPPORT / "uninstall")
    assert done.returncode == 1
    assert done.stderr == "uninstall: The package com.tessary.zr7700 is not installed.\n"
    assert files_below(mac.root) == before
