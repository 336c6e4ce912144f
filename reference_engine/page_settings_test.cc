// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/page_settings.h"

#include <gtest/gtest.h>

#include "reference_engine/engine_status.h"

namespace zr7700::reference_engine {
namespace {

Properties DiscProperties() {
  Properties properties;
  properties.dots_per_inch = {600, 600};
  properties.left_margin = 1916;
  properties.top_margin = 69;
  properties.printable_width = 2834;
  properties.printable_height = 2834;
  properties.physical_width = 5100;
  return properties;
}

PageSettings Plan(const Properties& properties, const EngineIni& ini) {
  PageSettings settings;
  EXPECT_EQ(PlanPage(Family::kGranite, properties, ini, &settings), kOk);
  return settings;
}

TEST(PageSettingsTest, ADiscIsPrintedWhole) {
  const PageSettings settings = Plan(DiscProperties(), {});
  EXPECT_EQ(settings.visible_begin, 0U);
  EXPECT_EQ(settings.visible_end, 2834U);
  EXPECT_EQ(settings.sweep.passes, 2U);
  EXPECT_EQ(settings.sweep.direction, PrintDirection::kBoth);
  EXPECT_EQ(settings.screen.mixing, DropMixing::kStandard);
}

TEST(PageSettingsTest, QualityChoosesThePasses) {
  Properties properties = DiscProperties();
  properties.quality = 3;
  EXPECT_EQ(Plan(properties, {}).sweep.passes, 4U);
  properties.quality = 4;
  EXPECT_EQ(Plan(properties, {}).screen.passes, 8U);
}

TEST(PageSettingsTest, TheIniFileOverrides) {
  EngineIni ini;
  ini.passes = 1;
  ini.color = 2;
  ini.slot1_direction = 2;
  const PageSettings settings = Plan(DiscProperties(), ini);
  EXPECT_EQ(settings.sweep.passes, 1U);
  EXPECT_EQ(settings.screen.mixing, DropMixing::kPhoto);
  EXPECT_EQ(settings.sweep.direction, PrintDirection::kForward);
}

TEST(PageSettingsTest, TheCarriagesReachLimitsTheColumns) {
  Properties properties = DiscProperties();
  properties.left_margin = -84;
  EXPECT_EQ(Plan(properties, {}).visible_begin, 84U);
  properties.left_margin = 2300;
  // 5100 - 2300 = 2800 columns are within reach.
  EXPECT_EQ(Plan(properties, {}).visible_end, 2800U);
}

TEST(PageSettingsTest, TheReverseLagIsASignedByte) {
  Properties properties = DiscProperties();
  properties.alignment[kReverseLagSlot] = 254;
  EXPECT_EQ(Plan(properties, {}).sweep.reverse_lag_dots, -2);
  properties.alignment[kReverseLagSlot] = 127;
  EXPECT_EQ(Plan(properties, {}).sweep.reverse_lag_dots, 127);
}

TEST(PageSettingsTest, RefusesWhatMakesNoPage) {
  PageSettings settings;
  EXPECT_EQ(PlanPage(Family::kHeron, {}, {}, &settings), kBadGeometry);
  Properties properties = DiscProperties();
  properties.dots_per_inch = {600, 300};
  EXPECT_EQ(PlanPage(Family::kHeron, properties, {}, &settings), kBadGeometry);
  properties = DiscProperties();
  properties.color_cartridge = false;
  EXPECT_EQ(PlanPage(Family::kHeron, properties, {}, &settings), kBadGeometry);
  for (const int printer : {-1, 0, 2, 3}) {
    EngineIni ini;
    ini.printer = printer;
    EXPECT_EQ(PlanPage(Family::kHeron, DiscProperties(), ini, &settings), kBadConfiguration);
  }
}

}  // namespace
}  // namespace zr7700::reference_engine
