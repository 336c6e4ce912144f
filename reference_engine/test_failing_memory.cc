// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/test_failing_memory.h"

#include <cstdlib>
#include <new>

namespace zr7700::reference_engine::testing {
namespace {

// How many more allocations there are up to the one that fails; 0 when none is to fail (any more).
long g_remaining = 0;
size_t g_least_bytes = 0;

bool FailsNow(size_t length_bytes) {
  return g_remaining > 0 && length_bytes >= g_least_bytes && --g_remaining == 0;
}

}  // namespace

FailingAllocation::FailingAllocation(long which, size_t least_bytes) {
  g_remaining = which;
  g_least_bytes = least_bytes;
}

FailingAllocation::~FailingAllocation() { g_remaining = 0; }

bool FailingAllocation::happened() const { return g_remaining == 0; }

}  // namespace zr7700::reference_engine::testing

void* operator new(size_t length_bytes) {
  void* const memory = zr7700::reference_engine::testing::FailsNow(length_bytes)
                           ? nullptr
                           : std::malloc(length_bytes == 0 ? 1 : length_bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t /*length_bytes*/) noexcept { std::free(memory); }
