// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/dots_to_rgb.h"

#include <lcms2.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace zr7700 {
namespace {

using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;

// What the colours of a form are to lcms2.
struct ColoursRow {
  cmsColorSpaceSignature space;
  uint32_t pixel_type;
  size_t samples;
};
constexpr ColoursRow kColours[] = {{cmsSigGrayData, PT_GRAY, 1},
                                   {cmsSigRgbData, PT_RGB, 3},
                                   {cmsSigCmykData, PT_CMYK, 4},
                                   {cmsSigLabData, PT_Lab, 3}};

const ColoursRow& RowOf(Colours colours) { return kColours[static_cast<size_t>(colours)]; }

uint32_t FormatOf(const DotForm& form) {
  const ColoursRow& row = RowOf(form.colours);
  return COLORSPACE_SH(row.pixel_type) | CHANNELS_SH(static_cast<uint32_t>(row.samples)) |
         EXTRA_SH(form.alpha == Alpha::kNone ? 0U : 1U) | BYTES_SH(form.is_16_bit ? 2U : 1U);
}

bool Describes(const Profile& profile, Colours colours) {
  if (profile == nullptr || cmsGetColorSpace(profile.get()) != RowOf(colours).space) return false;
  const cmsProfileClassSignature kind = cmsGetDeviceClass(profile.get());
  return kind == cmsSigInputClass || kind == cmsSigDisplayClass || kind == cmsSigOutputClass ||
         kind == cmsSigColorSpaceClass;
}

Profile OpenProfile(std::span<const uint8_t> profile) {
  const bool is_profile =
      !profile.empty() && profile.size() <= std::numeric_limits<uint32_t>::max();
  return {is_profile ? cmsOpenProfileFromMem(profile.data(), static_cast<uint32_t>(profile.size()))
                     : nullptr,
          &cmsCloseProfile};
}

void* CreateTransform(const DotForm& form, const Profile& profile) {
  const Profile srgb(cmsCreate_sRGBProfile(), &cmsCloseProfile);
  return cmsCreateTransform(profile.get(), FormatOf(form), srgb.get(), TYPE_RGB_8,
                            INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION);
}

uint16_t Word(const uint8_t* bytes) {
  uint16_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// Sample `i` of a line in 8 bits, rounded.
uint8_t Sample(const DotForm& form, std::span<const uint8_t> dots, size_t i) {
  if (!form.is_16_bit) return dots[i];
  return static_cast<uint8_t>((Word(&dots[i * 2]) * 255U + 32767U) / 65535U);
}

// The product of two shares of 255, rounded.
uint8_t Share(unsigned a, unsigned b) { return static_cast<uint8_t>((a * b + 127) / 255); }

// Divides the colours of a dot by its alpha.
template <typename Number>
void Straighten(uint8_t* dot, size_t colours) {
  constexpr uint64_t kWhole = std::numeric_limits<Number>::max();
  Number samples[5];
  std::memcpy(samples, dot, (colours + 1) * sizeof(Number));
  const uint64_t alpha = samples[colours];
  for (size_t i = 0; i < colours && alpha > 0; ++i) {
    samples[i] = static_cast<Number>(std::min((samples[i] * kWhole + alpha / 2) / alpha, kWhole));
  }
  std::memcpy(dot, samples, (colours + 1) * sizeof(Number));
}

void StraightenLine(const DotForm& form, std::span<uint8_t> dots) {
  for (size_t at = 0; at + form.Bytes() <= dots.size(); at += form.Bytes()) {
    if (form.is_16_bit) {
      Straighten<uint16_t>(&dots[at], form.ColourSamples());
    } else {
      Straighten<uint8_t>(&dots[at], form.ColourSamples());
    }
  }
}

}  // namespace

size_t DotForm::ColourSamples() const { return RowOf(colours).samples; }

DotsToRgb::DotsToRgb(const DotForm& form, std::span<const uint8_t> profile)
    : form_(form), transform_(nullptr, [](void* transform) { cmsDeleteTransform(transform); }) {
  Profile opened = OpenProfile(profile);
  if (Describes(opened, form.colours)) transform_.reset(CreateTransform(form, opened));
  lacks_profile_ = !profile.empty() && transform_ == nullptr;
  if (form.colours == Colours::kLab && transform_ == nullptr) {
    opened.reset(cmsCreateLab4Profile(nullptr));
    transform_.reset(CreateTransform(form, opened));
  }
}

void DotsToRgb::Convert(std::span<uint8_t> dots, std::span<uint8_t> rgb) const {
  if (form_.alpha == Alpha::kPremultiplied) StraightenLine(form_, dots);
  if (transform_ != nullptr) {
    cmsDoTransform(transform_.get(), dots.data(), rgb.data(),
                   static_cast<uint32_t>(rgb.size() / 3));
  } else {
    ConvertPlainly(dots, rgb);
  }
  if (form_.alpha != Alpha::kNone) LayOnWhite(dots, rgb);
}

void DotsToRgb::ConvertPlainly(std::span<const uint8_t> dots, std::span<uint8_t> rgb) const {
  const size_t samples = form_.Samples();
  if (form_.colours == Colours::kRgb && samples == 3 && !form_.is_16_bit) {
    std::copy_n(dots.begin(), rgb.size(), rgb.begin());
    return;
  }
  for (size_t i = 0; i < rgb.size(); ++i) {
    const size_t dot = i / 3 * samples;
    const size_t colour = form_.colours == Colours::kGrey ? 0 : i % 3;
    rgb[i] = Sample(form_, dots, dot + colour);
    if (form_.colours == Colours::kCmyk) {
      rgb[i] = Share(255U - rgb[i], 255U - Sample(form_, dots, dot + 3));
    }
  }
}

void DotsToRgb::LayOnWhite(std::span<const uint8_t> dots, std::span<uint8_t> rgb) const {
  for (size_t i = 0; i < rgb.size(); ++i) {
    const size_t dot = i / 3 * form_.Samples();
    const unsigned alpha = Sample(form_, dots, dot + form_.ColourSamples());
    rgb[i] = static_cast<uint8_t>(255 - Share(255U - rgb[i], alpha));
  }
}

}  // namespace zr7700
