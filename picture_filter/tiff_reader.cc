// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/tiff_reader.h"

#include <optional>
#include <vector>

#include "picture_filter/dots_to_rgb.h"
#include "picture_filter/tiff_file.h"
#include "picture_filter/tiff_form.h"
#include "picture_filter/tiff_rgba.h"
#include "picture_filter/tiff_samples.h"

namespace zr7700 {
namespace {

Density ReadDensity(TIFF* tiff) {
  float across = 0;
  float down = 0;
  uint16_t unit = RESUNIT_INCH;
  TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &across);
  TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &down);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  if (unit == RESUNIT_NONE) return DensityOfShape(across, down);
  const double per_inch = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
  return DensityPerInch(across * per_inch, down * per_inch);
}

Turn ReadTurn(TIFF* tiff) {
  uint16_t orientation = ORIENTATION_TOPLEFT;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);
  return TurnOfOrientation(orientation);
}

// Owned by libtiff; empty without a profile.
std::span<const uint8_t> ReadProfile(TIFF* tiff) {
  uint32_t bytes = 0;
  void* profile = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &bytes, &profile) == 0) return {};
  return {static_cast<const uint8_t*>(profile), bytes};
}

bool IsPreviewOrMask(TIFF* tiff) {
  uint32_t kind = 0;
  return TIFFGetField(tiff, TIFFTAG_SUBFILETYPE, &kind) != 0 &&
         (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
}

class TiffReader : public PictureReader {
 public:
  explicit TiffReader(FILE* file) : file_(file) {}

  Next NextPicture() override {
    if (file_.get() == nullptr) return Damaged();
    Next next;
    do {
      next = NextDirectory();
      // A file of nothing but a preview is printed with it.
      if (next == Next::kEnd && pictures_ == 0) next = FirstDirectory();
    } while (next == Next::kPicture && IsPreviewOrMask(file_.get()) && !takes_previews_);
    if (next != Next::kPicture) return next;
    ++pictures_;
    return TakeFacts() ? Next::kPicture : Next::kRefused;
  }

  bool Begin(Dots) override {
    converter_.emplace(form_->dot, ReadProfile(file_.get()));
    lacks_profile_ = converter_->lacks_profile();
    decoded_ = form_->dots;
    line_.resize(form_->dot.Bytes() * decoded_.width);
    return form_->is_ycbcr ? BeginRgba() : BeginSamples();
  }

  bool ReadLine(std::span<uint8_t> rgb) override {
    if (form_->is_ycbcr) {
      rgba_.NextLine(line_);
    } else {
      const std::span<const uint8_t> samples = samples_->ReadLine();
      if (samples.empty() || file_.IsDamaged()) return RefuseDamaged(file_.complaint());
      dots_->Convert(samples, line_);
    }
    converter_->Convert(line_, rgb);
    return true;
  }

  bool End() override { return !file_.IsDamaged() || RefuseDamaged(file_.complaint()); }

 private:
  Next Damaged() {
    RefuseDamaged(file_.complaint());
    return Next::kRefused;
  }

  // libtiff is at the first directory once the file is open.
  Next NextDirectory() {
    TIFF* const tiff = file_.get();
    if (!has_begun_) {
      has_begun_ = true;
      return Next::kPicture;
    }
    if (TIFFLastDirectory(tiff) != 0) return Next::kEnd;
    return TIFFReadDirectory(tiff) != 0 ? Next::kPicture : Damaged();
  }

  Next FirstDirectory() {
    takes_previews_ = true;
    return TIFFSetDirectory(file_.get(), 0) != 0 ? Next::kPicture : Damaged();
  }

  bool TakeFacts() {
    TIFF* const tiff = file_.get();
    std::string error;
    form_ = ReadTiffForm(tiff, error);
    if (!form_) return Refuse(error);
    picture_ = {.dots = form_->dots, .density = ReadDensity(tiff), .turn = ReadTurn(tiff)};
    return true;
  }

  bool BeginSamples() {
    dots_.emplace(file_.get(), *form_);
    samples_.emplace(file_.get(), *form_);
    const std::string complaint = samples_->Prepare();
    return complaint.empty() || Refuse(complaint);
  }

  bool BeginRgba() {
    const std::string complaint = CheckHeldBytes(uint64_t{4} * decoded_.width * decoded_.height);
    if (!complaint.empty()) return Refuse(complaint);
    return rgba_.Read(file_.get(), decoded_) || RefuseDamaged(file_.complaint());
  }

  TiffFile file_;
  bool has_begun_ = false;
  bool takes_previews_ = false;
  unsigned pictures_ = 0;
  // Of the present picture:
  std::optional<TiffForm> form_;
  std::optional<TiffDots> dots_;
  std::optional<TiffSamples> samples_;
  TiffRgba rgba_;
  std::optional<DotsToRgb> converter_;
  std::vector<uint8_t> line_;
};

}  // namespace

std::unique_ptr<PictureReader> MakeTiffReader(FILE* file) {
  return std::make_unique<TiffReader>(file);
}

}  // namespace zr7700
