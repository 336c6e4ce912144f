// The fast line conversion against the plain one: any job variables, any clip entry, any line.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <vector>

#include "engine/clip_buffers.h"
#include "engine/line_conversion.h"
#include "engine/plain_conversion.h"
#include "fuzz/input.h"

using zr7700::fuzz::Input;
using zr7700::fuzz::Require;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  Input input(data, bytes);
  zr7700::JobVariables variables{};
  variables.InkSaturation = input.U8();
  variables.ColorMatching = input.U8() % 4;
  variables.DiscSurfaceQuality = input.U8() % 8;
  variables.nPhotoThreshold = input.U32();
  variables.nRunCompValue = input.U32();
  variables.nRunCompDiv = input.U32();
  variables.maxImageDots = input.U32();
  variables.topOutputImage = input.U16();
  variables.bottomOutputImage = input.U16();
  const uint16_t y = input.U16();
  zr7700::ClipEntry entry;
  entry.outer = input.U16();
  entry.inner = input.U16();

  // One entry for the line itself, in a table that ends with it; or none.
  std::vector<uint8_t> table((size_t{y} + 1) * zr7700::kClipEntryBytes);
  memcpy(&table[size_t{y} * zr7700::kClipEntryBytes], &entry, sizeof entry);
  const uint8_t clipping = input.U8();
  variables.clipDataBufs = (clipping & 1) != 0 ? table.data() : nullptr;
  variables.clipBufferBytes = static_cast<uint32_t>(table.size()) - (clipping >> 1) % 8;

  const auto width = static_cast<uint16_t>(std::min<size_t>(input.Rest().size() / 4, 65535));
  std::vector<uint8_t> fast(input.Rest().begin(), input.Rest().begin() + ptrdiff_t{width} * 4);
  std::vector<uint8_t> plain = fast;
  const bool fast_done = ConvertLine(variables, fast.data(), width, y);
  const bool plain_done = ConvertLinePlainly(variables, plain.data(), width, y);
  Require(fast_done == plain_done);
  Require(fast == plain);
  return 0;
}
