// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <plist/plist.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include "platform/platform.h"
#include "platform/property_file.h"
#include "platform/property_shape.h"

namespace zr7700::platform {
namespace {

struct FreeList {
  void operator()(void* list) const { plist_free(list); }
};
using List = std::unique_ptr<void, FreeList>;

struct FreeText {
  void operator()(char* text) const { free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

List ReadList(const char* path) {
  std::string bytes;
  if (!ReadPropertyFile(path, bytes) || !SettlePropertyList(bytes)) return nullptr;
  plist_t list = nullptr;
  plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &list);
  return List(list);
}

bool IsDictionary(const List& list) { return plist_get_node_type(list.get()) == PLIST_DICT; }

// The node under `key`, which the list keeps; null and the reason in `outcome` when there is none.
plist_t FindKey(const List& list, const char* key, Lookup& outcome) {
  outcome = Lookup::kNoList;
  if (list == nullptr) return nullptr;
  outcome = Lookup::kNoKey;
  plist_t node = IsDictionary(list) ? plist_dict_get_item(list.get(), key) : nullptr;
  if (node != nullptr) outcome = Lookup::kOtherType;
  return node;
}

bool NumberOf(plist_t node, int32_t& value) {
  const plist_type type = plist_get_node_type(node);
  if (type == PLIST_UINT) {
    uint64_t integer = 0;
    plist_get_uint_val(node, &integer);
    value = static_cast<int32_t>(static_cast<uint32_t>(integer));
    return true;
  }
  if (type != PLIST_REAL) return false;
  double real = 0;
  plist_get_real_val(node, &real);
  if (std::isnan(real)) return false;
  using Limits = std::numeric_limits<int32_t>;
  value = static_cast<int32_t>(std::clamp<double>(real, Limits::min(), Limits::max()));
  return true;
}

}  // namespace

Lookup ReadPropertyNumber(const char* path, const char* key, int32_t& value) {
  const List list = ReadList(path);
  Lookup outcome{};
  plist_t node = FindKey(list, key, outcome);
  if (node != nullptr && NumberOf(node, value)) outcome = Lookup::kFound;
  return outcome;
}

Lookup ReadPropertyString(const char* path, const char* key, std::string& utf8) {
  const List list = ReadList(path);
  Lookup outcome{};
  plist_t node = FindKey(list, key, outcome);
  if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return outcome;
  char* text = nullptr;
  plist_get_string_val(node, &text);
  if (text == nullptr) return outcome;
  const Text owned(text);
  utf8 = text;
  return Lookup::kFound;
}

bool WritePropertyNumber(const char* path, const char* key, int32_t value) {
  const List list = ReadList(path);
  if (list == nullptr || !IsDictionary(list)) return false;
  // Integers are kept as 64 bits in two's complement; the list takes the new node over.
  plist_dict_set_item(list.get(), key, plist_new_uint(static_cast<uint64_t>(int64_t{value})));
  char* xml = nullptr;
  uint32_t xml_bytes = 0;
  plist_to_xml(list.get(), &xml, &xml_bytes);
  const Text owned(xml);
  if (xml != nullptr) ReplacePropertyFile(path, std::string(xml, xml_bytes));
  return true;
}

}  // namespace zr7700::platform
