"""The tests find their modules, and share pytest's work as the whole-job tests do."""
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

import os
import sys

sys.path.insert(0, os.path.dirname(__file__))
