// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/png_reader.h"

#include <png.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <vector>

#include "picture_filter/dots_to_rgb.h"
#include "picture_filter/exif_facts.h"
#include "picture_filter/guarded_calls.h"
#include "picture_filter/png_exif.h"

namespace zr7700 {
namespace {

constexpr png_uint_32 kMostAcross = PNG_UINT_31_MAX;  // CheckDots() has its own say
constexpr png_alloc_size_t kMostChunk_bytes = 64 << 20;
constexpr double kMetresPerInch = kCentimetresPerInch / 100;
constexpr double kScreenGamma = 2.2;

// What libpng's error function needs.
struct Rescue {
  GuardedCalls calls;
  char complaint[128] = "";
};

[[noreturn]] void LeaveWithError(png_structp png, png_const_charp message) {
  auto& rescue = *static_cast<Rescue*>(png_get_error_ptr(png));
  std::snprintf(rescue.complaint, sizeof rescue.complaint, "%s", message);
  rescue.calls.Leave();
}

// libpng repairs what it warns of.
void PassOver(png_structp, png_const_charp) {}

class PngReader : public PictureReader {
 public:
  explicit PngReader(FILE* file) : file_(file) {}
  ~PngReader() override { png_destroy_read_struct(&png_, &info_, nullptr); }

  Next NextPicture() override {
    if (has_ended_) return Next::kEnd;
    has_ended_ = true;
    const ExifFacts exif = ReadExif(FindPngExif(file_));
    if (!Open()) return Next::kRefused;
    picture_.dots = {.width = png_get_image_width(png_, info_),
                     .height = png_get_image_height(png_, info_)};
    picture_.turn = exif.turn;
    picture_.density = ReadDensity(exif);
    const std::string complaint = CheckDots(picture_.dots);
    if (complaint.empty()) return Next::kPicture;
    Refuse(complaint);
    return Next::kRefused;
  }

  bool Begin(Dots) override {
    const bool prepared = rescue_.calls.Run([&] { Transform(); });
    if (!prepared) return RefuseDamaged(rescue_.complaint);
    const DotForm form = Form();
    const size_t line_bytes = png_get_rowbytes(png_, info_);
    if (line_bytes != form.Bytes() * picture_.dots.width) return RefuseDamaged("strange lines");
    converter_.emplace(form, ReadProfile());
    lacks_profile_ = converter_->lacks_profile();
    decoded_ = picture_.dots;
    line_.resize(line_bytes);
    return png_get_interlace_type(png_, info_) == PNG_INTERLACE_NONE || ReadWhole(line_bytes);
  }

  bool ReadLine(std::span<uint8_t> rgb) override {
    if (!whole_.empty()) {
      const auto from = whole_.begin() + static_cast<std::ptrdiff_t>(next_line_++ * line_.size());
      std::copy_n(from, line_.size(), line_.begin());
    } else if (!rescue_.calls.Run([&] { png_read_row(png_, line_.data(), nullptr); })) {
      return RefuseDamaged(rescue_.complaint);
    }
    converter_->Convert(line_, rgb);
    return true;
  }

  // Whether the last of the picture's checksums is right stands behind its last line.
  bool End() override {
    return rescue_.calls.Run([&] { png_read_end(png_, nullptr); }) ||
           RefuseDamaged(rescue_.complaint);
  }

 private:
  bool Open() {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &rescue_, LeaveWithError, PassOver);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ == nullptr) return Refuse("There is no memory for the picture; print again later.");
    rewind(file_);
    const bool opened = rescue_.calls.Run([&] {
      png_init_io(png_, file_);
      png_set_user_limits(png_, kMostAcross, kMostAcross);
      png_set_chunk_malloc_max(png_, kMostChunk_bytes);
      png_read_info(png_, info_);
    });
    return opened || RefuseDamaged(rescue_.complaint);
  }

  Density ReadDensity(const ExifFacts& exif) {
    png_uint_32 across = 0;
    png_uint_32 down = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(png_, info_, &across, &down, &unit) == 0)
      return exif.density.value_or(Density{});
    if (unit != PNG_RESOLUTION_METER) return DensityOfShape(across, down);
    return DensityPerInch(across * kMetresPerInch, down * kMetresPerInch);
  }

  // Grey or RGB of 8 or 16 bits, with alpha where anything is transparent. Called guarded.
  void Transform() {
    png_set_expand(png_);
    if (std::endian::native == std::endian::little) png_set_swap(png_);
    double gamma = 0;
    if (!png_get_valid(png_, info_, PNG_INFO_iCCP) && !png_get_valid(png_, info_, PNG_INFO_sRGB) &&
        png_get_gAMA(png_, info_, &gamma) != 0) {
      png_set_gamma(png_, kScreenGamma, gamma);
    }
    png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
  }

  DotForm Form() const {
    const png_byte type = png_get_color_type(png_, info_);
    return {.colours = (type & PNG_COLOR_MASK_COLOR) != 0 ? Colours::kRgb : Colours::kGrey,
            .alpha = (type & PNG_COLOR_MASK_ALPHA) != 0 ? Alpha::kStraight : Alpha::kNone,
            .is_16_bit = png_get_bit_depth(png_, info_) == 16};
  }

  // Owned by libpng; empty without a profile.
  std::span<const uint8_t> ReadProfile() {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 bytes = 0;
    if (png_get_iCCP(png_, info_, &name, &compression, &profile, &bytes) == 0) return {};
    return {profile, bytes};
  }

  bool ReadWhole(size_t line_bytes) {
    const std::string complaint = CheckHeldBytes(uint64_t{line_bytes} * decoded_.height);
    if (!complaint.empty()) return Refuse(complaint);
    whole_.resize(line_bytes * decoded_.height);
    std::vector<png_bytep> lines(decoded_.height);
    for (size_t y = 0; y < lines.size(); ++y) lines[y] = &whole_[y * line_bytes];
    return rescue_.calls.Run([&] { png_read_image(png_, lines.data()); }) ||
           RefuseDamaged(rescue_.complaint);
  }

  FILE* file_;
  Rescue rescue_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  bool has_ended_ = false;
  std::optional<DotsToRgb> converter_;
  std::vector<uint8_t> line_;
  std::vector<uint8_t> whole_;  // of an interlaced picture
  size_t next_line_ = 0;
};

}  // namespace

std::unique_ptr<PictureReader> MakePngReader(FILE* file) {
  return std::make_unique<PngReader>(file);
}

}  // namespace zr7700
