// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include "platform/property_guard.h"

namespace zr7700::platform {
namespace {

constexpr size_t kHeaderBytes = 8;    // "bplist00"
constexpr size_t kTrailerBytes = 32;  // 6 unused, 2 widths, 3 big-endian numbers of 8 bytes
constexpr uint64_t kMostUnfoldedBytes = 64 << 20;

// What the high half of an object's first byte says it is. Every other kind is a few bytes long.
enum Kind : uint8_t { kData = 4, kAscii = 5, kUtf16 = 6, kArray = 10, kSet = 12, kDict = 13 };

struct Object {
  uint8_t kind;
  uint64_t count;   // bytes, characters, elements or pairs
  uint64_t offset;  // of what follows the count
};

// Walks a list as a parser does, anew wherever an object is referred to, until it has seen enough.
class Unfolding {
 public:
  explicit Unfolding(std::string_view bytes) : bytes_(bytes) {}

  bool IsBounded() {
    if (bytes_.size() < kHeaderBytes + kTrailerBytes) return false;
    const size_t trailer = bytes_.size() - kTrailerBytes;
    offset_width_ = static_cast<uint8_t>(bytes_[trailer + 6]);
    reference_width_ = static_cast<uint8_t>(bytes_[trailer + 7]);
    object_count_ = Load(trailer + 8, 8);
    table_ = Load(trailer + 24, 8);
    if (offset_width_ < 1 || offset_width_ > 8) return false;
    if (reference_width_ < 1 || reference_width_ > 8) return false;
    if (table_ < kHeaderBytes || table_ > trailer) return false;
    if (object_count_ > (trailer - table_) / offset_width_) return false;
    return Visit(Load(trailer + 16, 8), 1);
  }

 private:
  uint8_t At(uint64_t offset) const {
    return static_cast<uint8_t>(bytes_[static_cast<size_t>(offset)]);
  }

  uint64_t Load(uint64_t offset, size_t width_bytes) const {
    uint64_t value = 0;
    for (size_t i = 0; i < width_bytes; ++i) {
      value = value << 8 | At(offset + i);
    }
    return value;
  }

  // As deep as kMostNested, no deeper. NOLINTNEXTLINE(misc-no-recursion)
  bool Visit(uint64_t number, size_t depth) {
    if (number >= object_count_ || depth > kMostNested || ++objects_ > kMostObjects) return false;
    Object object = {};
    if (!ReadObject(Load(table_ + number * offset_width_, offset_width_), object)) return false;
    switch (object.kind) {
      case kArray:
      case kSet:
        return VisitReferences(object.offset, object.count, depth);
      case kDict:
        return VisitReferences(object.offset, object.count * 2, depth);
      case kData:
      case kAscii:
      case kUtf16:
        unfolded_bytes_ += object.count;
        return unfolded_bytes_ <= kMostUnfoldedBytes;
      default:
        return true;
    }
  }

  // NOLINTNEXTLINE(misc-no-recursion): of Visit
  bool VisitReferences(uint64_t offset, uint64_t count, size_t depth) {
    if (count > (table_ - offset) / reference_width_) return false;
    for (uint64_t i = 0; i < count; ++i) {
      const uint64_t at = offset + i * reference_width_;
      if (!Visit(Load(at, reference_width_), depth + 1)) return false;
    }
    return true;
  }

  // False for an object whose place, or whose count, lies outside the file.
  bool ReadObject(uint64_t offset, Object& object) const {
    if (offset < kHeaderBytes || offset >= table_) return false;
    const uint8_t mark = At(offset);
    object = {.kind = static_cast<uint8_t>(mark >> 4), .count = mark & 15U, .offset = offset + 1};
    if (object.count == 15 && !ReadLongCount(object)) return false;
    return object.count <= bytes_.size();
  }

  // A count of 15 says that the true one follows, as an integer object.
  bool ReadLongCount(Object& object) const {
    if (object.offset >= table_) return false;
    const auto width_bytes = size_t{1} << (At(object.offset) & 15);
    if (width_bytes > 8 || object.offset + 1 + width_bytes > table_) return false;
    object.count = Load(object.offset + 1, width_bytes);
    object.offset += 1 + width_bytes;
    return true;
  }

  std::string_view bytes_;
  size_t offset_width_ = 0;     // bytes of one entry of the offset table
  size_t reference_width_ = 0;  // bytes of one reference inside a container
  uint64_t object_count_ = 0;
  uint64_t table_ = 0;  // where the offset table begins; objects end before it
  size_t objects_ = 0;
  uint64_t unfolded_bytes_ = 0;
};

}  // namespace

bool IsBoundedBinary(std::string_view bytes) { return Unfolding(bytes).IsBounded(); }

}  // namespace zr7700::platform
