"""How the macOS package is made: with stand-ins for a Mac's programs, and the files that are really
built and installed here."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import gzip
import os
import re
import shutil
import subprocess
import xml.etree.ElementTree as ElementTree

import pytest

from conftest import TOP

BUILD = os.environ["ZR7700_BUILD"]
CMAKE = shutil.which("cmake")
VERSION = re.search(r"VERSION (\d+\.\d+\.\d+)", (TOP / "CMakeLists.txt").read_text())[1]
SCRIPTS = ["package", "scripts/postinstall", "support/make-folders", "support/uninstall"]
ALLOWED = ("Library/Printers/", "Library/LaunchDaemons/",
           "Library/Application Support/Tessary/ZR7700/", "usr/libexec/cups/", "usr/local/",
           "private/etc/cups/")

# Installs this machine's build, in the places that CMake was told of on the Mac. The open engine
# and its tools belong to the companions, which a Mac does not build.
INSTALL = f"""
if [ "$1" = --install ]; then
  "{CMAKE}" --install "{BUILD}" --prefix /usr/local >/dev/null || exit 1
  mkdir -p "$DESTDIR/usr/libexec"
  mv "$DESTDIR/usr/lib/cups" "$DESTDIR/usr/libexec/"
  rm -rf "$DESTDIR/Library/Printers/Tessary/Frameworks" "$DESTDIR/usr/libexec/cups/backend"
  find "$DESTDIR/Users" -type f -delete
  eval "${{MORE:-}}"
fi"""
SYSTEM_LIBRARIES = r"""
printf '%s:\n\t/usr/lib/libcups.2.dylib (compatibility version 2.0.0)\n' "$2"
printf '\t/System/Library/Frameworks/Foundation.framework/Versions/C/Foundation (x)\n'"""


@pytest.fixture
def build_machine(mac, tmp_path):
    """A Mac that keeps what the package is made of in the folder kept."""
    mac.kept, mac.out = tmp_path / "kept", tmp_path / "out"
    mac.program("uname", "echo Darwin")
    mac.program("cmake", INSTALL)
    mac.program("otool", SYSTEM_LIBRARIES)
    mac.program("plutil")
    for name in ("ppdc", "msgcat"):
        mac.program(name)
    mac.program("pkgbuild", f'cp -a "$2" "{mac.kept}"; touch "${{!#}}"')
    mac.program("productbuild", f'cp "$2" "{tmp_path}/distribution.xml"; cp -a "$6" '
                                f'"{tmp_path}/resources"; touch "${{!#}}"')
    return mac


def package(mac, *words, **environment):
    return mac.run(TOP / "macos/package", "--build", mac.root / "build", "--out", mac.out, *words,
                   **environment)


@pytest.mark.parametrize("script", SCRIPTS)
def test_shellcheck_finds_nothing(script):
    checked = subprocess.run(["shellcheck", "-x", TOP / "macos" / script], cwd=TOP,
                             capture_output=True, text=True, check=False)
    assert checked.stdout == "" and checked.returncode == 0


@pytest.mark.parametrize("script", SCRIPTS)
def test_scripts_can_be_started(script):
    assert os.access(TOP / "macos" / script, os.X_OK)


def test_it_is_built_for_every_mac(build_machine):
    assert package(build_machine).returncode == 0
    configure, build, install = build_machine.calls("cmake")
    for word in ("-DZR7700_PLATFORM=foundation", "-DZR7700_PPD=ON", "-DZR7700_COMPANIONS=OFF",
                 "-DCMAKE_OSX_ARCHITECTURES=arm64;x86_64", "-DCMAKE_BUILD_TYPE=Release",
                 "-DZR7700_CUPS_SERVERBIN=/usr/libexec/cups", "-DCMAKE_INSTALL_PREFIX=/usr/local"):
        assert f"[{word}]" in configure
    assert build == f"cmake [--build] [{build_machine.root}/build]"
    assert install == f"cmake [--install] [{build_machine.root}/build]"


def test_everything_is_where_a_mac_looks_for_it(build_machine):
    done = package(build_machine)
    assert done.returncode == 0, done.stderr
    kept = build_machine.kept
    files = {str(path.relative_to(kept)) for path in kept.rglob("*") if not path.is_dir()}
    assert {"usr/libexec/cups/filter/rastertoZR7700",
            "Library/LaunchDaemons/com.tessary.zr7700.folders.plist",
            "Library/Application Support/Tessary/ZR7700/make-folders",
            "Library/Application Support/Tessary/ZR7700/uninstall",
            "Library/Printers/PPDs/Contents/Resources/ZR7700.ppd.gz",
            "usr/local/share/man/man8/rastertoZR7700.8"} <= files
    assert all(name.startswith(ALLOWED) for name in files)
    assert not [name for name in files if name.endswith((".ppd", ".types.in")) or "/mime/" in name]
    # No folder without files: its owner and mode would be forced on the system's.
    assert all(any(path.iterdir()) for path in kept.rglob("*") if path.is_dir())
    with gzip.open(kept / "Library/Printers/PPDs/Contents/Resources/ZR7700.ppd.gz") as packed, \
            open(f"{BUILD}/ppd/zr7700.ppd", "rb") as plain:
        assert packed.read() == plain.read()


def test_data_types_go_beside_the_configuration_of_cups(build_machine):
    more = ('mime="$DESTDIR/usr/share/cups/mime"; mkdir -p "$mime"; echo a >"$mime/a.types"; '
            'echo b >"$mime/b.convs"')
    done = package(build_machine, MORE=more)
    assert done.returncode == 0, done.stderr
    assert (build_machine.kept / "private/etc/cups/a.types").read_text() == "a\n"
    assert (build_machine.kept / "private/etc/cups/b.convs").read_text() == "b\n"
    assert not (build_machine.kept / "usr/share").exists()


def test_package_and_product_have_the_version(build_machine, tmp_path):
    done = package(build_machine)
    made = f"{build_machine.out}/zr7700-{VERSION}.pkg"
    assert done.stdout.splitlines()[-1] == f"The package is {made}"
    assert build_machine.calls("productbuild")[0].endswith(f" [{made}]")
    built, = build_machine.calls("pkgbuild")
    assert f"[--scripts] [{TOP}/macos/scripts] [--identifier] [com.tessary.zr7700]" in built
    assert f"[--version] [{VERSION}] [--ownership] [recommended]" in built
    shown = ElementTree.parse(tmp_path / "distribution.xml").getroot()
    assert shown.find("pkg-ref[@version]").attrib == {"id": "com.tessary.zr7700",
                                                      "version": VERSION}
    assert shown.find("pkg-ref[@version]").text == "zr7700.pkg"
    assert {line.get("choice") for line in shown.iter("line")} == {
        choice.get("id") for choice in shown.iter("choice")}
    assert shown.find("options").get("hostArchitectures") == "arm64,x86_64"
    licence = shown.find("license").get("file")
    assert (tmp_path / "resources" / licence).read_text() == (TOP / "LICENSE").read_text()


@pytest.mark.parametrize("words,signed", [((), ""), (("--sign", "Anna Example (12)"),
                                                     "[--sign] [Anna Example (12)]")])
def test_it_is_signed_when_an_identity_is_named(build_machine, words, signed):
    assert package(build_machine, *words).returncode == 0
    product, = build_machine.calls("productbuild")
    assert signed in product and ("--sign" in product) == bool(signed)


def test_elsewhere_than_on_a_mac_it_says_so(mac):
    done = mac.run(TOP / "macos/package")
    assert done.returncode == 1
    assert done.stderr == "package: An installer package can only be made on a Mac.\n"


def test_a_missing_program_is_named(build_machine):
    (build_machine.programs / "pkgbuild").unlink()
    done = package(build_machine)
    assert done.returncode == 1 and "The program pkgbuild is missing" in done.stderr
    assert build_machine.calls("cmake") == []


@pytest.mark.parametrize("words,told", [
    (["--sign"], "--sign needs a value; see --help."),
    (["--sing", "x"], 'There is no argument "--sing"; see --help.')])
def test_wrong_arguments_are_told(build_machine, words, told):
    done = package(build_machine, *words)
    assert done.returncode == 1 and done.stderr == f"package: {told}\n"
    assert build_machine.calls() == []


def test_a_file_in_a_strange_place_stops_it(build_machine):
    done = package(build_machine, MORE='mkdir -p "$DESTDIR/System"; touch "$DESTDIR/System/x"')
    assert done.returncode == 1 and "/System/x would be installed where" in done.stderr
    assert build_machine.calls("pkgbuild") == []


def test_a_library_of_the_building_machine_stops_it(build_machine):
    build_machine.program("otool", SYSTEM_LIBRARIES +
                          "\nprintf '\\t/opt/local/lib/libother.2.dylib (x)\\n'")
    done = package(build_machine)
    assert done.returncode == 1
    assert "needs /opt/local/lib/libother.2.dylib, which other Macs lack" in done.stderr
    assert build_machine.calls("pkgbuild") == []


def test_a_failed_build_makes_no_package(build_machine):
    build_machine.program("cmake", "[ $1 != --build ]")
    assert package(build_machine).returncode != 0
    assert build_machine.calls("pkgbuild", "productbuild") == []
