// The one way to the printer: every byte of the print header and of the engine goes through here.
#ifndef ZR7700_ENGINE_ENGINE_OUTPUT_H_
#define ZR7700_ENGINE_ENGINE_OUTPUT_H_

#include <cstdint>

namespace zr7700 {

// The engine's output callback. Applies the feed adjustment to the block (feed_command.h) and
// writes its `length_bytes` bytes to standard output, buffered; page and document end flush.
// `context` is the JobVariables record, or null: the block then goes out as it is. How many bytes
// could be written is not looked at. Main thread.
void WriteEngineOutput(void* context, uint8_t* data, uint32_t length_bytes);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_ENGINE_OUTPUT_H_
