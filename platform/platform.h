// The platform seam: the few things that Linux and macOS do differently.
//
// One interface, two implementations side by side, one of them chosen at build time:
// linux/ (libplist, the C library's message catalogues) and foundation/ (Objective-C++ on
// Foundation). Nothing here knows anything of the filter.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_PLATFORM_PLATFORM_H_
#define ZR7700_PLATFORM_PLATFORM_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zr7700::platform {

// What looking a key up came to.
enum class Lookup {
  kNoKey,      // the root is no dictionary, or lacks the key
  kOtherType,  // the key is there with a value of another type than asked for
  kFound,
};

inline constexpr size_t kMostPropertyListBytes = size_t{16} << 20;

// A parsed property list. Main thread.
class PropertyList {
 public:
  // Parses a list in XML or binary form. Nothing when the parser refuses it, or would not survive
  // it: more than kMostPropertyListBytes, nesting beyond 100, more than 32,000 keys, a binary list
  // that points nowhere or unfolds without measure, a text of very many entities.
  static std::optional<PropertyList> Parse(std::string_view bytes);

  // Looks `key` (UTF-8) up in the root dictionary and sets `value` on kFound only. Integers keep
  // their low 32 bits; reals are cut toward zero and held to the 32-bit range. A boolean is no
  // number, and neither is a real that is not a number.
  Lookup Number(const char* key, int32_t& value) const;

  // The same for a text, up to its first NUL.
  Lookup String(const char* key, std::string& utf8) const;

  // Puts `value` under `key`. False, with nothing changed, when the root is no dictionary.
  bool SetNumber(const char* key, int32_t value);

  // The list as XML; empty when it cannot be written so.
  std::string Xml() const;

 private:
  struct Release {
    void operator()(void* root) const;
  };

  explicit PropertyList(void* root) : root_(root) {}

  std::unique_ptr<void, Release> root_;  // of the platform's own kind
};

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

inline constexpr size_t kDateTextBytes = 64;

// Writes the present date and time as "YYYY-MM-DD HH:MM:SS +ZZZZ", local time with its offset from
// UTC, and a NUL; the beginning of 1970 for a moment whose year the C library cannot hold. Needs no
// heap, but for the time zone when that has not been read yet (tzset). Any thread.
void DateText(char (&text)[kDateTextBytes]);

// Seconds on a clock that never jumps and is above 0; only differences mean anything. Any thread.
double Now();

}  // namespace zr7700::platform

#endif  // ZR7700_PLATFORM_PLATFORM_H_
