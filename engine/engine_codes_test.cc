// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/engine_codes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zr7700 {
namespace {

struct Row {
  uint8_t choice;
  int code;
  std::string log_text;
};

using Lookup = EngineCode (*)(bool, uint8_t);

void ExpectRows(Lookup lookup, bool is_heron, const std::vector<Row>& rows, const Row& other) {
  for (unsigned choice = 0; choice < 256; ++choice) {
    const Row* wanted = &other;
    for (const Row& row : rows) {
      if (row.choice == choice) wanted = &row;
    }
    const EngineCode code = lookup(is_heron, static_cast<uint8_t>(choice));
    EXPECT_EQ(code.code, wanted->code) << choice;
    EXPECT_EQ(code.log_text, wanted->log_text) << choice;
  }
}

TEST(EngineCodes, HeronQuality) {
  ExpectRows(QualityCode, true,
             {{1, 2, "     Resolution set to PQ_Quick"},
              {2, 2, "     Resolution set to PQ_Normal"},
              {3, 4, "     Resolution mapped to PQ_BEST"}},
             {0, 4, "     Resolution set to PQ_BEST"});
}

TEST(EngineCodes, GraniteQuality) {
  ExpectRows(QualityCode, false,
             {{1, 2, "     Resolution set to PQ_Quick"},
              {2, 2, "     Resolution set to PQ_Normal"},
              {3, 3, "     Resolution set to PQ_BETTER"}},
             {0, 4, "     Resolution set to PQ_BEST"});
}

TEST(EngineCodes, HeronMedia) {
  ExpectRows(MediaCode, true, {{1, 1, "     Media set to MT_PLAIN"}},
             {0, 1, "     Media mapped to MT_PLAIN"});
}

TEST(EngineCodes, GraniteMedia) {
  ExpectRows(MediaCode, false,
             {{1, 1, "     Media set to MT_PLAIN"},
              {3, 7, "     Media set to MT_GLOSSY1"},
              {4, 8, "     Media set to MT_GLOSSY2"},
              {5, 9, "     Media set to MT_GLOSSY3"}},
             {0, 2, "     Media set to MT_COATED"});
}

}  // namespace
}  // namespace zr7700
