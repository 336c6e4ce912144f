// Text from outside as it may stand in the log: a line feed in it would begin a line of its own.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_PRINTABLE_H_
#define ZR7700_BASE_PRINTABLE_H_

#include <array>
#include <cstddef>

namespace zr7700 {

// The first kMostBytes bytes of a text, each control byte (below 32, or 127) as "?". Needs no heap.
class Printable {
 public:
  // The longest text in a raster header, which fills its field without a NUL.
  static constexpr size_t kMostBytes = 64;

  // `text` ends at a NUL or after kMostBytes bytes.
  explicit Printable(const char* text) {
    for (size_t i = 0; i < kMostBytes && text[i] != '\0'; ++i) {
      const auto byte = static_cast<unsigned char>(text[i]);
      text_[i] = byte < 32 || byte == 127 ? '?' : text[i];
    }
  }

  const char* c_str() const { return text_.data(); }

 private:
  std::array<char, kMostBytes + 1> text_ = {};
};

}  // namespace zr7700

#endif  // ZR7700_BASE_PRINTABLE_H_
