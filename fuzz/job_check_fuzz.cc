// The check of the printer against a printer that says, breaks off, garbles and withholds what it
// likes, on a clock of its own. What CUPS and the printer utility are told, the numbers that the
// engine gets and the answer itself are worked out a second time from the records that were read.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <span>
#include <string>
#include <vector>

#include "base/pause.h"
#include "engine/engine_loader.h"
#include "engine/job_variables.h"
#include "fuzz/captured_output.h"
#include "fuzz/input.h"
#include "fuzz/open_descriptors.h"
#include "platform/platform.h"
#include "status/back_channel.h"
#include "status/job_check.h"
#include "status/status_memory.h"
#include "status/status_reader.h"
#include "status/test_cartridges.h"
#include "status/test_records.h"
#include "status/user_texts.h"
#include "status/utility_notices.h"

namespace zr7700 {
namespace {

using fuzz::Require;

constexpr size_t kMostBytes = 1500;
constexpr unsigned kMostSilentReads = 100;
constexpr int kBetweenPasses_ms = 1000;

// The clock goes on from run to run: a new one would look like one that jumps back.
double now_s = 1000.0;

// A printer that follows the input, and then for good either sends sound records or nothing.
struct Printer {
  fuzz::Input script{nullptr, 0};
  bool ends_content = true;
  std::deque<std::vector<uint8_t>> said;  // pieces as they arrive
  unsigned silent_reads = 0;
};
Printer printer;

// What the check did.
struct Trace {
  int pauses = 0;  // between two passes
  std::vector<PrinterStatusRecord> records;
  int notices = 0;
  int notices_until_reached = 0;  // 0: the utility is never reached
  int engine_loads = 0;
  bool engine_loads_well = true;
};
Trace trace;

PrinterStatusRecord TakeRecord(fuzz::Input& input) {
  static constexpr char kCartridges[] = {'Q', 'P', 'U', 'V', ' ', '/', '0', '\0'};
  static constexpr uint32_t kCounts[] = {0,           189'999'999,   400'000'000,   400'000'001,
                                         700'000'001, 1'820'000'001, 3'000'000'000, 3'000'000'001};
  RecordValues values;
  const uint8_t kind = input.U8();
  values.cartridge = kCartridges[kind % 8];
  values.alignment = (kind & 8) != 0 ? input.U8() : 0;
  values.status_letter = (kind & 16) != 0 ? static_cast<char>(input.U8()) : 'I';
  values.ink_count1 = (kind & 32) != 0 ? kCounts[input.U8() % 8] : 0;
  values.ink_count2 = (kind & 64) != 0 ? input.U32() : 5;
  values.ink_count3 = (kind & 128) != 0 ? kCounts[input.U8() % 8] : 7;
  values.alignment_value6 = kind;
  values.alignment_value14 = input.U8();
  return MakeRecord(values);
}

void Say(std::span<const uint8_t> bytes) {
  if (!bytes.empty()) printer.said.emplace_back(bytes.begin(), bytes.end());
}

// In pieces, as a USB backend hands them over.
void SayInPieces(std::span<const uint8_t> bytes, size_t at) {
  Say(bytes.first(std::min(at, bytes.size())));
  Say(bytes.subspan(std::min(at, bytes.size())));
}

void SayDamaged(PrinterStatusRecord record, fuzz::Input& input) {
  record[input.U8() % record.size()] ^= static_cast<uint8_t>(1 + input.U8());
  Say(record);
}

void SayFromTheMiddle(std::span<const uint8_t> bytes, size_t at) {
  Say(bytes.subspan(std::min(at, bytes.size())));
}

std::vector<uint8_t> TakeBytes(fuzz::Input& input) {
  std::vector<uint8_t> bytes(input.U8());
  for (uint8_t& byte : bytes) byte = input.U8();
  return bytes;
}

// The next thing that the printer does; false when the script is over.
bool FollowScript() {
  fuzz::Input& script = printer.script;
  if (script.Rest().empty()) return false;
  switch (script.U8() % 8) {
    case 0:
      Say(TakeBytes(script));
      break;
    case 1:
    case 2:
      Say(TakeRecord(script));
      break;
    case 3:
      SayInPieces(TakeRecord(script), script.U8());
      break;
    case 4:
      SayDamaged(TakeRecord(script), script);
      break;
    case 5:
      printer.silent_reads = script.U8() % kMostSilentReads;
      break;
    case 6:
      now_s += script.U8() * 0.25;
      break;
    default:
      SayFromTheMiddle(TakeRecord(script), script.U8());
      break;
  }
  return true;
}

void LetPrinterSpeak() {
  while (printer.said.empty() && printer.silent_reads == 0) {
    if (FollowScript()) continue;
    if (printer.ends_content) Say(MakeRecord());
    return;
  }
}

// What the records so far must have led to.
struct Expected {
  std::string told;
  ExpectedCartridge cartridge = kExpectedCartridges[0];
  bool content = false;  // after the last record
  int errors = 0;
};

uint32_t CountAt(const PrinterStatusRecord& record, size_t at) {
  return uint32_t{record[at]} << 24 | uint32_t{record[at + 1]} << 16 |
         uint32_t{record[at + 2]} << 8 | record[at + 3];
}

void ExpectRecord(const PrinterStatusRecord& record, Expected& expected) {
  const size_t told_before = expected.told.size();
  const uint8_t letter = record[98];
  const auto* const cartridge =
      std::find_if(std::begin(kExpectedCartridges), std::end(kExpectedCartridges),
                   [&](const ExpectedCartridge& row) { return row.letter == letter; });
  if (cartridge != std::end(kExpectedCartridges)) {
    expected.cartridge = *cartridge;
  } else if (letter >= 0x20 && letter <= 0x2F) {
    expected.told += ZR7700_RECOVERABLE ZR7700_TEXT_MISSING_CARTRIDGE;
  } else {
    expected.told += ZR7700_RECOVERABLE ZR7700_TEXT_INVALID_CARTRIDGE;
  }
  if (record[99] == 1) expected.told += ZR7700_RECOVERABLE ZR7700_TEXT_ALIGN;
  const uint32_t used = std::max({CountAt(record, 49), CountAt(record, 53), CountAt(record, 57)});
  if (used > expected.cartridge.high) expected.told += ZR7700_UNRECOVERABLE ZR7700_TEXT_OUT_OF_INK;
  expected.content = expected.told.size() == told_before;
  if (!expected.content) ++expected.errors;
  if (!expected.content || expected.errors == 0) return;
  expected.told += ZR7700_RECOVERED ZR7700_TEXT_NO_COMMUNICATION ZR7700_RECOVERED ZR7700_TEXT_ALIGN
      ZR7700_RECOVERED ZR7700_TEXT_OUT_OF_INK ZR7700_RECOVERED ZR7700_TEXT_INVALID_CARTRIDGE
          ZR7700_RECOVERED ZR7700_TEXT_MISSING_CARTRIDGE;
}

// A record that was taken is a sound one, and nothing is read after one that leaves no error.
Expected ExpectAll() {
  Expected expected;
  for (const PrinterStatusRecord& record : trace.records) {
    Require(!expected.content);
    PrinterStatusRecord sealed = record;
    Seal(sealed);
    Require(sealed == record && record[0] == 0x01 && record[143] == 0x04);
    ExpectRecord(record, expected);
  }
  return expected;
}

// Readings that failed: a pass more than there were pauses, less those with a record.
void RequireRetries(int page, bool content) {
  const int failed = trace.pauses + 1 - static_cast<int>(trace.records.size());
  const int budget = page == 0 ? 15 : 5;
  Require(content ? failed >= 0 && failed <= budget : failed == budget + 1);
}

void RequireNotices(int errors) {
  if (job_variables.SuppressStartingUtilityOnError != 0) return Require(trace.notices == 0);
  const int reached = trace.notices_until_reached;
  Require(trace.notices == (reached > 0 ? std::min(errors, reached) : errors));
}

void RequireVariables(const Expected& expected) {
  if (trace.records.empty()) return Require(job_variables.inkLimitHigh == 0);
  const PrinterStatusRecord& last = trace.records.back();
  Require(job_variables.inkLimitLow == expected.cartridge.low);
  Require(job_variables.inkLimitHigh == expected.cartridge.high);
  Require(job_variables.alignmentValue6 == last[102]);
  Require(job_variables.alignmentValue14 == last[103]);
  Require(job_variables.statusLetterReady == (last[26] == 'H' || last[26] == 'I' ? 1 : 0));
}

void RequireOutcome(int page, bool passed, const std::string& told) {
  const Expected expected = ExpectAll();
  Require(told == expected.told);
  RequireRetries(page, expected.content);
  RequireNotices(expected.errors);
  RequireVariables(expected);
  Require(trace.engine_loads == (page == 0 && expected.content ? 1 : 0));
  Require(passed == (expected.content && (page != 0 || trace.engine_loads_well)));
}

// Every run finds the clock at a whole second and a record just read, as if it were the first one.
void StartAfresh() {
  now_s = std::ceil(now_s);
  printer = {};
  PrinterStatusRecord record;
  Require(ReadPrinterStatus(record));
  now_s = std::ceil(now_s);
  Require(ReadPrinterStatus(record));
  printer = {};
  trace = {};
  job_variables = {};
}

}  // namespace

namespace platform {
double Now() { return now_s; }
}  // namespace platform

ssize_t ReadBackChannel(std::span<uint8_t> buffer, double timeout_s) {
  if (printer.said.empty()) LetPrinterSpeak();
  if (printer.said.empty()) {
    if (printer.silent_reads > 0) --printer.silent_reads;
    now_s += timeout_s;
    return -1;
  }
  std::vector<uint8_t>& piece = printer.said.front();
  const size_t count = std::min(buffer.size(), piece.size());
  std::copy_n(piece.begin(), count, buffer.begin());
  piece.erase(piece.begin(), piece.begin() + static_cast<ptrdiff_t>(count));
  if (piece.empty()) printer.said.pop_front();
  return static_cast<ssize_t>(count);
}

void PublishStatus(const PrinterStatusRecord& record) { trace.records.push_back(record); }
// A cancel's effects, which no run has.
void UnlinkStatusMemory() { Require(false); }
void WaitForLastRecord(double) { Require(false); }
void CloseStatusMemory() { Require(false); }

int NotifyPrinterError(bool wait_for_reply) {
  Require(!wait_for_reply);
  return ++trace.notices == trace.notices_until_reached ? kNoticeNoReply : kNoticeNotReachable;
}

bool LoadEngineForCartridge(std::span<const uint8_t> status_reply) {
  Require(std::equal(status_reply.begin(), status_reply.end(), trace.records.back().begin(),
                     trace.records.back().end()));
  ++trace.engine_loads;
  return trace.engine_loads_well;
}

bool Pause(int length_ms) {
  now_s += length_ms * 1e-3;
  if (length_ms == kBetweenPasses_ms) ++trace.pauses;
  return true;
}

}  // namespace zr7700

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  using namespace zr7700;
  StartAfresh();
  fuzz::Input input(data, std::min(bytes, kMostBytes));
  const uint8_t kind = input.U8();
  const int page = kind % 4;
  printer.ends_content = (kind & 4) != 0;
  trace.engine_loads_well = (kind & 8) == 0;
  job_variables.SuppressStartingUtilityOnError = (kind & 16) != 0 ? 1 : 0;
  trace.notices_until_reached = kind >> 5;
  now_s += input.U8() * 0.25;
  printer.script = input;
  const uint32_t open_before = fuzz::OpenDescriptors();
  fuzz::ForgetOutput();
  const bool passed = StartOfPageJobCheck(page);
  RequireOutcome(page, passed, fuzz::told);
  Require(fuzz::OpenDescriptors() == open_before);
  return 0;
}
