// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "driver/user_message.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "base/paths.h"
#include "base/standard_error.h"
#include "platform/platform.h"

namespace zr7700 {

void SetUpMessageLanguage() {
  setbuf(stderr, nullptr);
  platform::UseMessageCatalogue(paths::kCatalogueDomain, paths::kCatalogues);
  const char* language = getenv("APPLE_LANGUAGE");
  if (language == nullptr) language = getenv("LANG");
  if (language != nullptr) platform::SetMessageLanguage(language);
}

void WriteUserMessage(const char* prefix, const char* format, ...) {
  char text[2048];
  va_list arguments;
  va_start(arguments, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  const int length = vsnprintf(text, sizeof text, format, arguments);
#pragma GCC diagnostic pop
  va_end(arguments);
  if (length >= 0 && static_cast<size_t>(length) < sizeof text) {
    TellCups("%s: %s\n", prefix, text);
  }
}

}  // namespace zr7700
