// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/job.h"

#include <cstdio>
#include <cstdlib>

#include "base/log.h"
#include "base/paths.h"
#include "base/printer_output.h"
#include "base/settings.h"
#include "driver/command_line.h"
#include "driver/page_loop.h"
#include "driver/raster_input.h"
#include "engine/document.h"
#include "engine/engine_output.h"
#include "engine/job_variables.h"
#include "status/back_channel.h"
#include "status/condition_reports.h"
#include "status/job_cancel.h"
#include "status/job_check.h"
#include "status/state_wait.h"
#include "status/status_memory.h"
#include "status/status_thread.h"

namespace zr7700 {
namespace {

constexpr int kArgumentsWithFile = 7;
constexpr int kBusyPause_ms = 2000;
constexpr int kIdleLimit_s = 20;
constexpr int kFinalReads = 10;

void TakeSettings() {
  LogMessage(kLogMilestone, "FILTER_STARTED");
  LogMessage(kLogMilestone, "Getting Settings...");
  ReadSettings(paths::kSettings);
  LogSettings();
  job_variables.FeedAdjust = settings.FeedAdjust;
  job_variables.OutputDest = settings.OutputDest;
}

void TakeJobOptions(const FilterArgs& arguments) {
  job_variables.SkipLowInkFWCheck = arguments.SkipLowInkFWCheck ? 1 : 0;
  job_variables.SuppressStartingUtilityOnError = arguments.SuppressStartingUtilityOnError ? 1 : 0;
}

void WaitForPrinter() {
  LogMessage(kLogDetail, "**** Wait until printer Busy");
  PauseJob(kBusyPause_ms);
  LogMessage(kLogDetail, "**** Wait until printer not Busy\n");
  PrinterStatusRecord record = {};
  WaitForPrinterState(record, kStateIdle, true, kIdleLimit_s);
  ReportStatusUntilClear(kFinalReads);
  LogMessage(kLogDetail, "Printer Status = %c. \n\n", StateLetter(record));
}

int EndJob(int page_count) {
  LogMessage(kLogDetail, "     Finished print job");
  EndDocument();
  LogMessage(kLogDetail, "     Flushing stdout");
  FlushEngineOutput();
  WaitForPrinter();
  CloseStatusMemory();
  if (page_count == 0) {
    LogMessage(kLogDetail, "     No pages found!");
    return EXIT_FAILURE;
  }
  LogMessage(kLogDetail, "     Ready to print.");
  return EXIT_SUCCESS;
}

// What a job that ends early has left in the buffer goes out as at the end of any other.
void FlushAtExit() {
  if (HasBufferedOutput()) FlushEngineOutput();
  EndOutputBuffer();
}

// From here on SIGTERM cancels the job in order, also one whose output waits for the printer, and
// one that ends before it has noticed.
void PrepareCancel() {
  InstallJobCancel();
  SetOutputWait(WaitForOutput);
  atexit(FlushAtExit);
}

}  // namespace

int RunJob(int argc, char* argv[]) {
  PrepareBackChannel();
  LogOpen(paths::kLog, kLogTrace);
  TakeSettings();
  ClearPrinterStates();

  // The options, the PPD and the raster stream are kept until exit, where a leak checker finds
  // them. Nothing reads the last one's variable, which the optimiser would leave out.
  static FilterArgs arguments;
  static ppd_file_t* ppd = nullptr;
  [[gnu::used]] static RasterStream* raster = nullptr;

  ppd = ParseCommandLine(argc, argv, arguments);
  if (ppd == nullptr) return EXIT_FAILURE;
  TakeJobOptions(arguments);

  if (!StartOfPageJobCheck(0)) return EXIT_FAILURE;
  PrepareCancel();
  if (!DocumentSetup(ppd)) return EXIT_FAILURE;

  raster = OpenRaster(argc == kArgumentsWithFile ? argv[6] : nullptr).release();
  if (raster == nullptr) return EXIT_FAILURE;

  int page_count = 0;
  if (PrintPages(*raster, arguments.SuppressStartingUtilityOnError, page_count) ==
      LoopEnd::kAbandoned) {
    return EXIT_FAILURE;
  }
  return EndJob(page_count);
}

}  // namespace zr7700
