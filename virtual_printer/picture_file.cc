// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/picture_file.h"

#include <fcntl.h>
#include <png.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>

namespace zr7700::printer {
namespace {

// Puts the content into an open file; false, with errno set, when that fails.
using Writer = std::function<bool(FILE* file)>;

bool FinishFile(FILE* file, bool written) {
  // A disk may be found to be full only when the file is flushed or closed.
  written = written && std::fflush(file) == 0 && std::ferror(file) == 0;
  const int reason = errno;
  const bool closed = std::fclose(file) == 0;
  if (!written) errno = reason;
  return written && closed;
}

// Makes the file anew, so that a link that somebody planted under its name leads nowhere.
FILE* CreateFile(const std::string& path) {
  unlink(path.c_str());
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  return file < 0 ? nullptr : fdopen(file, "wb");
}

bool WriteWhole(const std::string& path, const Writer& writer, std::string& error) {
  const std::string unfinished = path + ".part";
  FILE* file = CreateFile(unfinished);
  const bool written = file != nullptr && FinishFile(file, writer(file)) &&
                       std::rename(unfinished.c_str(), path.c_str()) == 0;
  if (written) return true;
  error = "The file " + path + " cannot be written: " + std::strerror(errno) + ".";
  if (file != nullptr) unlink(unfinished.c_str());
  return false;
}

// libpng's simplified interface: it reports failures by its result, without a long jump.
bool WriteImage(FILE* file, png_image& image, const void* pixels, const void* colors) {
  // Fast, not small: a halftone hardly gets smaller by trying hard.
  image.flags = PNG_IMAGE_FLAG_FAST;
  errno = 0;
  const bool written =
      png_image_write_to_stdio(&image, file, /*convert_to_8_bit=*/0, pixels, /*stride=*/0, colors);
  if (!written && errno == 0) errno = EIO;
  png_image_free(&image);
  return written;
}

png_image MakeImage(uint32_t width, uint32_t height, uint32_t format) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = format;
  return image;
}

}  // namespace

bool WritePng(const IndexedPicture& picture, const std::string& path, std::string& error) {
  png_image image = MakeImage(picture.width, picture.height, PNG_FORMAT_RGB_COLORMAP);
  image.colormap_entries = static_cast<uint32_t>(picture.colors.size());
  const auto write = [&](FILE* file) {
    return WriteImage(file, image, picture.pixels.data(), picture.colors.data());
  };
  return WriteWhole(path, write, error);
}

bool WritePng(const RgbPicture& picture, const std::string& path, std::string& error) {
  png_image image = MakeImage(picture.width, picture.height, PNG_FORMAT_RGB);
  const auto write = [&](FILE* file) {
    return WriteImage(file, image, picture.pixels.data(), nullptr);
  };
  return WriteWhole(path, write, error);
}

bool WriteText(std::string_view text, const std::string& path, std::string& error) {
  const auto write = [&](FILE* file) {
    return std::fwrite(text.data(), 1, text.size(), file) == text.size();
  };
  return WriteWhole(path, write, error);
}

}  // namespace zr7700::printer
