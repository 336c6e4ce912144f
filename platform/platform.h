// The platform seam: the few things that Linux and macOS do differently.
//
// One interface, two implementations side by side, one of them chosen at build time:
// linux/ (libplist, the C library's message catalogues) and foundation/ (Objective-C++ on
// Foundation). Nothing here knows anything of the filter.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_PLATFORM_H_
#define ZR7700_PLATFORM_PLATFORM_H_

#include <cstdint>
#include <optional>
#include <string>

namespace zr7700::platform {

// What looking a key up in a property-list file came to.
enum class Lookup {
  kNoList,     // the file could not be read or is no property list
  kNoKey,      // the root is no dictionary, or lacks the key
  kOtherType,  // the key is there with a value of another type than asked for
  kFound,
};

// Looks `key` (UTF-8) up in the property list at `path` and, on kFound only, sets `value`.
//
// Integers keep their low 32 bits; reals are cut toward zero and held to the 32-bit range. A
// boolean is no number, and neither is a real that is not a number. The file is read anew at every
// call. It must be a regular file of at most 256 KiB: anything else, a FIFO say, counts as kNoList
// and never blocks. So does a list with any fault in it: a number that is none, an element left
// open, nesting beyond 100. Main thread.
Lookup ReadPropertyNumber(const char* path, const char* key, int32_t& value);

// The same for a string value; `utf8` is set on kFound only. Main thread.
Lookup ReadPropertyString(const char* path, const char* key, std::string& utf8);

// Puts `value` under `key` in the root dictionary of the list at `path` and writes the list back as
// XML; the file's old content stays whole if the writing fails half-way. False when the file could
// not be read, is no property list, or has a root that is no dictionary; the success of the
// write-back itself is not reported. Main thread.
bool WritePropertyNumber(const char* path, const char* key, int32_t value);

// Says where LocalizedText finds its translations: message catalogues named `domain` under
// `directory`. A system that keeps translations in the program's own bundle ignores it. Both
// strings must stay valid. Main thread, once, before LocalizedText.
void UseMessageCatalogue(const char* domain, const char* directory);

// Makes `language` (a language code such as "de", or a locale name such as "de_DE.UTF-8") the
// language of the texts that LocalizedText returns, for this process only, whether or not the
// system has a locale of that language, and lets the environment decide the C library's message
// locale as far as that is compatible with it. English for "C", "POSIX", an empty name and one with
// a '/'. Main thread, before other threads start and, to be sure of an effect, before the first
// LocalizedText: a bundle keeps to the language that it was first asked in.
void SetMessageLanguage(const char* language);

// The text in the message language for `key`, which is itself the English text; the key where no
// translation exists. Does not change errno. Nothing only when the system is out of memory.
// Main thread.
std::optional<std::string> LocalizedText(const char* key);

// The present date and time as "YYYY-MM-DD HH:MM:SS +ZZZZ", local time with its offset from UTC.
// Any thread.
std::string DateText();

// Seconds on a clock that never jumps and is above 0; only differences mean anything. Any thread.
double Now();

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_PLATFORM_H_
