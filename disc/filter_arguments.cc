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
#include <string>
#include <string_view>

#include "disc/user_message.h"

namespace zr7700 {
namespace {

constexpr long kMostCopies = 9999;
constexpr int kFarewell_ms = 1000;

const char* BaseName(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

int CopiesOf(const char* text) {
  return static_cast<int>(std::clamp(std::strtol(text, nullptr, 10), 1L, kMostCopies));
}

void EndCancelled(int) {
  pollfd output = {.fd = STDOUT_FILENO, .events = 0, .revents = 0};
  poll(&output, 1, kFarewell_ms);  // returns early when nobody reads any more
  _exit(0);
}

}  // namespace

bool TakeArguments(int argc, char** argv, const char* about, FilterArguments& arguments,
                   int& exit_status) {
  const char* const name = BaseName(argc > 0 ? argv[0] : "filter");
  exit_status = 0;
  if (argc == 2 && std::string_view(argv[1]) == "--version") {
    std::printf("%s %s\n", name, ZR7700_VERSION);
    return false;
  }
  if (argc == 2 && std::string_view(argv[1]) == "--help") {
    std::printf("Usage: %s job user title copies options [file]\n%s\n", name, about);
    return false;
  }
  if (argc != 6 && argc != 7) {
    std::fprintf(stderr, "Usage: %s job user title copies options [file]\n", name);
    exit_status = 1;
    return false;
  }
  static cups_option_t* options = nullptr;  // a leak checker at the end of the process finds them
  arguments.option_count = cupsParseOptions(argv[5], 0, &options);
  arguments.options = options;
  if (argc == 7) {
    arguments.file = argv[6];
    arguments.copies = CopiesOf(argv[4]);
  }
  return true;
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

void PrepareFilterProcess() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTERM, EndCancelled);
}

}  // namespace zr7700
