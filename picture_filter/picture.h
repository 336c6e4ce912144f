// A picture as it is read from a file: what the file says of it, and its lines one after another.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PICTURE_FILTER_PICTURE_H_
#define ZR7700_PICTURE_FILTER_PICTURE_H_

#include <cstdint>
#include <span>
#include <string>

#include "picture_filter/turn.h"

namespace zr7700 {

// Dots an inch that a picture counts as having when it says nothing; the distribution's own filter
// for pictures takes the same.
constexpr double kUsualDensity_dpi = 200;

constexpr double kCentimetresPerInch = 2.54;

// Dots an inch, each such that IsDensity() holds.
struct Density {
  double across = kUsualDensity_dpi;
  double down = kUsualDensity_dpi;
};

// Whether a picture can have so many dots an inch: 1 to 65,535. Any thread.
bool IsDensity(double dpi);

// The usual density when no picture is so. Any thread.
Density DensityPerInch(double across, double down);

// For a picture that tells the shape of its dots and not their size. Any thread.
Density DensityOfShape(double across, double down);

struct Dots {
  uint32_t width = 0;
  uint32_t height = 0;
};

struct Picture {
  Dots dots = {};        // as they are stored
  Density density = {};  // likewise
  Turn turn = {};        // makes it upright
};

// Empty for a picture that can be read line by line, else a sentence for the person. After an empty
// answer each side has 1 to 131,072 dots, and all of it 250 million at most. Any thread.
std::string CheckDots(Dots dots);

// The same for a picture of which `bytes` have to be held at once. Any thread.
std::string CheckHeldBytes(uint64_t bytes);

// Reads the pictures of a file. One for each kind of file, not for use by two threads at once:
// NextPicture(), Begin(), ReadLine() for all lines, End(), and again from the start.
class PictureReader {
 public:
  virtual ~PictureReader() = default;
  PictureReader() = default;
  PictureReader(const PictureReader&) = delete;
  PictureReader& operator=(const PictureReader&) = delete;

  enum class Next { kPicture, kEnd, kRefused };
  // Goes to the next picture of the file, the first one at first.
  virtual Next NextPicture() = 0;

  // What the file says of the picture.
  const Picture& picture() const { return picture_; }

  // Decoding starts. The lines have the picture's dots, or fewer when that is faster, but no fewer
  // than `enough` either way unless the picture itself has fewer.
  virtual bool Begin(Dots enough) = 0;
  Dots decoded() const { return decoded_; }

  // The next of decoded().height lines from the top: decoded().width dots of red, green and blue in
  // sRGB, on white where the picture is transparent.
  virtual bool ReadLine(std::span<uint8_t> rgb) = 0;

  // After the last line: false when the file shows only now that it is damaged.
  virtual bool End() = 0;

  // The sentence for the person, after kRefused or false.
  const std::string& error() const { return error_; }

  // Whether the picture has a colour profile that cannot be used and is left out; after Begin().
  bool lacks_profile() const { return lacks_profile_; }

 protected:
  // False, with the sentence kept.
  bool Refuse(std::string sentence);
  // `what` the library found, in its own words.
  bool RefuseDamaged(const char* what);

  Picture picture_;
  Dots decoded_;
  bool lacks_profile_ = false;

 private:
  std::string error_;
};

}  // namespace zr7700

#endif  // ZR7700_PICTURE_FILTER_PICTURE_H_
