// The two connections between the filter and the printer utility.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_UTILITY_CONNECTION_H_
#define ZR7700_STATUS_UTILITY_CONNECTION_H_

namespace zr7700 {

// Connects to the utility's socket at `path`, for up to 10 seconds, and waits up to 10 seconds for
// its "Ack"; a cancel ends both. True when it came; the connection then stays open until
// DisconnectFromUtility. After one failure the utility counts as unreachable for the rest of the
// process, and every later call answers false at once. The main thread or the status thread, never
// both at once.
bool ConnectToUtility(const char* path);

// Closes the connection; does nothing without one. Threads as ConnectToUtility.
void DisconnectFromUtility();

// Listens at `path`, in place of whatever was there, until the utility has connected. The
// connection, which the caller closes; -1 when there is none because listening failed (logged), the
// job was cancelled, or StopAccepting was called. Threads as ConnectToUtility.
int AcceptReply(const char* path);

// Makes a present AcceptReply, and every later one, give up. Any thread.
void StopAccepting();

}  // namespace zr7700

#endif  // ZR7700_STATUS_UTILITY_CONNECTION_H_
