// A colour table in memory: from the raster's red, green and blue to ink codes.
#ifndef ZR7700_REFERENCE_ENGINE_COLOR_TABLE_H_
#define ZR7700_REFERENCE_ENGINE_COLOR_TABLE_H_

#include <cstdint>
#include <string>
#include <vector>

namespace zr7700::reference_engine {

// Input values are widened from 0..255 to 0..256, so that white falls exactly on the last of 33
// nodes, 8 apart.
inline constexpr uint32_t kTableNodes = 33;
inline constexpr uint32_t kTableStepShift = 3;

constexpr uint32_t WidenInput(uint32_t value) { return value + (value >> 7); }

// One node: the ink codes of cyan, magenta and yellow from the lowest byte up.
using InkNode = uint32_t;

class ColorTable {
 public:
  // Reads the ICC device link (RGB to CMY) in the file `path`. False when the file is missing,
  // damaged or of another kind; the table then keeps what it held. Reading the file that it
  // already holds again costs nothing unless the file has changed.
  bool Load(const std::string& path);

  bool loaded() const { return !nodes_.empty(); }

  // kTableNodes cubed nodes: red is the slowest index, blue the fastest. Null before a Load.
  const InkNode* nodes() const { return nodes_.data(); }

 private:
  // What is known of a file without reading it.
  struct Identity {
    std::string path;
    uint64_t inode = 0;
    int64_t length_bytes = -1;
    int64_t changed_ns = 0;
    bool operator==(const Identity&) const = default;
  };
  static bool Identify(const std::string& path, Identity* identity);

  Identity identity_;
  std::vector<InkNode> nodes_;
};

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_COLOR_TABLE_H_
