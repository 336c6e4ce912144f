// Standard output, which goes to the printer: buffered, and never cut short by an interruption.
//
// A real error is not detected: the bytes that meet it are lost. Once nobody takes the output of a
// cancelled job (kLastOutputLimit_ms), the rest of it is discarded, and whoever reads sees the end.
// All functions: any thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_PRINTER_OUTPUT_H_
#define ZR7700_BASE_PRINTER_OUTPUT_H_

#include <cstdint>
#include <span>

namespace zr7700 {

// Puts the bytes behind those that are already buffered; goes out in pieces of 4 KiB. Waits for
// nobody while they fit: a page can begin, and its printer be watched, while nobody takes output.
void WritePrinterOutput(std::span<const uint8_t> bytes);

// Whether so many more bytes fit without a write.
bool FitsOutputBuffer(size_t count);

// Writes what is buffered.
void FlushPrinterOutput();

// Whether anything is buffered.
bool HasBufferedOutput();

// Writes what is buffered and buffers nothing any more: for the end of the process, during which an
// engine may still have its last say.
void EndOutputBuffer();

}  // namespace zr7700

#endif  // ZR7700_BASE_PRINTER_OUTPUT_H_
