// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/document.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "disc/user_message.h"

namespace zr7700 {
namespace {

DocumentFile Refuse(const std::string& what, const char* advice) {
  TellError(what + " (" + std::strerror(errno) + "); " + advice);
  return {nullptr, &fclose};
}

// A new file without a name; null with errno set.
FILE* OpenNameless() {
  const char* const folder = std::getenv("TMPDIR");
  std::string path = std::string(folder == nullptr ? "/tmp" : folder) + "/zr7700-picture-XXXXXX";
  const int descriptor = mkstemp(path.data());
  if (descriptor < 0) return nullptr;
  unlink(path.c_str());
  return fdopen(descriptor, "w+b");
}

ssize_t ReadSome(int descriptor, void* bytes, size_t count) {
  ssize_t got;
  do {
    got = read(descriptor, bytes, count);
  } while (got < 0 && errno == EINTR);
  return got;
}

DocumentFile Spool(int descriptor) {
  DocumentFile file(OpenNameless(), &fclose);
  if (file == nullptr) return Refuse("The picture cannot be stored", "see to the folder $TMPDIR.");
  std::array<char, 65536> bytes;
  ssize_t got;
  while ((got = ReadSome(descriptor, bytes.data(), bytes.size())) > 0) {
    if (fwrite(bytes.data(), static_cast<size_t>(got), 1, file.get()) != 1) break;
  }
  if (got < 0) return Refuse("The picture cannot be read", "print it again.");
  if (got > 0 || fflush(file.get()) != 0) {
    return Refuse("The picture cannot be stored", "make room in the folder $TMPDIR.");
  }
  return file;
}

}  // namespace

DocumentFile OpenDocumentFile(const FilterArguments& arguments) {
  const int descriptor = OpenDocument(arguments);
  if (descriptor < 0) return {nullptr, &fclose};
  if (descriptor == STDIN_FILENO) return Spool(descriptor);
  DocumentFile file(fdopen(descriptor, "rb"), &fclose);
  if (file == nullptr) return Refuse("The picture cannot be read", "print it again.");
  return file;
}

}  // namespace zr7700
