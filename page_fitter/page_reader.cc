// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "page_fitter/page_reader.h"

#include <unistd.h>

#include <cerrno>

namespace zr7700 {

PageReader::PageReader(int descriptor)
    : descriptor_(descriptor),
      stream_(cupsRasterOpenIO(&PageReader::Read, this, CUPS_RASTER_READ), &cupsRasterClose) {}

ssize_t PageReader::Read(void* reader, unsigned char* bytes, size_t count) {
  auto& self = *static_cast<PageReader*>(reader);
  ssize_t got;
  do {
    got = read(self.descriptor_, bytes, count);
  } while (got < 0 && errno == EINTR);
  if (got < 0) self.read_errno_ = errno;
  if (got > 0) self.bytes_read_ += static_cast<uint64_t>(got);
  return got;
}

// A header that came in part counts as broken; the library itself tells both alike.
PageReader::Next PageReader::NextPage(cups_page_header2_t& header) {
  const uint64_t before = bytes_read_;
  if (cupsRasterReadHeader2(stream_.get(), &header) != 0) return Next::kPage;
  return bytes_read_ == before ? Next::kEnd : Next::kBroken;
}

bool PageReader::ReadLine(std::span<uint8_t> line) {
  return cupsRasterReadPixels(stream_.get(), line.data(), static_cast<unsigned>(line.size())) ==
         line.size();
}

}  // namespace zr7700
