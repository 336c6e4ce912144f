// Standard error, on which CUPS listens: it acts on whole lines. A text goes out whole, and waits
// for CUPS as WaitForTaker (cancel_signal.h) does.
//
// All functions: the main thread or the status thread, never both at once.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_STANDARD_ERROR_H_
#define ZR7700_BASE_STANDARD_ERROR_H_

namespace zr7700 {

// Writes a text that ends its line, and with it the line that was left open.
void TellCups(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Writes a text that has no line end of its own: the line stays open until the next text.
void BeginLineToCups(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Ends the line that was left open, if there is one: what follows begins a line.
void EndLineToCups();

}  // namespace zr7700

#endif  // ZR7700_BASE_STANDARD_ERROR_H_
