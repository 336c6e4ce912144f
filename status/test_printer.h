// A printer that answers every status request at once from a list: test_printer.cc takes the place
// of the status reader in a test program.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_TEST_PRINTER_H_
#define ZR7700_STATUS_TEST_PRINTER_H_

#include <functional>
#include <optional>
#include <vector>

#include "status/status_record.h"

namespace zr7700::test {

// One answer; none stands for a read that fails.
using Answer = std::optional<PrinterStatusRecord>;

// The printer gives these answers in their order and stays with the last. Counts from 0 again. No
// other thread runs.
void ScriptPrinter(std::vector<Answer> answers);

// Calls `hook` at every request, before the answer. No other thread runs.
void OnStatusRequest(std::function<void()> hook);

// The requests since ScriptPrinter. Any thread.
int StatusRequests();

}  // namespace zr7700::test

#endif  // ZR7700_STATUS_TEST_PRINTER_H_
