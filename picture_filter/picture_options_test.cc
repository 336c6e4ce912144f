// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_options.h"

#include <gtest/gtest.h>

namespace zr7700 {
namespace {

class Options {
 public:
  explicit Options(const char* text) : count_(cupsParseOptions(text, 0, &options_)) {}
  ~Options() { cupsFreeOptions(count_, options_); }
  PictureOptions Read() const { return ReadPictureOptions(count_, options_); }

 private:
  cups_option_t* options_ = nullptr;
  int count_;
};

// A picture of 100 x 50 on a page of 400 x 400.
double ScaleWith(const char* text) {
  return ScaleOf(Options(text).Read(), {.width = 100, .height = 50}, {.width = 400, .height = 400});
}

struct ScaleCase {
  const char* options;
  double scale;
};
constexpr ScaleCase kScales[] = {
    {"", 4},
    {"print-scaling=fit", 4},
    {"print-scaling=auto", 1},
    {"print-scaling=auto-fit", 1},
    {"print-scaling=fill", 8},
    {"print-scaling=none", 1},
    // The older options.
    {"scaling=50", 2},
    {"natural-scaling=50", 0.5},
    {"fitplot", 4},
    {"fit-to-page", 4},
    {"nofitplot", 1},
    {"fit-to-page=false", 1},
    {"ppi=100", 1},
    // One option before another.
    {"print-scaling=none scaling=50", 1},
    {"print-scaling=fit fitplot=false", 4},
    {"print-scaling=fit ppi=100", 1},
    {"ppi=100 scaling=50", 1},
    {"ppi=100 natural-scaling=200", 2},
    {"scaling=50 natural-scaling=25", 2},
    {"fitplot natural-scaling=25", 4},
    {"fitplot=false natural-scaling=25", 0.25},
};

TEST(PictureOptionsTest, Scales) {
  for (const ScaleCase& c : kScales) EXPECT_EQ(ScaleWith(c.options), c.scale) << c.options;
}

TEST(PictureOptionsTest, WhatIsNoValueCountsAsNotGiven) {
  for (const char* const text :
       {"print-scaling=large", "scaling=0", "scaling=-5", "scaling=much", "scaling=nan",
        "natural-scaling=0", "ppi=0", "ppi=300x", "ppi=x300", "ppi=1e9", "scaling=1e300"}) {
    EXPECT_EQ(ScaleWith(text), 4) << text;
  }
}

TEST(PictureOptionsTest, Density) {
  EXPECT_FALSE(Options("").Read().density);
  EXPECT_EQ(Options("ppi=300").Read().density->across, 300);
  EXPECT_EQ(Options("ppi=300").Read().density->down, 300);
  EXPECT_EQ(Options("ppi=100x200").Read().density->across, 100);
  EXPECT_EQ(Options("ppi=100x200").Read().density->down, 200);
}

struct TurnCase {
  const char* options;
  bool mirrored;
  int quarters;  // clockwise
};

TEST(PictureOptionsTest, Turns) {
  const TurnCase cases[] = {{"", false, 0},
                            {"orientation-requested=3", false, 0},
                            {"orientation-requested=4", false, 3},
                            {"orientation-requested=5", false, 1},
                            {"orientation-requested=6", false, 2},
                            {"orientation-requested=7", false, 0},
                            {"landscape", false, 3},
                            {"landscape=false", false, 0},
                            {"orientation-requested=5 landscape", false, 1},
                            {"mirror", true, 0},
                            {"mirror=false", false, 0},
                            // Turned to the left and then mirrored is mirrored and then turned to
                            // the right.
                            {"mirror orientation-requested=4", true, 1}};
  for (const TurnCase& c : cases) {
    const Turn expected = {.mirrored = c.mirrored, .quarters = c.quarters};
    EXPECT_EQ(Options(c.options).Read().turn, expected) << c.options;
  }
}

}  // namespace
}  // namespace zr7700
