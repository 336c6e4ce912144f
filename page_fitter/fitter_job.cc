// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/fitter_job.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include "disc/page_writer.h"
#include "disc/user_message.h"
#include "page_fitter/page_fitter.h"

namespace zr7700 {
namespace {

int Fail(const std::string& sentence) {
  TellError(sentence);
  return 1;
}

class FitterJob {
 public:
  FitterJob(const FilterArguments& arguments, const TargetPage& target, Canvas& canvas)
      : fitter_(target, ScalingOf(arguments.option_count, arguments.options),
                PositionOf(arguments.option_count, arguments.options), canvas),
        canvas_(canvas),
        writer_(STDOUT_FILENO) {}

  // All pages of the document, once. False, with a sentence told, when one cannot go on.
  bool FitDocument(int descriptor) {
    PageReader reader(descriptor);
    if (reader.read_errno() != 0) return RefuseUnreadable(reader);
    if (reader.IsEmpty()) return RefuseNothing();
    if (!reader.IsRaster()) {
      return Refuse("The document is no CUPS raster; print the picture or the PDF itself.");
    }
    cups_page_header2_t header;
    RasterStream::Next next;
    while (IsPage(next = reader.NextPage(header))) {
      const std::string complaint = fitter_.Fit(reader, header);
      if (reader.read_errno() != 0) return RefuseUnreadable(reader);
      if (!complaint.empty()) return Refuse(complaint);
      Warn();
      if (!HandOn(std::max(header.NumCopies, 1U))) return false;
    }
    if (reader.read_errno() != 0) return RefuseUnreadable(reader);
    if (next != RasterStream::Next::kEnd) {
      return Refuse("The document broke off before its end; print it again.");
    }
    return pages_ > 0 || RefuseNothing();  // a raster may be a beginning without pages
  }

 private:
  // One whose lines are too long gets its sentence from the check of every page.
  static bool IsPage(RasterStream::Next next) {
    return next == RasterStream::Next::kPage || next == RasterStream::Next::kTooLong;
  }

  static bool RefuseNothing() {
    return Refuse(
        "No page came to be printed; choose pages that the document has, or look whether it opens "
        "in another program.");
  }

  static bool RefuseUnreadable(const PageReader& reader) {
    return Refuse(std::string("The document cannot be read (") +
                  std::strerror(reader.read_errno()) + "); print it again.");
  }

  // Of each kind the first is enough.
  void Warn() {
    if (!blur_warned_ && fitter_.dots_an_inch() < kBlurred_dpi) {
      blur_warned_ = true;
      TellWarning("The page has only " + std::to_string(static_cast<int>(fitter_.dots_an_inch())) +
                  " dots an inch on the disc and will look blurred; send it with 300 or more.");
    }
    if (!miss_warned_ && fitter_.misses_the_disc()) {
      miss_warned_ = true;
      TellWarning(
          "All of the page lies in the hole or beyond the edge of the disc, which stays white; "
          "print it with print-scaling=fit.");
    }
  }

  // The printer knows no copies: every disc is a page of its own.
  bool HandOn(unsigned copies) {
    for (unsigned copy = 0; copy < copies; ++copy) {
      if (!writer_.Write(fitter_.header(), canvas_)) {
        return Refuse(std::string("The printer's filter has stopped taking the page (") +
                      std::strerror(errno) + "); print the job again.");
      }
    }
    TellPage(++pages_, copies);
    return true;
  }

  PageFitter fitter_;
  Canvas& canvas_;
  PageWriter writer_;
  unsigned pages_ = 0;
  bool blur_warned_ = false;
  bool miss_warned_ = false;
};

}  // namespace

int RunFitterJob(const FilterArguments& arguments) {
  std::string error;
  const auto target = ReadTargetPage(arguments.option_count, arguments.options, error);
  if (!target) return Fail(error);
  auto canvas = Canvas::Create(target->header.cupsWidth, target->header.cupsHeight);
  if (!canvas) return Fail("There is no memory for the page; print again later.");
  const int descriptor = OpenDocument(arguments);
  if (descriptor < 0) return 1;
  if (target->ring_is_for_other_resolution) {
    TellWarning(
        "The hole or the margin is meant for another resolution and comes out with another width; "
        "choose print-quality=3 for a draft, and no Resolution otherwise.");
  }
  FitterJob job(arguments, *target, *canvas);
  for (int copy = 0; copy < arguments.copies; ++copy) {
    if (copy > 0 && lseek(descriptor, 0, SEEK_SET) != 0) {
      return Fail("The document cannot be read a second time; ask for one copy.");
    }
    if (!job.FitDocument(descriptor)) return 1;
  }
  return 0;
}

}  // namespace zr7700
