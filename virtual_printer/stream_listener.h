// For tests: decodes a stream and keeps all that the decoder tells.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STREAM_LISTENER_H_
#define ZR7700_VIRTUAL_PRINTER_STREAM_LISTENER_H_

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "virtual_printer/stream_builder.h"
#include "virtual_printer/stream_decoder.h"

namespace zr7700::printer {

// A violation: its offset and its sentence.
using Told = std::pair<uint64_t, std::string>;

struct Listener : StreamListener {
  void OnHeader(uint64_t, const PrintHeader& header) override { headers.push_back(header); }
  void OnFeed(uint64_t, int32_t feed) override { feeds.push_back(feed); }
  void OnPagePrinted(PrintedPage&& page) override { pages.push_back(std::move(page)); }
  void OnViolation(uint64_t offset, const std::string& text) override {
    violations.emplace_back(offset, text);
  }

  std::vector<PrintHeader> headers;
  std::vector<int32_t> feeds;
  std::vector<PrintedPage> pages;
  std::vector<Told> violations;
};

// Lets `decoder` have `bytes` in pieces of `piece_bytes`, and the end.
inline void DecodeAll(StreamDecoder& decoder, std::span<const uint8_t> bytes, size_t piece_bytes) {
  while (!bytes.empty()) {
    const auto piece = bytes.first(std::min(piece_bytes, bytes.size()));
    decoder.Append(piece);
    while (decoder.Step()) continue;
    bytes = bytes.subspan(piece.size());
  }
  decoder.Finish();
  while (decoder.Step()) continue;
}

inline Listener Decode(const Bytes& bytes, size_t piece_bytes = 1 << 16,
                       std::optional<int> lag = std::nullopt) {
  Listener listener;
  StreamDecoder decoder(listener);
  decoder.SetReverseLag(lag);
  DecodeAll(decoder, bytes, piece_bytes);
  return listener;
}

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STREAM_LISTENER_H_
