// The file under a property list: read whole, replaced whole.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_PROPERTY_FILE_H_
#define ZR7700_PLATFORM_PROPERTY_FILE_H_

#include <cstddef>
#include <string>

namespace zr7700::platform {

// A settings file holds about a kilobyte. The bound is low on purpose: a parser may need a time
// that grows with the square of the length of one string.
inline constexpr size_t kMaxPropertyFileBytes = 256 * 1024;

// Reads the regular file at `path` whole into `bytes`. False, with `bytes` undefined, when it
// cannot be read, is anything but a regular file, is longer than kMaxPropertyFileBytes, or grows
// while it is read. Never blocks on a FIFO or a device. Any thread.
bool ReadPropertyFile(const char* path, std::string& bytes);

// Replaces the content of the existing file at `path` by way of a new file beside it and a rename,
// so that a reader sees the old content or the new one. The mode stays, the owner too where the
// process may set it; a symbolic link stays, and its target is replaced. False, with the old file
// untouched and the new one removed, on failure. Any thread.
bool ReplacePropertyFile(const char* path, const std::string& bytes);

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_PROPERTY_FILE_H_
