// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "platform/property_shape.h"

namespace zr7700::platform {
namespace {

constexpr size_t kMaxDepth = 100;
constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kElements[] = {"plist", "dict", "array", "key",  "string", "integer",
                                          "real",  "true", "false", "date", "data"};

// Markup that is skipped: where it begins and what ends it.
struct Skipped {
  std::string_view begin;
  std::string_view end;
  bool in_prologue;  // may stand before the root
  bool in_root;
};
constexpr Skipped kSkipped[] = {{"<?", "?>", true, false},
                                {"<!--", "-->", true, true},
                                {"<![CDATA[", "]]>", false, true},
                                {"<!DOCTYPE", ">", true, false}};
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

// What settled XML begins with, in place of the file's own declarations: a quote left open in one
// of them is more than one parser survives.
constexpr char kPrologue[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";

struct Element {
  std::string_view name;
  size_t children = 0;
};

struct Tag {
  std::string_view name;
  bool closes;         // </name>
  bool empty;          // <name/>
  bool plain;          // without attributes
  size_t text_offset;  // of what follows the tag
};

bool IsKnown(std::string_view name) {
  for (const std::string_view known : kElements) {
    if (name == known) return true;
  }
  return false;
}

// The '>' that ends the tag at `begin`; one inside a quoted attribute does not.
size_t EndOfTag(std::string_view xml, size_t begin) {
  char quote = 0;
  for (size_t at = begin; at < xml.size(); ++at) {
    const char letter = xml[at];
    if (quote != 0) {
      if (letter == quote) quote = 0;
    } else if (letter == '"' || letter == '\'') {
      quote = letter;
    } else if (letter == '>') {
      return at;
    }
  }
  return std::string_view::npos;
}

bool ReadTag(std::string_view xml, size_t begin, Tag& tag) {
  const size_t end = EndOfTag(xml, begin);
  if (end == std::string_view::npos) return false;
  std::string_view body = xml.substr(begin + 1, end - begin - 1);
  tag.closes = body.starts_with('/');
  if (tag.closes) body.remove_prefix(1);
  tag.empty = !tag.closes && body.ends_with('/');
  if (tag.empty) body.remove_suffix(1);
  tag.name = body.substr(0, body.find_first_of(kBlanks));
  tag.plain = body.find_first_not_of(kBlanks, tag.name.size()) == std::string_view::npos;
  tag.text_offset = end + 1;
  return IsKnown(tag.name);
}

std::string_view Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Base 10 and within 64 bits.
bool IsInteger(std::string_view text) {
  const std::string number(Trimmed(text));
  const size_t digits_begin = number.find_first_of("+-") == 0 ? 1 : 0;
  if (number.size() == digits_begin) return false;
  if (number.find_first_not_of("0123456789", digits_begin) != std::string::npos) return false;
  errno = 0;
  if (number[0] == '-') {
    strtoll(number.c_str(), nullptr, 10);
  } else {
    strtoull(number.c_str(), nullptr, 10);
  }
  return errno == 0;
}

bool IsReal(std::string_view text) {
  const std::string number(Trimmed(text));
  char* end = nullptr;
  strtod(number.c_str(), &end);
  return !number.empty() && end == number.c_str() + number.size();
}

// Moves the leading zeros of the integer that begins at `text_offset` behind its digits, as blanks.
void DropLeadingZeros(std::string& xml, size_t text_offset, size_t text_end) {
  const size_t digits = xml.find_first_of("0123456789", text_offset);
  const size_t digits_end = xml.find_first_not_of("0123456789", digits);
  size_t first = digits;
  while (first + 1 < digits_end && xml[first] == '0') ++first;
  if (first == digits || digits_end > text_end) return;
  xml.replace(digits, digits_end - digits,
              xml.substr(first, digits_end - first) + std::string(first - digits, ' '));
}

constexpr std::string_view kEntities[] = {"amp", "lt", "gt", "quot", "apos"};

// What XML calls a character.
bool IsCharacter(long code) {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  return code < 0xd800 || (code > 0xdfff && code < 0xfffe) || (code > 0xffff && code < 0x110000);
}

// `name` without its '&' and ';'.
bool IsEntity(const std::string& name) {
  for (const std::string_view known : kEntities) {
    if (name == known) return true;
  }
  const bool hexadecimal = name.starts_with("#x");
  const size_t digits_begin = hexadecimal ? 2 : 1;
  const char* const digits = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  if (!name.starts_with('#') || name.size() == digits_begin || name.size() > 8) return false;
  if (name.find_first_not_of(digits, digits_begin) != std::string::npos) return false;
  const long character = strtol(name.c_str() + digits_begin, nullptr, hexadecimal ? 16 : 10);
  return IsCharacter(character);
}

bool HasSoundEntities(std::string_view text) {
  for (size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
    const size_t end = text.find(';', at);
    if (end == std::string_view::npos || end - at > 9) return false;
    if (!IsEntity(std::string(text.substr(at + 1, end - at - 1)))) return false;
  }
  return true;
}

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

bool HoldsText(std::string_view name) {
  for (const std::string_view other : {"plist", "dict", "array", "true", "false"}) {
    if (name == other) return false;
  }
  return true;
}

bool HasControls(std::string_view xml) {
  for (const char letter : xml) {
    const bool control = static_cast<unsigned char>(letter) < 0x20;
    if (control && kBlanks.find(letter) == std::string_view::npos) return true;
  }
  return false;
}

// Walks the markup and keeps the elements that are open.
class XmlWalk {
 public:
  explicit XmlWalk(std::string& xml) : xml_(xml) {}

  bool IsSound() {
    size_t at = 0;
    while ((at = xml_.find('<', next_)) != std::string::npos) {
      if (!TakesText(std::string_view(xml_).substr(next_, at - next_))) return false;
      if (!SkipsAt(at) && !TakesTagAt(at)) return false;
    }
    return open_.empty() && roots_ == 1 && TakesText(std::string_view(xml_).substr(next_));
  }

  // What stands between the root's tags.
  std::string Content() const { return xml_.substr(root_begin_, root_end_ - root_begin_); }

 private:
  bool TakesText(std::string_view text) const {
    if (next_ == 0 && text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    if (open_.empty() || !HoldsText(open_.back().name)) return IsBlank(text);
    return HasSoundEntities(text);
  }

  bool SkipsAt(size_t at) {
    for (const Skipped& skipped : kSkipped) {
      if (xml_.compare(at, skipped.begin.size(), skipped.begin) != 0) continue;
      const size_t end = xml_.find(skipped.end, at + skipped.begin.size());
      if (end == std::string::npos) return false;
      if (!(open_.empty() ? skipped.in_prologue : skipped.in_root)) return false;
      // A section of plain text stands where text may.
      if (!skipped.in_prologue && !HoldsText(open_.back().name)) return false;
      // A document type with a subset of its own could declare entities that grow without end.
      if (skipped.end == ">" && xml_.find('[', at) < end) return false;
      next_ = end + skipped.end.size();
      return true;
    }
    return false;
  }

  bool TakesTagAt(size_t at) {
    Tag tag{};
    if (!ReadTag(xml_, at, tag)) return false;
    next_ = tag.text_offset;
    if (tag.closes) {
      root_end_ = at;
      return tag.plain && Closes(tag.name);
    }
    if (tag.name == "plist") {
      root_begin_ = next_;
    } else if (!tag.plain) {
      return false;
    }
    if (!Opens(tag.name) || !HasNumber(tag)) return false;
    return !tag.empty || Closes(tag.name);
  }

  bool Opens(std::string_view name) {
    if (open_.size() >= kMaxDepth || !MayStandHere(name)) return false;
    if (open_.empty()) {
      ++roots_;
    } else {
      ++open_.back().children;
    }
    // A name in the text would dangle after the text is settled: the table's own is kept.
    for (const std::string_view known : kElements) {
      if (name == known) open_.push_back({known});
    }
    return true;
  }

  bool MayStandHere(std::string_view name) const {
    if (open_.empty()) return name == "plist" && roots_ == 0;
    const Element& parent = open_.back();
    if (name == "plist") return false;
    if (parent.name == "dict") return (name == "key") == (parent.children % 2 == 0);
    if (name == "key") return false;
    return parent.name == "array" || (parent.name == "plist" && parent.children == 0);
  }

  bool Closes(std::string_view name) {
    if (open_.empty() || open_.back().name != name) return false;
    const size_t children = open_.back().children;
    open_.pop_back();
    if (name == "plist") return children == 1;
    return name != "dict" || children % 2 == 0;
  }

  bool HasNumber(const Tag& tag) {
    if (tag.name != "integer" && tag.name != "real") return true;
    const bool integer = tag.name == "integer";
    const size_t end = xml_.find('<', tag.text_offset);
    if (tag.empty || end == std::string::npos) return false;
    const std::string_view text =
        std::string_view(xml_).substr(tag.text_offset, end - tag.text_offset);
    if (!integer) return IsReal(text) && xml_.compare(end, 2, "</") == 0;
    if (!IsInteger(text) || xml_.compare(end, 2, "</") != 0) return false;
    DropLeadingZeros(xml_, tag.text_offset, end);
    return true;
  }

  std::string& xml_;
  std::vector<Element> open_;
  size_t next_ = 0;   // where the walk goes on
  size_t roots_ = 0;  // elements seen outside all others
  size_t root_begin_ = 0;
  size_t root_end_ = 0;
};

}  // namespace

bool SettleXmlPropertyList(std::string& xml) {
  if (!IsUtf8(xml) || HasControls(xml)) return false;
  XmlWalk walk(xml);
  if (!walk.IsSound()) return false;
  xml = kPrologue + walk.Content() + "</plist>\n";
  return true;
}

bool SettlePropertyList(std::string& bytes) {
  if (bytes.starts_with("bplist")) return IsSoundBinaryPropertyList(bytes);
  return SettleXmlPropertyList(bytes);
}

}  // namespace zr7700::platform
