// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/tiff_form.h"

#include <algorithm>
#include <cstring>

namespace zr7700 {
namespace {

constexpr unsigned kMostSamples = 64;

struct PhotometricRow {
  uint16_t photometric;
  unsigned samples;  // the fewest
  Colours colours;
};
constexpr PhotometricRow kPhotometrics[] = {
    {PHOTOMETRIC_MINISWHITE, 1, Colours::kGrey}, {PHOTOMETRIC_MINISBLACK, 1, Colours::kGrey},
    {PHOTOMETRIC_RGB, 3, Colours::kRgb},         {PHOTOMETRIC_PALETTE, 1, Colours::kRgb},
    {PHOTOMETRIC_SEPARATED, 4, Colours::kCmyk},  {PHOTOMETRIC_YCBCR, 3, Colours::kRgb},
    {PHOTOMETRIC_CIELAB, 3, Colours::kLab},      {PHOTOMETRIC_ICCLAB, 3, Colours::kLab},
};

uint16_t Tag(TIFF* tiff, uint32_t tag) {
  uint16_t value = 0;
  return TIFFGetFieldDefaulted(tiff, tag, &value) == 0 ? uint16_t{0} : value;
}

const PhotometricRow* FindPhotometric(const TiffForm& form) {
  for (const PhotometricRow& row : kPhotometrics) {
    if (row.photometric == form.photometric && form.samples >= row.samples) return &row;
  }
  return nullptr;
}

bool HasKnownBits(const TiffForm& form) {
  if (form.bits == 8) return true;
  if (form.bits == 16) return form.photometric != PHOTOMETRIC_PALETTE;
  return (form.bits == 1 || form.bits == 2 || form.bits == 4) && form.dot.colours != Colours::kLab;
}

// Lab's signed samples are told as unsigned ones in most files.
bool HasKnownNumbers(TIFF* tiff, const TiffForm& form) {
  const uint16_t format = Tag(tiff, TIFFTAG_SAMPLEFORMAT);
  return format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID ||
         (format == SAMPLEFORMAT_INT && form.dot.colours == Colours::kLab);
}

// Extra samples of no told meaning are no alpha: programs keep selections there.
void TakeAlpha(TIFF* tiff, const PhotometricRow& row, TiffForm& form) {
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  if (TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0) return;
  for (size_t i = 0; i < count && row.samples + i < form.samples; ++i) {
    if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
    const bool is_straight = kinds[i] == EXTRASAMPLE_UNASSALPHA;
    form.dot.alpha = is_straight ? Alpha::kStraight : Alpha::kPremultiplied;
    form.alpha_at = row.samples + i;
    return;
  }
}

// Leaves YCbCr to libjpeg where the picture is JPEG, else to libtiff.
void TakeYcbcr(TIFF* tiff, TiffForm& form) {
  if (form.photometric != PHOTOMETRIC_YCBCR) return;
  if (Tag(tiff, TIFFTAG_COMPRESSION) == COMPRESSION_JPEG) {
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
  } else {
    form.is_ycbcr = true;
  }
}

bool IsOtherInk(TIFF* tiff, const TiffForm& form) {
  return form.photometric == PHOTOMETRIC_SEPARATED && Tag(tiff, TIFFTAG_INKSET) != INKSET_CMYK;
}

std::string UnknownCompression(uint16_t compression) {
  return "The picture is a TIFF with a compression that cannot be read (number " +
         std::to_string(compression) + "); save it with LZW or without any.";
}

std::string UnknownForm(const TiffForm& form) {
  return "The picture is a TIFF of a kind that cannot be printed (colours " +
         std::to_string(form.photometric) + ", " + std::to_string(form.samples) + " samples of " +
         std::to_string(form.bits) + " bits); save it as RGB with 8 or 16 bits a colour.";
}

void ReadTags(TIFF* tiff, TiffForm& form) {
  uint16_t photometric = UINT16_MAX;
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
  form.photometric = photometric;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &form.dots.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &form.dots.height);
  form.bits = Tag(tiff, TIFFTAG_BITSPERSAMPLE);
  form.samples = Tag(tiff, TIFFTAG_SAMPLESPERPIXEL);
  form.has_planes = Tag(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE && form.samples > 1;
  form.dot.is_16_bit = form.bits == 16;
}

bool IsKnown(TIFF* tiff, const TiffForm& form) {
  return form.samples <= kMostSamples && HasKnownBits(form) && HasKnownNumbers(tiff, form) &&
         !IsOtherInk(tiff, form);
}

// A sentence on what cannot be printed of the picture; empty when all can.
std::string CheckCompression(TIFF* tiff) {
  const uint16_t compression = Tag(tiff, TIFFTAG_COMPRESSION);
  return TIFFIsCODECConfigured(compression) == 0 ? UnknownCompression(compression) : "";
}

}  // namespace

std::optional<TiffForm> ReadTiffForm(TIFF* tiff, std::string& error) {
  TiffForm form;
  ReadTags(tiff, form);
  error = CheckDots(form.dots);
  if (!error.empty()) return std::nullopt;
  const PhotometricRow* const row = FindPhotometric(form);
  if (row != nullptr) form.dot.colours = row->colours;
  error = row != nullptr && IsKnown(tiff, form) ? CheckCompression(tiff) : UnknownForm(form);
  if (!error.empty()) return std::nullopt;
  TakeAlpha(tiff, *row, form);
  TakeYcbcr(tiff, form);
  return form;
}

TiffDots::TiffDots(TIFF* tiff, const TiffForm& form) : form_(form) {
  const auto whole = static_cast<uint16_t>((1U << form.bits) - 1);
  const auto sign = static_cast<uint16_t>(1U << (form.bits - 1));
  scale_ = form.bits < 8 ? 255U / whole : 1;
  if (form.photometric == PHOTOMETRIC_MINISWHITE) flip_.fill(whole);
  if (form.photometric == PHOTOMETRIC_CIELAB) flip_ = {0, sign, sign, 0};
  if (form.photometric == PHOTOMETRIC_PALETTE) TakeColourMap(tiff);
  const bool is_wide_lab = form.dot.colours == Colours::kLab && form.bits == 16;
  if (is_wide_lab) widen_ = {form.photometric == PHOTOMETRIC_ICCLAB, true, true, false};
}

// Entries have 16 bits; old programs wrote 8 into them.
void TiffDots::TakeColourMap(TIFF* tiff) {
  colour_map_.assign(256, {});
  uint16_t* maps[3] = {};
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &maps[0], &maps[1], &maps[2]) == 0) return;
  const size_t entries = size_t{1} << form_.bits;
  bool has_8_bits = true;
  for (const uint16_t* const map : maps) {
    has_8_bits = has_8_bits && std::all_of(map, map + entries, [](int v) { return v < 256; });
  }
  for (size_t i = 0; i < entries; ++i) {
    for (size_t colour = 0; colour < 3; ++colour) {
      colour_map_[i][colour] = static_cast<uint8_t>(maps[colour][i] >> (has_8_bits ? 0 : 8));
    }
  }
}

template <typename Number>
void TiffDots::ConvertDot(const Number* samples, Number* dot) const {
  const size_t colours = form_.dot.ColourSamples();
  for (size_t i = 0; i < colours; ++i) {
    unsigned value = (samples[i] ^ unsigned{flip_[i]}) * scale_;
    if (widen_[i]) value = std::min(value + value / 256, 65535U);
    dot[i] = static_cast<Number>(value);
  }
  if (form_.dot.alpha != Alpha::kNone) {
    dot[colours] = static_cast<Number>(samples[form_.alpha_at] * scale_);
  }
}

void TiffDots::Convert(std::span<const uint8_t> samples, std::span<uint8_t> dots) const {
  const size_t from_bytes = form_.samples * form_.SampleBytes();
  const uint8_t* from = samples.data();
  for (size_t at = 0; at < dots.size(); at += form_.dot.Bytes(), from += from_bytes) {
    if (!colour_map_.empty()) {
      std::copy_n(colour_map_[from[0]].begin(), 3, &dots[at]);
      if (form_.dot.alpha != Alpha::kNone) {
        dots[at + 3] = static_cast<uint8_t>(from[form_.alpha_at] * scale_);
      }
    } else if (form_.bits == 16) {
      std::array<uint16_t, kMostSamples> words;
      std::array<uint16_t, 5> dot;
      std::memcpy(words.data(), from, from_bytes);
      ConvertDot(words.data(), dot.data());
      std::memcpy(&dots[at], dot.data(), form_.dot.Bytes());
    } else {
      ConvertDot(from, &dots[at]);
    }
  }
}

}  // namespace zr7700
