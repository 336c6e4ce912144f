// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/foundation/autorelease.h"
#include "platform/foundation/serialization.h"
#include "platform/platform.h"
#include "platform/property_guard.h"

namespace zr7700::platform {
namespace {

// The root is kept as a pointer with a count of its own.
void* Keep(id object) { return [object retain]; }
id Kept(void* root) { return static_cast<id>(root); }

bool IsDictionary(id list) { return [list isKindOfClass:[NSDictionary class]]; }

// nil when there is none.
id Find(void* root, const char* key) {
  NSString* name = [NSString stringWithUTF8String:key];
  return IsDictionary(Kept(root)) && name != nil ? [Kept(root) objectForKey:name] : nil;
}

// A boolean is a number too, but one of two objects that are always the same.
bool IsBoolean(id object) {
  return object == [NSNumber numberWithBool:YES] || object == [NSNumber numberWithBool:NO];
}

bool NumberOf(id object, int32_t& value) {
  if (![object isKindOfClass:[NSNumber class]] || IsBoolean(object)) return false;
  NSNumber* number = object;
  if (strchr("df", [number objCType][0]) == nullptr) {
    value = static_cast<int32_t>(static_cast<uint32_t>([number unsignedLongLongValue]));
    return true;
  }
  const double real = [number doubleValue];
  if (std::isnan(real)) return false;
  using Limits = std::numeric_limits<int32_t>;
  value = static_cast<int32_t>(std::clamp<double>(real, Limits::min(), Limits::max()));
  return true;
}

// Null when the bytes are no list.
void* ParsedRoot(const std::string& bytes) {
  return WithPool([&] {
    NSData* data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
    return Keep(zr7700_ParsePropertyList(data));
  });
}

}  // namespace

std::optional<PropertyList> PropertyList::Parse(std::string_view bytes) {
  const std::optional<std::string> list = GuardedPropertyList(bytes);
  void* const root = list ? ParsedRoot(*list) : nullptr;
  if (root == nullptr) return std::nullopt;
  return PropertyList(root);
}

void PropertyList::Release::operator()(void* root) const {
  WithPool([root] { [Kept(root) release]; });
}

Lookup PropertyList::Number(const char* key, int32_t& value) const {
  return WithPool([&] {
    const id found = Find(root_.get(), key);
    if (found == nil) return Lookup::kNoKey;
    return NumberOf(found, value) ? Lookup::kFound : Lookup::kOtherType;
  });
}

Lookup PropertyList::String(const char* key, std::string& utf8) const {
  return WithPool([&] {
    const id found = Find(root_.get(), key);
    if (found == nil) return Lookup::kNoKey;
    if (![found isKindOfClass:[NSString class]]) return Lookup::kOtherType;
    const char* text = [found UTF8String];
    if (text == nullptr) return Lookup::kOtherType;
    utf8 = text;
    return Lookup::kFound;
  });
}

bool PropertyList::SetNumber(const char* key, int32_t value) {
  return WithPool([&] {
    NSString* name = [NSString stringWithUTF8String:key];
    if (name == nil || !IsDictionary(Kept(root_.get()))) return false;
    // Of a binary list the root may come immutable, whatever was asked for.
    const id changed = [Kept(root_.get()) mutableCopy];
    [changed setObject:[NSNumber numberWithInt:value] forKey:name];
    root_.reset(changed);
    return true;
  });
}

std::string PropertyList::Xml() const {
  return WithPool([&] {
    NSData* xml = zr7700_XmlOfPropertyList(Kept(root_.get()));
    return xml != nil ? std::string(static_cast<const char*>([xml bytes]), [xml length])
                      : std::string();
  });
}

}  // namespace zr7700::platform
