// pdftodisc: lays the pages of a PDF out on the disc's page, with the system's pdftopdf.
//
// pdftopdf turns a page that is wider than tall when the paper is not, and a disc's page is as wide
// as it is tall: every landscape page would lie on its side.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

#include "disc/filter_arguments.h"
#include "disc/user_message.h"

namespace zr7700 {
namespace {

constexpr const char* kTurning[] = {"pdfAutoRotate", "pdftopdfAutoRotate"};

// The job's options, and that pages are not turned unless the job has a word on that.
std::string OptionsFor(const FilterArguments& arguments, const char* options) {
  for (const char* const name : kTurning) {
    if (cupsGetOption(name, arguments.option_count, arguments.options) != nullptr) return options;
  }
  return std::string(options) + " pdfAutoRotate=no";
}

std::string LayoutFilter() {
  const char* const folder = std::getenv("CUPS_SERVERBIN");
  return std::string(folder == nullptr ? "/usr/lib/cups" : folder) + "/filter/pdftopdf";
}

int LayOutPdf(const FilterArguments& arguments) {
  char** const argv = arguments.words;
  const std::string filter = LayoutFilter();
  std::string options = OptionsFor(arguments, argv[5]);
  argv[5] = options.data();
  std::signal(SIGPIPE, SIG_DFL);  // an ignored signal would stay ignored in the other program
  execv(filter.c_str(), argv);
  TellError("The filter " + filter + " cannot be started; install the package cups-filters.");
  return 1;
}

}  // namespace
}  // namespace zr7700

int main(int argc, char** argv) {
  return zr7700::RunFilter(argc, argv, "pdftodisc",
                           "A CUPS filter: lays the pages of a PDF out on the page of a disc.",
                           zr7700::LayOutPdf);
}
