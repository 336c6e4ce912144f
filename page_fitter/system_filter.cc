// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/system_filter.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "disc/user_message.h"

namespace zr7700 {

int BecomeSystemFilter(const FilterArguments& arguments, const char* name,
                       const std::string& more_options) {
  const char* const folder = std::getenv("CUPS_SERVERBIN");
  const std::string filter =
      std::string(folder == nullptr ? "/usr/lib/cups" : folder) + "/filter/" + name;
  char** const argv = arguments.words;
  std::string options = argv[5] + (" " + more_options);
  argv[5] = options.data();
  std::signal(SIGPIPE, SIG_DFL);  // an ignored signal would stay ignored in the other program
  execv(filter.c_str(), argv);
  TellError("The filter " + filter + " cannot be started; install the package cups-filters.");
  return 1;
}

}  // namespace zr7700
