// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/exif_facts.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <vector>

namespace zr7700 {
namespace {

using Exif = std::unique_ptr<ExifData, decltype(&exif_data_unref)>;

constexpr std::array<uint8_t, 6> kPrefix = {'E', 'x', 'i', 'f', 0, 0};
constexpr int kUnitInch = 2;
constexpr int kUnitCentimetre = 3;

// The first entry of the main picture with this tag and format; null without one.
const ExifEntry* Find(const ExifData* data, ExifTag tag, ExifFormat format) {
  const ExifEntry* const entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], tag);
  const bool is_whole = entry != nullptr && entry->format == format && entry->components >= 1 &&
                        entry->data != nullptr &&
                        entry->size >= exif_format_get_size(entry->format);
  return is_whole ? entry : nullptr;
}

int Short(ExifData* data, ExifTag tag, int otherwise) {
  const ExifEntry* const entry = Find(data, tag, EXIF_FORMAT_SHORT);
  return entry == nullptr ? otherwise : exif_get_short(entry->data, exif_data_get_byte_order(data));
}

double Rational(ExifData* data, ExifTag tag) {
  const ExifEntry* const entry = Find(data, tag, EXIF_FORMAT_RATIONAL);
  if (entry == nullptr) return 0;
  const ExifRational value = exif_get_rational(entry->data, exif_data_get_byte_order(data));
  return value.denominator == 0 ? 0 : double{1} * value.numerator / value.denominator;
}

std::optional<Density> DensityOf(ExifData* data) {
  const double across = Rational(data, EXIF_TAG_X_RESOLUTION);
  const double down = Rational(data, EXIF_TAG_Y_RESOLUTION);
  const int unit = Short(data, EXIF_TAG_RESOLUTION_UNIT, kUnitInch);
  if (across <= 0 || down <= 0 || (unit != kUnitInch && unit != kUnitCentimetre)) return {};
  const double per_inch = unit == kUnitCentimetre ? kCentimetresPerInch : 1;
  return DensityPerInch(across * per_inch, down * per_inch);
}

}  // namespace

ExifFacts ReadExif(std::span<const uint8_t> exif) {
  std::vector<uint8_t> bytes(exif.begin(), exif.end());
  if (bytes.size() < kPrefix.size() || !std::equal(kPrefix.begin(), kPrefix.end(), bytes.begin())) {
    bytes.insert(bytes.begin(), kPrefix.begin(), kPrefix.end());
  }
  if (bytes.size() > std::numeric_limits<unsigned>::max()) return {};
  const Exif data(exif_data_new(), &exif_data_unref);
  if (data == nullptr) return {};
  // Otherwise libexif adds what it misses: a resolution of 72, for one.
  exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_load_data(data.get(), bytes.data(), static_cast<unsigned>(bytes.size()));
  return {.turn = TurnOfOrientation(Short(data.get(), EXIF_TAG_ORIENTATION, 1)),
          .density = DensityOf(data.get())};
}

}  // namespace zr7700
