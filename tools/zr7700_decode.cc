// zr7700-decode: prints a captured printer stream as text, a line an item, and what is wrong in it.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "about/questions.h"
#include "virtual_printer/stream_decoder.h"

namespace zr7700::printer {
namespace {

constexpr int kExitViolation = 1;
constexpr int kExitUsage = 2;

constexpr char kUsage[] =
    "Usage: zr7700-decode [--rows] [FILE]\n"
    "\n"
    "Prints the printer stream in FILE, or on standard input, as text: the byte offset and the\n"
    "values of every item, and every violation of the format.\n"
    "\n"
    "  --rows     print the rows of dots too\n"
    "  --help     say this\n"
    "  --version  say the version\n"
    "\n"
    "Exit status: 0 when the stream is right, 1 when it violates the format, 2 when it cannot be\n"
    "read.\n";

struct Options {
  bool rows = false;
  const char* path = nullptr;
};

// Prints what the decoder tells.
class Printer : public StreamListener {
 public:
  explicit Printer(bool rows) : rows_(rows) {}

  uint64_t violations() const { return violations_; }

 private:
  void OnHeader(uint64_t offset, const PrintHeader& header) override {
    Line(offset, "print header: destination %u, ink warning %u", header.destination,
         header.ink_warning);
  }
  void OnDocumentStart(uint64_t offset, const DocumentStart& document) override {
    Line(offset, "document-start: family %s, version %u, job code %u", FamilyName(document.family),
         document.version, document.job_code);
  }
  void OnDocumentEnd(uint64_t offset, const DocumentEnd& document) override {
    Line(offset, "document-end: pages ended %u, aborted %u", document.pages_ended,
         document.pages_aborted);
  }
  void OnPageStart(uint64_t offset, const PageStart& page) override;
  void OnFeed(uint64_t offset, int32_t feed) override {
    Line(offset, "feed: %d (%.4f inch)", feed, feed / 1200.0);
  }
  void OnPassStart(uint64_t offset, const PassStart& pass) override {
    Line(offset, "pass-start: number %u, head line %d, %s, column step %u", pass.number,
         pass.head_line, pass.reverse == 0 ? "forward" : "reverse", pass.column_step);
  }
  void OnRow(uint64_t offset, const LaidRow& row) override;
  void OnPageTotals(uint64_t offset, bool aborted, const PageTotals& totals) override {
    Line(offset, "%s: passes %u, rows %u, drops C %u M %u Y %u, CRC 0x%08X",
         aborted ? "page-abort" : "page-end", totals.passes, totals.rows, totals.drops[0],
         totals.drops[1], totals.drops[2], totals.crc);
  }
  void OnViolation(uint64_t offset, const std::string& sentence) override {
    ++violations_;
    Line(offset, "VIOLATION: %s", sentence.c_str());
  }

  __attribute__((format(printf, 3, 4))) void Line(uint64_t offset, const char* format, ...) {
    std::printf("%10llu  ", static_cast<unsigned long long>(offset));
    va_list values;
    va_start(values, format);
    std::vprintf(format, values);
    va_end(values);
    std::putchar('\n');
  }

  const bool rows_;
  uint64_t violations_ = 0;
};

void Printer::OnPageStart(uint64_t offset, const PageStart& page) {
  Line(offset,
       "page-start: number %u, resolution %u x %u, left margin %d, size %u x %u, reach %u, "
       "quality %u, media %u, tray %u, intent %u, passes %u, direction %u, mixing %u, "
       "sharpening %u, nozzles %u, pitch %u, planes %u, alignment 0=%u 1=%u 2=%u 3=%u 6=%u 14=%u "
       "7=%u 9=%u",
       page.number, page.resolution_dpi, page.vertical_resolution_dpi, page.left_margin_dots,
       page.width_dots, page.height_lines, page.reach_dots, page.quality, page.media, page.tray,
       page.intent, page.passes, page.direction, page.mixing, page.sharpening, page.nozzles,
       page.pitch_lines, page.planes, page.alignment[0], page.alignment[1], page.alignment[2],
       page.alignment[3], page.alignment[4], page.alignment[5], page.alignment[6],
       page.alignment[7]);
}

void Printer::OnRow(uint64_t offset, const LaidRow& row) {
  if (!rows_) return;
  unsigned counts[kDropSizes + 1] = {};
  for (const uint8_t cell : row.cells) ++counts[cell];
  // A plane that is no letter is a violation, which tells its number.
  const bool known = InkOfPlane(row.start.plane) < kInks;
  Line(offset,
       "row: nozzle %u, plane %c, line %lld, first column %d (on the page %d), cells %u, "
       "drops small %u medium %u large %u",
       row.start.nozzle, known ? row.start.plane : '?', static_cast<long long>(row.line),
       row.start.first_column, row.column, row.start.cells, counts[1], counts[2], counts[3]);
}

bool ReadOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--rows") {
      options.rows = true;
    } else if (options.path == nullptr && !argument.starts_with("--")) {
      options.path = argv[i];
    } else {
      return false;
    }
  }
  return true;
}

// False when reading failed.
bool Decode(FILE* input, StreamDecoder& decoder) {
  std::vector<uint8_t> block(1 << 16);
  size_t count;
  while ((count = std::fread(block.data(), 1, block.size(), input)) > 0) {
    decoder.Append(std::span(block).first(count));
    while (decoder.Step()) continue;
  }
  decoder.Finish();
  while (decoder.Step()) continue;
  return std::ferror(input) == 0;
}

int Main(int argc, char** argv) {
  const std::string_view question = FirstQuestion(argc, argv);
  if (!question.empty()) return AnswerQuestion(question, "zr7700-decode", kUsage);
  Options options;
  if (!ReadOptions(argc, argv, options)) {
    std::fputs(kUsage, stderr);
    return kExitUsage;
  }
  FILE* input = options.path == nullptr ? stdin : std::fopen(options.path, "rb");
  Printer printer(options.rows);
  StreamDecoder decoder(printer);
  const bool read = input != nullptr && Decode(input, decoder);
  if (!read) std::fprintf(stderr, "zr7700-decode: The stream cannot be read.\n");
  if (input != nullptr) std::fclose(input);
  const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  if (!written) std::fprintf(stderr, "zr7700-decode: The text cannot be written.\n");
  if (!written || !read) return kExitUsage;
  return printer.violations() == 0 ? 0 : kExitViolation;
}

}  // namespace
}  // namespace zr7700::printer

int main(int argc, char** argv) { return zr7700::printer::Main(argc, argv); }
