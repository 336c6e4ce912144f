// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/foundation/autorelease.h"
#include "platform/foundation/serialization.h"
#include "platform/platform.h"
#include "platform/property_file.h"
#include "platform/property_shape.h"

namespace zr7700::platform {
namespace {

// The list with mutable containers; nil when the file holds none.
id ReadList(const char* path) {
  std::string bytes;
  if (!ReadPropertyFile(path, bytes) || !SettlePropertyList(bytes)) return nil;
  return zr7700_ParsePropertyList([NSData dataWithBytes:bytes.data() length:bytes.size()]);
}

bool IsDictionary(id list) { return [list isKindOfClass:[NSDictionary class]]; }

// The object under `key`; nil and the reason in `outcome` when there is none.
id FindKey(const char* path, const char* key, Lookup& outcome) {
  outcome = Lookup::kNoList;
  const id list = ReadList(path);
  if (list == nil) return nil;
  outcome = Lookup::kNoKey;
  NSString* name = [NSString stringWithUTF8String:key];
  const id found = IsDictionary(list) && name != nil ? [list objectForKey:name] : nil;
  if (found != nil) outcome = Lookup::kOtherType;
  return found;
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

}  // namespace

Lookup ReadPropertyNumber(const char* path, const char* key, int32_t& value) {
  return WithPool([&] {
    Lookup outcome{};
    if (NumberOf(FindKey(path, key, outcome), value)) outcome = Lookup::kFound;
    return outcome;
  });
}

Lookup ReadPropertyString(const char* path, const char* key, std::string& utf8) {
  return WithPool([&] {
    Lookup outcome{};
    const id found = FindKey(path, key, outcome);
    if (![found isKindOfClass:[NSString class]]) return outcome;
    const char* text = [found UTF8String];
    if (text == nullptr) return outcome;
    utf8 = text;
    return Lookup::kFound;
  });
}

bool WritePropertyNumber(const char* path, const char* key, int32_t value) {
  return WithPool([&] {
    const id list = ReadList(path);
    NSString* name = [NSString stringWithUTF8String:key];
    if (name == nil || !IsDictionary(list)) return false;
    [list setObject:[NSNumber numberWithInt:value] forKey:name];
    NSData* xml = zr7700_XmlOfPropertyList(list);
    if (xml == nil) return true;
    ReplacePropertyFile(path, std::string(static_cast<const char*>([xml bytes]), [xml length]));
    return true;
  });
}

}  // namespace zr7700::platform
