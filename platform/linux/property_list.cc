// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <plist/plist.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "platform/platform.h"
#include "platform/property_guard.h"

namespace zr7700::platform {
namespace {

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

bool IsDictionary(plist_t root) { return plist_get_node_type(root) == PLIST_DICT; }

// The node under `key`, which the list keeps; null when there is none.
plist_t Find(plist_t root, const char* key) {
  return IsDictionary(root) ? plist_dict_get_item(root, key) : nullptr;
}

}  // namespace

std::optional<PropertyList> PropertyList::Parse(std::string_view bytes) {
  const std::optional<std::string> list = GuardedPropertyList(bytes);
  if (!list) return std::nullopt;
  plist_t root = nullptr;
  plist_from_memory(list->data(), static_cast<uint32_t>(list->size()), &root);
  if (root == nullptr) return std::nullopt;
  return PropertyList(root);
}

void PropertyList::Release::operator()(void* root) const { plist_free(root); }

Lookup PropertyList::Number(const char* key, int32_t& value) const {
  plist_t node = Find(root_.get(), key);
  if (node == nullptr) return Lookup::kNoKey;
  return NumberOf(node, value) ? Lookup::kFound : Lookup::kOtherType;
}

// Not by plist_get_string_val, which ends the process at a text with a NUL in it.
Lookup PropertyList::String(const char* key, std::string& utf8) const {
  plist_t node = Find(root_.get(), key);
  if (node == nullptr) return Lookup::kNoKey;
  const char* const text = plist_get_string_ptr(node, nullptr);
  if (text == nullptr) return Lookup::kOtherType;
  utf8 = text;
  return Lookup::kFound;
}

bool PropertyList::SetNumber(const char* key, int32_t value) {
  if (!IsDictionary(root_.get())) return false;
  // Integers are kept as 64 bits in two's complement; the list takes the new node over.
  plist_dict_set_item(root_.get(), key, plist_new_uint(static_cast<uint64_t>(int64_t{value})));
  return true;
}

std::string PropertyList::Xml() const {
  char* xml = nullptr;
  uint32_t xml_bytes = 0;
  plist_to_xml(root_.get(), &xml, &xml_bytes);
  std::string text = xml != nullptr ? std::string(xml, xml_bytes) : std::string();
  free(xml);
  return text;
}

}  // namespace zr7700::platform
