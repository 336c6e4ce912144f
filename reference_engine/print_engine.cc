// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/print_engine.h"

#include "reference_engine/ink_line.h"

namespace zr7700::reference_engine {
namespace {

constexpr uint32_t kFormatVersion = 1;

// The stream counts pages in 16 bits.
constexpr uint32_t kMaxPages = 0xFFFF;

// The host's feed adjustment takes this much from every page's feed unless somebody changed it.
constexpr uint32_t kFeedBias = 1900;

bool IsMissing(const char* path) { return path == nullptr || *path == '\0'; }

uint32_t FeedFor(const Properties& properties) {
  return 2 * static_cast<uint32_t>(properties.top_margin) + kFeedBias;
}

Payload PageStartPayload(uint32_t number, const PageSettings& settings) {
  const Properties& properties = settings.properties;
  const Head head = HeadOf(settings.sweep.family);
  Payload payload;
  payload.U16(number).U16(properties.dots_per_inch[0]).U16(properties.dots_per_inch[1]);
  payload.U32(static_cast<uint32_t>(properties.left_margin));
  payload.U32(static_cast<uint32_t>(properties.printable_width));
  payload.U32(static_cast<uint32_t>(properties.printable_height));
  payload.U32(static_cast<uint32_t>(properties.physical_width));
  payload.U8(properties.quality).U8(properties.media).U8(properties.tray).U8(properties.intent);
  payload.U8(settings.sweep.passes).U8(static_cast<uint32_t>(settings.sweep.direction));
  payload.U8(static_cast<uint32_t>(settings.screen.mixing));
  payload.U8(static_cast<uint32_t>(properties.sharpening));
  payload.U16(static_cast<uint32_t>(head.nozzles)).U8(static_cast<uint32_t>(head.pitch_lines));
  payload.U8(kPlanes);
  for (const uint32_t value : properties.alignment) payload.U8(value);
  return payload;
}

}  // namespace

int32_t PrintEngine::Initialize(const char* path1, const char* path2, const char* path3,
                                const char* path4) {
  if (document_open_) return kWrongOrder;
  if (IsMissing(path1) || IsMissing(path2) || IsMissing(path3) || IsMissing(path4))
    return kBadValue;
  file_prefix_ = path4;
  return kOk;
}

int32_t PrintEngine::StartDocument(HPEOutputCallback output, const char* color_table_path,
                                   uint32_t reserved, uint32_t code, void* context) {
  if (file_prefix_.empty() || document_open_) return kWrongOrder;
  if (output == nullptr || IsMissing(color_table_path) || reserved != 0 ||
      code != HPE_START_DOC_CODE)
    return kBadValue;
  if (!table_.Load(family_, color_table_path)) return kBadColorTable;
  writer_.Open(output, context);
  document_open_ = true;
  document_started_ = false;
  pages_ended_ = 0;
  pages_aborted_ = 0;
  return kOk;
}

int32_t PrintEngine::StartPage() {
  if (!document_open_ || page_ || pages_ended_ + pages_aborted_ == kMaxPages) return kWrongOrder;
  EngineIni ini;
  PageSettings settings;
  int32_t status = ReadEngineIni(file_prefix_ + "cfg.ini", &ini);
  if (status == kOk) status = PlanPage(family_, properties_, ini, &settings);
  if (status != kOk) return status;
  screen_.Build(settings.screen);
  page_.emplace(settings, table_, screen_, &writer_);
  page_width_ = static_cast<uint32_t>(settings.properties.printable_width);
  page_height_ = static_cast<uint32_t>(settings.properties.printable_height);
  next_line_ = 0;
  page_spoilt_ = false;
  due_feed_ = FeedFor(settings.properties);
  SendPageStart(settings);
  SendFeed();
  return kOk;
}

void PrintEngine::SendPageStart(const PageSettings& settings) {
  // A document without a page sends nothing, so its start waits for the first page.
  if (!document_started_) {
    Payload start;
    start.U8(static_cast<uint32_t>(family_)).U8(kFormatVersion).U16(HPE_START_DOC_CODE);
    writer_.Send(Command::kDocumentStart, start);
    document_started_ = true;
  }
  writer_.RestartCrc();
  writer_.Send(Command::kPageStart, PageStartPayload(pages_ended_ + pages_aborted_ + 1, settings));
}

void PrintEngine::SendFeed() {
  // A callback that throws has had its block all the same: the feed counts as sent only once
  // nothing stands before it, and then whatever happens.
  writer_.Flush();
  const uint32_t feed = *due_feed_;
  due_feed_.reset();
  writer_.Send(Command::kFeed, Payload().U32(feed));
}

bool PrintEngine::AcceptsBand(const Band& band) const {
  return band.data != nullptr && band.lines > 0 && band.first_line >= next_line_ &&
         band.first_line < page_height_ && band.lines <= page_height_ - band.first_line &&
         band.pixels_per_line > 0 && band.pixels_per_line <= page_width_ &&
         band.bytes_per_line >= band.pixels_per_line * kPixelBytes;
}

int32_t PrintEngine::SendBand(uint32_t reserved, const Band& band) {
  if (!page_) return kWrongOrder;
  if (page_spoilt_) return kPageSpoilt;
  if (reserved != 0 || !AcceptsBand(band)) return kBadValue;
  const auto* bytes = static_cast<const uint8_t*>(band.data);
  for (uint32_t i = 0; i < band.lines; ++i)
    page_->TakeLine(band.first_line + i, {bytes + size_t{i} * band.bytes_per_line,
                                          size_t{band.pixels_per_line} * kPixelBytes});
  next_line_ = band.first_line + band.lines;
  return kOk;
}

void PrintEngine::ClosePage(Command command) {
  if (due_feed_) SendFeed();
  const PageCounts counts = page_->counts();
  page_.reset();
  ++(command == Command::kPageEnd ? pages_ended_ : pages_aborted_);
  Payload payload;
  payload.U32(counts.passes).U32(counts.rows);
  for (const uint32_t drops : counts.drops) payload.U32(drops);
  payload.U32(writer_.Crc());
  writer_.Send(command, payload);
}

int32_t PrintEngine::EndPage(uint32_t reserved) {
  if (!page_) return kWrongOrder;
  if (reserved != 0) return kBadValue;
  const bool spoilt = page_spoilt_;
  if (!spoilt) page_->Finish();
  ClosePage(spoilt ? Command::kPageAbort : Command::kPageEnd);
  writer_.Flush();
  return spoilt ? kPageSpoilt : kOk;
}

int32_t PrintEngine::EndDocument(uint32_t reserved) {
  if (!document_open_) return kWrongOrder;
  if (reserved != 0) return kBadValue;
  if (page_) ClosePage(Command::kPageAbort);
  if (document_started_)
    writer_.Send(Command::kDocumentEnd, Payload().U16(pages_ended_).U16(pages_aborted_));
  document_open_ = false;
  writer_.Flush();
  return kOk;
}

}  // namespace zr7700::reference_engine
