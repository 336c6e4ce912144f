// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_file.h"

#include <array>
#include <string_view>

#include "picture_filter/jpeg_reader.h"
#include "picture_filter/png_reader.h"
#include "picture_filter/tiff_reader.h"

namespace zr7700 {
namespace {

using namespace std::string_view_literals;

struct KindRow {
  std::string_view first_bytes;
  std::unique_ptr<PictureReader> (*make_reader)(FILE* file);
};
constexpr KindRow kKinds[] = {
    {"\x89PNG\r\n\x1A\n"sv, MakePngReader},
    {"\xFF\xD8\xFF"sv, MakeJpegReader},
    {"II*\0"sv, MakeTiffReader},
    {"MM\0*"sv, MakeTiffReader},
    {"II+\0"sv, MakeTiffReader},
    {"MM\0+"sv, MakeTiffReader},
};

}  // namespace

std::unique_ptr<PictureReader> OpenPictureFile(FILE* file, std::string& error) {
  std::array<char, 8> bytes;
  rewind(file);
  const std::string_view start(bytes.data(), fread(bytes.data(), 1, bytes.size(), file));
  if (start.empty()) {
    error = "The picture is an empty file; send it again.";
    return nullptr;
  }
  for (const KindRow& kind : kKinds) {
    if (start.starts_with(kind.first_bytes)) return kind.make_reader(file);
  }
  error = "The document is no PNG, JPEG or TIFF picture, whatever its name says; save it as one.";
  return nullptr;
}

}  // namespace zr7700
