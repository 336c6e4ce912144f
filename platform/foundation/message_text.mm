// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <clocale>
#include <string_view>

#include "platform/foundation/autorelease.h"
#include "platform/platform.h"

namespace zr7700::platform {
namespace {

// The domain of the defaults that decides the language, and the key in it. Both are volatile:
// nothing reaches the disk.
#if defined(GNUSTEP)
NSString* LanguageDomain() { return @"GSPrimaryDomain"; }
NSString* LanguageKey() { return @"NSLanguages"; }
#else
NSString* LanguageDomain() { return NSArgumentDomain; }
NSString* LanguageKey() { return @"AppleLanguages"; }
#endif

void AddLanguage(NSMutableArray* languages, std::string_view code) {
  NSString* text = [NSString stringWithUTF8String:std::string(code).c_str()];
  if (text != nil && [text length] > 0) [languages addObject:text];
}

// "de_DE.UTF-8" asks for "de_DE", then "de". The plain locales, an empty name and one with a path
// in it, which would lead out of the bundle, ask for English.
NSArray* LanguagesFor(std::string_view locale) {
  NSMutableArray* languages = [NSMutableArray arrayWithCapacity:2];
  std::string_view code = locale.substr(0, locale.find_first_of(".@"));
  if (code == "C" || code == "POSIX" || code.find('/') != std::string_view::npos) code = {};
  AddLanguage(languages, code);
  const size_t region = code.find_first_of("_-");
  if (region != std::string_view::npos) AddLanguage(languages, code.substr(0, region));
  if ([languages count] == 0) [languages addObject:@"en"];
  return languages;
}

void PreferLanguages(NSArray* languages) {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  NSMutableDictionary* domain = [NSMutableDictionary
      dictionaryWithDictionary:[defaults volatileDomainForName:LanguageDomain()]];
  [domain setObject:languages forKey:LanguageKey()];
  [defaults removeVolatileDomainForName:LanguageDomain()];
  [defaults setVolatileDomain:domain forName:LanguageDomain()];
}

std::optional<std::string> LookUp(const char* key) {
  NSString* name = [NSString stringWithUTF8String:key];
  if (name == nil) return key;
  NSString* text = [[NSBundle mainBundle] localizedStringForKey:name value:name table:nil];
  const char* utf8 = [text UTF8String];
  if (utf8 == nullptr) return std::nullopt;
  return utf8;
}

}  // namespace

void UseMessageCatalogue(const char*, const char*) {}

void SetMessageLanguage(const char* language) {
  WithPool([language] { PreferLanguages(LanguagesFor(language)); });
  setlocale(LC_MESSAGES, "");
}

std::optional<std::string> LocalizedText(const char* key) {
  if (key[0] == '\0') return key;
  const int kept_errno = errno;
  std::optional<std::string> text = WithPool([key] { return LookUp(key); });
  errno = kept_errno;
  return text;
}

}  // namespace zr7700::platform
