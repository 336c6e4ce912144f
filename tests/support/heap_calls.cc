// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/heap_calls.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> heap_calls = 0;

}  // namespace

size_t zr7700::test::HeapCalls() { return heap_calls; }

void* operator new(size_t bytes) {
  ++heap_calls;
  void* const memory = std::malloc(bytes == 0 ? 1 : bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t /*bytes*/) noexcept { std::free(memory); }
