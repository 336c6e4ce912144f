// What every program says of itself when it is asked with --help or --version.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ABOUT_QUESTIONS_H_
#define ZR7700_ABOUT_QUESTIONS_H_

#include <string_view>

namespace zr7700 {

// True for exactly "--help" and "--version".
bool IsQuestion(std::string_view argument);

// The first of argv[1] to argv[argc - 1] that is a question; empty when none is.
std::string_view FirstQuestion(int argc, char* const argv[]);

// Answers a question on standard output: "--help" with `usage`, a text of whole lines, "--version"
// with a line of `program` and the version of the whole. The exit status: 0, or 1 when the answer
// could not be written. Touches nothing else.
int AnswerQuestion(std::string_view question, const char* program, const char* usage);

}  // namespace zr7700

#endif  // ZR7700_ABOUT_QUESTIONS_H_
