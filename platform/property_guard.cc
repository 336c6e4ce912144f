// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/property_guard.h"

#include <algorithm>
#include <cstdint>

#include "platform/platform.h"

namespace zr7700::platform {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// Each entity of a text may have the rest of the text moved: seconds at this many bytes.
constexpr uint64_t kMostMovedBytes = uint64_t{1} << 38;

bool IsQuote(char letter) { return letter == '"' || letter == '\''; }

// Copies a list's tags and texts, and leaves the rest out.
class XmlGuard {
 public:
  explicit XmlGuard(std::string_view xml) : rest_(xml) { out_.reserve(xml.size() + 100); }

  bool Run() {
    if (rest_.starts_with(kByteOrderMark)) Skip(kByteOrderMark.size());
    Skip(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
    if (!rest_.starts_with('<') || rest_.find('\0') != std::string_view::npos) return false;
    TakeDeclaration();
    while (!rest_.empty()) {
      if (!TakePiece()) return false;
    }
    return !cut_short_;
  }

  std::string Result() && { return std::move(out_); }

 private:
  void Skip(size_t bytes) { rest_.remove_prefix(bytes); }

  // Cuts off and returns everything up to the end of the next `mark`; all that is left without one,
  // which then is cut short.
  std::string_view CutThrough(std::string_view mark, size_t from) {
    const size_t found = rest_.find(mark, from);
    if (found == std::string_view::npos) cut_short_ = true;
    const size_t bytes = found == std::string_view::npos ? rest_.size() : found + mark.size();
    const std::string_view piece = rest_.substr(0, bytes);
    Skip(bytes);
    return piece;
  }

  // It names the encoding.
  void TakeDeclaration() { out_ = rest_.starts_with("<?xml") ? CutThrough("?>", 0) : kDeclaration; }

  bool TakePiece() {
    if (rest_.starts_with("<!--")) {
      CutThrough("-->", 4);
    } else if (rest_.starts_with("<?")) {
      CutThrough("?>", 2);
    } else if (rest_.starts_with("<!DOCTYPE")) {
      SkipDocumentType();
    } else if (rest_.starts_with("<![CDATA[")) {
      TakeSection();
    } else if (rest_.starts_with('<')) {
      return TakeTag();
    } else {
      TakeText();
    }
    return true;
  }

  // Its subset stands between brackets, and holds quoted texts and comments of its own.
  void SkipDocumentType() {
    size_t brackets = 0;
    while (!rest_.empty()) {
      const char letter = rest_[0];
      if (rest_.starts_with("<!--")) {
        CutThrough("-->", 4);
      } else if (IsQuote(letter)) {
        CutThrough(rest_.substr(0, 1), 1);
      } else {
        Skip(1);
        if (letter == '[') ++brackets;
        if (letter == ']' && brackets > 0) --brackets;
        if (letter == '>' && brackets == 0) return;
      }
    }
    cut_short_ = true;
  }

  // Cuts off a tag and returns what stands between its angle brackets.
  std::string_view CutTag() {
    size_t end = 1;
    char quote = '\0';
    for (; end < rest_.size() && (quote != '\0' || rest_[end] != '>'); ++end) {
      if (quote == '\0' && IsQuote(rest_[end])) {
        quote = rest_[end];
      } else if (rest_[end] == quote) {
        quote = '\0';
      }
    }
    if (end == rest_.size()) cut_short_ = true;
    const std::string_view tag = rest_.substr(1, end - 1);
    Skip(std::min(end + 1, rest_.size()));
    return tag;
  }

  bool TakeTag() {
    const std::string_view tag = CutTag();
    const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/", 1));
    if (name.find_first_of("\"'<>") != std::string_view::npos) return false;
    if (entities_ * (out_.size() - text_begin_) > kMostMovedBytes) return false;
    entities_ = 0;
    if (name.starts_with('/')) {
      Close(name);
      return depth_-- > 0;
    }
    Open(name, tag.ends_with('/'));
    return depth_ <= kMostNested && keys_ <= kMostKeys;
  }

  void Open(std::string_view name, bool empty) {
    const bool is_key = name == "key";
    keys_ += is_key ? 1 : 0;
    out_ += '<';
    out_ += name;
    if (name == "plist") out_ += " version=\"1.0\"";
    if (empty) {
      out_ += is_key ? "></key>" : "/>";
    } else {
      out_ += '>';
      ++depth_;
    }
    text_begin_ = out_.size();
  }

  void Close(std::string_view name) {
    if (name == "/integer") DropLeadingZeros();
    out_ += '<';
    out_ += name;
    out_ += '>';
    text_begin_ = out_.size();
  }

  // One parser takes a number with a zero in front for octal.
  void DropLeadingZeros() {
    const size_t begin = out_.find_first_not_of(" \t\r\n+-", text_begin_);
    const size_t first = std::min(out_.find_first_not_of('0', begin), out_.size());
    const bool has_digit = first < out_.size() && out_[first] >= '1' && out_[first] <= '9';
    if (begin != std::string::npos && has_digit) out_.erase(begin, first - begin);
  }

  // As text: one parser passes over sections.
  void TakeSection() {
    constexpr std::string_view kEnd = "]]>";
    std::string_view section = CutThrough(kEnd, 9).substr(9);
    section.remove_suffix(std::min(section.size(), kEnd.size()));
    for (const char letter : section) {
      if (letter != '&' && letter != '<') {
        out_ += letter;
        continue;
      }
      out_ += letter == '&' ? "&amp;" : "&lt;";
      ++entities_;
    }
  }

  void TakeText() {
    const std::string_view text = rest_.substr(0, rest_.find('<'));
    Skip(text.size());
    for (size_t at = 0; at < text.size();) {
      const size_t reference = std::min(text.find('&', at), text.size());
      out_ += text.substr(at, reference - at);
      at = reference;
      if (at < text.size()) at += TakeReference(text.substr(at));
    }
  }

  // Copies the beginning of a reference and returns how long it was. One parser takes no character
  // reference of more than eight letters.
  size_t TakeReference(std::string_view text) {
    ++entities_;
    size_t begin_bytes = 1;
    if (text.starts_with("&#")) begin_bytes = text.starts_with("&#x") ? 3 : 2;
    out_ += text.substr(0, begin_bytes);
    if (begin_bytes == 1) return 1;
    return std::min(text.find_first_not_of('0', begin_bytes), text.size());
  }

  std::string_view rest_;
  std::string out_;
  size_t text_begin_ = 0;  // in `out_`, behind the last tag
  uint64_t entities_ = 0;  // in that text
  size_t depth_ = 0;
  size_t keys_ = 0;
  bool cut_short_ = false;
};

}  // namespace

std::optional<std::string> GuardedXml(std::string_view xml) {
  XmlGuard guard(xml);
  if (!guard.Run()) return std::nullopt;
  return std::move(guard).Result();
}

std::optional<std::string> GuardedPropertyList(std::string_view bytes) {
  if (bytes.size() > kMostPropertyListBytes) return std::nullopt;
  if (!bytes.starts_with("bplist")) return GuardedXml(bytes);
  if (!IsBoundedBinary(bytes)) return std::nullopt;
  return std::string(bytes);
}

}  // namespace zr7700::platform
