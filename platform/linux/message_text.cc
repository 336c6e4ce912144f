// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <libintl.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/platform.h"

namespace zr7700::platform {
namespace {

const char* catalogue_domain = nullptr;  // set once at start, main thread

// The C library reads no catalogue in these two, whatever language is asked for.
bool IsPlainLocale(const char* name) {
  return name == nullptr || strcmp(name, "C") == 0 || strcmp(name, "POSIX") == 0;
}

// Whether the environment asks for the plain texts of the system whatever the language is.
bool IsSystemPlain() {
  const char* const all = getenv("LC_ALL");
  return all != nullptr && all[0] != '\0' && IsPlainLocale(all);
}

// "de-DE" is what "de_DE" is called elsewhere; the hyphen of a character set stays.
std::string LocaleName(std::string_view language) {
  std::string name(language);
  for (char& letter : name) {
    if (letter == '.' || letter == '@') break;
    if (letter == '-') letter = '_';
  }
  return name;
}

// While one lives, this thread's messages are of a locale that is not the plain one.
class MessageLocale {
 public:
  MessageLocale()
      : locale_(newlocale(LC_MESSAGES_MASK, "C.UTF-8", nullptr)),
        before_(locale_ != nullptr ? uselocale(locale_) : nullptr) {}
  MessageLocale(const MessageLocale&) = delete;
  MessageLocale& operator=(const MessageLocale&) = delete;
  ~MessageLocale() {
    if (locale_ == nullptr) return;
    uselocale(before_);
    freelocale(locale_);
  }

 private:
  locale_t locale_;
  locale_t before_;
};

const char* Translation(const char* key) {
  if (!IsSystemPlain()) return dgettext(catalogue_domain, key);
  const MessageLocale locale;
  return dgettext(catalogue_domain, key);
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
// folder: it counts as English, and so does an empty one. With LC_ALL=C the system's own texts stay
// plain: what is set here decides about them too.
void SetMessageLanguage(const char* language) {
  const bool usable = language[0] != '\0' && strchr(language, '/') == nullptr;
  setenv("LANGUAGE", usable ? LocaleName(language).c_str() : "C", 1);
  setlocale(LC_MESSAGES, "");
  if (!IsSystemPlain() && IsPlainLocale(setlocale(LC_MESSAGES, nullptr)))
    setlocale(LC_MESSAGES, "C.UTF-8");
}

std::optional<std::string> LocalizedText(const char* key) {
  if (catalogue_domain == nullptr || key[0] == '\0') return key;
  const int kept_errno = errno;
  std::string text = Translation(key);
  errno = kept_errno;
  return text;
}

}  // namespace zr7700::platform
