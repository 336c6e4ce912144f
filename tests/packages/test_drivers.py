"""The scheduler's own test of drivers: a queue is made with the model, and the PDFs that come with
CUPS are printed on it one after another.

It prints to files, where no printer answers, and this driver prints nothing without an answer: for
the time of the test lpadmin gives the queue a virtual printer whose report is that file."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

from cups_in_root import Printing
from packages import OUT

_LPADMIN = r"""#!/bin/bash
words=()
for word in "$@"; do
  case $word in
    file://*)
      chown lp "${word#file://}"
      word="zr7700virtual:/srv/discs?report=${word#file://}"
      ;;
  esac
  words+=("$word")
done
exec /usr/sbin/lpadmin.real "${words[@]}"
"""
# Nothing is in charge of services in a root like this.
_SERVICE = r"""#!/bin/bash
kill $(pidof cupsd)
while pidof cupsd; do sleep 0.1; done
/usr/sbin/cupsd
until lpstat -r | grep -q 'is running'; do sleep 0.1; done
"""
# The documents of one page and of several that CUPS and its filters bring along.
_DOCUMENTS = "/usr/share/cups/data"


def test_the_scheduler_prints_its_documents(root):
    root.apt("install printer-driver-zr7700 zr7700-virtual-printer cups-client")
    root.run("install -d -o lp -g lp /srv/discs")
    for name, text in (("lpadmin", _LPADMIN), ("service", _SERVICE)):
        program = f"/usr/sbin/{name}"
        root.run(f"dpkg-divert --quiet --local --rename --divert {program}.real --add {program}")
        root.path(program.lstrip("/")).write_text(text)
        root.path(program.lstrip("/")).chmod(0o755)
    documents = root.run(f"find {_DOCUMENTS} -name '*.pdf'")[1].split()
    assert len(documents) >= 8
    Printing(root).start()
    said = root.run(f"/usr/share/cups/test-drivers -r zr7700 -p {_DOCUMENTS}", seconds=900)[1]
    (OUT.parent / "test-drivers.txt").write_text(said)
    assert "* Driver drv:///zr7700.drv/ZR7700.PPD" in said
    printed = [line for line in said.splitlines() if line.startswith(" - Print ")]
    assert len(printed) == len(documents)
    assert all(line.endswith("done.") for line in printed)
    assert "failed" not in said and "aborting" not in said
