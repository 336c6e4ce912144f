// The page loop over a raster stream of any bytes, headers and pages, with an engine that holds the
// filter to its word: calls come in their order and with numbers in their ranges, lines are whole
// and rise within the printable band, and the printer gets what the engine gave and no byte more.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>
#include <span>
#include <string>

#include "base/pause.h"
#include "disc/raster_stream.h"
#include "driver/page_loop.h"
#include "engine/clip_buffers.h"
#include "engine/document.h"
#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/ini_file.h"
#include "engine/job_variables.h"
#include "fuzz/captured_output.h"
#include "fuzz/input.h"
#include "fuzz/open_descriptors.h"
#include "status/job_check.h"
#include "status/status_thread.h"

namespace zr7700 {
namespace {

using fuzz::IsOneOf;
using fuzz::Require;

constexpr size_t kPrintHeaderBytes = 16;

// A page of more would take the time of a thousand others.
constexpr uint64_t kMostPageBytes = 6'000;

// The job as the engine, the status thread and the printer see it.
struct Stage {
  uint8_t answers = 0;  // bits: who answers with a failure
  bool document_open = false;
  bool page_open = false;
  bool thread_runs = false;
  int64_t last_line = -1;
  uint32_t headers = 0;
  cups_page_header2_t header = {};  // of the page that is being sent
  std::string emitted;              // print headers, and what the engine has handed over
  HPEOutputCallback callback = nullptr;
  void* context = nullptr;
};
Stage stage;

enum Failing : uint8_t {
  kCheckFails = 1,
  kStartPageFails = 2,
  kPropertyFails = 4,
  kEndPageFails = 8,
  kSendFails = 16,
  kStartDocFails = 32
};

int32_t AnswerOf(Failing failing) { return (stage.answers & failing) != 0 ? 7 : HPE_OK; }

// The print header has gone out ahead of all else of its page.
void TakePrintHeader() {
  const std::string& written = fuzz::Printed();
  Require(written.size() == stage.emitted.size() + kPrintHeaderBytes);
  const std::string header = written.substr(stage.emitted.size());
  Require(header.starts_with(std::string("\x1B\x0B\x0E\x01\x01")));
  const unsigned sum =
      std::accumulate(header.begin(), header.end() - 1, 0U,
                      [](unsigned total, char byte) { return total + uint8_t(byte); });
  Require(static_cast<uint8_t>(header.back()) == sum % 256);
  stage.emitted += header;
  ++stage.headers;
}

// The line's first pixels, or a feed command, which may be adjusted on its way.
void Emit(std::span<const uint8_t> line) {
  std::array<uint8_t, 8> block = {0x1B, 0x2A, 0x07, 0x66, 0, 0, 1, 2};
  if (stage.last_line % 2 == 0) memcpy(block.data(), line.data(), std::min<size_t>(8, line.size()));
  stage.callback(stage.context, block.data(), block.size());
  stage.emitted.append(reinterpret_cast<const char*>(block.data()), block.size());
}

int32_t StartDoc(HPEHandle, HPEOutputCallback output, const char* table, uint32_t zero1,
                 uint32_t zero2, uint32_t code, void* context) {
  Require(!stage.document_open && output != nullptr && table != nullptr);
  Require(zero1 == 0 && zero2 == 0 && code == HPE_START_DOC_CODE && context == &job_variables);
  stage.document_open = true;
  stage.callback = output;
  stage.context = context;
  return AnswerOf(kStartDocFails);
}

int32_t StartEnginePage(HPEHandle) {
  Require(stage.document_open && !stage.page_open && !stage.thread_runs);
  stage.page_open = (stage.answers & kStartPageFails) == 0;
  stage.last_line = -1;
  return AnswerOf(kStartPageFails);
}

int32_t SendBand(HPEHandle, uint32_t zero, uint32_t y, uint32_t lines, uint32_t pixels,
                 uint32_t bytes, const void* data) {
  Require(stage.page_open && stage.thread_runs && zero == 0 && lines == 1);
  Require(y > stage.last_line && y < stage.header.cupsHeight);
  Require(y > job_variables.topOutputImage && y < job_variables.bottomOutputImage);
  Require(pixels == stage.header.cupsBytesPerLine / (stage.header.cupsBitsPerPixel / 8));
  Require(bytes == 4 * pixels);
  const std::span line(static_cast<const uint8_t*>(data), bytes);
  unsigned pads = 0;
  for (size_t pad = 3; pad < bytes; pad += 4) pads |= line[pad];
  Require(pads == 0);
  stage.last_line = y;
  Emit(line);
  return AnswerOf(kSendFails);
}

int32_t EndEnginePage(HPEHandle, uint32_t zero) {
  Require(stage.page_open && zero == 0);
  stage.page_open = false;
  return AnswerOf(kEndPageFails);
}

// The page's clip table goes with its document, so that a million pages need the memory of one.
int32_t EndDoc(HPEHandle, uint32_t zero) {
  Require(stage.document_open && zero == 0);
  stage.document_open = false;
  ClipDataBufsDelete(job_variables);
  return HPE_OK;
}

int32_t SetResolution(HPEHandle, uint32_t axis, uint32_t dots_per_inch) {
  Require(axis <= 1 && (axis == 1 || dots_per_inch != 0));
  if (axis == 0) TakePrintHeader();
  return HPE_OK;
}

int32_t SetAnyNumber(HPEHandle, int32_t) { return AnswerOf(kPropertyFails); }

int32_t SetHeight(HPEHandle, int32_t value) {
  Require(value == static_cast<int32_t>(job_variables.pageHeight));
  return HPE_OK;
}

int32_t SetTop(HPEHandle, int32_t value) { return Require(value >= 0), HPE_OK; }
int32_t SetIntent(HPEHandle, int32_t value) { return Require(value == 1), HPE_OK; }
int32_t SetTray(HPEHandle, int32_t value) { return Require(value == 2), HPE_OK; }
int32_t SetSharpening(HPEHandle, int32_t value) {
  return Require(value >= 1 && value <= 12), HPE_OK;
}
int32_t SetFormat(HPEHandle, uint32_t code) { return Require(code == 4), HPE_OK; }
int32_t SetMedia(HPEHandle, uint32_t code) {
  return Require(IsOneOf(code, {1, 2, 7, 8, 9})), HPE_OK;
}
int32_t SetQuality(HPEHandle, uint32_t code) { return Require(IsOneOf(code, {2, 3, 4})), HPE_OK; }
int32_t SetCartridge(HPEHandle, uint32_t slot, uint32_t, uint32_t installed) {
  return Require(slot <= 1 && installed == 1 - slot), HPE_OK;
}
int32_t SetAlignment(HPEHandle, uint32_t item, uint32_t) { return Require(item <= 14), HPE_OK; }

bool InstallEngine() {
  engine_entries.HPEStartDoc.Set(StartDoc);
  engine_entries.HPEStartPage.Set(StartEnginePage);
  engine_entries.HPESendBand.Set(SendBand);
  engine_entries.HPEEndPage.Set(EndEnginePage);
  engine_entries.HPEEndDoc.Set(EndDoc);
  engine_entries.SetInputResolution.Set(SetResolution);
  engine_entries.SetLeftMargin.Set(SetAnyNumber);
  engine_entries.SetTopMargin.Set(SetTop);
  engine_entries.SetPrintableWidth.Set(SetAnyNumber);
  engine_entries.SetPrintableHeight.Set(SetHeight);
  engine_entries.SetPhysicalWidth.Set(SetAnyNumber);
  engine_entries.SetInstalledCartridge.Set(SetCartridge);
  engine_entries.SetHPERasterFormat.Set(SetFormat);
  engine_entries.SetAlignmentInformation.Set(SetAlignment);
  engine_entries.SetPageIntent.Set(SetIntent);
  engine_entries.SetMediaType.Set(SetMedia);
  engine_entries.SetOutputPrintQuality.Set(SetQuality);
  engine_entries.SetPaperTray.Set(SetTray);
  engine_entries.SetImageSharpeningLevel.Set(SetSharpening);
  return true;
}

}  // namespace

// What the loop calls beside the engine; each has tests or a target of its own.
bool Pause(int) { return true; }
bool StartOfPageJobCheck(int page) {
  Require(page > 0 && !stage.thread_runs && !stage.page_open);
  return (stage.answers & kCheckFails) == 0;
}
bool StartStatusThread(bool) {
  Require(stage.page_open && !stage.thread_runs);
  return stage.thread_runs = true;
}
// A cancel's effects, which no run has, are the only other caller.
void StopStatusThread() {
  Require(stage.thread_runs);
  stage.thread_runs = false;
}
bool WriteFerroIniFile(const char* section, const char*, const char*) { return section[0] == '['; }
bool RemoveFerroIniKey(const char* section, const char*) { return section[0] == '['; }

namespace {

ssize_t ReadInput(void* context, unsigned char* buffer, size_t bytes) {
  auto& left = *static_cast<std::span<const uint8_t>*>(context);
  const std::span<const uint8_t> taken = left.first(std::min(bytes, left.size()));
  std::copy(taken.begin(), taken.end(), buffer);
  left = left.subspan(taken.size());
  return static_cast<ssize_t>(taken.size());
}

// The disc is small: the clip tables have a target of their own, and so have the ink rules.
void SetUpJob(fuzz::Input& input) {
  stage.answers = input.U8();
  job_variables = {};
  job_variables.ColorMatching = 1;
  job_variables.DiscSurfaceQuality = 1 + input.U8() % 2;
  job_variables.PrintQuality = 1;
  job_variables.InkSaturation = 100;
  job_variables.discForm = 1;
  job_variables.OuterMargin = input.U8() % 32;
  job_variables.InnerDiam = input.U8();
  job_variables.clipBufferBytes = 200;
  job_variables.maxImageDots = 5100;
  job_variables.nRunCompDiv = 3000;
  job_variables.FeedAdjust = -1900;
  job_variables.inkLimitLow = input.U32();
  job_variables.statusLetterReady = input.U8() % 2;
  job_variables.files = paths::kEngineFamilies[0].files;
}

int PrintStream(std::span<const uint8_t> bytes) {
  RasterStream raster(ReadInput, &bytes);
  int page_count = 0;
  const LoopEnd end = PrintPages(raster, false, page_count);
  if (end == LoopEnd::kAbandoned) Require((stage.answers & kCheckFails) != 0 && page_count > 0);
  EndDocument();
  return page_count;
}

// Nothing but the page lines reaches CUPS, whatever the header's texts say.
void RequirePageLines(const std::string& told, int page_count) {
  size_t at = 0;
  for (int page = 1; page <= page_count; ++page) {
    const std::string line = "     PAGE: " + std::to_string(page) + " ";
    Require(told.compare(at, line.size(), line) == 0);
    at = told.find_first_not_of("-0123456789", at + line.size());
    if (at == std::string::npos) at = told.size();
  }
  Require(at == told.size());
}

}  // namespace
}  // namespace zr7700

// Linked in the place of libcups' own: takes note of the page's header, and ends the stream at one
// that would take too long.
extern "C" unsigned __real_cupsRasterReadHeader2(cups_raster_t* raster,
                                                 cups_page_header2_t* header);
extern "C" unsigned __wrap_cupsRasterReadHeader2(cups_raster_t* raster,
                                                 cups_page_header2_t* header) {
  if (__real_cupsRasterReadHeader2(raster, header) == 0) return 0;
  zr7700::stage.header = *header;
  const uint64_t page_bytes = uint64_t{header->cupsBytesPerLine} * header->cupsHeight;
  return page_bytes <= zr7700::kMostPageBytes ? 1 : 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  using namespace zr7700;
  [[maybe_unused]] static const bool ready = InstallEngine();
  const uint32_t open_before = fuzz::OpenDescriptors();
  fuzz::ForgetOutput();
  stage = {};
  fuzz::Input input(data, bytes);
  SetUpJob(input);
  engine_entries.HPEStartDoc(nullptr, WriteEngineOutput, "", 0, 0, HPE_START_DOC_CODE,
                             &job_variables);
  const int page_count = PrintStream(input.Rest());
  Require(fuzz::Printed() == stage.emitted);
  Require(!stage.thread_runs && static_cast<int>(stage.headers) <= page_count);
  RequirePageLines(fuzz::told, page_count);
  Require(fuzz::OpenDescriptors() == open_before);
  return 0;
}
