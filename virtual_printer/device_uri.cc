// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "virtual_printer/device_uri.h"

#include <charconv>

namespace zr7700::printer {
namespace {

// Decodes "%XX"; nothing for a broken escape and for an escaped NUL.
std::optional<std::string> Decode(std::string_view text) {
  std::string decoded;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded.push_back(text[i]);
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned value = 0;
    const auto [stop, problem] = std::from_chars(digits.begin(), digits.end(), value, 16);
    if (problem != std::errc() || digits.size() != 2 || stop != digits.end() || value == 0) {
      return std::nullopt;
    }
    decoded.push_back(static_cast<char>(value));
    i += 2;
  }
  return decoded;
}

// Takes the text up to `mark` (and the mark) off the front of `rest`.
std::string_view TakeUpTo(char mark, std::string_view& rest) {
  const size_t end = std::min(rest.find(mark), rest.size());
  const std::string_view front = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return front;
}

bool SetParameter(std::string_view parameter, Settings& settings, std::string& error) {
  const std::string_view name = TakeUpTo('=', parameter);
  if (name == "out") {
    error = "The folder is its path, not a parameter.";
    return false;
  }
  const auto value = Decode(parameter);
  if (value) return SetByName(name, *value, settings, error);
  error = "The value of \"" + std::string(name) + "\" has a broken percent escape.";
  return false;
}

// The folder: an absolute path, after "zr7700virtual:" or "zr7700virtual://".
bool SetFolder(std::string_view path, Settings& settings, std::string& error) {
  if (path.starts_with("//")) path.remove_prefix(2);
  const auto folder = Decode(path);
  if (folder && folder->starts_with('/')) {
    settings.out = *folder;
    return true;
  }
  error = "It must name a folder, as in zr7700virtual:/path/to/folder?cartridge=Q&discs=5.";
  return false;
}

bool Parse(std::string_view uri, Settings& settings, std::string& error) {
  if (TakeUpTo(':', uri) != kUriScheme) {
    error = "It must begin with \"zr7700virtual:\".";
    return false;
  }
  if (!SetFolder(TakeUpTo('?', uri), settings, error)) return false;
  while (!uri.empty()) {
    if (!SetParameter(TakeUpTo('&', uri), settings, error)) return false;
  }
  return true;
}

}  // namespace

std::optional<Settings> ParseDeviceUri(std::string_view uri, std::string& error) {
  Settings settings;
  if (Parse(uri, settings, error)) return settings;
  error = "The device URI is wrong. " + error;
  return std::nullopt;
}

}  // namespace zr7700::printer
