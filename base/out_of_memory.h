// Memory that C code did not get: told like memory that C++ did not get.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_OUT_OF_MEMORY_H_
#define ZR7700_BASE_OUT_OF_MEMORY_H_

#include <cerrno>
#include <new>

namespace zr7700 {

// Calls what operator new calls when it finds no memory, which in a job does not return
// (driver/system_limits.h); without such a handler nothing happens. Any thread.
inline void ReportNoMemory() {
  const std::new_handler report = std::get_new_handler();
  if (report != nullptr) report();
}

// For libraries that lose something without a word where there is no memory: around a call of
// theirs. Reports it when memory was refused meanwhile, which errno shows. Any thread.
class MemoryWatch {
 public:
  MemoryWatch() { errno = 0; }
  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;
  ~MemoryWatch() {
    if (errno == ENOMEM) ReportNoMemory();
  }
};

}  // namespace zr7700

#endif  // ZR7700_BASE_OUT_OF_MEMORY_H_
