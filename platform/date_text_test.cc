// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <ostream>
#include <string>
#include <thread>

#include "platform/child_text.h"
#include "platform/platform.h"

namespace zr7700::platform {
namespace {

std::string PresentText() {
  char text[kDateTextBytes];
  DateText(text);
  return text;
}

// The text as a fresh process tells it that starts with `zone` in its environment.
std::string DateTextIn(const char* zone) {
  return TextOfChild([zone] {
    setenv("TZ", zone, 1);
    tzset();
    return PresentText();
  });
}

// Whether `text` has the form of the example, each 0 in which stands for any digit and each + for a
// sign.
bool HasForm(const std::string& text, const std::string& example) {
  if (text.size() != example.size()) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool fits = example[i] == '0'   ? text[i] >= '0' && text[i] <= '9'
                      : example[i] == '+' ? text[i] == '+' || text[i] == '-'
                                          : text[i] == example[i];
    if (!fits) return false;
  }
  return true;
}

// Seconds since 1970 that a text of the form stands for; -1 for any other form.
time_t MomentOf(const std::string& text) {
  if (!HasForm(text, "0000-00-00 00:00:00 +0000")) return -1;
  const auto number = [&text](size_t at, size_t digits) {
    return std::stoi(text.substr(at, digits));
  };
  tm fields{};
  fields.tm_year = number(0, 4) - 1900;
  fields.tm_mon = number(5, 2) - 1;
  fields.tm_mday = number(8, 2);
  fields.tm_hour = number(11, 2);
  fields.tm_min = number(14, 2);
  fields.tm_sec = number(17, 2);
  const int offset_s = number(21, 2) * 3600 + number(23, 2) * 60;
  return timegm(&fields) - (text[20] == '-' ? -offset_s : offset_s);
}

struct Zone {
  const char* name;    // west of Greenwich counts as positive here
  const char* offset;  // and as negative here
};

void PrintTo(const Zone& zone, std::ostream* out) { *out << zone.name; }

class DateTextTest : public testing::TestWithParam<Zone> {};

// time() runs up to a tick of the kernel's behind the clock that date texts are made from.
time_t Present() { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); }

TEST_P(DateTextTest, TellsThePresentInLocalTimeWithItsOffset) {
  const time_t before = Present();
  const std::string text = DateTextIn(GetParam().name);
  const time_t after = Present();
  EXPECT_GE(MomentOf(text), before) << text;
  EXPECT_LE(MomentOf(text), after) << text;
  EXPECT_TRUE(text.ends_with(GetParam().offset)) << text;
}

INSTANTIATE_TEST_SUITE_P(Zones, DateTextTest,
                         testing::Values(Zone{"UTC0", " +0000"}, Zone{"IST-5:30", " +0530"},
                                         Zone{"MART9:30", " -0930"}, Zone{"LINT-14", " +1400"},
                                         Zone{"Nowhere/Unheard", " +0000"}));

TEST(DateText, IsToldInAnyThread) {
  std::string texts[4];
  std::thread threads[4];
  const time_t before = Present();
  for (int i = 0; i < 4; ++i) threads[i] = std::thread([&texts, i] { texts[i] = PresentText(); });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& text : texts) {
    EXPECT_GE(MomentOf(text), before) << text;
    EXPECT_LE(MomentOf(text), Present()) << text;
  }
}

TEST(Clock, IsAboveZeroAndNeverGoesBack) {
  double last = Now();
  EXPECT_GT(last, 0.0);
  for (int i = 0; i < 100000; ++i) {
    const double now = Now();
    ASSERT_GE(now, last);
    last = now;
  }
}

TEST(Clock, CountsSeconds) {
  const double before = Now();
  usleep(50000);
  const double passed_s = Now() - before;
  EXPECT_GE(passed_s, 0.05);
  EXPECT_LT(passed_s, 30.0);
}

}  // namespace
}  // namespace zr7700::platform
