// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/test_printer.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "status/status_reader.h"

namespace zr7700 {
namespace {

std::vector<test::Answer> script;
std::function<void()> request_hook;
std::atomic<int> requests = 0;

}  // namespace

bool GetPrinterStatus(PrinterStatusRecord& record) {
  if (request_hook) request_hook();
  const auto turn = static_cast<size_t>(requests++);
  if (script.empty()) return false;
  const test::Answer& answer = script[std::min(turn, script.size() - 1)];
  if (answer) record = *answer;
  return answer.has_value();
}

namespace test {

void ScriptPrinter(std::vector<Answer> answers) {
  script = std::move(answers);
  request_hook = nullptr;
  requests = 0;
}

void OnStatusRequest(std::function<void()> hook) { request_hook = std::move(hook); }

int StatusRequests() { return requests.load(); }

}  // namespace test
}  // namespace zr7700
