// rastertoZR7700: the CUPS filter of the ZR7700 disc printer.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/job.h"

// The version record that what(1) and like tools look for in the binary.
extern const char kVersionRecord[];
__attribute__((used)) const char kVersionRecord[] =
    "@(#)PROGRAM:rastertoZR7700  PROJECT:ZR7700Raster-1.3";

int main(int argc, char* argv[]) { return zr7700::RunJob(argc, argv); }
