// A pause that a cancel ends.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_PAUSE_H_
#define ZR7700_BASE_PAUSE_H_

namespace zr7700 {

// Sleeps for `length_ms`, whatever other signals come. False when a cancel is requested: the pause
// then ends at once, and one that begins later does not take place. Any thread.
bool Pause(int length_ms);

}  // namespace zr7700

#endif  // ZR7700_BASE_PAUSE_H_
