// What people and queues write for the virtual printer, as any text: device URIs, fault scripts,
// orders. What is taken is within its limits; what is refused is refused with a sentence.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <string>

#include "fuzz/input.h"
#include "virtual_printer/device_uri.h"
#include "virtual_printer/schedule.h"

namespace {

using zr7700::fuzz::Require;
using namespace zr7700::printer;

void CheckUri(const std::string& text) {
  std::string error;
  const auto settings = ParseDeviceUri(text, error);
  if (!settings) return Require(!error.empty());
  Require(settings->out.starts_with('/'));
  Require(settings->name.find('/') == std::string::npos);
  Require(settings->rate_per_s >= 1 && settings->rate_per_s <= 1000);
  Require(settings->discs <= 1000000);
  Require(settings->pace_s >= 0 && settings->pace_s <= 86400);
}

void CheckScript(const std::string& text) {
  std::string error;
  auto script = ParseScript(text, error);
  if (!script) return Require(error.starts_with("Line "));
  const size_t orders = script->size();
  Schedule schedule(std::move(*script));
  Machine machine;
  size_t given = 0;
  for (uint32_t page = 0; page <= 3; ++page) {
    schedule.PageBegan(page, page);
    schedule.PageEnded(page, page);
    for (const Command& command : schedule.TakeDue(page * 1e9)) {
      ObeyMachineCommand(command, machine);
      ++given;
    }
    // All that has a time has been given by then.
    if (page > 0) Require(std::isinf(schedule.NextDue()));
  }
  Require(given <= orders);
  StatusOf(machine);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  const std::string text(reinterpret_cast<const char*>(data), bytes);
  CheckUri(text);
  CheckUri("zr7700virtual:/folder?" + text);
  CheckScript(text);
  return 0;
}
