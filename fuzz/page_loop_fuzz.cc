// The page loop over a raster stream of any bytes, headers and pages, with an engine that holds the
// filter to its word: calls come in their order and with numbers in their ranges, lines are whole
// and rise within the printable band, and the printer gets what the engine gave and no byte more.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <span>
#include <string>

#include "base/byte_order.h"
#include "driver/page_loop.h"
#include "engine/clip_buffers.h"
#include "engine/document.h"
#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/ini_file.h"
#include "engine/job_variables.h"
#include "fuzz/captured_stream.h"
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

// libcups allocates a line before it looks at the rest of the header.
constexpr uint32_t kMostLineBytes = 6'000;

// The header of the smallest raster format.
constexpr size_t kSmallHeaderBytes = 32;

// libcups asks for this much when it fills a buffer of its own, and for less when it wants a header
// or pixels.
constexpr size_t kReadAhead = 65'536;

// The job as the engine, the status thread and the printer see it.
struct Stage {
  uint8_t answers = 0;  // bits: who answers with a failure
  bool document_open = false;
  bool page_open = false;
  bool thread_runs = false;
  int64_t last_line = -1;
  uint32_t headers = 0;
  cups_page_header2_t header = {};  // of the page that is being sent
  fuzz::CapturedStream* output = nullptr;
  std::string emitted;  // print headers, and what the engine has handed over
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
  const std::string& written = stage.output->text();
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

uint32_t WordAt(const uint8_t* bytes, bool swapped) {
  uint32_t word;
  memcpy(&word, bytes, sizeof word);
  return swapped ? __builtin_bswap32(word) : word;
}

// The bytes of a line, by a header as libcups asks for it: 32 bytes of its smallest format, always
// in network order, or the shorter or the longer structure. 0 for anything else, pixels mostly.
uint64_t LineBytesOf(std::span<const uint8_t> header, bool swapped) {
  if (header.size() == kSmallHeaderBytes) {
    const bool is_other_order = HostByteOrder() == kLittleEndianHost;
    return uint64_t{WordAt(&header[12], is_other_order)} * header[0] / 8;
  }
  if (header.size() != sizeof(cups_page_header_t) && header.size() != sizeof(cups_page_header2_t)) {
    return 0;
  }
  return WordAt(&header[offsetof(cups_page_header_t, cupsBytesPerLine)], swapped);
}

bool IsSwapped(std::span<const uint8_t> stream) {
  if (stream.size() < 4) return false;
  const uint32_t sync = WordAt(stream.data(), false);
  return IsOneOf(sync, {CUPS_RASTER_REVSYNC, CUPS_RASTER_REVSYNCv1, CUPS_RASTER_REVSYNCv2,
                        CUPS_RASTER_REVSYNCapple});
}

// The stream from memory, ended before a header with too long a line.
class Stream {
 public:
  explicit Stream(std::span<const uint8_t> bytes) : left_(bytes), swapped_(IsSwapped(bytes)) {}

  static ssize_t Read(void* stream, unsigned char* buffer, size_t bytes) {
    return static_cast<Stream*>(stream)->Take({buffer, bytes});
  }

 private:
  // One byte at a time where libcups would read ahead, so that it asks for every header by itself.
  ssize_t Take(std::span<uint8_t> buffer) {
    const size_t wanted = buffer.size() >= kReadAhead ? 1 : buffer.size();
    const std::span<const uint8_t> taken = left_.first(std::min(wanted, left_.size()));
    if (LineBytesOf(taken, swapped_) > kMostLineBytes) return 0;
    std::copy(taken.begin(), taken.end(), buffer.begin());
    left_ = left_.subspan(taken.size());
    return static_cast<ssize_t>(taken.size());
  }

  std::span<const uint8_t> left_;
  bool swapped_;
};

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
  Stream stream(bytes);
  cups_raster_t* const raster = cupsRasterOpenIO(Stream::Read, &stream, CUPS_RASTER_READ);
  int page_count = 0;
  const LoopEnd end = PrintPages(raster, false, page_count);
  if (end == LoopEnd::kAbandoned) Require((stage.answers & kCheckFails) != 0 && page_count > 0);
  EndDocument();
  if (raster != nullptr) cupsRasterClose(raster);
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

// Linked in the place of the system's.
extern "C" int __wrap_usleep(useconds_t) { return 0; }

// Takes note of the page's header, and ends the stream at one that would take too long.
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
  fuzz::CapturedStream output(stdout);
  fuzz::CapturedStream told(stderr);
  stage = {};
  stage.output = &output;
  fuzz::Input input(data, bytes);
  SetUpJob(input);
  engine_entries.HPEStartDoc(nullptr, WriteEngineOutput, "", 0, 0, HPE_START_DOC_CODE,
                             &job_variables);
  const int page_count = PrintStream(input.Rest());
  Require(output.text() == stage.emitted);
  Require(!stage.thread_runs && static_cast<int>(stage.headers) <= page_count);
  RequirePageLines(told.text(), page_count);
  Require(fuzz::OpenDescriptors() == open_before);
  return 0;
}
