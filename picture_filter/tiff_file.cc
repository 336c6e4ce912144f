// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/tiff_file.h"

#include <cstring>

namespace zr7700 {
namespace {

constexpr tmsize_t kMostMemory_bytes = tmsize_t{512} << 20;

// libtiff's picture of a file, by stdio. The handle is the FILE.

FILE* FileOf(thandle_t handle) { return static_cast<FILE*>(handle); }

tmsize_t Read(thandle_t handle, void* bytes, tmsize_t count) {
  return static_cast<tmsize_t>(fread(bytes, 1, static_cast<size_t>(count), FileOf(handle)));
}

tmsize_t Write(thandle_t, void*, tmsize_t) { return 0; }

toff_t Seek(thandle_t handle, toff_t offset, int whence) {
  if (fseeko(FileOf(handle), static_cast<off_t>(offset), whence) != 0)
    return static_cast<toff_t>(-1);
  return static_cast<toff_t>(ftello(FileOf(handle)));
}

int Close(thandle_t) { return 0; }

toff_t Size(thandle_t handle) {
  const off_t here = ftello(FileOf(handle));
  const toff_t size = Seek(handle, 0, SEEK_END);
  Seek(handle, static_cast<toff_t>(here), SEEK_SET);
  return size;
}

// Of these libtiff calls a value that means nothing an error and leaves the tag out; the picture's
// dots do not depend on them.
bool IsAboutATagToLeaveOut(const char* complaint) {
  return std::strstr(complaint, "Bad value") != nullptr &&
         (std::strstr(complaint, "\"Orientation\"") != nullptr ||
          std::strstr(complaint, "\"ResolutionUnit\"") != nullptr);
}

using Options = std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)>;

}  // namespace

TiffFile::TiffFile(FILE* file) : tiff_(nullptr, &TIFFClose) {
  rewind(file);
  const Options options(TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
  if (options == nullptr) return;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMostMemory_bytes);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TakeError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TakeWarning, this);
  tiff_.reset(TIFFClientOpenExt("picture", "rm", file, Read, Write, Seek, Close, Size, nullptr,
                                nullptr, options.get()));
}

int TiffFile::TakeError(TIFF*, void* self, const char*, const char* format, va_list list) {
  auto& file = *static_cast<TiffFile*>(self);
  char complaint[sizeof file.complaint_];
  std::vsnprintf(complaint, sizeof complaint, format, list);
  if (!file.IsDamaged() && !IsAboutATagToLeaveOut(complaint)) {
    std::memcpy(file.complaint_, complaint, sizeof complaint);
  }
  return 1;
}

// What libjpeg warns of inside a TIFF file is missing or wrong in the picture; what libtiff itself
// warns of, odd tags for the most part, is not.
int TiffFile::TakeWarning(TIFF* tiff, void* self, const char* module, const char* format,
                          va_list list) {
  const bool is_damage = module != nullptr && std::strcmp(module, "JPEGLib") == 0;
  return is_damage ? TakeError(tiff, self, module, format, list) : 1;
}

}  // namespace zr7700
