// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "trace.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { kLineBytes = 4096 };

void AppendToFileOf(const char* name, const void* data, size_t count) {
  const char* path = getenv(name);
  if (path == NULL) return;
  int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (file < 0) return;
  const char* next = data;
  while (count > 0) {
    ssize_t written = write(file, next, count);
    if (written <= 0) break;
    next += written;
    count -= (size_t)written;
  }
  close(file);
}

void Trace(const char* format, ...) {
  char line[kLineBytes];
  va_list arguments;
  va_start(arguments, format);
  int length = vsnprintf(line, sizeof line - 1, format, arguments);
  va_end(arguments);
  if (length < 0) return;
  if (length > kLineBytes - 2) length = kLineBytes - 2;
  line[length] = '\n';
  AppendToFileOf("ZR7700_ENGINE_TRACE", line, (size_t)length + 1);
}

/* Every library that holds this file says by its own path that it was loaded. */
__attribute__((constructor)) static void TraceLoading(void) {
  Dl_info self;
  if (dladdr(__extension__(const void*) TraceLoading, &self) != 0) {
    Trace("LOADED %s", self.dli_fname);
  }
}
