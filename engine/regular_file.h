// Whole-file reading and writing that a FIFO or a device in the file's place cannot hold up, nor a
// symbolic link lead elsewhere: none of them is a regular file here.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_REGULAR_FILE_H_
#define ZR7700_ENGINE_REGULAR_FILE_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zr7700 {

// The first `limit_bytes` bytes of the file; nothing when `path` is null, cannot be opened for
// reading or is no regular file. Any thread.
std::optional<std::string> ReadRegularFile(const char* path, size_t limit_bytes);

// Opens the file for writing, creating or emptying it, and writes `text`. False when it cannot be
// opened or is no regular file; a short write is not reported. Any thread.
bool WriteRegularFile(const char* path, std::string_view text);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_REGULAR_FILE_H_
