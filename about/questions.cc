// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "about/questions.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace zr7700 {
namespace {

constexpr std::string_view kVersionQuestion = "--version";

}  // namespace

bool IsQuestion(std::string_view argument) {
  return argument == "--help" || argument == kVersionQuestion;
}

std::string_view FirstQuestion(int argc, char* const argv[]) {
  char* const* const end = argv + std::max(argc, 1);
  char* const* const found = std::find_if(argv + 1, end, IsQuestion);
  return found == end ? std::string_view() : *found;
}

int AnswerQuestion(std::string_view question, const char* program, const char* usage) {
  if (question == kVersionQuestion) {
    std::printf("%s %s\n", program, ZR7700_VERSION);
  } else {
    std::fputs(usage, stdout);
  }
  const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace zr7700
