// The three descriptors that every program expects to be there.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_STANDARD_DESCRIPTORS_H_
#define ZR7700_VIRTUAL_PRINTER_STANDARD_DESCRIPTORS_H_

#include <fcntl.h>

namespace zr7700::printer {

// Gives standard input, output and error that are closed to the null device, so that no socket or
// picture gets their numbers: what is written there is lost, and reading there fails. To be called
// before anything is opened, by the only thread.
inline void HoldStandardDescriptors() {
  for (int number = 0; number <= 2; ++number) {
    if (fcntl(number, F_GETFD) >= 0) continue;
    // The lowest free number is this one.
    (void)open("/dev/null", O_WRONLY);
  }
}

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_STANDARD_DESCRIPTORS_H_
