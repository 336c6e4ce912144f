// A property list of any bytes: the parser behind the guard survives it, and what the guard lets
// through is nested as it says.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/input.h"
#include "platform/platform.h"
#include "platform/property_guard.h"

namespace zr7700::platform {
namespace {

using fuzz::Require;

// Counted as a parser would that knows of nothing but tags: what could hide some is gone.
void RequireBoundedNesting(std::string_view list) {
  if (list.starts_with("bplist")) return;
  list.remove_prefix(std::min(list.find("?>"), list.size()));
  size_t depth = 0;
  for (size_t at = list.find('<'); at != std::string_view::npos; at = list.find('<', at + 1)) {
    const size_t end = list.find('>', at);
    if (list.substr(at).starts_with("</")) {
      Require(depth-- > 0);
    } else if (end != std::string_view::npos && list[end - 1] != '/') {
      Require(++depth <= kMostNested);
    }
  }
}

void TryEveryCall(PropertyList& list) {
  for (const char* key : {"FeedAdjust", "k", "Name", ""}) {
    int32_t value = 77;
    const Lookup number = list.Number(key, value);
    Require(number == Lookup::kFound || value == 77);
    std::string text = "untouched";
    const Lookup string = list.String(key, text);
    Require(string == Lookup::kFound || text == "untouched");
    Require(number != Lookup::kFound || string == Lookup::kOtherType);
  }
  if (!list.SetNumber("k", -5)) return;
  int32_t value = 0;
  Require(list.Number("k", value) == Lookup::kFound && value == -5);
  list.Xml();
}

}  // namespace
}  // namespace zr7700::platform

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  using namespace zr7700::platform;
  const std::string_view text(reinterpret_cast<const char*>(data), bytes);
  if (const auto guarded = GuardedPropertyList(text)) RequireBoundedNesting(*guarded);
  if (std::optional<PropertyList> list = PropertyList::Parse(text)) TryEveryCall(*list);
  return 0;
}
