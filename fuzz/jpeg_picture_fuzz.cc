// A JPEG file of any bytes: read to its end, or refused with a sentence.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/picture_input.h"
#include "picture_filter/jpeg_reader.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::fuzz::ReadPictures(zr7700::MakeJpegReader, {data, data + bytes});
  return 0;
}
