// rastertoZR7700: the CUPS filter of the ZR7700 disc printer.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "about/questions.h"
#include "driver/job.h"
#include "driver/system_limits.h"

// The version record that what(1) and like tools look for in the binary.
extern const char kVersionRecord[];
__attribute__((used)) const char kVersionRecord[] =
    "@(#)PROGRAM:rastertoZR7700  PROJECT:ZR7700Raster-1.3";

namespace {

constexpr char kUsage[] =
    "Usage: rastertoZR7700 job user title copies options [filename]\n"
    "\n"
    "The CUPS filter of the ZR7700 disc printer. CUPS starts it; it reads CUPS raster from the "
    "file\n"
    "or from standard input and writes what the printer takes to standard output. The environment\n"
    "variable PPD names the queue's PPD.\n"
    "\n"
    "  --help     say this\n"
    "  --version  say the version\n"
    "\n"
    "The manual page rastertoZR7700(8) has more.\n";

}  // namespace

int main(int argc, char* argv[]) {
  // A program that is asked a question is no job: it leaves no line in the log.
  if (argc == 2 && zr7700::IsQuestion(argv[1])) {
    return zr7700::AnswerQuestion(argv[1], "rastertoZR7700", kUsage);
  }
  zr7700::PrepareForSystemLimits();
  return zr7700::RunJob(argc, argv);
}
