// The one way to the printer: every byte of the print header and of the engine goes through here.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_ENGINE_OUTPUT_H_
#define ZR7700_ENGINE_ENGINE_OUTPUT_H_

#include <cstdint>

namespace zr7700 {

// Waits until `descriptor` takes at least a few KiB without blocking, or at least until something
// else wants the main thread's attention, and sees to that.
using OutputWait = void (*)(int descriptor);

// Sets what is called before every piece that is written: a printer is slow, and a job is cancelled
// while its output waits more often than not. Without one, writing simply waits. Main thread.
void SetOutputWait(OutputWait wait);

// The engine's output callback. Applies the feed adjustment to the block (feed_command.h) and
// writes its `length_bytes` bytes to standard output, buffered; page and document end flush.
// `context` is the JobVariables record, or null: the block then goes out as it is. How many bytes
// could be written is not looked at. Main thread.
extern "C" void WriteEngineOutput(void* context, uint8_t* data, uint32_t length_bytes) noexcept;

// Hands what is still buffered to the printer. Main thread.
void FlushEngineOutput();

}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_OUTPUT_H_
