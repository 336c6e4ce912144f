// How often a program has gone to the C++ heap. A program that is built with heap_calls.cc has its
// operator new replaced by one that counts.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_HEAP_CALLS_H_
#define ZR7700_TESTS_SUPPORT_HEAP_CALLS_H_

#include <cstddef>

namespace zr7700::test {

// Of all threads together.
size_t HeapCalls();

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_HEAP_CALLS_H_
