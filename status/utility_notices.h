// The notices that the filter sends to the printer utility. docs/utility-socket.md describes the
// protocol.
//
// A notice connects to the utility, which acknowledges, and then waits for the utility to connect
// back and answer. Every notice returns one of the results below; an error is logged or turned into
// one of them, and nothing is reported to CUPS. All functions: the main thread or the status
// thread, never both at once.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_STATUS_UTILITY_NOTICES_H_
#define ZR7700_STATUS_UTILITY_NOTICES_H_

namespace zr7700 {

inline constexpr int kNoticeContinue = 0;
inline constexpr int kNoticeCartridgeChanged = 1;
inline constexpr int kNoticeNoReply = -1;
inline constexpr int kNoticeNotReachable = -2;

// Ink is low: the person may change the cartridge or continue. Once they chose to continue, later
// calls answer kNoticeContinue without any contact.
int NotifyInkLow();

// The cartridge is missing or empty: the person may change it.
int NotifyInkMissingOrEmpty();

int NotifyPaperNotLoaded();

// Without `wait_for_reply` the acknowledged connection is the whole notice: kNoticeNoReply then.
int NotifyPrinterError(bool wait_for_reply);

int NotifyAlignmentNeeded();

}  // namespace zr7700

#endif  // ZR7700_STATUS_UTILITY_NOTICES_H_
