// Every way to violate docs/printer-stream.md, and the offset and sentence that it is told with.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "virtual_printer/stream_decoder.h"
#include "virtual_printer/stream_listener.h"

namespace zr7700::printer {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Offsets by hand: header 16, document-start 4 + 4, page-start 4 + 42 and an escape
// for each 0x1A or 0x1B in it (none with the values here), feed 8, pass-start 4 + 10.
constexpr uint64_t kDocumentAt = 16;
constexpr uint64_t kPageAt = 24;
constexpr uint64_t kFeedAt = 70;
constexpr uint64_t kFirstPassAt = 78;
constexpr uint64_t kFirstRowAt = 92;

std::vector<Told> Violations(const StreamBuilder& stream) {
  return Decode(stream.bytes()).violations;
}

StreamBuilder OpenPage(const PageValues& values = {}, char family = 'G') {
  StreamBuilder stream(family);
  stream.Header().DocumentStart().PageStart(values).Feed();
  EXPECT_EQ(stream.offset(), kFirstPassAt);
  return stream;
}

TEST(Violation, AnEmptyStreamIsRight) { EXPECT_THAT(Decode({}).violations, IsEmpty()); }

TEST(Violation, BytesThatBeginNoItemAreToldOnce) {
  StreamBuilder stream('G');
  stream.Header().Raw({'x', 'y', 0x1A}).WholePage();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{16, "An item must begin with 0x1B, not with 0x78."}));
  EXPECT_EQ(Decode(stream.bytes(), 1).violations.size(), 1u);
}

TEST(Violation, APrintHeaderBetweenDocumentStartAndTheFirstPage) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().Header().PageStart().Feed();
  stream.Pass(0).Row(0, 'C', 0, "3").PageEnd().DocumentEnd();
  EXPECT_THAT(
      Violations(stream),
      ElementsAre(Told{
          kPageAt, "There must be no print header between document-start and the first page."}));
}

// A broken stream may hold a page-start every 50 bytes.
TEST(Violation, APageWithoutARowTakesNoRoom) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart();
  for (uint16_t i = 1; i <= 2000; ++i) {
    stream.PageStart({.number = i, .width = 5100, .height = 10200}).Feed();
  }
  const Listener heard = Decode(stream.bytes());
  ASSERT_EQ(heard.pages.size(), 2000u);
  for (const PrintedPage& page : heard.pages) EXPECT_TRUE(page.canvas.dots.empty());
}

TEST(Violation, UnknownItemsAndCommands) {
  StreamBuilder stream('G');
  stream.Raw({0x1B, 0x40, 7}).Raw({0x1B, '*', 0x09, 'b', 1}).Raw({0x1B, 0x0B, 0x0E, 0x02, 1});
  stream.Raw({0x1B, 0x1B}).WholePage();
  EXPECT_THAT(Violations(stream), ElementsAre(Told{1, "0x1B must not be followed by 0x40."},
                                              Told{3, "There is no command 0x09 0x62."},
                                              Told{11, "This byte of a print header must be 0x01."},
                                              Told{14, "0x1B must not be followed by 0x1B."},
                                              Told{15, "0x1B must not be followed by 0x1B."}));
}

TEST(Violation, PrintHeaderBytes) {
  Bytes header = HeaderBytes();
  header[12] = 5;
  StreamBuilder stream('G');
  stream.Raw(header);
  // 0x1B + 0x0B + 0x0E + 3 + 0x09 + 0xE8 + 0xC6 + 0x10 + 5: 0xFE + 5 is 0x103, and 3 remain.
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{0, "Bytes 10 to 14 of a print header must be 0."},
                          Told{0, "The checksum of the print header is 254, not 3."}));
}

TEST(Violation, DocumentStartValues) {
  StreamBuilder stream('G');
  stream.Header().Raw(CommandBytes(1, 'b', {'X', 2, 0, 141}));
  EXPECT_THAT(Violations(stream), ElementsAre(Told{16, "The family is 88, not one of 72, 71."},
                                              Told{16, "The format version is 2, not 1."},
                                              Told{16, "The job code is 141, not 142."},
                                              Told{24, "The stream ends inside a document."}));
}

TEST(Violation, ItemsOutOfOrder) {
  StreamBuilder stream('G');
  stream.DocumentStart().PageStart().Feed().PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{0, "There is no print header before document-start."},
                          Told{8, "There is no print header before the page."}));

  StreamBuilder lone('G');
  lone.Header().Feed().Row(0, 'C', 0, "1");
  EXPECT_THAT(Violations(lone), ElementsAre(Told{16,
                                                 "There must be no feed here but a print header or "
                                                 "document-start."},
                                            Told{24,
                                                 "There must be no row here but a print header or "
                                                 "document-start."}));
}

TEST(Violation, AnEnginesStreamHasNoPrintHeader) {
  const auto told_by_engine = [](const StreamBuilder& stream) {
    Listener listener;
    StreamDecoder decoder(listener);
    decoder.ExpectNoHeaders();
    DecodeAll(decoder, stream.bytes(), 7);
    return listener.violations;
  };
  StreamBuilder alone('G');
  alone.DocumentStart().PageStart().Feed().PageEnd();
  alone.PageStart({.number = 2}).Feed().PageEnd().DocumentEnd();
  EXPECT_THAT(told_by_engine(alone), IsEmpty());

  StreamBuilder with_header('G');
  with_header.Header().DocumentStart().PageStart().Feed().PageEnd().DocumentEnd();
  EXPECT_THAT(told_by_engine(with_header),
              ElementsAre(Told{0, "An engine sends no print header."}));
}

TEST(Violation, AFeedMustFollowPageStartOnce) {
  StreamBuilder without('G');
  without.Header().DocumentStart().PageStart().Pass(0).Row(0, 'C', 0, "3").PageEnd();
  without.DocumentEnd();
  EXPECT_THAT(Violations(without),
              ElementsAre(Told{kFeedAt, "There must be no pass-start here but the page's feed."}));

  StreamBuilder twice = OpenPage();
  twice.Feed().PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(twice),
              ElementsAre(Told{kFirstPassAt,
                               "There must be no feed here but pass-start, page-end "
                               "or page-abort."}));
}

TEST(Violation, FeedRange) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart().Feed(24001).PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{kFeedAt, "The feed is 24001, not -12000 to 24000."}));
}

TEST(Violation, DocumentEndCounts) {
  StreamBuilder empty('G');
  empty.Header().DocumentStart().DocumentEnd();
  EXPECT_THAT(Violations(empty),
              ElementsAre(Told{24, "The document has no page."},
                          Told{24, "There is no page after the last print header."}));

  StreamBuilder wrong = OpenPage();
  wrong.PageEnd().Raw(CommandBytes(1, 'e', {0, 0, 0, 2}));
  EXPECT_THAT(Violations(wrong),
              ElementsAre(Told{106, "The number of ended pages is said to be 0 but is 1."},
                          Told{106, "The number of aborted pages is said to be 2 but is 0."}));
}

// Every field of page-start with a value just outside what is legal.
TEST(Violation, PageStartValues) {
  const struct {
    size_t at;
    Bytes bytes;
    const char* sentence;
  } rows[] = {
      {0, {0, 2}, "The page number is said to be 2 but is 1."},
      {4, {1, 44}, "The vertical resolution is 300, not 600."},
      {6, {0, 0, 0x13, 0xED}, "The left margin is 5101, not -5100 to 5100."},
      {6, {0xFF, 0xFF, 0xEC, 0x13}, "The left margin is -5101, not -5100 to 5100."},
      {10, {0, 0, 0, 0}, "The printable width is 0, not 1 to 5100."},
      {10, {0xFF, 0xFF, 0xFF, 0xFF}, "The printable width is 4294967295, not 1 to 5100."},
      {14, {0, 0, 0x27, 0xD9}, "The printable height is 10201, not 1 to 10200."},
      {18, {0, 0, 0x13, 0xED}, "The physical width is 5101, not 1 to 5100."},
      {22, {1}, "The print quality is 1, not one of 2, 3, 4."},
      {23, {3}, "The media is 3, not one of 1, 2, 7, 8, 9."},
      {24, {1}, "The tray is 1, not 2."},
      {25, {0}, "The page intent is 0, not 1."},
      {26, {3}, "The number of passes is 3, not one of 1, 2, 4, 8."},
      {27, {3}, "The direction is 3, not one of 0, 1, 2."},
      {28, {0}, "The drop mixing is 0, not one of 1, 2."},
      {29, {13}, "The sharpening level is 13, not 1 to 12."},
      {31, {96}, "The family Granite has no head with 96 nozzles of pitch 1."},
      {32, {2}, "The family Granite has no head with 192 nozzles of pitch 2."},
      {33, {4}, "The number of planes is 4, not 3."},
  };
  for (const auto& row : rows) {
    StreamBuilder stream('G');
    stream.Header().DocumentStart();
    Bytes payload = stream.PagePayload({});
    std::copy(row.bytes.begin(), row.bytes.end(),
              payload.begin() + static_cast<std::ptrdiff_t>(row.at));
    stream.PageStartPayload(payload).Feed().PageEnd().DocumentEnd();
    EXPECT_THAT(Violations(stream), ElementsAre(Told{kPageAt, row.sentence}));
  }
}

TEST(Violation, ARowOnAPageThatCannotBeLaidIsOnlyCounted) {
  StreamBuilder stream('G');
  stream.Header().DocumentStart().PageStart({.width = 5101}).Feed();
  stream.Pass(0).Row(0, 'C', 5100, "3").PageEnd().DocumentEnd();
  const Listener heard = Decode(stream.bytes());
  EXPECT_THAT(heard.violations,
              ElementsAre(Told{kPageAt, "The printable width is 5101, not 1 to 5100."}));
  ASSERT_EQ(heard.pages.size(), 1u);
  EXPECT_TRUE(heard.pages[0].canvas.dots.empty());
}

TEST(Violation, PayloadsOfAWrongLength) {
  StreamBuilder stream('G');
  stream.Header().Raw(CommandBytes(1, 'b', {'G', 1, 0})).WholePage();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{16, "The payload of document-start has 3 bytes instead of 4."}));

  StreamBuilder longer('G');
  longer.Header().Raw(CommandBytes(1, 'b', {'G', 1, 0, 142, 9})).PageStart().Feed().PageEnd();
  longer.DocumentEnd();
  EXPECT_THAT(Violations(longer),
              ElementsAre(Told{24, "An item must begin with 0x1B, not with 0x09."}));
}

TEST(Violation, EscapesInPayloads) {
  StreamBuilder stream = OpenPage();
  // A row whose nozzle has a bare 0x1A: offset of the 0x1A is 4 behind the row's.
  stream.Pass(0).Raw({0x1B, '*', 4, 'r', 0x1A, 0x02, 'C', 0, 0, 0, 1, 0, 0xC0});
  stream.Row(0, 'C', 0, "3").PageEnd().DocumentEnd();
  EXPECT_THAT(
      Violations(stream),
      ElementsAre(Told{kFirstRowAt + 4, "0x1A in a payload must be followed by 0x00 or 0x01."}));
}

TEST(Violation, ARowThatNeverEnds) {
  StreamBuilder stream = OpenPage();
  stream.Pass(0).Raw(CommandBytes(4, 'r', Bytes(3000, 0x55))).Row(0, 'C', 0, "3");
  stream.PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{kFirstRowAt, "The payload of row is too long."}));
}

TEST(Violation, PassStarts) {
  const auto one_pass = [](const Bytes& payload) {
    StreamBuilder stream = OpenPage();
    stream.Raw(CommandBytes(3, 'b', payload)).Row(0, 'C', 0, "3");
    Bytes totals = stream.Totals();
    totals[3] = 1;  // the pass that the builder does not know of
    return Violations(stream.End('e', totals).DocumentEnd());
  };
  EXPECT_THAT(one_pass({0, 0, 0, 0, 0, 0, 0, 0, 0, 1}), IsEmpty());
  EXPECT_THAT(one_pass({0, 0, 0, 1, 0, 0, 0, 0, 0, 1}),
              ElementsAre(Told{kFirstPassAt, "The pass number is said to be 1 but is 0."}));
  EXPECT_THAT(one_pass({0, 0, 0, 0, 0, 0, 0, 0, 2, 1}),
              ElementsAre(Told{kFirstPassAt, "The pass's direction is 2, not one of 0, 1."}));
  EXPECT_THAT(one_pass({0, 0, 0, 0, 0, 0, 0, 0, 1, 1}),
              ElementsAre(Told{kFirstPassAt, "The pass must be forward."}));
  EXPECT_THAT(one_pass({0, 0, 0, 0, 0, 0, 0, 0, 0, 2}),
              ElementsAre(Told{kFirstPassAt, "The column step is said to be 2 but is 1."}));
}

TEST(Violation, PassesTakeTurnsAndNeverGoBack) {
  StreamBuilder turns = OpenPage({.direction = 0});
  turns.Pass(0, true).Row(0, 'C', 0, "3").Pass(0, true).Row(1, 'C', 0, "3");
  EXPECT_THAT(Violations(turns.PageEnd().DocumentEnd()),
              ElementsAre(Told{kFirstPassAt, "The pass must be forward."},
                          Told{kFirstPassAt + 14 + 13, "The pass must be forward."}));

  StreamBuilder back = OpenPage();
  back.Pass(5).Row(0, 'C', 0, "3").Pass(4).Row(0, 'C', 0, "3").PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(back),
              ElementsAre(Told{kFirstPassAt + 14 + 13, "The head line falls from 5 to 4."}));

  StreamBuilder empty = OpenPage();
  empty.Pass(0).Pass(0).Row(0, 'C', 0, "3").PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(empty), ElementsAre(Told{kFirstPassAt, "The pass has no row."}));
}

// What is told of one row of a page of 100 x 60 dots at left margin 1916, reach 5100.
std::vector<Told> RowViolations(uint16_t nozzle, char plane, int16_t column, const char* cells,
                                const PageValues& values = {}) {
  StreamBuilder stream = OpenPage(values);
  stream.Pass(0).Row(nozzle, plane, column, cells).PageEnd().DocumentEnd();
  std::vector<Told> told = Violations(stream);
  // A row that is not laid makes the total wrong as well; that is another test's matter.
  std::erase_if(told, [](const Told& one) { return one.second.starts_with("The number of "); });
  return told;
}

TEST(Violation, RowsOffThePage) {
  EXPECT_THAT(RowViolations(59, 'C', 99, "3"), IsEmpty());
  EXPECT_THAT(RowViolations(60, 'C', 0, "3"),
              ElementsAre(Told{kFirstRowAt, "The row lies on line 60, off the page."}));
  EXPECT_THAT(RowViolations(192, 'C', 0, "3", {.height = 1000}),
              ElementsAre(Told{kFirstRowAt, "The head has no nozzle 192."}));
  EXPECT_THAT(RowViolations(0, 'C', -1, "3"),
              ElementsAre(Told{kFirstRowAt, "The row's columns -1 to -1 do not lie on the page."}));
  EXPECT_THAT(
      RowViolations(0, 'C', 98, "303"),
      ElementsAre(Told{kFirstRowAt, "The row's columns 98 to 100 do not lie on the page."}));
  EXPECT_THAT(RowViolations(0, 'C', 4, "33", {.left_margin = -5}),
              ElementsAre(Told{kFirstRowAt,
                               "The row's columns 4 to 5 do not lie within the carriage's "
                               "reach."}));
  EXPECT_THAT(RowViolations(0, 'C', 84, "1", {.reach = 2000}),
              ElementsAre(Told{kFirstRowAt,
                               "The row's columns 84 to 84 do not lie within the carriage's "
                               "reach."}));
  EXPECT_THAT(RowViolations(0, 'C', 83, "1", {.reach = 2000}), IsEmpty());
}

TEST(Violation, RowsThatLieBelowTheFirstLineByTheirHead) {
  StreamBuilder stream = OpenPage();
  stream.Pass(-3).Row(2, 'C', 0, "1").Row(3, 'C', 0, "1");
  Bytes totals = stream.Totals();
  totals[11] = 1;  // one of the two drops lies on the page
  EXPECT_THAT(Violations(stream.End('e', totals).DocumentEnd()),
              ElementsAre(Told{kFirstRowAt, "The row lies on line -1, off the page."}));
}

TEST(Violation, RowsMustBeginAndEndWithADrop) {
  const char* sentence = "The row's first and last cell must hold a drop.";
  EXPECT_THAT(RowViolations(0, 'C', 0, "03"), ElementsAre(Told{kFirstRowAt, sentence}));
  EXPECT_THAT(RowViolations(0, 'C', 0, "30"), ElementsAre(Told{kFirstRowAt, sentence}));
  EXPECT_THAT(RowViolations(0, 'C', 0, "0"), ElementsAre(Told{kFirstRowAt, sentence}));
}

TEST(Violation, RowFields) {
  const auto told_of = [](const Bytes& payload) {
    StreamBuilder stream = OpenPage();
    return Violations(stream.Pass(0).RowOf(payload).PageEnd().DocumentEnd());
  };
  EXPECT_THAT(told_of(StreamBuilder::RowPayload(0, 'K', 0, 1, {0, 0x40})),
              ElementsAre(Told{kFirstRowAt, "The plane is 75, not one of C, M, Y."}));
  EXPECT_THAT(told_of(StreamBuilder::RowPayload(0, 'C', 0, 0, {})),
              ElementsAre(Told{kFirstRowAt, "The number of cells is 0, not 1 to 5100."}));
  EXPECT_THAT(told_of(StreamBuilder::RowPayload(0, 'C', 0, 5101, {})),
              ElementsAre(Told{kFirstRowAt, "The number of cells is 5101, not 1 to 5100."}));
  EXPECT_THAT(told_of({0, 0, 'C', 0, 0, 0}),
              ElementsAre(Told{kFirstRowAt, "The payload of row has less than 7 bytes."}));
  EXPECT_THAT(told_of(StreamBuilder::RowPayload(0, 'C', 0, 1, {0, 0x41})),
              ElementsAre(Told{kFirstRowAt, "The unused bits of the row's last byte must be 0."}));
}

TEST(Violation, RowOrder) {
  const char* sentence = "The row comes twice or out of its order.";
  // Each row is 4 + 7 + 2 bytes long for Granite.
  StreamBuilder granite = OpenPage();
  granite.Pass(0).Row(1, 'C', 0, "3").Row(1, 'Y', 0, "3").Row(1, 'M', 0, "3");
  granite.Row(2, 'C', 0, "3").Row(2, 'C', 9, "3").PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(granite),
              ElementsAre(Told{kFirstRowAt + 26, sentence}, Told{kFirstRowAt + 52, sentence}));
  // And 4 + 7 + 4 for Heron.
  StreamBuilder heron = OpenPage({}, 'H');
  heron.Pass(0).Row(1, 'Y', 0, "3").Row(1, 'C', 0, "3").Row(1, 'M', 0, "3");
  heron.PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(heron), ElementsAre(Told{kFirstRowAt + 30, sentence}));
}

TEST(Violation, ADotGetsOneDropOfAnInk) {
  StreamBuilder stream = OpenPage();
  stream.Pass(0).Row(1, 'C', 0, "321").Row(1, 'M', 0, "3").Pass(1).Row(0, 'C', 1, "12");
  stream.PageEnd().DocumentEnd();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{kFirstRowAt + 13 + 13 + 14,
                               "The row lays 2 drops of cyan on dots of line 1 that have one."}));
}

TEST(Violation, PageTotals) {
  StreamBuilder stream = OpenPage();
  stream.Pass(0).Row(0, 'C', 0, "3");
  Bytes totals = stream.Totals();
  for (const size_t at : {3u, 7u, 11u, 15u, 19u}) totals[at] = 9;
  const uint64_t offset = stream.offset();
  stream.End('e', totals).DocumentEnd();
  EXPECT_THAT(Violations(stream),
              ElementsAre(Told{offset, "The number of passes is said to be 9 but is 1."},
                          Told{offset, "The number of rows is said to be 9 but is 1."},
                          Told{offset, "The number of cyan drops is said to be 9 but is 1."},
                          Told{offset, "The number of magenta drops is said to be 9 but is 0."},
                          Told{offset, "The number of yellow drops is said to be 9 but is 0."}));
}

TEST(Violation, ThePagesCrcLeavesTheFeedOut) {
  StreamBuilder stream = OpenPage();
  stream.Pass(0).Row(0, 'C', 0, "3");
  const uint64_t offset = stream.offset();
  Bytes bytes = stream.PageEnd().DocumentEnd().bytes();
  bytes[kFeedAt + 7] = 99;
  EXPECT_THAT(Decode(bytes).violations, IsEmpty());
  bytes[kFirstRowAt + 12] ^= 0x40;  // another size of drop
  const auto told = Decode(bytes).violations;
  ASSERT_EQ(told.size(), 1u);
  EXPECT_EQ(told[0].first, offset);
  EXPECT_TRUE(told[0].second.starts_with("The CRC is said to be ")) << told[0].second;
}

TEST(Violation, StreamsCutShort) {
  StreamBuilder whole('G');
  whole.WholePage();
  const Bytes& bytes = whole.bytes();
  const uint64_t end_at = kFirstRowAt + 13 + 4 + 24;  // of the page
  for (size_t cut = 1; cut < bytes.size(); ++cut) {
    const Listener heard = Decode(Bytes(bytes.begin(), bytes.begin() + static_cast<int>(cut)));
    // Only a header by itself may stand alone.
    if (cut == 16) {
      EXPECT_THAT(heard.violations, IsEmpty());
      continue;
    }
    ASSERT_FALSE(heard.violations.empty()) << cut;
    const bool page_open = cut >= kFeedAt && cut < end_at;
    EXPECT_EQ(heard.pages.size(), cut >= kFeedAt ? 1u : 0u) << cut;
    EXPECT_TRUE(heard.pages.empty() || heard.pages[0].spoilt == page_open) << cut;
    if (cut < kPageAt) continue;
    EXPECT_EQ(heard.violations.back(),
              (Told{cut, page_open ? "The stream ends inside a page."
                                   : "The stream ends inside a document."}));
  }
}

TEST(Violation, AnItemCutShortIsTold) {
  StreamBuilder stream('G');
  stream.Header().Raw({0x1B, '*', 1});
  EXPECT_THAT(Violations(stream), ElementsAre(Told{16, "The stream ends inside a command."}));
  StreamBuilder header('G');
  header.Raw({0x1B, 0x0B, 0x0E, 0x01});
  EXPECT_THAT(Violations(header), ElementsAre(Told{0, "The stream ends inside a print header."}));
  StreamBuilder payload('G');
  payload.Header().Raw({0x1B, '*', 1, 'b', 'G', 1, 0, 0x1A});
  EXPECT_EQ(Violations(payload).size(), 1u);
}

TEST(Violation, AMissingPageEndSpoilsTheDiscAndThePageAfterItIsRight) {
  StreamBuilder stream = OpenPage();
  stream.Pass(0).Row(0, 'C', 0, "3");
  const uint64_t offset = stream.offset();
  stream.WholePage();
  const Listener heard = Decode(stream.bytes());
  EXPECT_THAT(heard.violations,
              ElementsAre(Told{offset,
                               "There must be no print header here but row, pass-start, "
                               "page-end or page-abort."}));
  ASSERT_EQ(heard.pages.size(), 2u);
  EXPECT_TRUE(heard.pages[0].spoilt);
  EXPECT_FALSE(heard.pages[1].spoilt);
}

}  // namespace
}  // namespace zr7700::printer
