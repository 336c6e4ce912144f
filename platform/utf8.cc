// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include "platform/property_shape.h"

namespace zr7700::platform {
namespace {

struct Form {
  uint8_t mask;      // of the bits that tell the form in the first byte
  uint8_t mark;      // what they are
  size_t bytes;      // of the whole character
  uint32_t minimum;  // the lowest character that needs so many
};
constexpr Form kForms[] = {
    {0x80, 0x00, 1, 0}, {0xe0, 0xc0, 2, 0x80}, {0xf0, 0xe0, 3, 0x800}, {0xf8, 0xf0, 4, 0x10000}};

// The bytes of the character at the beginning of `text`; 0 when it is malformed.
size_t CharacterBytes(std::string_view text) {
  const uint8_t first = static_cast<uint8_t>(text[0]);
  for (const Form& form : kForms) {
    if ((first & form.mask) != form.mark) continue;
    if (text.size() < form.bytes) return 0;
    uint32_t character = first & ~uint32_t{form.mask};
    for (size_t i = 1; i < form.bytes; ++i) {
      const uint8_t next = static_cast<uint8_t>(text[i]);
      if ((next & 0xc0) != 0x80) return 0;
      character = character << 6 | (next & 0x3f);
    }
    const bool surrogate = character >= 0xd800 && character <= 0xdfff;
    return character < form.minimum || character > 0x10ffff || surrogate ? 0 : form.bytes;
  }
  return 0;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const size_t bytes = CharacterBytes(text);
    if (bytes == 0) return false;
    text.remove_prefix(bytes);
  }
  return true;
}

}  // namespace zr7700::platform
