"""The packages of other architectures, built on this one: the unit tests of the filter, and a
label printed by CUPS with filter, engine and virtual printer of that architecture, run by qemu.

All that is installed for it goes into a root of its own, which begins as Debian's smallest system:
./package is tried there as on a fresh machine."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import shutil
import struct

import pytest

from cups_in_root import Printing
from debian_root import DebianRoot, bare_root, copy_root
from packages import OUT, REPOSITORY, release_debs, run

# Debian's name: the compiler's name, ELF's number of the machine and the bytes of a pointer, qemu.
MACHINES = {"arm64": ("aarch64-linux-gnu", 183, 8, "aarch64"),
            "armhf": ("arm-linux-gnueabihf", 40, 4, "arm")}
FILTERS = "/usr/lib/cups/filter"
BACKEND = "/usr/lib/cups/backend/zr7700virtual"
# Tests that become another user, of whom the user name space where all others run knows none; one
# that forbids itself memory, which qemu needs for itself; and tests that measure time to hundredths
# of a second, which qemu on a busy machine cannot always keep.
OF_OTHER_USERS = ("RefusesAFileThatItMayNotRead|AFailedWriteBackLeaves|OfAnotherUserIsRefused|"
                  "AFailureLeavesTheOldFile|WhatIsNoReadableFileLeavesTheDefaults")
OF_TIME = "ReaderAtWork"
OF_LITTLE_MEMORY = "WithoutMemoryForTheTableItFails"


def _leave_out_security(sources):
    """A library has one version for both architectures, which a mirror may not have at once."""
    kept = [line for line in sources.read_text().splitlines() if "-security " not in line]
    sources.write_text("\n".join(kept) + "\n")


class Cross:
    def __init__(self, name):
        self.name = name
        self.triplet, self.elf_machine, self.pointer_bytes, self.qemu_name = MACHINES[name]
        self.processor = {"arm64": "aarch64", "armhf": "armv7l"}[name]
        self.qemu = f"/usr/bin/qemu-{self.qemu_name}-static"
        self.out = OUT / f"packages-{name}"
        self.out.mkdir(parents=True, exist_ok=True)
        folder = copy_root(bare_root(OUT / "bare-root"), OUT / f"root-{name}")
        _leave_out_security(folder / "etc/apt/sources.list")
        self.root = DebianRoot(folder, OUT / "archives",
                               [(REPOSITORY, "source"), (self.out, "packages")])
        shutil.copy(self.qemu, self.root.path(self.qemu))

    def close(self):
        self.root.close()
        shutil.rmtree(self.root.folder, ignore_errors=True)


@pytest.fixture(scope="module", params=MACHINES)
def cross(request):
    """A root where the packages have been built for the architecture."""
    made = Cross(request.param)
    try:
        made.root.run(f"/source/package --arch {made.name} --out /packages", seconds=1800)
        yield made
    finally:
        made.close()


def elf_files(folder):
    for path in folder.rglob("*"):
        if path.is_file() and not path.is_symlink():
            head = path.read_bytes()[:20]
            if head[:4] == b"\x7fELF":
                yield path, {1: 4, 2: 8}[head[4]], struct.unpack("<H", head[18:20])[0]


def test_every_program_is_for_that_machine(cross, tmp_path):
    debs = release_debs(cross.out)
    assert len(debs) == 4
    found = []
    for deb in debs:
        assert run("dpkg-deb", "-f", deb, "Architecture").strip() == cross.name
        run("dpkg", "-x", deb, tmp_path / deb.stem)
        found += elf_files(tmp_path / deb.stem)
    # The filter, the backend, two programs, and four libraries of each family at least.
    assert len(found) >= 12
    assert {facts[1:] for facts in found} == {(cross.pointer_bytes, cross.elf_machine)}


def test_units(cross):
    """Compiled with every warning an error, which is what finds a number that has shrunk."""
    libraries = " ".join(f"{name}:{cross.name}" for name in ("libgtest-dev", "libgmock-dev"))
    cross.root.apt(f"install {libraries} python3 python3-pytest")
    cross.root.run(
        f"cmake -S /source -B /unit -DZR7700_TESTS=ON -DZR7700_WARNINGS_AS_ERRORS=ON"
        f" -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR={cross.processor}"
        f" -DCMAKE_C_COMPILER={cross.triplet}-gcc -DCMAKE_CXX_COMPILER={cross.triplet}-g++"
        f" -DPKG_CONFIG_EXECUTABLE=/usr/bin/{cross.triplet}-pkg-config"
        f" -DCMAKE_CROSSCOMPILING_EMULATOR={cross.qemu} && cmake --build /unit -j$(nproc)",
        seconds=3000)
    ctest = "ctest --test-dir /unit -j$(nproc) --label-exclude ."
    qemu = f"qemu-{cross.qemu_name}.conf"
    apart = f"{OF_OTHER_USERS}|{OF_LITTLE_MEMORY}|{OF_TIME}"
    answer = cross.root.run(f"{ctest} -E '{apart}'", seconds=3000, interpreter=qemu)[1]
    assert passed(answer) > 500
    again = f"{ctest.replace('$(nproc)', '1')} -R '{OF_TIME}' --repeat until-pass:5"
    assert passed(cross.root.run(again, seconds=3000, interpreter=qemu)[1]) > 10
    assert passed(cross.root.run(f"{ctest} -R '{OF_OTHER_USERS}'")[1]) == 5


def passed(answer):
    assert "100% tests passed" in answer
    return int(answer.rsplit("out of ", 1)[1].split()[0])


def run_by_qemu(cross, program):
    """Puts a script in the program's place that runs it by qemu."""
    path = cross.root.path(program)
    path.rename(f"{path}.{cross.name}")
    path.write_text(f'#!/bin/sh\nexec {cross.qemu} {program}.{cross.name} "$@"\n')
    path.chmod(0o755)


def test_a_label(cross):
    """The files are laid out by hand, as dpkg would want all of CUPS for that machine too."""
    libraries = ("libcups2 libexif12 libjpeg62-turbo liblcms2-2 libplist3 libpng16-16 libstdc++6 "
                 "libtiff6 zlib1g")
    cross.root.apt("install cups cups-filters " +
                   " ".join(f"{name}:{cross.name}" for name in libraries.split()))
    for deb in release_debs(cross.out):
        run("dpkg", "-x", deb, cross.root.folder)
    cross.root.run("/usr/share/zr7700/fixed-paths create")
    ours = [f"{FILTERS}/{path.name}" for path, _, machine in elf_files(cross.root.path(FILTERS))
            if machine == cross.elf_machine]
    assert f"{FILTERS}/rastertoZR7700" in ours and f"{FILTERS}/rastertodisc" in ours
    for program in (*ours, BACKEND):
        run_by_qemu(cross, program)
    printing = Printing(cross.root)
    printing.start()
    printing.add_queue()
    printing.check_disc(printing.print())
    printing.stop()
