// The clip table for any page: it ends, stays inside its memory, mirrors itself, and every line's
// range can be computed from it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/clip_buffers.h"
#include "engine/clip_range.h"
#include "fuzz/input.h"

namespace {

zr7700::JobVariables AnyPage(zr7700::fuzz::Input input) {
  zr7700::JobVariables variables{};
  const uint8_t mode = input.U8();
  variables.discForm = mode % 8;
  variables.clipBufferBytes = input.U16() % 20401;
  variables.maxImageDots = input.U32();
  variables.InnerDiam = input.U32();
  variables.imageWidth = input.U32();
  variables.imageHeight = input.U32();
  variables.OuterMargin = input.U32();
  variables.leftOutputImage = input.U32();
  variables.rightOutputImage = input.U32();
  variables.topOutputImage = input.U16();
  variables.bottomOutputImage = input.U16();
  if (mode >= 128) {  // as page start would compute them
    variables.leftOutputImage = variables.OuterMargin;
    variables.rightOutputImage = variables.imageWidth - variables.OuterMargin;
    variables.topOutputImage = static_cast<uint16_t>(variables.OuterMargin);
    variables.bottomOutputImage =
        static_cast<uint16_t>(variables.imageHeight - variables.OuterMargin);
  }
  return variables;
}

void CheckMirror(const zr7700::JobVariables& variables) {
  const uint64_t lines = variables.clipBufferBytes / zr7700::kClipEntryBytes;
  const uint64_t height = variables.imageHeight;
  const auto* const table = reinterpret_cast<const zr7700::ClipEntry*>(variables.clipDataBufs);
  const bool drawn = variables.rightOutputImage - variables.leftOutputImage != 0 ||
                     variables.bottomOutputImage != variables.topOutputImage;
  for (uint64_t e = 0; drawn && 2 * e < height && e < lines; ++e) {
    const uint64_t mirrored = height - 1 - e;
    if (mirrored >= lines) continue;
    zr7700::fuzz::Require(table[mirrored].outer == table[e].outer);
    zr7700::fuzz::Require(table[mirrored].inner == table[e].inner);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::JobVariables variables = AnyPage(zr7700::fuzz::Input(data, bytes));
  if (ClipDataBufsCreate(variables)) {
    CheckMirror(variables);
    zr7700::ClipRange range;
    const uint32_t lines = variables.clipBufferBytes / zr7700::kClipEntryBytes;
    for (uint32_t y = 0; y <= lines; ++y) {
      zr7700::fuzz::Require(GetClipRange(variables, static_cast<uint16_t>(y), 2834, range) ==
                            (y < lines));
    }
    ClipDataBufsDelete(variables);
  }
  zr7700::fuzz::Require(variables.clipDataBufs == nullptr);
  return 0;
}
