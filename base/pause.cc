// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/pause.h"

#include "base/cancel_signal.h"

namespace zr7700 {

bool Pause(int length_ms) {
  constexpr int kNoDescriptor = -1;
  return WaitForInput(kNoDescriptor, length_ms) != WaitEnd::kCancelled;
}

}  // namespace zr7700
