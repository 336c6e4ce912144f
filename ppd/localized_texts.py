"""Prints the PPD's texts in the process's language as JSON: libcups settles on a language once per
process, so every language needs a process of its own. Argument: the PPD."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import json
import sys

from cups_ppd import Ppd

with Ppd(sys.argv[1]) as ppd:
    ppd.localize()
    json.dump({"options": {keyword: [text, choices]
                           for keyword, (text, _, choices) in ppd.options().items()},
               "reasons": {reason: ppd.reason(reason) for reason in sys.argv[2:]}}, sys.stdout)
