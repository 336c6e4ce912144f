// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/standard_error.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <string>

#include "base/whole_write.h"

namespace zr7700 {
namespace {

// Written by whichever thread writes to standard error.
bool line_is_open = false;

// The text as a whole, or nothing once the job is cancelled and nobody listens.
__attribute__((format(printf, 1, 0))) void Write(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length <= 0) return;
  std::string text(static_cast<size_t>(length) + 1, '\0');
  vsnprintf(text.data(), text.size(), format, arguments);
  WriteWhole(STDERR_FILENO, {text.data(), static_cast<size_t>(length)});
}

}  // namespace

void TellCups(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Write(format, arguments);
  va_end(arguments);
  line_is_open = false;
}

void BeginLineToCups(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Write(format, arguments);
  va_end(arguments);
  line_is_open = true;
}

void EndLineToCups() {
  if (line_is_open) TellCups("\n");
}

}  // namespace zr7700
