"""Debian 12 in a folder: made by debootstrap from the machine's own mirror, entered with name
spaces of its own, so that nothing that runs there outlives it or is seen outside."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import shutil
import subprocess
import time
from pathlib import Path

SUITE = "bookworm"
_KEYRING = "/usr/share/keyrings/debian-archive-keyring.gpg"
_ENVIRONMENT = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                "TERM": "dumb"}


def _stanzas(text):
    """The entries of a deb822 file as dictionaries; lines that go on are not needed here."""
    for stanza in text.split("\n\n"):
        fields = [line.split(":", 1) for line in stanza.splitlines()
                  if ":" in line and not line.startswith(("#", " "))]
        yield {name.strip(): value.strip() for name, value in fields}


def apt_sources():
    """(address, suite) of every Debian suite that the machine's apt knows."""
    found = []
    folder = Path("/etc/apt")
    for path in [folder / "sources.list", *sorted(folder.glob("sources.list.d/*"))]:
        text = path.read_text() if path.is_file() else ""
        if path.suffix == ".sources":
            for entry in _stanzas(text):
                for suite in entry.get("Suites", "").split():
                    found += [(address, suite) for address in entry["URIs"].split()]
        else:
            lines = [line.split("]")[-1].replace("deb ", "", 1).split()
                     for line in text.splitlines() if line.startswith("deb ")]
            found += [(words[0], words[1]) for words in lines]
    return [source for source in found if source[1].split("-")[0] == SUITE]


def _run(*words, **more):
    done = subprocess.run(list(map(str, words)), capture_output=True, text=True, check=False, **more)
    if done.returncode != 0:
        raise RuntimeError(f"{words}: {done.stdout[-4000:]}{done.stderr[-4000:]}")


def bare_root(folder):
    """A folder with Debian's smallest system, made once."""
    if (folder / "etc/made").exists():
        return folder
    shutil.rmtree(folder, ignore_errors=True)
    sources = apt_sources()
    if not sources:
        raise RuntimeError(f"The machine's apt knows no mirror of Debian {SUITE}.")
    address = next(address for address, suite in sources if suite == SUITE)
    _run("debootstrap", "--variant=minbase", SUITE, folder, address)
    (folder / "etc/apt/sources.list").write_text("".join(
        f"deb [signed-by={_KEYRING}] {address} {suite} main\n" for address, suite in sources))
    policy = folder / "usr/sbin/policy-rc.d"
    policy.write_text("#!/bin/sh\nexit 101\n")
    policy.chmod(0o755)
    (folder / "etc/made").touch()
    return folder


def _link_new_files(source, folder):
    """Each root has a folder of its own for downloads, which apt locks."""
    for parent in (source, folder):
        parent.mkdir(parents=True, exist_ok=True)
    for file in source.glob("*.deb"):
        if not (folder / file.name).exists():
            os.link(file, folder / file.name)


class DebianRoot:
    """A root that runs until close(); everything that is started in it ends with it."""

    def __init__(self, folder, archives, mounts=()):
        """archives keeps apt's downloads; mounts are (outside, inside) folders."""
        self.folder = Path(folder)
        self._archives = archives
        self.said = []  # what was done and seen, as a person would type and read it
        shutil.copyfile("/etc/resolv.conf", self.folder / "etc/resolv.conf")
        _link_new_files(archives, self.folder / "var/cache/apt/archives")
        bound = [("/dev", "dev"), *mounts]
        steps = [f"mount -t proc proc '{self.folder}/proc'"]
        for outside, inside in bound:
            (self.folder / inside).mkdir(parents=True, exist_ok=True)
            steps.append(f"mount --rbind '{outside}' '{self.folder}/{inside}'")
        steps.append(f"exec chroot '{self.folder}' sleep infinity")
        self._keeper = subprocess.Popen(
            ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--propagation", "private",
             "sh", "-e", "-c", "\n".join(steps)], stdin=subprocess.DEVNULL)
        self._inside = self._wait_for_inside()

    def _wait_for_inside(self):
        """The number of the process that sleeps in the root."""
        children = Path(f"/proc/{self._keeper.pid}/task/{self._keeper.pid}/children")
        for _ in range(200):
            first = children.read_text().split()
            if first and Path(f"/proc/{first[0]}/comm").read_text().strip() == "sleep":
                return first[0]
            if self._keeper.poll() is not None:
                break
            time.sleep(0.05)
        raise RuntimeError("The tests of the packages need root and mount name spaces.")

    def close(self):
        self._keeper.kill()
        self._keeper.wait()
        _link_new_files(self.folder / "var/cache/apt/archives", self._archives)

    def run(self, command, check=True, seconds=600, interpreter=None):
        """Runs a shell command; its exit status and everything that it said. With the name of a
        file of binfmt.d the kernel runs other machines' programs by that interpreter, even those
        that start themselves again: in a user name space, which has a register of its own."""
        words = ["nsenter", "--target", self._inside, "--mount", "--pid"]
        if interpreter is None:
            words += ["--root", "--wdns=/", "sh", "-c", command]
        else:
            register = f"{self.folder}/proc/sys/fs/binfmt_misc"
            words += ["unshare", "--user", "--map-root-user", "--mount", "sh", "-e", "-c",
                      f"mount -t binfmt_misc none '{register}'\n"
                      f"line=$(cat /usr/lib/binfmt.d/{interpreter})\n"
                      f"printf %s \"$line\" >'{register}/register'\n"
                      f"exec chroot '{self.folder}' sh -c \"$1\"", "sh", command]
        done = subprocess.run(words, stdin=subprocess.DEVNULL, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, check=False, env=_ENVIRONMENT,
                              timeout=seconds)
        if check and done.returncode != 0:
            raise AssertionError(f"{command}: {done.stdout[-6000:]}")
        return done.returncode, done.stdout

    def tell(self, command, keep="", check=True):
        """Runs a command for the transcript, which keeps the lines of its answer with that text."""
        status, answer = self.run(command, check)
        kept = [line for line in answer.splitlines() if keep in line]
        self.said += [f"# {command}", *kept]
        return status, answer

    def apt(self, command, check=True, told=False):
        """apt-get, as an administrator calls it who wants no questions to wait for an answer."""
        line = f"apt-get -y --no-install-recommends {command}"
        if told:
            self.said.append(f"# {line.replace(' --no-install-recommends', '')}")
        status, answer = self.run(line, check)
        if told:
            self.said += [line for line in answer.splitlines() if line.startswith(
                ("The following", "  ", "Setting up", "Removing", "Purging", "printer-driver",
                 "PPD for", "Updating PPD")) and "zr7700" in line.lower()]
        return status, answer

    def path(self, *inside):
        """Where a path of the root lies outside."""
        return self.folder.joinpath(*(part.lstrip("/") for part in inside))


def copy_root(source, folder):
    """A root of its own; nothing may run in the source."""
    shutil.rmtree(folder, ignore_errors=True)
    _run("cp", "-a", "--reflink=auto", source, folder)
    return folder


def snapshot(folder, left_out):
    """Every path below the folder, outside of left_out, with what it is: kind, rights, owner and
    content."""
    found = {}
    for parent, folders, files in os.walk(folder):
        inside = "/" + os.path.relpath(parent, folder) if parent != str(folder) else ""
        folders[:] = [name for name in folders if f"{inside}/{name}" not in left_out]
        for name in folders + files:
            path = Path(parent, name)
            facts = path.lstat()
            content = ""
            if path.is_symlink():
                content = os.readlink(path)
            elif path.is_file():
                content = hash(path.read_bytes())
            if f"{inside}/{name}" not in left_out:
                found[f"{inside}/{name}"] = (facts.st_mode, facts.st_uid, facts.st_gid, content)
    return found
