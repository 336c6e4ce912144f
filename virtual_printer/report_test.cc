// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/report.h"

#include <gtest/gtest.h>

namespace zr7700::printer {
namespace {

TEST(Report, AnEmptyReportIsJson) {
  EXPECT_EQ(ReportJson({}),
            "{\n"
            "  \"pages\": 0,\n"
            "  \"headers\": 0,\n"
            "  \"stream_bytes\": 0,\n"
            "  \"records_sent\": 0,\n"
            "  \"seconds\": 0.000,\n"
            "  \"given_up\": false,\n"
            "  \"violation_count\": 0,\n"
            "  \"violations\": [],\n"
            "  \"errors\": [],\n"
            "  \"discs\": [],\n"
            "  \"status\": []\n"
            "}\n");
}

TEST(Report, TextIsQuoted) {
  Report report;
  report.errors = {"a \"b\" \\ c\nd\x01"};
  report.violations = {{18446744073709551615u, "Wrong."}};
  const std::string json = ReportJson(report);
  EXPECT_NE(json.find("[\n    \"a \\\"b\\\" \\\\ c\\u000ad\\u0001\"\n  ]"), json.npos) << json;
  EXPECT_NE(json.find("{\"offset\": 18446744073709551615, \"text\": \"Wrong.\"}"), json.npos)
      << json;
}

// The well-formed sequences of the Unicode Standard's table, at their limits and just beyond.
TEST(Report, BytesThatAreNotUtf8BecomeReplacementCharacters) {
  const struct {
    std::string text;
    std::string json;
  } rows[] = {
      {"\xC3\xA9", "\xC3\xA9"},
      {"\xE2\x82\xAC", "\xE2\x82\xAC"},
      {"\xEF\xBF\xBD", "\xEF\xBF\xBD"},
      {"\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
      {"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
      {"a\xFFz", "a\\ufffdz"},
      {"\xC3", "\\ufffd"},
      {"\xC1\x81", "\\ufffd\\ufffd"},
      {"\xE0\x9F\xBF", "\\ufffd\\ufffd\\ufffd"},
      {"\xED\xA0\x80", "\\ufffd\\ufffd\\ufffd"},
      {"\xF0\x8F\xBF\xBF", "\\ufffd\\ufffd\\ufffd\\ufffd"},
      {"\xF4\x90\x80\x80", "\\ufffd\\ufffd\\ufffd\\ufffd"},
      {"\xE2\x82", "\\ufffd\\ufffd"},
  };
  for (const auto& row : rows) {
    Report report;
    report.errors = {row.text};
    const std::string json = ReportJson(report);
    EXPECT_NE(json.find("[\n    \"" + row.json + "\"\n  ]"), json.npos) << json;
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
  const std::string json = ReportJson(report);
  EXPECT_NE(json.find("\"ink_picolitres\": {\"cyan\": 56, \"magenta\": 0, \"yellow\": 8000000}"),
            json.npos)
      << json;
  EXPECT_NE(json.find("\"bounding_box\": null"), json.npos) << "nothing was measured";
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
