// What a property list goes through before a parser sees it.
//
// Neither platform's parser survives every list: nesting deeper than the stack ends the process, a
// binary list may unfold to more than any memory, and some work grows with a square. Such lists are
// refused here; whatever else there may be wrong with a list is the parser's to say.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_PROPERTY_GUARD_H_
#define ZR7700_PLATFORM_PROPERTY_GUARD_H_

#include <optional>
#include <string>
#include <string_view>

namespace zr7700::platform {

inline constexpr size_t kMostNested = 100;         // elements or objects, one inside the other
inline constexpr size_t kMostKeys = 32'000;        // in a list
inline constexpr size_t kMostObjects = 1'000'000;  // that a binary list unfolds to

// The list to be parsed in place of `bytes`, in XML or binary form; nothing when no parser may see
// it. A binary list stays as it is. Of XML goes what carries no value (comments, processing
// instructions, the document type, attributes), and four things are written as every parser reads
// them: an empty key as two tags, integers and character references without leading zeros, CDATA
// sections as text. Any thread.
std::optional<std::string> GuardedPropertyList(std::string_view bytes);

// The two halves of GuardedPropertyList.
std::optional<std::string> GuardedXml(std::string_view xml);
bool IsBoundedBinary(std::string_view bytes);

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_PROPERTY_GUARD_H_
