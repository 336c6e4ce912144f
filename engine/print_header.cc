// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/print_header.h"

#include "base/bytes.h"

namespace zr7700 {
namespace {

constexpr size_t kDestination = 5;
constexpr size_t kInkWarning = 6;
constexpr size_t kChecksum = 15;
constexpr uint8_t kReadyDestination = 1;
// The last byte is the checksum of a header of zeros with destination 1; every header gets its own.
constexpr PrintHeader kTemplate = {0x1B, 0x0B, 0x0E, 0x01, 0x01, 0, 0, 0,
                                   0,    0,    0,    0,    0,    0, 0, 0x37};

}  // namespace

uint32_t InkWarningValue(const JobVariables& variables) {
  if (variables.SkipLowInkFWCheck != 0) return variables.inkLimitHigh;
  return variables.inkLimitLow - (variables.inkLimitLow >> 3);
}

PrintHeader BuildPrintHeader(const JobVariables& variables, uint32_t ink_warning) {
  PrintHeader header = kTemplate;
  header[kDestination] = variables.statusLetterReady != 0
                             ? kReadyDestination
                             : static_cast<uint8_t>(variables.OutputDest);
  StoreBigEndian32(ink_warning, &header[kInkWarning]);
  header[kChecksum] = SumOfBytes(std::span(header).first(kChecksum));
  return header;
}

}  // namespace zr7700
