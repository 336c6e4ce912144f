// pdftodisc: lays the pages of a PDF out on the disc's page, with the system's pdftopdf.
//
// pdftopdf turns a page that is wider than tall when the paper is not, and a disc's page is as wide
// as it is tall: every landscape page would lie on its side.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cups/cups.h>

#include "page_fitter/system_filter.h"

namespace zr7700 {
namespace {

constexpr const char* kTurning[] = {"pdfAutoRotate", "pdftopdfAutoRotate"};

// Pages are not turned unless the job has a word on that.
int LayOutPdf(const FilterArguments& arguments) {
  for (const char* const name : kTurning) {
    if (cupsGetOption(name, arguments.option_count, arguments.options) != nullptr) {
      return BecomeSystemFilter(arguments, "pdftopdf", "");
    }
  }
  return BecomeSystemFilter(arguments, "pdftopdf", "pdfAutoRotate=no");
}

}  // namespace
}  // namespace zr7700

int main(int argc, char** argv) {
  return zr7700::RunFilter(argc, argv, "pdftodisc",
                           "A CUPS filter: lays the pages of a PDF out on the page of a disc.",
                           zr7700::LayOutPdf);
}
