"""Lets the tests import the bench's modules and those of the demonstration."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
for folder in (HERE, os.path.join(HERE, "../jobs"), os.path.join(HERE, "../../tools")):
    sys.path.insert(0, folder)
