// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/item_reader.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>

namespace zr7700::printer {
namespace {

constexpr uint8_t kEscape = 0x1B;  // begins every item
constexpr uint8_t kQuote = 0x1A;   // stands before a changed byte in a payload
constexpr std::array<uint8_t, 5> kHeaderMark = {kEscape, 0x0B, 0x0E, 0x01, 0x01};
constexpr size_t kHeaderBytes = 16;
constexpr size_t kCommandBytes = 4;  // 0x1B 0x2A class code
constexpr size_t kFeedBytes = kCommandBytes + 4;

// A row has no fixed length. The longest that can be right: 7 bytes, and 5,100 cells in 1,276
// bytes, each of them with a control byte of its own.
constexpr size_t kAnyLength = 0;
constexpr size_t kLongestPayload = 7 + 2 * 1276;

constexpr struct {
  uint8_t group;
  uint8_t code;
  ItemKind kind;
  size_t payload_bytes;
} kCommands[] = {
    {0x01, 'b', ItemKind::kDocumentStart, 4}, {0x01, 'e', ItemKind::kDocumentEnd, 4},
    {0x02, 'b', ItemKind::kPageStart, 42},    {0x02, 'e', ItemKind::kPageEnd, 24},
    {0x02, 'a', ItemKind::kPageAbort, 24},    {0x03, 'b', ItemKind::kPassStart, 10},
    {0x04, 'r', ItemKind::kRow, kAnyLength},  {0x07, 'f', ItemKind::kFeed, 4},
};

std::string Hex(uint8_t byte) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%02X", byte);
  return text;
}

// Undoes the escapes of `sent` until `payload` has `most` bytes, the next item begins, or the bytes
// are at their end.
struct Unescaped {
  size_t sent_bytes = 0;   // used up
  bool bad_quote = false;  // stopped at a quote that stands before a wrong byte, or at the end
};

Unescaped Unescape(std::span<const uint8_t> sent, size_t most, std::vector<uint8_t>& payload) {
  payload.clear();
  size_t at = 0;
  while (payload.size() < most && at < sent.size() && sent[at] != kEscape) {
    if (sent[at] != kQuote) {
      payload.push_back(sent[at++]);
      continue;
    }
    if (at + 1 >= sent.size() || sent[at + 1] > 1) return {at, true};
    payload.push_back(static_cast<uint8_t>(kQuote + sent[at + 1]));
    at += 2;
  }
  return {at, false};
}

}  // namespace

const char* ItemName(ItemKind kind) {
  switch (kind) {
    case ItemKind::kHeader:
      return "print header";
    case ItemKind::kDocumentStart:
      return "document-start";
    case ItemKind::kDocumentEnd:
      return "document-end";
    case ItemKind::kPageStart:
      return "page-start";
    case ItemKind::kPageEnd:
      return "page-end";
    case ItemKind::kPageAbort:
      return "page-abort";
    case ItemKind::kPassStart:
      return "pass-start";
    case ItemKind::kRow:
      return "row";
    case ItemKind::kFeed:
      return "feed";
    case ItemKind::kBroken:
      break;
  }
  return "broken item";
}

void ItemReader::Append(std::span<const uint8_t> bytes) {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(at_));
  at_ = 0;
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

bool ItemReader::Next(Item& item) {
  rest_ = std::span(bytes_).subspan(at_);
  if (rest_.empty()) return false;
  if (rest_[0] != kEscape) {
    const std::string fault = "An item must begin with 0x1B, not with " + Hex(rest_[0]) + ".";
    return TakeBroken(1, 0, in_junk_ ? "" : fault, item);
  }
  in_junk_ = false;
  if (rest_.size() < 2) return WaitOrCut("an item", item);
  if (rest_[1] == kHeaderMark[1]) return NextHeader(item);
  if (rest_[1] == '*') return NextCommand(item);
  return TakeBroken(1, 1, "0x1B must not be followed by " + Hex(rest_[1]) + ".", item);
}

bool ItemReader::NextHeader(Item& item) {
  for (size_t i = 2; i < std::min(kHeaderMark.size(), rest_.size()); ++i) {
    if (rest_[i] == kHeaderMark[i]) continue;
    return TakeBroken(1, i, "This byte of a print header must be " + Hex(kHeaderMark[i]) + ".",
                      item);
  }
  if (rest_.size() < kHeaderBytes) return WaitOrCut("a print header", item);
  item.kind = ItemKind::kHeader;
  item.payload = rest_.first(kHeaderBytes);
  return Take(kHeaderBytes, item);
}

bool ItemReader::NextCommand(Item& item) {
  if (rest_.size() < kCommandBytes) return WaitOrCut("a command", item);
  for (const auto& command : kCommands) {
    if (command.group != rest_[2] || command.code != rest_[3]) continue;
    item.kind = command.kind;
    if (command.kind == ItemKind::kFeed) return NextFeed(item);
    return NextPayload(command.payload_bytes, item);
  }
  return TakeBroken(1, 0, "There is no command " + Hex(rest_[2]) + " " + Hex(rest_[3]) + ".", item);
}

// The feed value alone is not escaped.
bool ItemReader::NextFeed(Item& item) {
  if (rest_.size() < kFeedBytes) return WaitOrCut("a feed", item);
  item.payload = rest_.subspan(kCommandBytes, 4);
  return Take(kFeedBytes, item);
}

bool ItemReader::NextPayload(size_t payload_bytes, Item& item) {
  const bool any_length = payload_bytes == kAnyLength;
  const size_t most = any_length ? kLongestPayload + 1 : payload_bytes;
  const Unescaped done = Unescape(rest_.subspan(kCommandBytes), most, payload_);
  const size_t end = kCommandBytes + done.sent_bytes;
  const std::string name = ItemName(item.kind);
  // Whether the bytes that have come do not yet show how the payload goes on.
  const bool open = end + (done.bad_quote ? 1 : 0) >= rest_.size() && !finished_;
  const bool full = payload_.size() == payload_bytes && !any_length;
  if (open && !full && payload_.size() <= kLongestPayload) return false;
  if (done.bad_quote) {
    return TakeBroken(1, end, "0x1A in a payload must be followed by 0x00 or 0x01.", item);
  }
  if (payload_.size() > kLongestPayload) {
    return TakeBroken(1, 0, "The payload of " + name + " is too long.", item);
  }
  if (!any_length && !full) {
    if (end >= rest_.size()) return WaitOrCut("a " + name, item);
    return TakeBroken(1, 0,
                      "The payload of " + name + " has " + std::to_string(payload_.size()) +
                          " bytes instead of " + std::to_string(payload_bytes) + ".",
                      item);
  }
  item.payload = payload_;
  return Take(end, item);
}

bool ItemReader::Take(size_t sent_bytes, Item& item) {
  item.offset = offset_;
  item.sent = rest_.first(sent_bytes);
  item.fault.clear();
  at_ += sent_bytes;
  offset_ += sent_bytes;
  return true;
}

// Takes the bytes up to the next that can begin an item.
bool ItemReader::TakeBroken(size_t sent_bytes, size_t fault_at, std::string fault, Item& item) {
  item.kind = ItemKind::kBroken;
  item.payload = {};
  item.fault_offset = offset_ + fault_at;
  in_junk_ = true;
  Take(NextEscape(sent_bytes), item);
  item.fault = std::move(fault);
  return true;
}

// The item is not complete: the rest is to come, or the stream is cut short.
bool ItemReader::WaitOrCut(const std::string& what, Item& item) {
  if (!finished_) return false;
  return TakeBroken(rest_.size(), 0, "The stream ends inside " + what + ".", item);
}

size_t ItemReader::NextEscape(size_t from) const {
  const auto next =
      std::find(rest_.begin() + static_cast<std::ptrdiff_t>(from), rest_.end(), kEscape);
  return static_cast<size_t>(next - rest_.begin());
}

}  // namespace zr7700::printer
