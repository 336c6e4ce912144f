// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/recorded_engine.h"

#include <type_traits>

#include "engine/engine_entries.h"
#include "engine/engine_output.h"
#include "engine/job_variables.h"

namespace zr7700::test {
namespace {

RecordedEngine* current = nullptr;

std::string Text(HPEHandle handle) {
  if (handle == nullptr) return "null";
  if (handle == current->handle()) return "engine";
  return handle == &job_variables ? "variables" : "other";
}
std::string Text(const void* data) { return data != nullptr ? "data" : "null"; }
std::string Text(const char* text) {
  return text != nullptr ? "\"" + std::string(text) + "\"" : "null";
}
std::string Text(HPEOutputCallback output) {
  return output == &WriteEngineOutput ? "WriteEngineOutput" : "other";
}
std::string Text(uint32_t number) { return std::to_string(number); }
std::string Text(int32_t number) { return std::to_string(number); }

std::string Join() { return ""; }
template <typename First, typename... Rest>
std::string Join(First first, Rest... rest) {
  const std::string others = Join(rest...);
  return Text(first) + (others.empty() ? "" : ", " + others);
}

// One recorder per entry, told apart by the position of its slot.
template <int kEntry, typename Entry>
struct Recorder;

template <int kEntry, typename... Arguments>
struct Recorder<kEntry, int32_t (*)(Arguments...)> {
  static int32_t Call(Arguments... arguments) { return current->Record(name, Join(arguments...)); }
  static inline const char* name;
};

template <int kEntry>
struct Recorder<kEntry, DestroyHostPrintEngineEntry> {
  static void Call(HPEHandle handle) { current->Record(name, Join(handle)); }
  static inline const char* name;
};

template <int kEntry>
struct Recorder<kEntry, CreateHostPrintEngineEntry> {
  static HPEHandle Call() {
    current->Record(name, "");
    return current->handle();
  }
  static inline const char* name;
};

template <int kEntry, typename Entry>
void Fill(Entry& slot, const char* name) {
  using EntryRecorder = Recorder<kEntry, typename Entry::Pointer>;
  EntryRecorder::name = name;
  slot.Set(&EntryRecorder::Call);
}

}  // namespace

RecordedEngine::RecordedEngine() {
  current = this;
  constexpr int kFirst = __COUNTER__;
#define ZR7700_FILL(name, type) Fill<__COUNTER__ - kFirst>(engine_entries.name, #name);
  HPE_ENTRIES(ZR7700_FILL)
#undef ZR7700_FILL
}

RecordedEngine::~RecordedEngine() {
  engine_entries = EngineEntryTable{};
  current = nullptr;
}

int32_t RecordedEngine::Record(const std::string& entry, const std::string& arguments) {
  calls_.push_back(entry + "(" + arguments + ")");
  if (const auto action = actions_.find(entry); action != actions_.end()) action->second();
  const auto answer = answers_.find(entry);
  return answer != answers_.end() ? answer->second : HPE_OK;
}

}  // namespace zr7700::test
