// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "status/status_thread.h"

#include <pthread.h>

#include <atomic>
#include <cstdint>

#include "base/cancel_signal.h"
#include "base/log.h"
#include "base/pause.h"
#include "status/condition_reports.h"
#include "status/job_cancel.h"
#include "status/printer_conditions.h"
#include "status/utility_notices.h"

namespace zr7700 {
namespace {

constexpr int kTick_ms = 100;
constexpr unsigned kTicksPerRead = 8;
constexpr int kBetweenLastReads_ms = 1000;

// Shared with the thread: the main thread sets it, the thread reads it.
std::atomic<bool> StatusThreadStop = false;

// Written by the main thread while no status thread runs, by the thread while it does.
bool SuppressUtilityNotice = false;
uint32_t LastErrorWord = 0;

// Main thread only.
pthread_t status_thread;
bool status_thread_exists = false;

// A read that a cancel has cut short tells nothing of the printer: what is shown stays shown.
void Report(const PrinterConditions& conditions) {
  if (conditions.has_record || !CancelRequested()) ReportPrinterConditions(conditions);
}

void WatchPrinterOnce() {
  const PrinterConditions conditions = ReadConditions();
  const uint32_t word = conditions.error_word;
  if (conditions.any && !SuppressUtilityNotice && word != LastErrorWord) NotifyPrinterError(false);
  Report(conditions);
  LastErrorWord = word;
  LogMessage(kLogDetail, "Error check %X ", word);
}

void* ReadStatusThread(void*) {
  LogMessage(kLogDetail, "Start ReadStatusThread");
  for (unsigned tick = 0; !StatusThreadStop.load(); ++tick) {
    if (tick % kTicksPerRead == 0) WatchPrinterOnce();
    if (!Pause(kTick_ms)) break;
  }
  LogMessage(kLogDetail, "Exit ReadStatusThread");
  return nullptr;
}

}  // namespace

bool StartStatusThread(bool suppress_utility) {
  SuppressUtilityNotice = suppress_utility;
  StatusThreadStop = false;
  LastErrorWord = 0;
  const CancelBlock block;
  status_thread_exists = pthread_create(&status_thread, nullptr, ReadStatusThread, nullptr) == 0;
  return status_thread_exists;
}

void StopStatusThread() {
  if (!status_thread_exists) return;
  StatusThreadStop = true;
  pthread_join(status_thread, nullptr);
  status_thread_exists = false;
}

void ReportStatusUntilClear(int reads) {
  for (int i = 0; i < reads; ++i) {
    const PrinterConditions conditions = ReadConditions();
    TakeCancel();
    Report(conditions);
    if (!conditions.any) return;
    // Kept as the last word seen, although no notice goes by it after the job.
    LastErrorWord = conditions.error_word;
    if (!PauseJob(kBetweenLastReads_ms)) return;
  }
}

}  // namespace zr7700
