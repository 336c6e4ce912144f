// texttodisc: lays text out within the disc's ring, with the system's texttopdf.
//
// Text begins in a page's upper left corner, where a disc has nothing: it gets the largest square
// that lies within the outer edge.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <string>

#include "disc/target_page.h"
#include "disc/user_message.h"
#include "page_fitter/system_filter.h"

namespace zr7700 {
namespace {

constexpr double kPointsPerInch = 72;

// Between the square's sides and the page's, in points.
int MarginOf(const TargetPage& target) {
  const double radius = target.header.cupsWidth / 2.0 - target.margin_dots;
  const double margin = target.header.cupsWidth / 2.0 - radius / std::sqrt(2.0);
  return static_cast<int>(std::ceil(margin * kPointsPerInch / target.header.HWResolution[0]));
}

int LayOutText(const FilterArguments& arguments) {
  std::string error;
  const auto target = ReadTargetPage(arguments.option_count, arguments.options, error);
  if (!target) {
    TellError(error);
    return 1;
  }
  const std::string margin = std::to_string(MarginOf(*target));
  std::string options;
  for (const char* const side : {"left", "right", "top", "bottom"}) {
    const std::string option = std::string("page-") + side;
    const bool is_chosen =
        cupsGetOption(option.c_str(), arguments.option_count, arguments.options) != nullptr;
    if (!is_chosen) options += " " + option + "=" + margin;
  }
  return BecomeSystemFilter(arguments, "texttopdf", options);
}

}  // namespace
}  // namespace zr7700

int main(int argc, char** argv) {
  return zr7700::RunFilter(argc, argv, "texttodisc",
                           "A CUPS filter: lays text out within the ring of a disc.",
                           zr7700::LayOutText);
}
