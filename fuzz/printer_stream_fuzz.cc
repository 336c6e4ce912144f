// The virtual printer's decoder on any bytes, in pieces of any size: it ends, and what it tells
// lies within the stream and on the page.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <numeric>

#include "fuzz/input.h"
#include "virtual_printer/stream_decoder.h"
#include "virtual_printer/stream_listener.h"

namespace {

using zr7700::fuzz::Require;

struct Judge : zr7700::printer::StreamListener {
  explicit Judge(uint64_t bytes) : stream_bytes(bytes) {}

  void OnViolation(uint64_t offset, const std::string& sentence) override {
    Require(offset <= stream_bytes);
    Require(!sentence.empty());
  }
  void OnPagePrinted(zr7700::printer::PrintedPage&& page) override {
    const auto& canvas = page.canvas;
    Require(canvas.dots.empty() || canvas.dots.size() == size_t{canvas.width} * canvas.height);
    for (size_t ink = 0; ink < zr7700::printer::kInks; ++ink) {
      const auto laid = static_cast<uint64_t>(
          std::count_if(canvas.dots.begin(), canvas.dots.end(),
                        [=](uint8_t dot) { return zr7700::printer::DropSize(dot, ink) != 0; }));
      // A dot that was hit twice is counted twice.
      Require(laid <= canvas.Drops(ink));
    }
  }

  uint64_t stream_bytes;
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::fuzz::Input input(data, bytes);
  const size_t piece_bytes = input.U8() + size_t{1};
  Judge judge(input.Rest().size());
  zr7700::printer::StreamDecoder decoder(judge);
  zr7700::printer::DecodeAll(decoder, input.Rest(), piece_bytes);
  Require(!decoder.Step());
  return 0;
}
