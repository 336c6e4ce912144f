"""What an administrator meets when something of his own stands at the filter's fixed paths, or when
the machine is not in order: one sentence a cause, nothing of his lost, a package that is in a state
that dpkg knows."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import pytest

from cups_in_root import Printing

DRIVER = "printer-driver-zr7700"
TESSARY = "/Library/Printers/Tessary"


def sentences(answer):
    """What the package itself said."""
    return [line for line in answer.splitlines() if line.startswith(f"{DRIVER}: ")]


def install(root, **more):
    return root.apt(f"install {DRIVER} zr7700-virtual-printer", **more)


def is_installed(root):
    return root.run(f"dpkg-query -W -f '${{db:Status-Status}}' {DRIVER}")[1] == "installed"


def remove_and_purge(root):
    return (sentences(root.apt(f"remove {DRIVER}")[1]), sentences(root.apt(f"purge {DRIVER}")[1]))


def prints(root):
    printing = Printing(root)
    printing.start()
    printing.add_queue()
    printing.check_disc(printing.print())
    printing.stop()


def test_a_file_in_the_place_of_a_folder(root):
    root.run(f"mkdir -p /Library/Printers && echo mine > {TESSARY}")
    said, = sentences(install(root)[1])
    assert said == (
        f"{DRIVER}: {TESSARY} is not a folder and stays as it is; nothing can be printed until you "
        f"move it away and run: dpkg-reconfigure {DRIVER}")
    assert is_installed(root) and root.path(TESSARY).read_text() == "mine\n"
    root.run(f"mv {TESSARY} /root/mine")
    assert sentences(root.run(f"dpkg-reconfigure {DRIVER}")[1]) == []
    prints(root)
    assert remove_and_purge(root) == ([], [])
    # The folders were the administrator's before.
    assert root.path("/Library/Printers").is_dir() and not root.path(TESSARY).exists()
    assert not root.path("/Users").exists()


def test_another_engine_in_the_place_of_the_link(root):
    """It is a folder of the printer's maker, say: kept, through removal and purge."""
    engine = f"{TESSARY}/Frameworks/tqheflib.framework/tqheflib"
    root.run(f"mkdir -p {engine.rsplit('/', 1)[0]} && echo closed > {engine}")
    said, = sentences(install(root)[1])
    assert said.startswith(f"{DRIVER}: {TESSARY}/Frameworks is in the place of a link to "
                           "/usr/lib/zr7700/engine; it stays, and the driver uses it")
    assert is_installed(root) and root.path(engine).read_text() == "closed\n"
    assert remove_and_purge(root) == ([], [])
    assert root.path(engine).read_text() == "closed\n"
    assert [path.name for path in root.path(TESSARY).iterdir()] == ["Frameworks"]


def test_files_of_the_administrator_stay(root):
    assert sentences(install(root)[1]) == []
    shared = "/Users/Shared/Tessary/ZR7700"
    kept = {f"{TESSARY}/notes": TESSARY, f"{shared}/plan": shared,
            "/var/log/zr7700/old.log": "/var/log/zr7700", "/var/tmp/tessary/x": "/var/tmp/tessary",
            "/var/lib/zr7700/Frameworks/x.ini": "/var/lib/zr7700/Frameworks"}
    for path in kept:
        root.path(path).write_text("mine\n")
    removed, purged = remove_and_purge(root)
    assert sorted(removed) == [f"{DRIVER}: {folder} holds files that are not the package's; it "
                               f"stays with them." for folder in sorted(kept.values())[:2]]
    for folder in ("/var/log/zr7700", "/var/lib/zr7700/Frameworks", "/var/tmp/tessary"):
        assert f"{DRIVER}: {folder} holds files that are not the driver's; it stays with them." \
            in purged
    assert all(root.path(path).read_text() == "mine\n" for path in kept)
    left = sorted(path.name for path in root.path(TESSARY).iterdir())
    assert left == ["notes"]


def test_a_trap_in_a_folder_that_everybody_may_write_to(root):
    """Another user's folder is not made the filter's, and nothing is changed through a link."""
    root.run("install -d -o games -g games -m 700 /var/tmp/tessary; ln -s /etc /var/log/zr7700")
    before = root.path("etc").stat()
    said = sentences(install(root)[1])
    assert [line.split(" does not")[0] for line in said] == [
        f"{DRIVER}: /var/log/zr7700", f"{DRIVER}: /var/tmp/tessary"]
    facts = root.path("etc").stat()
    assert (facts.st_uid, facts.st_mode) == (before.st_uid, before.st_mode)
    assert root.path("var/tmp/tessary").owner() == "games"
    remove_and_purge(root)
    assert root.path("etc/passwd").exists() and root.path("var/tmp/tessary").owner() == "games"


def test_no_user_lp(root):
    root.run("sed -i '/^lp:/d' /etc/passwd")
    said = sentences(install(root)[1])
    assert is_installed(root)
    assert len(said) == 3 and all("as there is no user lp or group lp" in line for line in said)
    assert remove_and_purge(root) == ([], [])


@pytest.mark.parametrize("place", ["/Library", "/var/lib/zr7700"])
def test_a_full_disk(root, place):
    """The package is not configured, and is by the command that the sentence names."""
    root.run(f"mkdir -p {place} && mount -t tmpfs -o nr_inodes=1,size=4k none {place}")
    status, answer = install(root, check=False)
    said, = sentences(answer)
    assert status != 0 and said.endswith(
        "could not be made (No space left on device); see to that, then run: dpkg --configure -a")
    assert not is_installed(root)
    root.run(f"umount {place}")
    assert sentences(root.run("dpkg --configure -a")[1]) == []
    assert is_installed(root)
    prints(root)


def test_the_same_as_systemd_makes(root):
    """What systemd-tmpfiles makes of the table at boot is what the installation has made."""
    def made():
        return root.run(f"find {places} -printf '%p %y %m %u %g %l\\n' | sort")[1]
    places = "/Library /Users /var/log/zr7700 /var/lib/zr7700/Frameworks /var/tmp/tessary"
    install(root)
    by_package = made()
    assert by_package.count("\n") == 19
    root.run(f"rm -r {places}")
    root.apt("install systemd-standalone-tmpfiles")
    root.run("systemd-tmpfiles --create /usr/lib/tmpfiles.d/printer-driver-zr7700.conf")
    assert made() == by_package
