"""The packages on a fresh machine: installed, and a label printed through a queue."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

from cups_in_root import Printing
from steps import install, print_a_label


def test_a_fresh_machine_prints(root):
    printing = Printing(root)
    try:
        install(root, printing)
        print_a_label(root, printing)
    finally:
        printing.stop()
