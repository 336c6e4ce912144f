// An engine that does nothing but write down how it is called.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_RECORDED_ENGINE_H_
#define ZR7700_TESTS_SUPPORT_RECORDED_ENGINE_H_

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "zr7700/host_print_engine.h"

namespace zr7700::test {

// Fills the entry table with recorders for as long as it lives; one at a time.
//
// A call is written down as "SetLeftMargin(engine, 1916)": numbers in decimal, strings in quotes,
// the handle as "engine" when it is the one that CreateHostPrintEngine answered and as "null" or
// "other" when not, the callback as "WriteEngineOutput", the context as "variables" and raster data
// as "data".
class RecordedEngine {
 public:
  RecordedEngine();
  ~RecordedEngine();
  RecordedEngine(const RecordedEngine&) = delete;
  RecordedEngine& operator=(const RecordedEngine&) = delete;

  // The handle that CreateHostPrintEngine answers.
  HPEHandle handle() { return this; }

  // Makes an entry answer `status`; entries answer 0 otherwise.
  void Answer(const std::string& entry, int32_t status) { answers_[entry] = status; }

  // Runs `action` inside every later call of the entry, after it has been written down.
  void During(const std::string& entry, std::function<void()> action) {
    actions_[entry] = std::move(action);
  }

  const std::vector<std::string>& calls() const { return calls_; }
  void Clear() { calls_.clear(); }

  // For the recorders: writes the call down, runs the action, gives the answer.
  int32_t Record(const std::string& entry, const std::string& arguments);

 private:
  std::map<std::string, int32_t> answers_;
  std::map<std::string, std::function<void()>> actions_;
  std::vector<std::string> calls_;
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_RECORDED_ENGINE_H_
