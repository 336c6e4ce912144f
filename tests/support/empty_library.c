/* A library that is only there.
 *
 * SPDX-FileCopyrightText: The rastertoZR7700 authors
 * SPDX-License-Identifier: Apache-2.0 */
int zr7700_empty_library = 0;
