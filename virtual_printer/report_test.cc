// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/report.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <utility>

namespace zr7700::printer {
namespace {

nlohmann::json Parsed(const Report& report) { return nlohmann::json::parse(ReportJson(report)); }

TEST(Report, AnEmptyReportIsJson) {
  EXPECT_EQ(Parsed({}), nlohmann::json::parse(R"({
    "pages": 0, "headers": 0, "stream_bytes": 0, "records_sent": 0, "seconds": 0.0,
    "given_up": false, "violation_count": 0, "violations": [], "errors": [], "discs": [],
    "status": []})"));
}

TEST(Report, TextAndNumbersComeBackAsTheyWere) {
  Report report;
  report.errors = {"a \"b\" \\ c\nd\x01"};
  report.violations = {{18446744073709551615u, "Wrong."}};
  report.status = {{1.23456, "Idle."}};
  const auto json = Parsed(report);
  EXPECT_EQ(json["errors"][0], report.errors[0]);
  EXPECT_EQ(json["violations"][0]["offset"], 18446744073709551615u);
  EXPECT_EQ(json["violations"][0]["text"], "Wrong.");
  EXPECT_DOUBLE_EQ(json["status"][0]["time_s"].get<double>(), 1.235);
}

TEST(Report, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  const std::string replaced = "\xEF\xBF\xBD";
  const std::pair<std::string, std::string> rows[] = {
      {"\xC3\xA9", "\xC3\xA9"},
      {"\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
      {"a\xFFz", "a" + replaced + "z"},
      {"\xC3", replaced},
  };
  for (const auto& [text, told] : rows) {
    Report report;
    report.errors = {text};
    EXPECT_EQ(Parsed(report)["errors"][0], told);
  }
}

TEST(Report, ADiscsInkIsItsDropsTimesTheirVolumes) {
  DiscReport disc;
  // 4, 8 and 12 picolitres: 1 * 4 + 2 * 8 + 3 * 12 = 56.
  disc.drops[0] = {1, 2, 3};
  disc.drops[2] = {0, 1000000, 0};
  EXPECT_EQ(DescribeDisc(disc, 7),
            "disc 7: 1000006 drops, cyan 0.000, magenta 0.000, yellow 8.000 microlitres");
  Report report;
  report.discs = {disc};
  const auto told = Parsed(report)["discs"][0];
  EXPECT_EQ(told["ink_picolitres"],
            nlohmann::json::parse(R"({"cyan": 56, "magenta": 0, "yellow": 8000000})"));
  EXPECT_TRUE(told["bounding_box"].is_null()) << "nothing was measured";
}

TEST(Report, IsCleanOnlyWithoutViolationsAndErrors) {
  Report report;
  EXPECT_TRUE(report.Clean());
  report.violation_count = 1;
  EXPECT_FALSE(report.Clean());
  report = {};
  report.errors = {"The disk is full."};
  EXPECT_FALSE(report.Clean());
}

}  // namespace
}  // namespace zr7700::printer
