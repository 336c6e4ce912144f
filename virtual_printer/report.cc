// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/report.h"

#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace zr7700::printer {
namespace {

using Json = nlohmann::ordered_json;

// Whole thousandths, since the rest would only be digits.
double Thousandths(double value) { return std::round(value * 1000) / 1000; }

template <typename Row, typename Describe>
Json List(const std::vector<Row>& rows, Describe describe) {
  Json list = Json::array();
  for (const Row& row : rows) list.push_back(describe(row));
  return list;
}

Json Drops(const DiscReport& disc) {
  Json inks;
  for (size_t ink = 0; ink < kInks; ++ink) {
    for (size_t i = 0; i < kDropSizes; ++i)
      inks[kInkNames[ink]][kDropNames[i]] = disc.drops[ink][i];
  }
  return inks;
}

Json Ink(const DiscReport& disc) {
  Json inks;
  for (size_t ink = 0; ink < kInks; ++ink) inks[kInkNames[ink]] = Picolitres(disc.drops[ink]);
  return inks;
}

Json Box(const DotsOnDisc& dots) {
  if (dots.right < dots.left) return nullptr;
  return {{"left", dots.left}, {"top", dots.top}, {"right", dots.right}, {"bottom", dots.bottom}};
}

Json Disc(const DiscReport& disc) {
  return {{"picture", disc.picture},
          {"small_picture", disc.small_picture},
          {"spoilt", disc.spoilt},
          {"family", FamilyName(disc.family)},
          {"diameter_mm", disc.place.diameter_mm},
          {"resolution_dpi", disc.start.resolution_dpi},
          {"quality", disc.start.quality},
          {"media", disc.start.media},
          {"passes", disc.start.passes},
          {"direction", disc.start.direction},
          {"feed", disc.feed},
          {"left_dots", disc.place.left_dots},
          {"top_dots", disc.place.top_dots},
          {"drops", Drops(disc)},
          {"ink_picolitres", Ink(disc)},
          {"bounding_box", Box(disc.dots)},
          {"dots_outside_disc", disc.dots.outside},
          {"dots_in_hole", disc.dots.in_hole}};
}

Json ViolationOf(const Violation& violation) {
  return {{"offset", violation.offset}, {"text", violation.sentence}};
}

Json Status(const StatusLine& line) {
  return {{"time_s", Thousandths(line.time_s)}, {"text", line.text}};
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", value);
  return text;
}

}  // namespace

std::string ReportJson(const Report& report) {
  const Json json = {{"pages", report.pages},
                     {"headers", report.headers},
                     {"stream_bytes", report.stream_bytes},
                     {"records_sent", report.records_sent},
                     {"seconds", Thousandths(report.seconds)},
                     {"given_up", report.given_up},
                     {"violation_count", report.violation_count},
                     {"violations", List(report.violations, ViolationOf)},
                     {"errors", report.errors},
                     {"discs", List(report.discs, Disc)},
                     {"status", List(report.status, Status)}};
  // Bytes of a file's name that are no UTF-8 become U+FFFD.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string DescribeDisc(const DiscReport& disc, size_t number) {
  uint64_t drops = 0;
  std::string inks;
  for (size_t ink = 0; ink < kInks; ++ink) {
    for (const uint64_t count : disc.drops[ink]) drops += count;
    const double microlitres = static_cast<double>(Picolitres(disc.drops[ink])) / 1e6;
    inks += std::string(ink == 0 ? "" : ", ") + kInkNames[ink] + " " + Number(microlitres);
  }
  return "disc " + std::to_string(number) + (disc.spoilt ? " (spoilt): " : ": ") +
         std::to_string(drops) + " drops, " + inks + " microlitres";
}

}  // namespace zr7700::printer
