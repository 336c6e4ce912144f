// Reading the files that an engine is pointed at: colour tables and ini files.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_REGULAR_FILE_H_
#define ZR7700_REFERENCE_ENGINE_REGULAR_FILE_H_

#include <cstddef>
#include <string>

namespace zr7700::reference_engine {

enum class FileReading {
  kRead,
  // There is no such file.
  kMissing,
  // No regular file, longer than allowed, or the system does not let it be read.
  kRefused,
};

// Reads the regular file `path` (or what a link there leads to) into `bytes`, which otherwise are
// of no use. Never waits: a FIFO is refused like everything that has no end. Throws std::bad_alloc.
FileReading ReadRegularFile(const std::string& path, size_t max_bytes, std::string* bytes);

}  // namespace zr7700::reference_engine

#endif  // ZR7700_REFERENCE_ENGINE_REGULAR_FILE_H_
