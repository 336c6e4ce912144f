"""What every machine does with the packages: installs them, and prints a label through a queue."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import re

from packages import NAMES

DRIVER = "printer-driver-zr7700"


def install(root, printing):
    """With the scheduler running, as on a desktop."""
    printing.start()
    root.apt(f"install {DRIVER} zr7700-virtual-printer zr7700-tools", told=True)
    for name in NAMES:
        assert root.run(f"dpkg-query -W -f '${{db:Status-Status}}' {name}")[1] == "installed"


def check_languages(ppd):
    """CUPS found the catalogues beside the driver's source."""
    text = ppd.read_text()
    assert re.search(r"^\*cupsLanguages: .*", text, re.M), "the PPD has no languages"
    for language in ("de", "es", "fr", "ja"):
        assert f"*{language}.PrintQuality Quality1/" in text


def print_a_label(root, printing):
    printing.add_queue()
    check_languages(root.path("etc/cups/ppd/discs.ppd"))
    printing.check_disc(printing.print())
    # The filter's files lie where Debian wants them, and everybody may read the log.
    assert root.path("var/log/zr7700/ZR7700Filter.log").owner() == "lp"
    assert root.path("var/lib/zr7700/Frameworks/tqgrcfg.ini").owner() == "lp"
