// The property entries of the engine: each takes what the printer can do and refuses the rest.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "reference_engine/print_engine.h"
#include "reference_engine/sharpen.h"

namespace zr7700::reference_engine {
namespace {

constexpr uint32_t kResolutions[] = {300, 600};
constexpr uint32_t kGraniteMedia[] = {1, 2, 7, 8, 9};
// Heron prints alike on every media; another code would ask for what it cannot do.
constexpr uint32_t kHeronMedia[] = {1};
constexpr uint32_t kQualities[] = {2, 3, 4};
constexpr int32_t kDiscTray = 2;
constexpr int32_t kPhotoIntent = 1;
constexpr uint32_t kFourByteRaster = 4;

// The far ends of the carriage's and the disc's travel, in their units.
constexpr int32_t kMaxLeftMargin = kMaxWidthDots;
constexpr int32_t kMaxTopMargin = 6000;

// The printer has one colour cartridge, in slot 0; slot 1 stays empty.
constexpr uint32_t kColorSlot = 0;
constexpr uint32_t kColorKind = 4;
constexpr uint32_t kBlackSlot = 1;
constexpr uint32_t kBlackKind = 3;

template <typename Codes>
int32_t SetCode(const Codes& known, uint32_t code, uint32_t* property) {
  if (std::ranges::count(known, code) == 0) return kBadValue;
  *property = code;
  return kOk;
}

}  // namespace

int32_t PrintEngine::SetLength(int32_t value, int32_t low, int32_t high, int32_t* property) const {
  if (file_prefix_.empty()) return kWrongOrder;
  if (value < low || value > high) return kBadValue;
  *property = value;
  return kOk;
}

int32_t PrintEngine::SetResolution(uint32_t axis, uint32_t dots_per_inch) {
  if (file_prefix_.empty()) return kWrongOrder;
  if (axis > 1) return kBadValue;
  return SetCode(kResolutions, dots_per_inch, &properties_.dots_per_inch[axis]);
}

int32_t PrintEngine::SetLeftMargin(int32_t dots) {
  return SetLength(dots, -kMaxLeftMargin, kMaxLeftMargin, &properties_.left_margin);
}

int32_t PrintEngine::SetTopMargin(int32_t dots_at_600) {
  return SetLength(dots_at_600, 0, kMaxTopMargin, &properties_.top_margin);
}

int32_t PrintEngine::SetPrintableWidth(int32_t dots) {
  return SetLength(dots, 1, kMaxWidthDots, &properties_.printable_width);
}

int32_t PrintEngine::SetPrintableHeight(int32_t lines) {
  return SetLength(lines, 1, kMaxHeightLines, &properties_.printable_height);
}

int32_t PrintEngine::SetPhysicalWidth(int32_t dots) {
  return SetLength(dots, 1, kMaxWidthDots, &properties_.physical_width);
}

int32_t PrintEngine::SetCartridge(uint32_t slot, uint32_t kind, uint32_t installed) {
  if (file_prefix_.empty()) return kWrongOrder;
  if (installed > 1) return kBadValue;
  if (slot == kBlackSlot) return kind == kBlackKind && installed == 0 ? kOk : kBadValue;
  if (slot != kColorSlot || kind != kColorKind) return kBadValue;
  properties_.color_cartridge = installed == 1;
  return kOk;
}

int32_t PrintEngine::SetRasterFormat(uint32_t code) {
  if (file_prefix_.empty()) return kWrongOrder;
  return code == kFourByteRaster ? kOk : kBadValue;
}

int32_t PrintEngine::SetAlignment(uint32_t item, uint32_t value) {
  if (file_prefix_.empty()) return kWrongOrder;
  const auto* const slot = std::ranges::find(kAlignmentItems, item);
  if (slot == kAlignmentItems.end() || value > 0xFF) return kBadValue;
  properties_.alignment[static_cast<size_t>(slot - kAlignmentItems.begin())] = value;
  return kOk;
}

int32_t PrintEngine::SetIntent(int32_t intent) {
  if (file_prefix_.empty()) return kWrongOrder;
  return intent == kPhotoIntent ? kOk : kBadValue;
}

int32_t PrintEngine::SetMedia(uint32_t code) {
  if (file_prefix_.empty()) return kWrongOrder;
  if (family_ == Family::kHeron) return SetCode(kHeronMedia, code, &properties_.media);
  return SetCode(kGraniteMedia, code, &properties_.media);
}

int32_t PrintEngine::SetQuality(uint32_t code) {
  if (file_prefix_.empty()) return kWrongOrder;
  return SetCode(kQualities, code, &properties_.quality);
}

int32_t PrintEngine::SetTray(int32_t tray) {
  if (file_prefix_.empty()) return kWrongOrder;
  return tray == kDiscTray ? kOk : kBadValue;
}

int32_t PrintEngine::SetSharpening(int32_t level) {
  return SetLength(level, kMinSharpening, kMaxSharpening, &properties_.sharpening);
}

}  // namespace zr7700::reference_engine
