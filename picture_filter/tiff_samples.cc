// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/tiff_samples.h"

#include <algorithm>
#include <cstring>

namespace zr7700 {
namespace {

uint32_t LongTag(TIFF* tiff, uint32_t tag, uint32_t most) {
  uint32_t value = 0;
  if (TIFFGetFieldDefaulted(tiff, tag, &value) == 0 || value == 0) return most;
  return value;
}

}  // namespace

// Strips with whole dots are read by single lines, so that a picture in one strip is not held.
TiffSamples::TiffSamples(TIFF* tiff, const TiffForm& form)
    : tiff_(tiff),
      form_(form),
      is_tiled_(TIFFIsTiled(tiff) != 0),
      block_width_(is_tiled_ ? LongTag(tiff, TIFFTAG_TILEWIDTH, 0) : form.dots.width),
      block_height_(1) {
  if (is_tiled_) {
    block_height_ = LongTag(tiff, TIFFTAG_TILELENGTH, 0);
  } else if (form.has_planes) {
    block_height_ =
        std::min(LongTag(tiff, TIFFTAG_ROWSPERSTRIP, form.dots.height), form.dots.height);
  }
  block_line_bytes_ =
      static_cast<size_t>(is_tiled_ ? TIFFTileRowSize(tiff) : TIFFScanlineSize(tiff));
  block_bytes_ =
      is_tiled_ ? static_cast<size_t>(TIFFTileSize(tiff)) : block_line_bytes_ * block_height_;
}

std::string TiffSamples::Prepare() {
  const size_t plane_samples = form_.has_planes ? 1 : form_.samples;
  const uint64_t least_bytes = (uint64_t{block_width_} * plane_samples * form_.bits + 7) / 8;
  if (block_width_ == 0 || block_height_ == 0 || block_line_bytes_ < least_bytes ||
      block_bytes_ / block_height_ < least_bytes) {
    return "The picture's parts have no sensible size; save it again in the program that it came "
           "from.";
  }
  const uint64_t band_bytes = uint64_t{form_.LineBytes()} * block_height_;
  std::string complaint = CheckHeldBytes(std::max<uint64_t>(block_bytes_, band_bytes));
  if (!complaint.empty()) return complaint;
  block_.resize(block_bytes_);
  band_.resize(static_cast<size_t>(band_bytes));
  return {};
}

std::span<const uint8_t> TiffSamples::ReadLine() {
  const uint32_t in_band = next_line_ % block_height_;
  if (in_band == 0 && !ReadBand()) return {};
  ++next_line_;
  return std::span(band_).subspan(in_band * form_.LineBytes(), form_.LineBytes());
}

bool TiffSamples::ReadBand() {
  const uint32_t lines = std::min(block_height_, form_.dots.height - next_line_);
  const auto planes = static_cast<uint16_t>(form_.has_planes ? form_.samples : 1);
  for (uint16_t plane = 0; plane < planes; ++plane) {
    for (uint32_t left = 0; left < form_.dots.width; left += block_width_) {
      if (!ReadBlock(left, plane)) return false;
      for (uint32_t line = 0; line < lines; ++line) Unpack(left, line, plane);
    }
  }
  return true;
}

bool TiffSamples::ReadBlock(uint32_t left, uint16_t plane) {
  const auto bytes = static_cast<tmsize_t>(block_.size());
  if (is_tiled_) {
    const uint32_t tile = TIFFComputeTile(tiff_, left, next_line_, 0, plane);
    return TIFFReadEncodedTile(tiff_, tile, block_.data(), bytes) >= 0;
  }
  if (form_.has_planes) {
    const uint32_t strip = TIFFComputeStrip(tiff_, next_line_, plane);
    return TIFFReadEncodedStrip(tiff_, strip, block_.data(), bytes) >= 0;
  }
  return TIFFReadScanline(tiff_, block_.data(), next_line_, 0) == 1;
}

// Sample `i` of a block's line, of up to 8 bits.
unsigned TiffSamples::Sample(const uint8_t* line, size_t i) const {
  if (form_.bits == 8) return line[i];
  const size_t at = i * form_.bits;
  return (line[at / 8] >> (8 - form_.bits - at % 8)) & ((1U << form_.bits) - 1);
}

void TiffSamples::Unpack(uint32_t left, uint32_t line, uint16_t plane) {
  const size_t dots = std::min(block_width_, form_.dots.width - left);
  const size_t count = dots * (form_.has_planes ? 1 : form_.samples);
  const size_t step = form_.has_planes ? form_.samples : 1;
  const uint8_t* const from = block_.data() + line * block_line_bytes_;
  const size_t first = size_t{left} * form_.samples + plane;
  uint8_t* const to = band_.data() + line * form_.LineBytes() + first * form_.SampleBytes();
  for (size_t i = 0; i < count; ++i) {
    if (form_.bits == 16) {
      std::memcpy(to + i * step * 2, from + i * 2, 2);
    } else {
      to[i * step] = static_cast<uint8_t>(Sample(from, i));
    }
  }
}

}  // namespace zr7700
