// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/standard_error.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>

#include "base/whole_write.h"

namespace zr7700 {
namespace {

// Written by whichever thread writes to standard error.
bool line_is_open = false;

// The text as a whole, or nothing once the job is cancelled and nobody listens. No heap: that there
// is none left may be what it says. Only the name that the program was called by could make a text
// longer than the buffer; it is cut then.
__attribute__((format(printf, 1, 0))) void Write(const char* format, va_list arguments) {
  char text[2 * PATH_MAX];
  const int length = vsnprintf(text, sizeof text, format, arguments);
  if (length <= 0) return;
  WriteWhole(STDERR_FILENO, {text, std::min(static_cast<size_t>(length), sizeof text - 1)});
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
