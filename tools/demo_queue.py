"""A print queue without a scheduler: which filters a document takes to the printer, as cupsfilter
answers for the MIME files and the PPD of this folder, and what the filters are told."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import shutil
import subprocess

from demo_label import Refused

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
OURS = ("picturetodisc", "pdftodisc", "texttodisc", "rastertodisc", "rastertoZR7700")
_DATA, _THEIRS = "/usr/share/cups", "/usr/lib/cups/filter"
_TYPELESS = "application/x-demo-none"  # no filter makes it: cupsfilter then names what it has got
_KINDS = "give a PDF, a picture (PNG, JPEG, TIFF, GIF, BMP), PostScript or a text"


class Queue:
    """The queue of the PPD in a new `folder`, with our filters from the folder `build`."""

    def __init__(self, folder, build, ppd):
        self.ppd = ppd
        self._root, self._bin = os.path.join(folder, "root"), os.path.join(folder, "bin")
        self._programs = os.path.join(self._bin, "filter")
        # For root, cupsfilter passes over programs and folders that others may write.
        for made in (folder, self._root, self._bin, self._programs):
            os.makedirs(made, 0o755, exist_ok=True)
            os.chmod(made, 0o755)
        for name in OURS:
            place = os.path.join(self._programs, name)
            shutil.copyfile(os.path.join(build, name), place)
            os.chmod(place, 0o755)
        for name in set(os.listdir(_THEIRS)).difference(OURS):
            os.symlink(os.path.join(_THEIRS, name), os.path.join(self._programs, name))
        for name in ("zr7700.types", "zr7700.convs"):
            shutil.copy(os.path.join(TOP, "mime", name), self._root)
        self._write("demo.types", f"{_TYPELESS}\n")
        self._settings = self._write("cups-files.conf", f"ServerRoot {self._root}\n"
                                     f"ServerBin {self._bin}\nDataDir {_DATA}\n")
        with open(ppd, encoding="utf-8") as file:
            self._taken = re.search(r'^\*cupsFilter: *"(\S+)', file.read(), re.M)[1]

    def _write(self, name, text):
        path = os.path.join(self._root, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return path

    def _ask(self, document, wanted):
        return subprocess.run(
            ["/usr/sbin/cupsfilter", "-c", self._settings, "-e", "--list-filters", "-p", self.ppd,
             "-m", wanted, os.path.abspath(document)], capture_output=True, check=False, text=True,
            errors="replace", env=os.environ | {"LC_ALL": "C"})

    def kind(self, document):
        """The MIME type that the scheduler takes a document for."""
        told = self._ask(document, _TYPELESS).stderr
        found = re.search(r"No filter to convert from (\S+) to", told)
        if not found:
            raise Refused(f"The label {document} is of no kind that can be printed; {_KINDS}.")
        return found[1]

    def filters(self, document):
        """The names of the filters, in their order."""
        done = self._ask(document, "printer/ZR7700")
        if done.returncode != 0:
            raise Refused(f"There is no way from the label {document} ({self.kind(document)}) to "
                          f"a disc; {_KINDS} ({done.stderr.strip().splitlines()[-1]}).")
        with open(document, "rb") as file:
            packed = file.read(2) == b"\x1f\x8b"  # lp would unpack it on its way to the queue
        return ["gziptoany"] * packed + done.stdout.split()

    def commands(self, document, copies, options):
        """Program and arguments of every filter; only the first gets the document's name."""
        title = os.path.basename(document)
        words = ["ZR7700", "1", "demo", title, str(copies), options]
        commands = [(os.path.join(self._programs, name), words) for name in self.filters(document)]
        return [(commands[0][0], [*words, os.path.abspath(document)]), *commands[1:]]

    def environment(self, document, folder):
        """What the scheduler puts into it; temporary files go to `folder`."""
        kept = {name: os.environ[name] for name in ("LANG", "TZ") if name in os.environ}
        return {"LANG": "C.UTF-8"} | kept | {
            "CHARSET": "utf-8", "CONTENT_TYPE": self.kind(document), "CUPS_CACHEDIR": folder,
            "CUPS_DATADIR": _DATA, "CUPS_FILETYPE": "document", "CUPS_MAX_MESSAGE": "2047",
            "CUPS_REQUESTROOT": folder, "CUPS_SERVERBIN": self._bin,
            "CUPS_SERVERROOT": self._root, "CUPS_STATEDIR": folder,
            "DEVICE_URI": "zr7700virtual:", "FINAL_CONTENT_TYPE": self._taken, "HOME": folder,
            "PATH": f"{self._programs}:/usr/bin:/usr/sbin:/bin", "PPD": self.ppd,
            "PRINTER": "ZR7700", "PRINTER_INFO": "ZR7700", "PRINTER_LOCATION": "",
            "PRINTER_STATE_REASONS": "none", "TMPDIR": folder, "USER": "demo"}
