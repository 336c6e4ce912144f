// Plays the host of a built engine library for the tests: loads it as the filter does and prints
// pictures through the 22 entries.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_TEST_ENGINE_HOST_H_
#define ZR7700_REFERENCE_ENGINE_TEST_ENGINE_HOST_H_

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "reference_engine/test_printer.h"
#include "zr7700/host_print_engine.h"

namespace zr7700::reference_engine::testing {

struct FamilyName {
  const char* name;
  const char* code;
  char letter;
};
inline constexpr FamilyName kHeronName = {"Heron", "he", 'H'};
inline constexpr FamilyName kGraniteName = {"Granite", "gr", 'G'};

inline std::ostream& operator<<(std::ostream& out, const FamilyName& family) {
  return out << family.name;
}

// The entries of a family's library as the host calls them. Stays loaded until the process ends.
struct EntryTable {
#define ZR7700_MEMBER(name, type) type name = nullptr;
  HPE_ENTRIES(ZR7700_MEMBER)
#undef ZR7700_MEMBER
};
// Opens all four libraries lazily by their absolute paths; any that fails leaves the table empty.
EntryTable LoadFamily(const FamilyName& family);

// The path of a colour table by its family's short name for it, such as "clrPhoto".
std::string TablePath(const FamilyName& family, const std::string& short_name);
std::string StandardTable(const FamilyName& family);
std::string PhotoTable(const FamilyName& family);

// A picture of red, green and blue, white at first.
struct Picture {
  Picture(uint32_t width_dots, uint32_t height_lines)
      : width(width_dots), height(height_lines), pixels(size_t{width} * height * 4, 0xFF) {}
  uint8_t* pixel(uint32_t x, uint32_t y) { return &pixels[(size_t{y} * width + x) * 4]; }
  const uint8_t* pixel(uint32_t x, uint32_t y) const {
    return &pixels[(size_t{y} * width + x) * 4];
  }
  void Fill(uint32_t x, uint32_t y, uint32_t columns, uint32_t lines, std::array<uint8_t, 3> color);
  uint32_t width;
  uint32_t height;
  std::vector<uint8_t> pixels;
};

// Every colour and much detail, from a fixed generator.
Picture NoisePicture(uint32_t width, uint32_t height);

// What a page is printed with; the defaults are the filter's for a disc at 600 dpi.
struct Job {
  std::string table;
  uint32_t dots_per_inch = 600;
  int32_t left_margin = 1916;
  int32_t top_margin = 69;
  int32_t physical_width = 5100;
  uint32_t quality = 2;
  uint32_t media = 1;
  int32_t sharpening = 1;
  uint32_t alignment6 = 0;
  std::string ini;
};

// The text of an ini file as the filter writes it, each value followed by a blank.
std::string IniText(int color, int passes, int direction);

// One block as it came through the callback.
using Blocks = std::vector<std::vector<uint8_t>>;

// One engine instance with a folder of its own for the ini file.
class EngineHost {
 public:
  explicit EngineHost(const FamilyName& family);
  ~EngineHost();
  EngineHost(const EngineHost&) = delete;
  EngineHost& operator=(const EngineHost&) = delete;

  const EntryTable& entries() const { return entries_; }
  HPEHandle handle() const { return handle_; }
  const FamilyName& family() const { return family_; }

  int32_t Initialize();
  int32_t StartDocument(const std::string& table);
  int32_t SetProperties(const Job& job, int32_t width, int32_t height);
  void WriteIni(const std::string& text);
  // Sends every line of the picture as a band of one line.
  int32_t SendLines(const Picture& picture);

  // A whole document of one page. Answers 0 when every call did.
  int32_t Print(const Job& job, const Picture& picture);

  // What came through the callback so far, and as one stream.
  const Blocks& blocks() const { return blocks_; }
  std::vector<uint8_t> Stream() const;

  // Called from inside the callback.
  std::function<void()> on_output;

 private:
  static void TakeOutput(void* context, uint8_t* data, uint32_t length_bytes);

  FamilyName family_;
  EntryTable entries_;
  HPEHandle handle_ = nullptr;
  std::filesystem::path folder_;
  Blocks blocks_;
};

// Prints one page with a fresh instance and executes the stream; a test failure and an empty page
// when anything goes wrong.
PrintedPage PrintAndRead(const FamilyName& family, const Job& job, const Picture& picture);

}  // namespace zr7700::reference_engine::testing

#endif  // ZR7700_REFERENCE_ENGINE_TEST_ENGINE_HOST_H_
