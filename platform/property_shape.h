// Whether bytes have the shape of a property list, told before a parser sees them.
//
// The parsers of the two platforms disagree on malformed lists, and each of them meets some
// that it does not survive: nesting deeper than the stack, a binary list whose offsets point
// nowhere. What passes here is parsed by both, and alike: only a binary list with an integer of 16
// bytes or a date out of reckoning may still be refused by one of them, whole.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_PROPERTY_SHAPE_H_
#define ZR7700_PLATFORM_PROPERTY_SHAPE_H_

#include <string>
#include <string_view>

namespace zr7700::platform {

// True when `bytes` is a sound property list in XML (UTF-8) or binary form: elements known, closed
// and nested at most 100 deep, every dictionary made of pairs, every number a number, every
// character and entity one that XML knows; or, in binary form, every object within the file and no
// container shared.
//
// Sound XML is settled on the way: a fixed declaration takes the place of the file's own ones, and
// leading zeros of integers move behind the digits as blanks, since one parser takes such a number
// for octal. Unsound bytes stay as they are but for such zeros. Any thread.
bool SettlePropertyList(std::string& bytes);

// True when `text` is UTF-8 in its shortest form without surrogates. Any thread.
bool IsUtf8(std::string_view text);

// The two halves of SettlePropertyList.
bool SettleXmlPropertyList(std::string& xml);
bool IsSoundBinaryPropertyList(std::string_view bytes);

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_PROPERTY_SHAPE_H_
