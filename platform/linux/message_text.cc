// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <libintl.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>

#include "platform/platform.h"

namespace zr7700::platform {
namespace {

const char* catalogue_domain = nullptr;  // set once at start, main thread

// The C library reads no catalogue in these two, whatever language is asked for.
bool IsPlainLocale(const char* name) {
  return name == nullptr || strcmp(name, "C") == 0 || strcmp(name, "POSIX") == 0;
}

}  // namespace

void UseMessageCatalogue(const char* domain, const char* directory) {
  catalogue_domain = domain;
  bindtextdomain(domain, directory);
  bind_textdomain_codeset(domain, "UTF-8");
  // The system's own error texts stand in the messages too; the character locale stays "C".
  bind_textdomain_codeset("libc", "UTF-8");
}

// The language goes by LANGUAGE, which needs no locale of that language on the machine, only a
// locale that is not the plain one. A language with a path in it would lead out of the catalogues'
// folder: it counts as English, and so does an empty one.
void SetMessageLanguage(const char* language) {
  const bool usable = language[0] != '\0' && strchr(language, '/') == nullptr;
  setenv("LANGUAGE", usable ? language : "C", 1);
  setlocale(LC_MESSAGES, "");
  if (IsPlainLocale(setlocale(LC_MESSAGES, nullptr))) setlocale(LC_MESSAGES, "C.UTF-8");
}

std::optional<std::string> LocalizedText(const char* key) {
  if (catalogue_domain == nullptr || key[0] == '\0') return key;
  const int kept_errno = errno;
  std::string text = dgettext(catalogue_domain, key);
  errno = kept_errno;
  return text;
}

}  // namespace zr7700::platform
