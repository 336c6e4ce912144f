// Whole-file reading that a FIFO or a device in the file's place cannot hold up: neither is a
// regular file here.
//
// Without state of its own, so that other houses than the filter may link it too.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_REGULAR_FILE_H_
#define ZR7700_BASE_REGULAR_FILE_H_

#include <cstddef>
#include <string>

namespace zr7700 {

// What a symbolic link in the file's place is.
enum class Links {
  kFollowed,
  kTrusted,  // followed when root or the process's own user made it, no regular file otherwise
};

// How reading came out.
enum class FileReading {
  kRead,     // the whole file
  kTooLong,  // the file has more bytes than the limit
  kMissing,  // there is no such file
  kRefused,  // no regular file, or one that may not be read; errno says why
  kFailed,   // the system failed while it opened or read; errno says why
};

// Reads the file at `path` into `bytes`: all of it, the first `limit_bytes` of one that is longer,
// what came before a failure, nothing of one that is missing or refused. A null `path` is a missing
// file. Any thread.
FileReading ReadRegularFile(const char* path, Links links, size_t limit_bytes, std::string& bytes);

}  // namespace zr7700

#endif  // ZR7700_BASE_REGULAR_FILE_H_
