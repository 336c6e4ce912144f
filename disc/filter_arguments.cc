// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "disc/filter_arguments.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "about/questions.h"
#include "disc/user_message.h"

namespace zr7700 {
namespace {

constexpr long kMostCopies = 9999;
constexpr int kFarewell_ms = 1000;

constexpr char kQuestions[] =
    "\n\n"
    "  --help     say this\n"
    "  --version  say the version\n";

int CopiesOf(const char* text) {
  return static_cast<int>(std::clamp(std::strtol(text, nullptr, 10), 1L, kMostCopies));
}

FilterArguments ArgumentsOf(int argc, char** argv) {
  FilterArguments arguments;
  arguments.words = argv;
  arguments.option_count = cupsParseOptions(argv[5], 0, &arguments.options);
  if (argc == 7) {
    arguments.file = argv[6];
    arguments.copies = CopiesOf(argv[4]);
  }
  return arguments;
}

void EndCancelled(int) {
  pollfd output = {.fd = STDOUT_FILENO, .events = 0, .revents = 0};
  poll(&output, 1, kFarewell_ms);  // returns early when nobody reads any more
  _exit(0);
}

int RunJob(int argc, char** argv, int (*job)(const FilterArguments& arguments)) {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTERM, EndCancelled);
  const FilterArguments arguments = ArgumentsOf(argc, argv);
  const int exit_status = job(arguments);
  cupsFreeOptions(arguments.option_count, arguments.options);
  return exit_status;
}

int AnswerOrRun(int argc, char** argv, const char* program, const char* about,
                int (*job)(const FilterArguments& arguments)) {
  if (argc == 6 || argc == 7) return RunJob(argc, argv, job);
  const std::string usage =
      std::string("Usage: ") + program + " job user title copies options [file]\n";
  if (argc == 2 && IsQuestion(argv[1])) {
    return AnswerQuestion(argv[1], program, (usage + "\n" + about + kQuestions).c_str());
  }
  std::fputs(usage.c_str(), stderr);
  return 1;
}

// A standard descriptor that is not open would become that of the next file: what is read from it
// or written to it fails instead.
void HoldStandardDescriptors() {
  constexpr int kModes[] = {O_WRONLY, O_RDONLY, O_RDWR};
  for (int number = 0; number <= 2; ++number) {
    if (fcntl(number, F_GETFD) < 0) open("/dev/null", kModes[number]);
  }
}

}  // namespace

int RunFilter(int argc, char** argv, const char* program, const char* about,
              int (*job)(const FilterArguments& arguments)) {
  HoldStandardDescriptors();
  try {
    return AnswerOrRun(argc, argv, program, about, job);
  } catch (const std::exception&) {
    // Nothing of ours throws; what the standard library throws here is a lack of memory.
    TellError("There is no memory for the page; print again when less is going on.");
    return 1;
  }
}

int OpenDocument(const FilterArguments& arguments) {
  if (arguments.file == nullptr) return STDIN_FILENO;
  const int descriptor = open(arguments.file, O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    TellError(std::string("The document cannot be read (") + std::strerror(errno) +
              "); print it again.");
  }
  return descriptor;
}

}  // namespace zr7700
