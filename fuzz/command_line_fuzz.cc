// The command line and its options, as any words, against a PPD: whatever they say, the job
// variables and the engine's ini file get nothing but what the PPD offers, and CUPS is told what
// the filter has to tell and no word of theirs but its own name.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "base/settings.h"
#include "driver/command_line.h"
#include "engine/document.h"
#include "engine/engine_entries.h"
#include "engine/ini_file.h"
#include "engine/job_variables.h"
#include "fuzz/captured_output.h"
#include "fuzz/input.h"
#include "fuzz/open_descriptors.h"
#include "status/status_memory.h"

namespace zr7700 {
namespace {

using fuzz::IsOneOf;
using fuzz::Require;

constexpr size_t kMostWords = 9;
constexpr size_t kMostBytes = 3000;
constexpr size_t kOptionsWord = 5;

#define PPD_HEAD                                                                               \
  "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n"                      \
  "*LanguageVersion: English\n*LanguageEncoding: ISOLatin1\n*PCFileName: \"DISC.PPD\"\n"       \
  "*Manufacturer: \"Tessary\"\n*Product: \"(Disc)\"\n*ModelName: \"Disc\"\n"                   \
  "*ShortNickName: \"Disc\"\n*NickName: \"Disc\"\n*PSVersion: \"(3010.000) 0\"\n"              \
  "*LanguageLevel: \"3\"\n*ColorDevice: True\n*DefaultColorSpace: RGB\n"                       \
  "*OpenUI *PageSize/Size: PickOne\n*DefaultPageSize: Disc\n*PageSize Disc/Disc: \"\"\n"       \
  "*PageSize Small/Small: \"\"\n*CloseUI: *PageSize\n"                                         \
  "*OpenUI *PageRegion/Size: PickOne\n*DefaultPageRegion: Disc\n*PageRegion Disc/Disc: \"\"\n" \
  "*CloseUI: *PageRegion\n*DefaultImageableArea: Disc\n"                                       \
  "*ImageableArea Disc/Disc: \"0 0 340 340\"\n*ImageableArea Small/Small: \"0 0 227 227\"\n"   \
  "*DefaultPaperDimension: Disc\n*PaperDimension Disc/Disc: \"340 340\"\n"                     \
  "*PaperDimension Small/Small: \"227 227\"\n"
#define CHOICE(option, keyword) "*" option " " keyword "/" keyword ": \"\"\n"
#define PICK(option, first, choices)                                                               \
  "*OpenUI *" option "/" option ": PickOne\n*Default" option ": " first "\n" CHOICE(option, first) \
      choices "*CloseUI: *" option "\n"

// A queue's PPD as it comes, with fewer choices of each kind.
constexpr char kDiscPpd[] = PPD_HEAD PICK(
    "InnerDiameter", "220", CHOICE("InnerDiameter", "150") CHOICE("InnerDiameter", "110Draft"))
    PICK("Saturation", "100", CHOICE("Saturation", "80") CHOICE("Saturation", "130"))
        PICK("OuterMargin", "10", CHOICE("OuterMargin", "0") CHOICE("OuterMargin", "5"))
            PICK("MediaType", "WhiteMatteBOPP",
                 CHOICE("MediaType", "HighGloss") CHOICE("MediaType", "HighGloss2")
                     CHOICE("MediaType", "WhitePolyester") CHOICE("MediaType", "SemiGloss"))
                PICK("PrintQuality", "Quality2",
                     CHOICE("PrintQuality", "Quality1") CHOICE("PrintQuality", "Quality3")
                         CHOICE("PrintQuality", "Quality4"))
                    PICK("ColorMatching", "Standard", CHOICE("ColorMatching", "BestForPhotos"))
                        PICK("Bidi", "Yes", CHOICE("Bidi", "No"));

// Keywords that no PPD of ours has, and options that are missing.
constexpr char kStrangePpd[] =
    PPD_HEAD PICK("InnerDiameter", "-1", CHOICE("InnerDiameter", "99999999999999999999"))
        PICK("Saturation", "355", CHOICE("Saturation", "None"))
            PICK("OuterMargin", "2147483647", CHOICE("OuterMargin", "-2147483648"))
                PICK("MediaType", "Paper", "");

// A file in memory, under a path.
std::string FileOf(std::string_view text) {
  const int file = memfd_create("ppd", MFD_CLOEXEC);
  Require(write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
  return "/proc/self/fd/" + std::to_string(file);
}

enum PpdKind { kDisc, kStrange, kNoPpd, kMissing, kUnset, kKinds };

void NamePpd(int kind) {
  static const std::string paths[] = {FileOf(kDiscPpd), FileOf(kStrangePpd), FileOf("no PPD\n"),
                                      "/no-such-folder/disc.ppd"};
  if (kind == kUnset) {
    unsetenv("PPD");
  } else {
    setenv("PPD", paths[kind].c_str(), 1);
  }
}

// Set once: what the environment says of languages is not the input's.
bool PlainEnvironment() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE", "LANG", "APPLE_LANGUAGE"}) {
    unsetenv(name);
  }
  return true;
}

int memories_created = 0;
bool document_started = false;

int32_t Initialize(HPEHandle, const char*, const char*, const char*, const char*) { return HPE_OK; }

int32_t StartDoc(HPEHandle, HPEOutputCallback, const char* table, uint32_t, uint32_t, uint32_t code,
                 void* context) {
  const paths::EngineFiles& files = job_variables.files;
  Require(code == HPE_START_DOC_CODE && context == &job_variables);
  Require(strcmp(table, files.colorTableStandard) == 0 ||
          strcmp(table, files.colorTablePhoto) == 0 ||
          strcmp(table, files.colorTablePhotoGlossy) == 0);
  document_started = true;
  return HPE_OK;
}

std::vector<std::string> TakeWords(fuzz::Input& input) {
  const std::span<const uint8_t> bytes =
      input.Rest().first(std::min(kMostBytes, input.Rest().size()));
  std::vector<std::string> words(1);
  for (const uint8_t byte : bytes) {
    if (byte != 0) {
      words.back() += static_cast<char>(byte);
    } else if (words.size() < kMostWords) {
      words.emplace_back();
    }
  }
  return words;
}

void RequireRecord(const FilterArgs& arguments, std::vector<std::string>& words) {
  Require(arguments.user == words[2].data() && arguments.title == words[3].data());
  Require(arguments.option_count >= 0);
  const std::string& options = words[kOptionsWord];
  const auto named = [&](const char* name) { return options.find(name) != options.npos; };
  Require(!arguments.SkipLowInkFWCheck || named("SkipLowInkFWCheck"));
  Require(!arguments.SuppressStartingUtilityOnError || named("SuppressStartingUtilityOnError"));
}

// What no queue offers cannot be asked for.
void RequireDiscChoices(const JobVariables& variables) {
  Require(IsOneOf(variables.InnerDiam, {220, 150, 110}));
  Require(IsOneOf(variables.InkSaturation, {100, 80, 130}));
  Require(IsOneOf(variables.OuterMargin, {0, 5 * 600 / 254, 10 * 600 / 254}));
  Require(variables.DiscSurfaceQuality >= 1 && variables.DiscSurfaceQuality <= 5);
  Require(variables.PrintQuality >= 1 && variables.PrintQuality <= 4);
  Require(IsOneOf(variables.ColorMatching, {1, 2}));
  Require(IsOneOf(variables.bidirectional, {0, 1}));
}

void RequireStrangeChoices(const JobVariables& variables) {
  Require(IsOneOf(variables.InkSaturation, {355 - 256, 0}));
  Require(variables.DiscSurfaceQuality == 5);
  Require(variables.PrintQuality == 0 && variables.ColorMatching == 0);
  Require(variables.bidirectional == 1);
}

void RequireFixedValues(const JobVariables& variables) {
  Require(variables.discForm == 1 && variables.imageWidth == 2834 && variables.imageHeight == 2834);
  Require(variables.clipBufferBytes == 20400 && variables.maxImageDots == 5100);
  Require(variables.topDiscOffset == 69 && variables.nPhotoThreshold == 700);
}

void SetUpDocument(ppd_file_t* ppd, int kind, bool is_heron) {
  job_variables = {};
  job_variables.isHeron = is_heron ? 1 : 0;
  job_variables.files = paths::kEngineFamilies[is_heron ? 1 : 0].files;
  document_started = false;
  Require(DocumentSetup(ppd) && document_started);
  RequireFixedValues(job_variables);
  kind == kDisc ? RequireDiscChoices(job_variables) : RequireStrangeChoices(job_variables);
}

std::string UsageOf(const std::string& program) {
  return "Usage: " + program + " job user title copies options [filename]\n";
}

void RequireRefusal(const std::string& told) {
  Require(told.starts_with("ERROR: Unable to open PPD file: "));
  Require(told.find('\n') == told.size() - 1);
}

void Parse(std::vector<std::string>& words, int kind, bool is_heron) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  memories_created = 0;
  fuzz::ForgetOutput();
  FilterArgs arguments;
  ppd_file_t* const ppd = ParseCommandLine(static_cast<int>(words.size()), argv.data(), arguments);
  const bool counts = words.size() == 6 || words.size() == 7;
  const bool opens = counts && (kind == kDisc || kind == kStrange);
  Require((ppd != nullptr) == opens && memories_created == (opens ? 1 : 0));
  if (!counts) Require(fuzz::told == UsageOf(words[0]));
  if (counts) RequireRecord(arguments, words);
  if (counts && !opens) RequireRefusal(fuzz::told);
  if (ppd != nullptr) SetUpDocument(ppd, kind, is_heron);
  if (opens) Require(fuzz::told.empty());
  if (ppd != nullptr) ppdClose(ppd);
  cupsFreeOptions(arguments.option_count, arguments.options);
}

}  // namespace

// Stand-ins for what would be written outside: the status memory and the engine's ini file.
bool CreateStatusMemory(size_t size_bytes) {
  Require(size_bytes == kStatusRecordBytes);
  ++memories_created;
  return true;
}
bool WriteFerroIniFile(const char* section, const char* key, const char* value) {
  const std::string_view written(value);
  Require(section[0] == '[' && key[strlen(key) - 1] == '=');
  Require(written == "1" || written == "2" || written == "4" || written == "8");
  return true;
}
bool RemoveFerroIniKey(const char* section, const char* key) {
  Require(strcmp(section, "[ESwathBuilder]") == 0 && strcmp(key, "Slot1NumPassesOverride=") == 0);
  return true;
}

}  // namespace zr7700

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  using namespace zr7700;
  [[maybe_unused]] static const bool plain = PlainEnvironment();
  engine_entries.HPEInitialize.Set(Initialize);
  engine_entries.HPEStartDoc.Set(StartDoc);
  fuzz::Input input(data, bytes);
  const uint8_t first = input.U8();
  // Mostly a good PPD.
  const int kind = first % 16 < kKinds ? first % 16 : kDisc;
  NamePpd(kind);
  std::vector<std::string> words = TakeWords(input);
  const uint32_t open_before = fuzz::OpenDescriptors();
  Parse(words, kind, (first & 16) != 0);
  Require(fuzz::OpenDescriptors() == open_before);
  return 0;
}
