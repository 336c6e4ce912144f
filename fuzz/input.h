// Takes numbers and bytes from the front of a fuzzer's input; zeros once it is used up.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_FUZZ_INPUT_H_
#define ZR7700_FUZZ_INPUT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <span>

namespace zr7700::fuzz {

class Input {
 public:
  Input(const uint8_t* data, size_t bytes) : left_(data, bytes) {}

  uint8_t U8() {
    if (left_.empty()) return 0;
    const uint8_t byte = left_.front();
    left_ = left_.subspan(1);
    return byte;
  }
  uint16_t U16() { return static_cast<uint16_t>(U8() | U8() << 8); }
  uint32_t U32() { return U16() | static_cast<uint32_t>(U16()) << 16; }

  std::span<const uint8_t> Rest() const { return left_; }

 private:
  std::span<const uint8_t> left_;
};

// Stops the fuzzer, or the replay, at a broken promise.
inline void Require(bool kept) {
  if (!kept) abort();
}

inline bool IsOneOf(int64_t value, std::initializer_list<int64_t> values) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

}  // namespace zr7700::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes);

#endif  // ZR7700_FUZZ_INPUT_H_
