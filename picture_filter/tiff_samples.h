// The samples of a TIFF picture line by line, whether they are stored in strips or in tiles, in one
// plane or in several.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_TIFF_SAMPLES_H_
#define ZR7700_PICTURE_FILTER_TIFF_SAMPLES_H_

#include <tiffio.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "picture_filter/tiff_form.h"

namespace zr7700 {

// Not for use by two threads at once. The file must stay open, and at this picture.
class TiffSamples {
 public:
  TiffSamples(TIFF* tiff, const TiffForm& form);

  // Empty, or a sentence for the person when the picture's blocks are too large to be held. To be
  // asked before the first line.
  std::string Prepare();

  // The next line from the top, form.LineBytes(): each sample a byte, or a 16-bit word. Empty when
  // the file is damaged.
  std::span<const uint8_t> ReadLine();

 private:
  bool ReadBand();
  bool ReadBlock(uint32_t left, uint16_t plane);
  void Unpack(uint32_t left, uint32_t line, uint16_t plane);
  unsigned Sample(const uint8_t* line, size_t i) const;

  TIFF* tiff_;
  TiffForm form_;
  bool is_tiled_;
  uint32_t block_width_;
  uint32_t block_height_;
  size_t block_line_bytes_;
  size_t block_bytes_;
  uint32_t next_line_ = 0;
  std::vector<uint8_t> block_;  // as it is stored
  std::vector<uint8_t> band_;   // the lines of all blocks side by side, as they are handed out
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_TIFF_SAMPLES_H_
