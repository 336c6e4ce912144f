"""What a label file is, and whether it can be printed at all."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import stat
import subprocess


class Refused(Exception):
    """One sentence for the person who asked."""


# What a file begins with, and the type that the filters know it by.
_TYPES = (
    (b"%PDF-", "application/pdf"),
    (b"\x89PNG\r\n\x1a\n", "image/png"),
    (b"\xff\xd8\xff", "image/jpeg"),
    (b"GIF8", "image/gif"),
    (b"II*\0", "image/tiff"),
    (b"MM\0*", "image/tiff"),
)
# What a whole file of a type ends with, somewhere in its last bytes.
_ENDS = {"image/png": b"IEND\xaeB`\x82", "image/jpeg": b"\xff\xd9", "application/pdf": b"%%EOF"}
_TAIL_BYTES = 16384


def _open_at_once(path, flags):
    """A FIFO is not waited for."""
    return os.open(path, flags | os.O_NONBLOCK)


def label_type(path):
    """The label's type; Refused when there is no such file or when it is no label."""
    try:
        with open(path, "rb", opener=_open_at_once) as file:
            if not stat.S_ISREG(os.fstat(file.fileno()).st_mode):
                raise Refused(f"The label {path} is no file; give a PDF, PNG, JPEG, TIFF or GIF "
                              "file.")
            head = file.read(1024)
            file.seek(0, 2)
            file.seek(max(0, file.tell() - _TAIL_BYTES))
            tail = file.read(_TAIL_BYTES)
    except OSError as error:
        raise Refused(f"The label {path} cannot be read ({error.strerror}); "
                      "check its name.") from None
    for beginning, name in _TYPES:
        # A PDF's beginning may stand a little after the file's.
        if head.startswith(beginning) or (name == "application/pdf" and beginning in head):
            if _ENDS.get(name, b"") not in tail:
                raise Refused(f"The label {path} is cut short; save or copy it again.")
            return name
    raise Refused(f"The label {path} is no picture that can be printed; "
                  "give a PDF, PNG, JPEG, TIFF or GIF file.")


def check_pdf(path):
    """The number of a PDF's pages. Refused when it has none or must not be opened or printed.
    Needs pdfinfo."""
    done = subprocess.run(["pdfinfo", path], capture_output=True, text=True, errors="replace",
                          check=False)
    if "Incorrect password" in done.stderr:
        raise Refused(f"The PDF {path} is encrypted; save it without a password and print that.")
    if re.search(r"^Encrypted: +yes \(print:no", done.stdout, re.M):
        raise Refused(f"The PDF {path} is encrypted and forbids printing; "
                      "save it without that restriction.")
    pages = re.search(r"^Pages: +(\d+)", done.stdout, re.M)
    if pages and int(pages[1]) == 0 or "Invalid page count 0" in done.stderr:
        raise Refused(f"The PDF {path} has no pages; export it again with the label on a page.")
    if done.returncode != 0 or not pages:
        raise Refused(f"The PDF {path} is damaged; export it again.")
    return int(pages[1])
