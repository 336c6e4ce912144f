// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/fitter_job.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "disc/canvas.h"
#include "disc/page_writer.h"
#include "disc/placement.h"
#include "disc/ring_mask.h"
#include "disc/scaler.h"
#include "disc/target_page.h"
#include "disc/user_message.h"
#include "page_fitter/page_check.h"
#include "page_fitter/page_layout.h"
#include "page_fitter/page_reader.h"
#include "page_fitter/pixel_form.h"

namespace zr7700 {
namespace {

constexpr double kBlurred_dpi = 150;

bool Refuse(const std::string& sentence) {
  TellError(sentence);
  return false;
}

class FitterJob {
 public:
  FitterJob(const FilterArguments& arguments, const TargetPage& target, Canvas& canvas)
      : scaling_(ScalingOf(arguments.option_count, arguments.options)),
        position_(PositionOf(arguments.option_count, arguments.options)),
        target_(target),
        canvas_(canvas),
        writer_(STDOUT_FILENO) {}

  // All pages of the document, once. False, with a sentence told, when one cannot go on.
  bool FitDocument(int descriptor) {
    PageReader reader(descriptor);
    if (reader.IsEmpty()) return RefuseNothing();
    if (!reader.IsRaster()) {
      return Refuse("The document is no CUPS raster; print the picture or the PDF itself.");
    }
    cups_page_header2_t header;
    PageReader::Next next;
    while ((next = reader.NextPage(header)) == PageReader::Next::kPage) {
      if (!FitPage(reader, header)) return false;
    }
    if (next != PageReader::Next::kEnd) return RefuseCutShort();
    return pages_ > 0 || RefuseNothing();  // a raster may be a beginning without pages
  }

  unsigned pages() const { return pages_; }

 private:
  bool FitPage(PageReader& reader, const cups_page_header2_t& header) {
    const std::string complaint = CheckPage(header);
    if (!complaint.empty()) return Refuse(complaint);
    const Place place = LayOut(header, target_, scaling_, position_);
    if (!DrawPage(reader, header, place)) return RefuseCutShort();
    WhitenOffTheRing(target_, canvas_);
    WarnOfBlur(header, place);
    return HandOn(header, place);
  }

  bool DrawPage(PageReader& reader, const cups_page_header2_t& header, const Place& place) {
    canvas_.Clear();
    line_.resize(header.cupsBytesPerLine);
    rgb_.resize(size_t{header.cupsWidth} * 3);
    Scaler scaler(header.cupsWidth, header.cupsHeight, place, canvas_);
    for (uint32_t y = 0; y < header.cupsHeight; ++y) {
      if (!reader.ReadLine(line_)) return false;
      ToRgb(PixelFormOf(header), line_, rgb_);
      if (target_.grey) ToGrey(rgb_);
      scaler.AddLine(rgb_);
    }
    return true;
  }

  void WarnOfBlur(const cups_page_header2_t& header, const Place& place) {
    const double dpi = static_cast<double>(header.cupsWidth) * target_.header.HWResolution[0] /
                       static_cast<double>(place.width);
    if (warned_ || dpi >= kBlurred_dpi) return;
    warned_ = true;
    TellWarning("The page has only " + std::to_string(static_cast<int>(dpi)) +
                " dots an inch on the disc and will look blurred; send it with 300 or more.");
  }

  // The printer knows no copies: every disc is a page of its own.
  bool HandOn(const cups_page_header2_t& header, const Place& place) {
    const unsigned copies = std::max(header.NumCopies, 1U);
    const cups_page_header2_t written = FitsAlready(header, place) ? header : target_.header;
    for (unsigned copy = 0; copy < copies; ++copy) {
      if (!writer_.Write(written, canvas_)) {
        return Refuse(std::string("The printer's filter has stopped taking the page (") +
                      std::strerror(errno) + "); print the job again.");
      }
    }
    TellPage(++pages_, copies);
    return true;
  }

  bool FitsAlready(const cups_page_header2_t& header, const Place& place) const {
    const Place all = {.width = target_.header.cupsWidth, .height = target_.header.cupsHeight};
    return place == all && header.cupsWidth == target_.header.cupsWidth &&
           header.cupsHeight == target_.header.cupsHeight && header.NumCopies == 1 &&
           header.cupsColorSpace == CUPS_CSPACE_RGB;
  }

  static bool RefuseNothing() {
    return Refuse(
        "No page came to be printed; choose pages that the document has, or look whether it opens "
        "in another program.");
  }

  static bool RefuseCutShort() {
    return Refuse("The page broke off before its end and is not printed; print the job again.");
  }

  const Scaling scaling_;
  const Position position_;
  const TargetPage& target_;
  Canvas& canvas_;
  PageWriter writer_;
  std::vector<uint8_t> line_;
  std::vector<uint8_t> rgb_;
  unsigned pages_ = 0;
  bool warned_ = false;
};

}  // namespace

int RunFitterJob(const FilterArguments& arguments) {
  std::string error;
  const auto target = ReadTargetPage(arguments.option_count, arguments.options, error);
  if (!target) return Refuse(error) ? 0 : 1;
  auto canvas = Canvas::Create(target->header.cupsWidth, target->header.cupsHeight);
  if (!canvas) return Refuse("There is no memory for the page; print again later.") ? 0 : 1;
  const int descriptor = OpenDocument(arguments);
  if (descriptor < 0) return 1;
  FitterJob job(arguments, *target, *canvas);
  for (int copy = 0; copy < arguments.copies; ++copy) {
    if (copy > 0 && lseek(descriptor, 0, SEEK_SET) != 0) return 1;
    if (!job.FitDocument(descriptor)) return 1;
  }
  return 0;
}

}  // namespace zr7700
