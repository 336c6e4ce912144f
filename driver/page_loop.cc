// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/page_loop.h"

#include <cerrno>

#include "base/log.h"
#include "base/out_of_memory.h"
#include "base/printable.h"
#include "base/standard_error.h"
#include "disc/raster_header.h"
#include "driver/line_buffers.h"
#include "engine/band.h"
#include "engine/document.h"
#include "engine/job_variables.h"
#include "engine/page.h"
#include "status/job_cancel.h"
#include "status/job_check.h"
#include "status/status_thread.h"

namespace zr7700 {
namespace {

constexpr unsigned kLinesPerReport = 128;
constexpr int kThreadStart_ms = 200;

enum class LineRead { kRead, kNoMoreData, kCancelled };

enum class PageEnd { kGoOn, kLastPage, kAbandonJob };

// A line that is too long is a page here: it fails where its buffers are allocated.
bool ReadHeader(RasterStream& raster, cups_page_header2_t& header) {
  RasterStream::Next next;
  {
    const MemoryWatch watch;
    next = raster.NextPage(header);
  }
  const bool has_page = next == RasterStream::Next::kPage || next == RasterStream::Next::kTooLong;
  return !TakeCancel() && has_page;
}

// The third line's label and order are historical.
void LogHeader(const cups_page_header2_t& header) {
  LogMessage(kLogDetail, "     cupsColorSpace %u ", ColorSpaceOf(header));
  LogMessage(kLogDetail, "     cupsColorOrder %u ", ColorOrderOf(header));
  LogMessage(kLogDetail, "     cupsColorOrder %s %s %s %s ", Printable(header.MediaColor).c_str(),
             Printable(header.MediaClass).c_str(), Printable(header.MediaType).c_str(),
             Printable(header.OutputType).c_str());
}

// Every page after the first.
bool CheckPrinterAgain(int page_count) {
  if (page_count == 0) return true;
  LogMessage(kLogDetail, "     Checking Status on Page %i", page_count);
  return StartOfPageJobCheck(page_count);
}

// Reads the page's next line into the buffers. A read that a cancel ended is no error of the data.
LineRead ReadLine(RasterStream& raster, uint32_t line_bytes, LineBuffers& buffers) {
  errno = 0;
  if (raster.ReadPixels({buffers.line(), line_bytes})) return LineRead::kRead;
  const int read_errno = errno;
  if (read_errno == ENOMEM) ReportNoMemory();
  if (TakeCancel()) return LineRead::kCancelled;
  LogMessage(kLogDetail, "     BAILING on print, num bytes read %u %u", 0U,
             static_cast<unsigned>(read_errno));
  return LineRead::kNoMoreData;
}

void ReportProgress(int page, unsigned y, unsigned height) {
  if (y % kLinesPerReport != 0) return;
  LogMessage(kLogDetail, "     Printing page %d, %.0f%% complete...", page, y * 100.0 / height);
}

// Sends the page's lines; a page whose data ends early is sent as far as it goes. False when a
// cancel ended it.
bool SendLines(RasterStream& raster, const cups_page_header2_t& header, int page,
               LineBuffers& buffers) {
  LogMessage(kLogDetail, "     cupsHeight=%u", header.cupsHeight);
  for (unsigned y = 0; y < header.cupsHeight; ++y) {
    if (TakeCancel()) return false;
    ReportProgress(page, y, header.cupsHeight);
    const LineRead read = ReadLine(raster, header.cupsBytesPerLine, buffers);
    if (read != LineRead::kRead) return read == LineRead::kNoMoreData;
    buffers.Widen();
    SendLine(job_variables, buffers.rgbm(), buffers.pixel_count(), y);
  }
  return true;
}

// The page in the engine, watched by the status thread. False after an error or a cancel.
bool PrintOpenPage(RasterStream& raster, const cups_page_header2_t& header, int page,
                   bool suppress_utility, LineBuffers& buffers) {
  StartStatusThread(suppress_utility);
  PauseJob(kThreadStart_ms);
  bool ok = SendLines(raster, header, page, buffers);
  LogMessage(kLogDetail, "     Finished page %d...", page);
  ok = ok && EndPage();
  if (ok) RestartDocument();
  StopStatusThread();
  if (!ok) LogMessage(kLogDetail, "     Bailing due to error or cancel, page %d...", page);
  return ok;
}

PageEnd PrintPage(RasterStream& raster, const cups_page_header2_t& header, bool suppress_utility,
                  int& page_count) {
  LogHeader(header);
  LineBuffers buffers;
  if (!buffers.Allocate(header)) return PageEnd::kLastPage;
  if (!CheckPrinterAgain(page_count)) return PageEnd::kAbandonJob;
  ++page_count;
  BeginLineToCups("     PAGE: %d %d", page_count, static_cast<int>(header.NumCopies));
  if (!StartPage(header)) return PageEnd::kLastPage;
  return PrintOpenPage(raster, header, page_count, suppress_utility, buffers) ? PageEnd::kGoOn
                                                                              : PageEnd::kLastPage;
}

}  // namespace

LoopEnd PrintPages(RasterStream& raster, bool suppress_utility, int& page_count) {
  cups_page_header2_t header;
  while (ReadHeader(raster, header)) {
    const PageEnd end = PrintPage(raster, header, suppress_utility, page_count);
    if (end == PageEnd::kAbandonJob) return LoopEnd::kAbandoned;
    if (end == PageEnd::kLastPage) break;
  }
  return LoopEnd::kFinished;
}

}  // namespace zr7700
