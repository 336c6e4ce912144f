// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/later_cancel.h"

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <thread>

namespace zr7700::test {

void CancelIn(int delay_ms) {
  std::thread([delay_ms, caller = pthread_self()] {
    std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
    pthread_kill(caller, SIGTERM);
  }).detach();
}

}  // namespace zr7700::test
