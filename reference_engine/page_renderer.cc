// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/page_renderer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "reference_engine/ink_line.h"
#include "reference_engine/sharpen.h"

namespace zr7700::reference_engine {
namespace {

// Colour bytes all ones; the fourth byte is nobody's.
bool IsWhite(const uint8_t* pixel) { return (pixel[0] & pixel[1] & pixel[2]) == 0xFF; }

}  // namespace

const uint8_t* PageRenderer::Line::pixel(uint32_t column) const {
  return bytes.data() + (size_t{column} + 1) * kPixelBytes;
}

PageRenderer::PageRenderer(const PageSettings& settings, const ColorTable& table,
                           const Screen& screen, StreamWriter* writer)
    : settings_(settings), table_(table), screen_(screen), sweep_(settings.sweep, writer) {
  const auto width = static_cast<size_t>(settings.properties.printable_width);
  for (Line* line : {&above_, &current_, &incoming_, &white_})
    line->bytes.assign((width + 2) * kPixelBytes, 0xFF);
  sharp_.assign(width * kPixelBytes, 0xFF);
  for (PlaneBuffers* buffers : {&codes_, &levels_})
    for (std::vector<uint8_t>& buffer : *buffers) buffer.resize(width + kMaskSide);
}

void PageRenderer::FillLine(std::span<const uint8_t> pixels, Line* line) const {
  const auto width = static_cast<uint32_t>(settings_.properties.printable_width);
  const auto count = static_cast<uint32_t>(pixels.size() / kPixelBytes);
  const uint32_t indent = width - count;
  uint8_t* first = line->bytes.data() + kPixelBytes;
  std::memset(first, 0xFF, size_t{indent} * kPixelBytes);
  std::memcpy(first + size_t{indent} * kPixelBytes, pixels.data(), pixels.size());
  line->begin = indent;
  line->end = width;
  while (line->begin < line->end && IsWhite(line->pixel(line->begin))) ++line->begin;
  while (line->end > line->begin && IsWhite(line->pixel(line->end - 1))) --line->end;
}

void PageRenderer::TakeLine(uint32_t line, std::span<const uint8_t> pixels) {
  FillLine(pixels, &incoming_);
  incoming_.number = line;
  incoming_.present = true;
  RenderCurrent(&incoming_);
  std::swap(above_, current_);
  std::swap(current_, incoming_);
}

void PageRenderer::Finish() {
  RenderCurrent(nullptr);
  current_.present = false;
  sweep_.Finish();
}

void PageRenderer::RenderCurrent(const Line* next) {
  if (!current_.present || current_.begin == current_.end) return;
  const bool touches_above = above_.present && above_.number + 1 == current_.number;
  const bool touches_next = next != nullptr && current_.number + 1 == next->number;
  const uint32_t begin = current_.begin;
  // Outside of [begin, end) the line is white and stays so under sharpening.
  SharpenLine((touches_above ? above_ : white_).pixel(begin), current_.pixel(begin),
              (touches_next ? *next : white_).pixel(begin), current_.end - begin,
              settings_.properties.sharpening, sharp_.data() + size_t{begin} * kPixelBytes);
  RenderLine(current_.number, std::max(begin, settings_.visible_begin),
             std::min(current_.end, settings_.visible_end));
}

void PageRenderer::RenderLine(uint32_t line, uint32_t begin, uint32_t end) {
  if (begin >= end) return;
  sweep_.ReachLine(line);
  for (uint32_t meeting = 0; meeting < settings_.sweep.passes; ++meeting)
    RenderPhase({line, meeting}, begin, end);
}

void PageRenderer::RenderPhase(Meeting meeting, uint32_t begin, uint32_t end) {
  const uint32_t passes = settings_.sweep.passes;
  const uint32_t phase = PhaseOf(meeting, passes);
  const uint32_t first = begin + (phase + passes - begin % passes) % passes;
  if (first >= end) return;
  const uint32_t cells = (end - first - 1) / passes + 1;
  // Cells are laid out so that buffer index i meets mask cell i: the run begins some cells in.
  const uint32_t lead = first / passes % kMaskSide;
  uint8_t* const codes[kPlanes] = {&codes_[kCyan][lead], &codes_[kMagenta][lead],
                                   &codes_[kYellow][lead]};
  LookUpInks(sharp_.data(), {meeting.line, first, passes, cells}, table_.nodes(), codes);
  for (const Plane plane : {kCyan, kMagenta, kYellow}) {
    std::fill_n(codes_[plane].begin(), lead, uint8_t{0});
    ScreenCells(codes_[plane].data(), screen_.Row(meeting.line, phase, plane), lead + cells,
                levels_[plane].data());
    sweep_.AddRow(meeting, plane, first, std::span(levels_[plane]).subspan(lead, cells));
  }
}

}  // namespace zr7700::reference_engine
