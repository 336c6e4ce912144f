// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "engine/ppd_choices.h"

#include <cstdlib>
#include <cstring>
#include <span>

#include "base/log.h"
#include "base/printable.h"
#include "disc/ring.h"

namespace zr7700 {
namespace {

struct KeywordRow {
  const char* keyword;
  uint8_t value;
};

constexpr KeywordRow kMediaTypes[] = {{"HighGloss", 1},
                                      {"HighGloss2", 2},
                                      {"WhitePolyester", 3},
                                      {"SemiGloss", 4},
                                      {"WhiteMatteBOPP", 5}};
constexpr KeywordRow kPrintQualities[] = {{"Quality1", 1}, {"Quality2", 2}, {"Quality3", 3}};
constexpr KeywordRow kColorMatchings[] = {{"BestForPhotos", 2}};
constexpr KeywordRow kBidirections[] = {{"Yes", 1}};

constexpr uint8_t kOtherMediaType = 5;
constexpr uint8_t kOtherPrintQuality = 4;
constexpr uint8_t kOtherColorMatching = 1;
constexpr uint8_t kOneDirection = 0;
constexpr uint8_t kBothDirections = 1;

// Returns the option's marked keyword, logged behind `log_text`, or null. Owned by the PPD.
const char* TakeKeyword(ppd_file_t* ppd, const char* option, const char* log_text) {
  const ppd_choice_t* const choice = ppdFindMarkedChoice(ppd, option);
  if (choice == nullptr) return nullptr;
  LogMessage(kLogMilestone, "%s%s", log_text, Printable(choice->choice).c_str());
  return choice->choice;
}

// The number that a keyword begins with, in 32 bits; 0 when it begins with none.
int32_t NumberOf(const char* keyword) { return static_cast<int32_t>(strtol(keyword, nullptr, 10)); }

uint8_t ValueOf(std::span<const KeywordRow> rows, const char* keyword, uint8_t other) {
  for (const KeywordRow& row : rows) {
    if (strcmp(row.keyword, keyword) == 0) return row.value;
  }
  return other;
}

void ReadKeyword(ppd_file_t* ppd, const char* option, const char* log_text,
                 std::span<const KeywordRow> rows, uint8_t other, uint8_t& field) {
  const char* const keyword = TakeKeyword(ppd, option, log_text);
  if (keyword != nullptr) field = ValueOf(rows, keyword, other);
}

}  // namespace

void ReadDiscChoices(ppd_file_t* ppd, JobVariables& variables) {
  if (const char* const keyword = TakeKeyword(ppd, "InnerDiameter", "   InnerDiameterChoice : ")) {
    variables.InnerDiam = static_cast<uint32_t>(NumberOf(keyword));
  }
  if (const char* const keyword = TakeKeyword(ppd, "Saturation", "   SaturationChoice : ")) {
    variables.InkSaturation = static_cast<uint8_t>(NumberOf(keyword));
  }
  if (const char* const keyword = TakeKeyword(ppd, "OuterMargin", "   OuterMarginChoice : ")) {
    variables.OuterMargin = static_cast<uint32_t>(MarginDots(NumberOf(keyword)));
  }
}

void ReadPrintChoices(ppd_file_t* ppd, JobVariables& variables) {
  ReadKeyword(ppd, "MediaType", "   MediaTypeChoice : ", kMediaTypes, kOtherMediaType,
              variables.DiscSurfaceQuality);
  ReadKeyword(ppd, "PrintQuality", "   PrintQualityChoice : ", kPrintQualities, kOtherPrintQuality,
              variables.PrintQuality);
  ReadKeyword(ppd, "ColorMatching", "   ColorMatchingChoice : ", kColorMatchings,
              kOtherColorMatching, variables.ColorMatching);
  variables.bidirectional = kBothDirections;
  ReadKeyword(ppd, "Bidi", "   BidiChoice : ", kBidirections, kOneDirection,
              variables.bidirectional);
}

}  // namespace zr7700
