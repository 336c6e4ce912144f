// The ini editor on any file: no limit that ends the process leaves a changed file behind, and
// doing the same again changes nothing.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <string>

#include "base/regular_file.h"
#include "base/replaced_file.h"
#include "engine/fatal_limit.h"
#include "engine/ini_file.h"
#include "engine/job_variables.h"
#include "fuzz/input.h"

namespace zr7700 {
namespace {

struct LimitReached {};

// Sets or removes a key; false when a limit would have ended the process.
bool Edit(bool set, const char* value) {
  try {
    if (set) {
      fuzz::Require(WriteFerroIniFile("[A]", "K=", value));
    } else {
      fuzz::Require(RemoveFerroIniKey("[A]", "K="));
    }
    return true;
  } catch (const LimitReached&) {
    return false;
  }
}

std::string ContentOf(const std::string& path) {
  std::string text;
  const FileReading reading = ReadRegularFile(path.c_str(), Links::kTrusted, 1 << 20, text);
  fuzz::Require(reading == FileReading::kRead);
  return text;
}

}  // namespace

// Stands in for the library's own, which ends the process: a fuzzer must go on.
void EndProcessAtLimit(const char*, const char*) { throw LimitReached(); }

}  // namespace zr7700

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  using zr7700::fuzz::Require;
  static const std::string path = "/tmp/zr7700-ini-fuzz-" + std::to_string(getpid());
  zr7700::job_variables.files.engineIniPath = path.c_str();
  zr7700::fuzz::Input input(data, bytes);
  const uint8_t mode = input.U8();
  const std::string value(mode >> 1, 'v');
  const std::string before(input.Rest().begin(), input.Rest().end());
  Require(zr7700::CreateFile(path.c_str(), before));

  const bool set = (mode & 1) != 0;
  const bool edited = zr7700::Edit(set, value.c_str());
  const std::string after = zr7700::ContentOf(path);
  if (!edited) Require(after == before);
  if (edited) {
    Require(after.size() < 8000 || after == before);
    if (set) Require(after.find("K=" + value + " \n") != std::string::npos);
    zr7700::Edit(set, value.c_str());
    Require(zr7700::ContentOf(path) == after);
  }
  unlink(path.c_str());
  return 0;
}
