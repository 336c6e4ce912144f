// Turns the dots of a picture, whatever their colours, into sRGB on white.
//
// A profile is followed by lcms2, relative colorimetric with black-point compensation: colours that
// sRGB has stay what they are, white stays the disc's white and black the deepest black. Without a
// profile red, green and blue count as sRGB, grey as sRGB's greys, and the inks as filters of white
// light: red = (1 - cyan) x (1 - black), and so on.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_DOTS_TO_RGB_H_
#define ZR7700_PICTURE_FILTER_DOTS_TO_RGB_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace zr7700 {

enum class Colours {
  kGrey,  // 0 is black
  kRgb,
  kCmyk,  // 0 is no ink
  kLab,   // CIE L*a*b*: the whole range of numbers for L* 0 to 100; a* and b* plus 128
};

enum class Alpha {
  kNone,
  kStraight,       // after the colours: 0 is transparent
  kPremultiplied,  // likewise, and the colours are multiplied by it already
};

// Samples follow each other dot by dot: bytes, or 16 bits each in the machine's byte order.
struct DotForm {
  Colours colours = Colours::kRgb;
  Alpha alpha = Alpha::kNone;
  bool is_16_bit = false;

  // How many samples a dot has, and how many of them are colours.
  size_t ColourSamples() const;
  size_t Samples() const { return ColourSamples() + (alpha == Alpha::kNone ? 0 : 1); }
  size_t Bytes() const { return Samples() * (is_16_bit ? 2 : 1); }
};

// Not for use by two threads at once.
class DotsToRgb {
 public:
  // `profile` is an ICC profile or empty.
  DotsToRgb(const DotForm& form, std::span<const uint8_t> profile);

  // Whether there was a profile that cannot be used (damaged, or of other colours): it is left out.
  bool lacks_profile() const { return lacks_profile_; }

  // One line: form.Bytes() for each of rgb.size() / 3 dots, which are overwritten on the way.
  void Convert(std::span<uint8_t> dots, std::span<uint8_t> rgb) const;

 private:
  void ConvertPlainly(std::span<const uint8_t> dots, std::span<uint8_t> rgb) const;
  void LayOnWhite(std::span<const uint8_t> dots, std::span<uint8_t> rgb) const;

  DotForm form_;
  bool lacks_profile_ = false;
  std::unique_ptr<void, void (*)(void*)> transform_;  // of lcms2; null without a profile
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_DOTS_TO_RGB_H_
