"""Whether a label can be read at all, and how many discs a PDF gives."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import re
import stat
import subprocess


class Refused(Exception):
    """One sentence for the person who asked."""


def check_file(path):
    """Refused when there is no such file."""
    try:
        # A FIFO is not waited for.
        file = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
        kind = os.fstat(file).st_mode
        os.close(file)
    except OSError as error:
        raise Refused(f"The label {path} cannot be read ({error.strerror}); "
                      "check its name.") from None
    if not stat.S_ISREG(kind):
        raise Refused(f"The label {path} is no file; give a PDF, a picture or a text.")


def pages_of_pdf(path):
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


def pages_chosen(pages, options):
    """How many of so many pages the options page-ranges and page-set leave."""
    chosen = set(range(1, pages + 1))
    if "page-ranges" in options:
        ranges = options["page-ranges"].split(",")
        chosen &= {page for text in ranges for page in _range(text, pages)}
    parity = {"odd": 1, "even": 0}.get(options.get("page-set"))
    return sum(parity in (None, page % 2) for page in chosen)


def _range(text, pages):
    first, dash, last = text.partition("-")
    return range(int(first), (int(last) if last else pages if dash else int(first)) + 1)
