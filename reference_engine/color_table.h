// A colour table in memory: from the raster's red, green and blue to ink codes.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_COLOR_TABLE_H_
#define ZR7700_REFERENCE_ENGINE_COLOR_TABLE_H_

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "reference_engine/family.h"

namespace zr7700::reference_engine {

// Input values are widened from 0..255 to 0..256, so that white falls exactly on the last of 33
// nodes, 8 apart.
inline constexpr uint32_t kTableNodes = 33;
inline constexpr uint32_t kTableStepShift = 3;

constexpr uint32_t WidenInput(uint32_t value) { return value + (value >> 7); }

// What the description of a family's tables begins with.
constexpr const char* TableDescription(Family family) {
  return family == Family::kHeron ? "ZR7700 Heron, " : "ZR7700 Granite, ";
}

// One node: the ink codes of cyan, magenta and yellow from the lowest byte up.
using InkNode = uint32_t;

class ColorTable {
 public:
  // Reads the ICC device link (RGB to CMY) in the file `path`. False when the file is missing,
  // damaged (it must carry its profile ID, and be as long as its header says), of another kind or
  // another family's; the table then keeps what it held, and also when std::bad_alloc is thrown.
  // Reading the file that it already holds again costs nothing unless the file has changed.
  bool Load(Family family, const std::string& path);

  bool loaded() const { return !nodes_.empty(); }

  // kTableNodes cubed nodes: red is the slowest index, blue the fastest. Null before a Load.
  const InkNode* nodes() const { return nodes_.data(); }

 private:
  // What is known of a file without reading it.
  struct Identity {
    std::string path;
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t length_bytes = -1;
    time_t changed_s = 0;
    long changed_ns = 0;  // within the second
    bool operator==(const Identity&) const = default;
  };
  static bool Identify(const std::string& path, Identity* identity);

  Identity identity_;
  std::vector<InkNode> nodes_;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_COLOR_TABLE_H_
