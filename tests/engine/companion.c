/* The three libraries of a family that hold no entry: they only say that they were loaded, which
 * trace.c does for every library that it is linked into.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
int zr7700_test_companion(void);
int zr7700_test_companion(void) { return 0; }
