// The filter's command line and its PPD.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_COMMAND_LINE_H_
#define ZR7700_DRIVER_COMMAND_LINE_H_

#include <cups/cups.h>
#include <cups/ppd.h>

#include <cstdint>

namespace zr7700 {

// "job user title copies options [filename]", parsed. The copies are not read: the raster carries
// its own.
struct FilterArgs {
  int32_t job_id = 0;
  const char* user = nullptr;   // argv's own text
  const char* title = nullptr;  // argv's own text
  int32_t option_count = 0;
  cups_option_t* options = nullptr;  // allocated by CUPS, kept until exit
  bool SkipLowInkFWCheck = false;
  bool SuppressStartingUtilityOnError = false;
};

// Fills `arguments`, opens the PPD that the environment names, marks its defaults and the job's
// options, and creates the shared status memory. The PPD, which stays open until exit; null when
// the job cannot run, after a usage line or a localised error line on standard error. Main thread,
// once.
ppd_file_t* ParseCommandLine(int argc, char* argv[], FilterArgs& arguments);

}  // namespace zr7700

#endif  // ZR7700_DRIVER_COMMAND_LINE_H_
