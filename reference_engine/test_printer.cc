// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/test_printer.h"

#include <algorithm>
#include <utility>

namespace zr7700::reference_engine::testing {
namespace {

// The drops of one plane; a page without rows has a canvas without dots.
std::vector<uint8_t> PlaneOf(const printer::PageCanvas& canvas, size_t plane) {
  std::vector<uint8_t> sizes(size_t{canvas.width} * canvas.height, 0);
  std::ranges::transform(canvas.dots, sizes.begin(), [plane](uint8_t dot) {
    return static_cast<uint8_t>(printer::DropSize(dot, plane));
  });
  return sizes;
}

}  // namespace

uint32_t PrintedPage::DropCount(size_t plane) const {
  return static_cast<uint32_t>(
      std::ranges::count_if(drops[plane], [](uint8_t size) { return size != 0; }));
}

bool TestPrinter::Print(std::span<const uint8_t> stream) {
  printer::StreamDecoder decoder(*this);
  decoder.ExpectNoHeaders();
  decoder.Append(stream);
  decoder.Finish();
  while (decoder.Step()) continue;
  return error_.empty();
}

void TestPrinter::OnDocumentStart(uint64_t /*offset*/, const printer::DocumentStart& document) {
  documents_.emplace_back().family = static_cast<char>(document.family);
}

void TestPrinter::OnDocumentEnd(uint64_t /*offset*/, const printer::DocumentEnd& end) {
  documents_.back().pages_ended = end.pages_ended;
  documents_.back().pages_aborted = end.pages_aborted;
}

void TestPrinter::OnPageStart(uint64_t /*offset*/, const printer::PageStart& /*start*/) {
  sweeps_.clear();
}

void TestPrinter::OnPassStart(uint64_t /*offset*/, const printer::PassStart& pass) {
  sweeps_.push_back(pass);
}

void TestPrinter::OnPagePrinted(printer::PrintedPage&& printed) {
  PrintedPage& page = documents_.back().pages.emplace_back();
  page.start = printed.start;
  page.feed = printed.feed;
  page.sweeps = std::exchange(sweeps_, {});
  page.aborted = printed.spoilt;
  for (size_t plane = 0; plane < printer::kInks; ++plane)
    page.drops[plane] = PlaneOf(printed.canvas, plane);
}

void TestPrinter::OnViolation(uint64_t offset, const std::string& sentence) {
  if (error_.empty()) error_ = "at byte " + std::to_string(offset) + ": " + sentence;
}

}  // namespace zr7700::reference_engine::testing
