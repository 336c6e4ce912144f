// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/picture_file.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>

namespace zr7700::printer {
namespace {

class PictureFile : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(folder_), nullptr); }
  void TearDown() override {
    for (const std::string& name : Names()) unlink((std::string(folder_) + "/" + name).c_str());
    rmdir(folder_);
  }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    DIR* folder = opendir(folder_);
    while (const dirent* entry = readdir(folder)) {
      if (entry->d_name[0] != '.') names.push_back(entry->d_name);
    }
    closedir(folder);
    return names;
  }

  static std::vector<uint8_t> ReadRgb(const std::string& path, uint32_t width, uint32_t height) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    std::vector<uint8_t> pixels(3 * width * height);
    EXPECT_TRUE(png_image_begin_read_from_file(&image, path.c_str())) << image.message;
    EXPECT_EQ(image.width, width);
    EXPECT_EQ(image.height, height);
    image.format = PNG_FORMAT_RGB;
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
    return pixels;
  }

  char folder_[32] = "/tmp/zr7700-picture-XXXXXX";
};

std::string PathIn(const char* folder) { return std::string(folder) + "/a.png"; }

std::string TextOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

// No file of this process can grow beyond 4 bytes while one of these lives.
class FullDisk {
 public:
  FullDisk() {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{4, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_IGN);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(PictureFile, IndexedPixelsComeBack) {
  const IndexedPicture picture{
      3, 2, {{1, 2, 3}, {250, 0, 128}, {255, 255, 255}}, {0, 1, 2, 2, 1, 0}};
  std::string error;
  ASSERT_TRUE(WritePng(picture, PathIn(folder_), error)) << error;
  EXPECT_EQ(ReadRgb(PathIn(folder_), 3, 2),
            (std::vector<uint8_t>{1, 2, 3, 250, 0, 128, 255, 255, 255,  //
                                  255, 255, 255, 250, 0, 128, 1, 2, 3}));
  EXPECT_EQ(Names(), std::vector<std::string>{"a.png"});
}

TEST_F(PictureFile, RgbPixelsComeBack) {
  const RgbPicture picture{1, 2, {{9, 8, 7}, {6, 5, 4}}};
  std::string error;
  ASSERT_TRUE(WritePng(picture, PathIn(folder_), error)) << error;
  EXPECT_EQ(ReadRgb(PathIn(folder_), 1, 2), (std::vector<uint8_t>{9, 8, 7, 6, 5, 4}));
}

TEST_F(PictureFile, AMissingFolderIsSaid) {
  std::string error;
  EXPECT_FALSE(WriteText("x", "/nowhere/at/all", error));
  EXPECT_EQ(error, "The file /nowhere/at/all cannot be written: No such file or directory.");
}

TEST_F(PictureFile, AFullDiskLeavesTheOldFileAndNothingElse) {
  std::string error;
  ASSERT_TRUE(WriteText("old", PathIn(folder_), error)) << error;
  {
    FullDisk full_disk;
    EXPECT_FALSE(WriteText("newer", PathIn(folder_), error));
    EXPECT_EQ(error, "The file " + PathIn(folder_) + " cannot be written: File too large.");
    EXPECT_FALSE(WritePng(RgbPicture{1, 1, {{1, 2, 3}}}, PathIn(folder_), error));
    EXPECT_EQ(error, "The file " + PathIn(folder_) + " cannot be written: File too large.");
  }
  EXPECT_EQ(Names(), std::vector<std::string>{"a.png"});
  EXPECT_EQ(TextOf(PathIn(folder_)), "old");
}

TEST_F(PictureFile, APlantedLinkIsNotFollowed) {
  const std::string victim = std::string(folder_) + "/victim";
  std::string error;
  ASSERT_TRUE(WriteText("mine", victim, error)) << error;
  ASSERT_EQ(symlink(victim.c_str(), (PathIn(folder_) + ".part").c_str()), 0);
  ASSERT_TRUE(WriteText("new", PathIn(folder_), error)) << error;
  EXPECT_EQ(TextOf(victim), "mine");
  EXPECT_EQ(TextOf(PathIn(folder_)), "new");
}

}  // namespace
}  // namespace zr7700::printer
