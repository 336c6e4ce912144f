// A folder that lives as long as the object.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_TEMPORARY_FOLDER_H_
#define ZR7700_TESTS_SUPPORT_TEMPORARY_FOLDER_H_

#include <filesystem>
#include <string>
#include <string_view>

namespace zr7700::test {

class TemporaryFolder {
 public:
  // Makes a new folder in the system's folder for such; ends the process when it cannot.
  TemporaryFolder();
  ~TemporaryFolder();  // removes the folder and all that is in it
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

  // The path of `name` inside the folder.
  std::string PathOf(std::string_view name) const { return (path_ / name).string(); }

  // Writes a file with this content, and the folders above it; returns its path.
  std::string WriteFile(std::string_view name, std::string_view content) const;

 private:
  std::filesystem::path path_;
};

// The whole content of a file; empty when there is none.
std::string ReadFile(const std::string& path);

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_TEMPORARY_FOLDER_H_
