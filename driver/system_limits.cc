// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/system_limits.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <new>

#include "base/log.h"
#include "base/printer_output.h"
#include "base/standard_error.h"
#include "status/status_memory.h"
#include "status/user_texts.h"

namespace zr7700 {
namespace {

pthread_t main_thread;  // constant after start

// Lock-free: the first thread to run out of memory reports it.
std::atomic_flag is_reported = ATOMIC_FLAG_INIT;

}  // namespace

void PrepareForSystemLimits() {
  main_thread = pthread_self();
  signal(SIGXFSZ, SIG_IGN);
  std::set_new_handler(EndJobWithoutMemory);
}

void EndJobWithoutMemory() {
  while (is_reported.test_and_set()) pause();
  EndLineToCups();
  LogMessage(kLogDetail, "     Out of memory: the job ends here");
  TellCups(ZR7700_TEXT_NO_MEMORY);
  UnlinkStatusMemory();
  // Pages that are finished may have their last bytes here. Another thread could wait for the main
  // one, which may be writing them.
  if (pthread_equal(pthread_self(), main_thread) != 0) FlushPrinterOutput();
  _exit(EXIT_FAILURE);
}

}  // namespace zr7700
