// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/command_line.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "base/out_of_memory.h"
#include "base/standard_error.h"
#include "driver/user_message.h"
#include "platform/platform.h"
#include "status/status_memory.h"

namespace zr7700 {
namespace {

constexpr int kFewestArguments = 6;
constexpr int kMostArguments = 7;

// A flag is set by exactly this name and "Yes"; no later option clears it.
bool HasYesOption(const FilterArgs& arguments, const char* name) {
  for (int i = 0; i < arguments.option_count; ++i) {
    const cups_option_t& option = arguments.options[i];
    if (strcmp(option.name, name) == 0 && strcmp(option.value, "Yes") == 0) return true;
  }
  return false;
}

void FillArguments(char* argv[], FilterArgs& arguments) {
  arguments.job_id = static_cast<int32_t>(strtol(argv[1], nullptr, 10));
  arguments.user = argv[2];
  arguments.title = argv[3];
  {
    const MemoryWatch watch;
    arguments.option_count = cupsParseOptions(argv[5], 0, &arguments.options);
  }
  arguments.SkipLowInkFWCheck = HasYesOption(arguments, "SkipLowInkFWCheck");
  arguments.SuppressStartingUtilityOnError =
      HasYesOption(arguments, "SuppressStartingUtilityOnError");
}

// Null, with errno telling why, when there is no such PPD.
ppd_file_t* OpenPpd() {
  const char* const path = getenv("PPD");
  errno = 0;
  ppd_file_t* const ppd = path != nullptr ? ppdOpenFile(path) : nullptr;
  if (ppd != nullptr && errno == ENOMEM) ReportNoMemory();  // something of it is missing
  // A file that opens but is no PPD leaves no error of the system's.
  if (ppd == nullptr && errno == 0) errno = path != nullptr ? EINVAL : ENOENT;
  return ppd;
}

// A choice that could not be marked would be printed as if it had not been made.
void MarkChoices(ppd_file_t* ppd, const FilterArgs& arguments) {
  const MemoryWatch watch;
  ppdMarkDefaults(ppd);
  cupsMarkOptions(ppd, arguments.option_count, arguments.options);
}

void ReportMissingPpd() {
  const std::optional<std::string> format = platform::LocalizedText("Unable to open PPD file: %s");
  if (format) WriteUserMessage("ERROR", format->c_str(), strerror(errno));
}

}  // namespace

ppd_file_t* ParseCommandLine(int argc, char* argv[], FilterArgs& arguments) {
  if (argc < kFewestArguments || argc > kMostArguments) {
    TellCups("Usage: %s job user title copies options [filename]\n", argv[0]);
    return nullptr;
  }
  SetUpMessageLanguage();
  FillArguments(argv, arguments);
  ppd_file_t* const ppd = OpenPpd();
  if (ppd == nullptr) {
    ReportMissingPpd();
    return nullptr;
  }
  MarkChoices(ppd, arguments);
  CreateStatusMemory(kStatusRecordBytes);
  return ppd;
}

}  // namespace zr7700
