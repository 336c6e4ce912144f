// Lets a chosen memory allocation of the whole process fail. A program that names anything here has
// its operator new replaced by one that counts, the libraries that it loads included.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_REFERENCE_ENGINE_TEST_FAILING_MEMORY_H_
#define ZR7700_REFERENCE_ENGINE_TEST_FAILING_MEMORY_H_

#include <cstddef>

namespace zr7700::reference_engine::testing {

// While one lives, the operator new that is the `which`-th of at least `least_bytes` bytes (from 1)
// throws std::bad_alloc, once. One at a time, and no other thread may allocate.
class FailingAllocation {
 public:
  explicit FailingAllocation(long which, size_t least_bytes = 0);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  // Whether it has failed by now.
  bool happened() const;
};

}  // namespace zr7700::reference_engine::testing

#endif  // ZR7700_REFERENCE_ENGINE_TEST_FAILING_MEMORY_H_
