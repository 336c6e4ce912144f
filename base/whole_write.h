// Writes to a descriptor without losing a byte on the way.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_WHOLE_WRITE_H_
#define ZR7700_BASE_WHOLE_WRITE_H_

#include <span>

namespace zr7700 {

enum class WriteEnd {
  kWritten,
  kRefused,  // the descriptor has a real error; what was not written yet is lost
  kGivenUp   // the job is cancelled and nobody takes the rest
};

// Writes all of `bytes`, however often the descriptor takes only some of them, is interrupted, or
// refuses for a moment because it is non-blocking and full. Waits as WaitForTaker does. Any thread.
WriteEnd WriteWhole(int descriptor, std::span<const char> bytes);

}  // namespace zr7700

#endif  // ZR7700_BASE_WHOLE_WRITE_H_
