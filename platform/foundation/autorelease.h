// Objects that Foundation hands out live until the pool around them ends.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_FOUNDATION_AUTORELEASE_H_
#define ZR7700_PLATFORM_FOUNDATION_AUTORELEASE_H_

#import <Foundation/Foundation.h>

namespace zr7700::platform {

// Runs `work` inside an autorelease pool of its own and returns what it returns, which must be no
// Objective-C object. Any thread: a pool makes a foreign thread known to Foundation.
#if defined(__clang__)
template <typename Work>
auto WithPool(const Work& work) {
  @autoreleasepool {
    return work();
  }
}
#else
// GCC's Objective-C has no pool statement.
class Pool {
 public:
  Pool() : pool_([[NSAutoreleasePool alloc] init]) {}
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() { [pool_ release]; }

 private:
  NSAutoreleasePool* pool_;
};

template <typename Work>
auto WithPool(const Work& work) {
  const Pool pool;
  return work();
}
#endif

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_FOUNDATION_AUTORELEASE_H_
