// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "platform/property_shape.h"

namespace zr7700::platform {
namespace {

constexpr size_t kHeaderBytes = 8;    // "bplist00"
constexpr size_t kTrailerBytes = 32;  // 6 unused, 2 widths, 3 big-endian numbers of 8 bytes
constexpr size_t kMaxContainers = 10000;
// A leaf may be referred to many times, and parsers copy it each time.
constexpr uint64_t kMaxUnfoldedBytes = 16 * 1024 * 1024;

// What the high half of an object's first byte says it is.
enum Kind : uint8_t {
  kSimple = 0,
  kInteger = 1,
  kReal = 2,
  kDate = 3,
  kData = 4,
  kAscii = 5,
  kUtf16 = 6,
  kArray = 10,
  kDict = 13,
};

struct Object {
  Kind kind;
  uint64_t count;       // bytes, characters, elements or pairs
  size_t offset;        // of the payload
  uint64_t size_bytes;  // of the payload
};

bool IsContainer(const Object& object) { return object.kind == kArray || object.kind == kDict; }
bool IsText(const Object& object) { return object.kind == kAscii || object.kind == kUtf16; }

class BinaryList {
 public:
  explicit BinaryList(std::string_view bytes) : bytes_(bytes) {}

  bool IsSound() { return ReadTrailer() && ReadObjects() && ReferencesAreSound(); }

 private:
  // The place has been checked to lie within the file.
  uint64_t Load(size_t offset, size_t width_bytes) const {
    uint64_t value = 0;
    for (size_t i = 0; i < width_bytes; ++i) {
      value = value << 8 | static_cast<uint8_t>(bytes_[offset + i]);
    }
    return value;
  }

  bool ReadTrailer() {
    if (bytes_.size() < kHeaderBytes + kTrailerBytes || !bytes_.starts_with("bplist00")) {
      return false;
    }
    const size_t trailer = bytes_.size() - kTrailerBytes;
    offset_width_ = static_cast<uint8_t>(bytes_[trailer + 6]);
    reference_width_ = static_cast<uint8_t>(bytes_[trailer + 7]);
    const uint64_t object_count = Load(trailer + 8, 8);
    const uint64_t top = Load(trailer + 16, 8);
    const uint64_t table = Load(trailer + 24, 8);
    if (offset_width_ < 1 || offset_width_ > 8) return false;
    if (reference_width_ < 1 || reference_width_ > 8) return false;
    if (table < kHeaderBytes || table > trailer) return false;
    if (top >= object_count || object_count > (trailer - table) / offset_width_) return false;
    // None is larger than the file now.
    object_count_ = static_cast<size_t>(object_count);
    top_ = static_cast<size_t>(top);
    table_ = static_cast<size_t>(table);
    return true;
  }

  bool ReadObjects() {
    size_t containers = 0;
    for (size_t i = 0; i < object_count_; ++i) {
      const uint64_t offset = Load(table_ + i * offset_width_, offset_width_);
      if (offset < kHeaderBytes || offset >= table_) return false;
      const std::optional<Object> object = ReadObject(static_cast<size_t>(offset));
      if (!object || !HasSoundText(*object)) return false;
      if (IsContainer(*object) && ++containers > kMaxContainers) return false;
      objects_.push_back(*object);
    }
    return true;
  }

  std::optional<Object> ReadObject(size_t offset) const {
    const uint8_t mark = static_cast<uint8_t>(bytes_[offset]);
    Object object{static_cast<Kind>(mark >> 4), mark & 0x0fU, offset + 1, 0};
    if (object.count == 15 && HasLongCount(object.kind) && !ReadLongCount(object)) return {};
    if (object.count > bytes_.size()) return {};
    const std::optional<uint64_t> size_bytes = PayloadBytes(object);
    if (!size_bytes || *size_bytes > table_ - object.offset) return {};
    object.size_bytes = *size_bytes;
    return object;
  }

  static bool HasLongCount(Kind kind) {
    return kind == kData || kind == kAscii || kind == kUtf16 || kind == kArray || kind == kDict;
  }

  // A count of 15 says that the true one follows, as an integer object.
  bool ReadLongCount(Object& object) const {
    if (object.offset >= table_) return false;
    const uint8_t mark = static_cast<uint8_t>(bytes_[object.offset]);
    if (mark >> 4 != kInteger || (mark & 15) > 3) return false;
    const size_t width_bytes = size_t{1} << (mark & 15);
    if (width_bytes > table_ - object.offset - 1) return false;
    object.count = Load(object.offset + 1, width_bytes);
    object.offset += 1 + width_bytes;
    return true;
  }

  // Nothing for an object that no property list holds.
  std::optional<uint64_t> PayloadBytes(const Object& object) const {
    const uint64_t count = object.count;
    switch (object.kind) {
      case kSimple:  // false and true
        if (count == 8 || count == 9) return 0;
        return {};
      case kInteger:  // up to 16 bytes, of which parsers use the last 8
        if (count <= 4) return uint64_t{1} << count;
        return {};
      case kReal:
        if (count == 2 || count == 3) return uint64_t{1} << count;
        return {};
      case kDate:
        if (count == 3) return 8;
        return {};
      case kData:
      case kAscii:
        return count;
      case kUtf16:
        return count * 2;
      case kArray:
        return count * reference_width_;
      case kDict:
        return count * 2 * reference_width_;
    }
    return {};
  }

  bool HasSoundText(const Object& object) const {
    if (object.kind == kAscii) return IsAscii(PayloadOf(object));
    return object.kind != kUtf16 || IsUtf16(object);
  }

  static bool IsAscii(std::string_view text) {
    for (const char letter : text) {
      if (letter == '\0' || static_cast<uint8_t>(letter) > 0x7f) return false;
    }
    return true;
  }

  // Big-endian, without surrogates that stand alone.
  bool IsUtf16(const Object& text) const {
    bool high_before = false;
    for (size_t i = 0; i < text.count; ++i) {
      const uint64_t unit = Load(text.offset + i * 2, 2);
      const bool low = unit >= 0xdc00 && unit <= 0xdfff;
      if (low != high_before || unit == 0) return false;
      high_before = unit >= 0xd800 && unit <= 0xdbff;
    }
    return !high_before;
  }

  // With no container referred to twice, and the root not at all, what hangs on the root is a tree:
  // no cycle, and no growth from one object unfolded in many places.
  bool ReferencesAreSound() {
    if (IsContainer(objects_[top_])) referred_[top_] = true;
    for (const Object& object : objects_) {
      if (!IsContainer(object)) continue;
      std::set<std::string_view> keys;
      const uint64_t references = object.count * (object.kind == kDict ? 2 : 1);
      for (size_t i = 0; i < references; ++i) {
        const uint64_t number = Load(object.offset + i * reference_width_, reference_width_);
        if (number >= object_count_) return false;
        const auto target = static_cast<size_t>(number);
        const bool is_key = object.kind == kDict && i < object.count;
        if (!TakesReference(target, is_key)) return false;
        // Of two values for one key the parsers would not choose the same.
        if (is_key && !keys.insert(PayloadOf(objects_[target])).second) return false;
      }
    }
    return true;
  }

  std::string_view PayloadOf(const Object& object) const {
    return bytes_.substr(object.offset, static_cast<size_t>(object.size_bytes));
  }

  bool TakesReference(size_t target, bool is_key) {
    const Object& object = objects_[target];
    if (is_key && (!IsText(object) || object.count == 0)) return false;
    if (IsContainer(object)) {
      if (referred_[target]) return false;
      referred_[target] = true;
      return true;
    }
    unfolded_bytes_ += object.size_bytes;
    return unfolded_bytes_ <= kMaxUnfoldedBytes;
  }

  std::string_view bytes_;
  size_t offset_width_ = 0;     // bytes of one entry of the offset table
  size_t reference_width_ = 0;  // bytes of one reference inside a container
  size_t object_count_ = 0;
  size_t top_ = 0;    // the root's number
  size_t table_ = 0;  // where the offset table begins; objects end before it
  uint64_t unfolded_bytes_ = 0;
  std::vector<Object> objects_;
  std::vector<bool> referred_ = std::vector<bool>(bytes_.size());
};

}  // namespace

bool IsSoundBinaryPropertyList(std::string_view bytes) { return BinaryList(bytes).IsSound(); }

}  // namespace zr7700::platform
