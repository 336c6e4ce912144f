// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/report.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace zr7700::printer {
namespace {

// The bytes of the UTF-8 character that `text` begins with; 0 when it begins with none.
size_t CharacterBytes(std::string_view text) {
  const auto byte = [&](size_t i) { return i < text.size() ? static_cast<uint8_t>(text[i]) : 0u; };
  const auto continues = [&](size_t i) { return (byte(i) & 0xC0) == 0x80; };
  if (byte(0) < 0x80) return 1;
  if (byte(0) >= 0xC2 && byte(0) < 0xE0 && continues(1)) return 2;
  // Neither longer than need be nor a surrogate, nor beyond U+10FFFF.
  const unsigned pair = byte(0) << 8 | byte(1);
  const bool legal_3 = pair >= 0xE0A0 && pair < 0xF000 && (pair < 0xEDA0 || pair >= 0xEE00);
  if (legal_3 && continues(1) && continues(2)) return 3;
  const bool legal_4 = pair >= 0xF090 && pair < 0xF490;
  return legal_4 && continues(1) && continues(2) && continues(3) ? 4 : 0;
}

// JSON text is UTF-8: bytes of a file's name that are not become U+FFFD.
std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const size_t bytes = CharacterBytes(text);
    const std::string_view character = text.substr(0, std::max<size_t>(bytes, 1));
    text.remove_prefix(character.size());
    const char first = character.front();
    if (bytes == 0) {
      quoted += "\\ufffd";
    } else if (bytes > 1 || static_cast<unsigned char>(first) >= 0x20) {
      if (first == '"' || first == '\\') quoted.push_back('\\');
      quoted += character;
    } else {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(first));
      quoted += code;
    }
  }
  return quoted + "\"";
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", value);
  return text;
}

// Puts members and elements together with the commas between them.
class Joined {
 public:
  explicit Joined(const char* between) : between_(between) {}

  Joined& Add(const std::string& text) {
    text_ += (text_.empty() ? "" : between_) + text;
    return *this;
  }
  Joined& Member(const char* name, const std::string& value) {
    return Add(Quoted(name) + ": " + value);
  }
  template <typename Integer>
  requires std::is_integral_v<Integer> Joined& Member(const char* name, Integer value) {
    if constexpr (std::is_same_v<Integer, bool>) return Member(name, value ? "true" : "false");
    return Member(name, std::to_string(value));
  }
  Joined& Member(const char* name, const char* value) { return Member(name, std::string(value)); }

  std::string In(const char* open, const char* close) const { return open + text_ + close; }

 private:
  const char* between_;
  std::string text_;
};

template <typename Row, typename Text>
std::string List(const std::vector<Row>& rows, Text text) {
  Joined list(",\n    ");
  for (const Row& row : rows) list.Add(text(row));
  return rows.empty() ? "[]" : list.In("[\n    ", "\n  ]");
}

std::string DropsJson(const DiscReport& disc) {
  Joined inks(", ");
  for (size_t ink = 0; ink < kInks; ++ink) {
    Joined sizes(", ");
    for (size_t i = 0; i < kDropSizes; ++i) sizes.Member(kDropNames[i], disc.drops[ink][i]);
    inks.Member(kInkNames[ink], sizes.In("{", "}"));
  }
  return inks.In("{", "}");
}

std::string InkJson(const DiscReport& disc) {
  Joined inks(", ");
  for (size_t ink = 0; ink < kInks; ++ink) {
    inks.Member(kInkNames[ink], Picolitres(disc.drops[ink]));
  }
  return inks.In("{", "}");
}

std::string BoxJson(const DotsOnDisc& dots) {
  if (dots.right < dots.left) return "null";
  return Joined(", ")
      .Member("left", dots.left)
      .Member("top", dots.top)
      .Member("right", dots.right)
      .Member("bottom", dots.bottom)
      .In("{", "}");
}

std::string DiscJson(const DiscReport& disc) {
  return Joined(",\n     ")
      .Member("picture", Quoted(disc.picture))
      .Member("small_picture", Quoted(disc.small_picture))
      .Member("spoilt", disc.spoilt)
      .Member("family", Quoted(FamilyName(disc.family)))
      .Member("diameter_mm", disc.place.diameter_mm)
      .Member("resolution_dpi", disc.start.resolution_dpi)
      .Member("quality", disc.start.quality)
      .Member("media", disc.start.media)
      .Member("passes", disc.start.passes)
      .Member("direction", disc.start.direction)
      .Member("feed", disc.feed)
      .Member("left_dots", disc.place.left_dots)
      .Member("top_dots", disc.place.top_dots)
      .Member("drops", DropsJson(disc))
      .Member("ink_picolitres", InkJson(disc))
      .Member("bounding_box", BoxJson(disc.dots))
      .Member("dots_outside_disc", disc.dots.outside)
      .Member("dots_in_hole", disc.dots.in_hole)
      .In("{", "}");
}

std::string ViolationJson(const Violation& violation) {
  return Joined(", ")
      .Member("offset", violation.offset)
      .Member("text", Quoted(violation.sentence))
      .In("{", "}");
}

std::string StatusJson(const StatusLine& line) {
  return Joined(", ")
      .Member("time_s", Number(line.time_s))
      .Member("text", Quoted(line.text))
      .In("{", "}");
}

}  // namespace

std::string ReportJson(const Report& report) {
  return Joined(",\n  ")
      .Member("pages", report.pages)
      .Member("headers", report.headers)
      .Member("stream_bytes", report.stream_bytes)
      .Member("records_sent", report.records_sent)
      .Member("seconds", Number(report.seconds))
      .Member("given_up", report.given_up)
      .Member("violation_count", report.violation_count)
      .Member("violations", List(report.violations, ViolationJson))
      .Member("errors", List(report.errors, Quoted))
      .Member("discs", List(report.discs, DiscJson))
      .Member("status", List(report.status, StatusJson))
      .In("{\n  ", "\n}\n");
}

std::string DescribeDisc(const DiscReport& disc, size_t number) {
  uint64_t drops = 0;
  Joined inks(", ");
  for (size_t ink = 0; ink < kInks; ++ink) {
    for (const uint64_t count : disc.drops[ink]) drops += count;
    const double microlitres = static_cast<double>(Picolitres(disc.drops[ink])) / 1e6;
    inks.Add(std::string(kInkNames[ink]) + " " + Number(microlitres));
  }
  return "disc " + std::to_string(number) + (disc.spoilt ? " (spoilt): " : ": ") +
         std::to_string(drops) + " drops, " + inks.In("", " microlitres");
}

}  // namespace zr7700::printer
