// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_reader.h"

#include <unistd.h>

#include <cerrno>

namespace zr7700 {

PageReader::PageReader(int descriptor)
    : descriptor_(descriptor), stream_(&PageReader::Read, this) {}

ssize_t PageReader::Read(void* reader, unsigned char* bytes, size_t count) {
  auto& self = *static_cast<PageReader*>(reader);
  ssize_t got;
  do {
    got = read(self.descriptor_, bytes, count);
  } while (got < 0 && errno == EINTR);
  if (got < 0) self.read_errno_ = errno;
  return got;
}

}  // namespace zr7700
