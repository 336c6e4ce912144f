// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "base/standard_error.h"

#include <cstdarg>
#include <cstdio>

namespace zr7700 {
namespace {

// Written by whichever thread writes to standard error.
bool line_is_open = false;

}  // namespace

void TellCups(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  vfprintf(stderr, format, arguments);
  va_end(arguments);
  line_is_open = false;
}

void BeginLineToCups(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  vfprintf(stderr, format, arguments);
  va_end(arguments);
  line_is_open = true;
}

void EndLineToCups() {
  if (line_is_open) TellCups("\n");
}

}  // namespace zr7700
