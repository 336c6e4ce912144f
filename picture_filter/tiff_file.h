// A TIFF file that libtiff has open.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TIFF_FILE_H_
#define ZR7700_PICTURE_FILTER_TIFF_FILE_H_

#include <tiffio.h>

#include <cstdio>
#include <memory>

namespace zr7700 {

// Not for use by two threads at once; libtiff knows its address.
class TiffFile {
 public:
  // `file` stays the caller's, can seek and must stay open while this lives.
  explicit TiffFile(FILE* file);
  TiffFile(const TiffFile&) = delete;
  TiffFile& operator=(const TiffFile&) = delete;

  // Null when it is no TIFF file.
  TIFF* get() const { return tiff_.get(); }

  // Whether anything in the file has been found damaged so far, and what came first.
  bool IsDamaged() const { return complaint_[0] != '\0'; }
  const char* complaint() const { return IsDamaged() ? complaint_ : "no sense in it"; }

 private:
  [[gnu::format(printf, 4, 0)]] static int TakeError(TIFF* tiff, void* self, const char* module,
                                                     const char* format, va_list list);
  [[gnu::format(printf, 4, 0)]] static int TakeWarning(TIFF* tiff, void* self, const char* module,
                                                       const char* format, va_list list);

  char complaint_[200] = "";
  std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff_;
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TIFF_FILE_H_
