// Lets the printer utility talk to the printer through the filter while a cartridge is changed.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_DEVICE_RELAY_H_
#define ZR7700_STATUS_DEVICE_RELAY_H_

namespace zr7700 {

// Serves the utility's "ReadDeviceData n" and "WriteDeviceData n" commands on `connection` until it
// says "ChangeCartridgeComplete": 1 then; -1 after an unknown command, when the utility has closed,
// or when the job's cancel is requested. A count is held to 0 to 512 bytes. Reads the back channel
// and writes to standard output. The connection stays the caller's. The thread that sends the
// notice.
int RelayDeviceData(int connection);

}  // namespace zr7700

#endif  // ZR7700_STATUS_DEVICE_RELAY_H_
