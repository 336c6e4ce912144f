"""What the profile of Debian's cupsd means for the filter and the backend. Where the kernel enforces
nothing, the profile itself is what can be looked at."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re

PROFILE = "etc/apparmor.d/usr.sbin.cupsd"


def test_filter_and_backend_run_without_limits(root):
    """Both run in the part for other makers' programs, which may open and run every file, make
    sockets and shared memory: the fixed paths, the engine and the log are no matter there."""
    root.apt("install apparmor printer-driver-zr7700 zr7700-virtual-printer")
    root.run(f"apparmor_parser --skip-kernel-load --skip-cache /{PROFILE}")
    profile = root.path(PROFILE).read_text()
    assert re.search(r"^ +/usr/lib/cups/filter/\*\* Cxr -> third_party,$", profile, re.M)
    assert re.search(r"^ +/usr/lib/cups/backend/\* Cx -> third_party,$", profile, re.M)
    third_party = profile.split("profile third_party")[1].split("}")[0]
    allowed = [line.strip() for line in third_party.splitlines()]
    assert {"file,", "network,", "unix,", "signal,"} <= set(allowed)
    assert not any("deny" in line and "capability" not in line for line in allowed)


def test_the_scheduler_may_read_what_it_needs(root):
    """The scheduler itself reads the driver's source, its catalogues and the MIME files."""
    root.apt("install printer-driver-zr7700")
    read = re.search(r"^ +/usr/share/\*\* r,$", root.path(PROFILE).read_text(), re.M)
    assert read
    installed = root.run("dpkg -L printer-driver-zr7700 | grep /cups/")[1].split()
    files = [path for path in installed if not root.path(path).is_dir()]
    assert len(files) > 3 and all(path.startswith(("/usr/share/", "/usr/lib/cups/filter/")) for path in files)
