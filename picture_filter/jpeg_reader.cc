// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/jpeg_reader.h"

// libjpeg's headers need this one before them.
#include <cstdio>
//
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

#include "picture_filter/dots_to_rgb.h"
#include "picture_filter/exif_facts.h"
#include "picture_filter/guarded_calls.h"

namespace zr7700 {
namespace {

constexpr int kExifMarker = JPEG_APP0 + 1;
constexpr int kProfileMarker = JPEG_APP0 + 2;
constexpr unsigned kWholeMarker = 0xFFFF;
constexpr char kExifName[] = "Exif\0";  // six bytes with the literal's own zero

// Cameras write a dozen scans; thousands are only there to keep a reader busy.
constexpr int kMostScans = 100;

// What libjpeg complains of and what still leaves the whole picture.
constexpr std::array kHarmless = {JWRN_ADOBE_XFORM, JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR,
                                  JWRN_TOO_MUCH_DATA};

// libjpeg's decoder with what its error functions need. It knows its own address.
struct Decoder {
  jpeg_decompress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg_progress_mgr progress;
  GuardedCalls calls;
  char complaint[JMSG_LENGTH_MAX];  // empty while all is well
};

Decoder& DecoderOf(j_common_ptr jpeg) { return *static_cast<Decoder*>(jpeg->client_data); }

[[noreturn]] void LeaveWithError(j_common_ptr jpeg) {
  Decoder& decoder = DecoderOf(jpeg);
  jpeg->err->format_message(jpeg, decoder.complaint);
  decoder.calls.Leave();
}

// Levels below 0 are damage that libjpeg goes on after, with grey in the picture.
void TakeMessage(j_common_ptr jpeg, int level) {
  const bool is_harmless =
      std::find(kHarmless.begin(), kHarmless.end(), jpeg->err->msg_code) != kHarmless.end();
  if (level < 0 && !is_harmless) LeaveWithError(jpeg);
}

void LimitScans(j_common_ptr jpeg) {
  if (DecoderOf(jpeg).jpeg.input_scan_number <= kMostScans) return;
  std::strcpy(DecoderOf(jpeg).complaint, "too many scans");
  DecoderOf(jpeg).calls.Leave();
}

// Bytes that libjpeg holds of a picture with several scans: 16 bits for every sample.
uint64_t HeldBytes(jpeg_decompress_struct& jpeg) {
  if (!jpeg_has_multiple_scans(&jpeg)) return 0;
  uint64_t bytes = 0;
  for (int i = 0; i < jpeg.num_components; ++i) {
    bytes += uint64_t{jpeg.comp_info[i].width_in_blocks} * jpeg.comp_info[i].height_in_blocks *
             DCTSIZE2 * sizeof(JCOEF);
  }
  return bytes;
}

std::optional<DotForm> FormOf(const jpeg_decompress_struct& jpeg) {
  switch (jpeg.jpeg_color_space) {
    case JCS_GRAYSCALE:
      return DotForm{.colours = Colours::kGrey};
    case JCS_RGB:
    case JCS_YCbCr:
      return DotForm{.colours = Colours::kRgb};
    case JCS_CMYK:
    case JCS_YCCK:
      return DotForm{.colours = Colours::kCmyk};
    default:
      return std::nullopt;
  }
}

J_COLOR_SPACE OutputOf(Colours colours) {
  if (colours == Colours::kGrey) return JCS_GRAYSCALE;
  return colours == Colours::kCmyk ? JCS_CMYK : JCS_RGB;
}

// The largest reduction, by 8 at most, that leaves enough dots.
unsigned ReductionFor(Dots dots, Dots enough) {
  unsigned reduction = 8;
  while (reduction > 1 &&
         (dots.width / reduction < enough.width || dots.height / reduction < enough.height)) {
    reduction /= 2;
  }
  return reduction;
}

class JpegReader : public PictureReader {
 public:
  explicit JpegReader(FILE* file) : file_(file) {}
  ~JpegReader() override { Close(); }

  Next NextPicture() override {
    if (has_ended_) return Next::kEnd;
    has_ended_ = true;
    return Open() && CheckHeader() ? Next::kPicture : Next::kRefused;
  }

  bool Begin(Dots enough) override {
    jpeg_decompress_struct& jpeg = decoder_.jpeg;
    const DotForm form = *FormOf(jpeg);
    std::vector<uint8_t> profile;
    const bool is_whole = ReadProfile(profile);
    converter_.emplace(form, profile);
    lacks_profile_ = !is_whole || converter_->lacks_profile();
    jpeg.out_color_space = OutputOf(form.colours);
    jpeg.scale_num = 1;
    jpeg.scale_denom = ReductionFor(picture_.dots, enough);
    const bool started = decoder_.calls.Run([&] { jpeg_start_decompress(&jpeg); });
    if (!started) return RefuseDamaged(decoder_.complaint);
    decoded_ = {.width = jpeg.output_width, .height = jpeg.output_height};
    line_.resize(jpeg.output_width * form.Bytes());
    return true;
  }

  bool ReadLine(std::span<uint8_t> rgb) override {
    JSAMPROW row = line_.data();
    const bool read = decoder_.calls.Run([&] { jpeg_read_scanlines(&decoder_.jpeg, &row, 1); });
    if (!read) return RefuseDamaged(decoder_.complaint);
    if (decoder_.jpeg.out_color_space == JCS_CMYK && decoder_.jpeg.saw_Adobe_marker) {
      for (uint8_t& sample : line_) sample ^= 0xFF;
    }
    converter_->Convert(line_, rgb);
    return true;
  }

  bool End() override {
    const bool ended = decoder_.calls.Run([&] { jpeg_finish_decompress(&decoder_.jpeg); });
    return ended || RefuseDamaged(decoder_.complaint);
  }

 private:
  bool Open() {
    decoder_.jpeg.err = jpeg_std_error(&decoder_.errors);
    decoder_.errors.error_exit = LeaveWithError;
    decoder_.errors.emit_message = TakeMessage;
    decoder_.progress.progress_monitor = LimitScans;
    decoder_.jpeg.client_data = &decoder_;
    rewind(file_);
    const bool opened = decoder_.calls.Run([&] {
      jpeg_create_decompress(&decoder_.jpeg);
      decoder_.jpeg.progress = &decoder_.progress;
      jpeg_stdio_src(&decoder_.jpeg, file_);
      jpeg_save_markers(&decoder_.jpeg, kExifMarker, kWholeMarker);
      jpeg_save_markers(&decoder_.jpeg, kProfileMarker, kWholeMarker);
      jpeg_read_header(&decoder_.jpeg, TRUE);
    });
    return opened || RefuseDamaged(decoder_.complaint);
  }

  bool CheckHeader() {
    jpeg_decompress_struct& jpeg = decoder_.jpeg;
    picture_.dots = {.width = jpeg.image_width, .height = jpeg.image_height};
    std::string complaint = CheckDots(picture_.dots);
    if (complaint.empty()) complaint = CheckHeldBytes(HeldBytes(jpeg));
    if (!complaint.empty()) return Refuse(complaint);
    if (!FormOf(jpeg)) {
      return Refuse("The picture is a JPEG with colours of an unknown kind; save it as RGB.");
    }
    TakeFacts();
    return true;
  }

  // The turn, and the density: JFIF's, which stands first in a file, before that of Exif.
  void TakeFacts() {
    const jpeg_decompress_struct& jpeg = decoder_.jpeg;
    const ExifFacts exif = FindExif();
    picture_.turn = exif.turn;
    if (jpeg.saw_JFIF_marker && (jpeg.density_unit == 1 || jpeg.density_unit == 2)) {
      const double per_inch = jpeg.density_unit == 2 ? kCentimetresPerInch : 1;
      picture_.density = DensityPerInch(jpeg.X_density * per_inch, jpeg.Y_density * per_inch);
    } else if (exif.density) {
      picture_.density = *exif.density;
    } else if (jpeg.saw_JFIF_marker) {
      picture_.density = DensityOfShape(jpeg.X_density, jpeg.Y_density);
    }
  }

  ExifFacts FindExif() const {
    for (auto* marker = decoder_.jpeg.marker_list; marker != nullptr; marker = marker->next) {
      if (marker->marker == kExifMarker && marker->data_length > sizeof kExifName &&
          std::memcmp(marker->data, kExifName, sizeof kExifName) == 0) {
        return ReadExif({marker->data, marker->data_length});
      }
    }
    return {};
  }

  // The chunks of an ICC profile, put together; empty without one. False when chunks are missing.
  bool ReadProfile(std::vector<uint8_t>& profile) {
    JOCTET* bytes = nullptr;
    unsigned count = 0;
    const bool read =
        decoder_.calls.Run([&] { jpeg_read_icc_profile(&decoder_.jpeg, &bytes, &count); });
    const std::unique_ptr<JOCTET, decltype(&std::free)> owned(bytes, &std::free);
    if (read && bytes != nullptr) profile.assign(bytes, bytes + count);
    return read;
  }

  void Close() {
    if (decoder_.jpeg.err != nullptr) jpeg_destroy_decompress(&decoder_.jpeg);
  }

  FILE* file_;
  Decoder decoder_ = {};
  bool has_ended_ = false;
  std::optional<DotsToRgb> converter_;
  std::vector<uint8_t> line_;
};

}  // namespace

std::unique_ptr<PictureReader> MakeJpegReader(FILE* file) {
  return std::make_unique<JpegReader>(file);
}

}  // namespace zr7700
