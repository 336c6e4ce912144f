"""The tests find their modules, and share pytest's work as the whole-job tests do."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

# Pauses are short here already, and there is one library to load before the filter, not two.
os.environ["ZR7700_TIMES_FASTER"] = "1"

sys.path.insert(0, os.path.dirname(__file__))
