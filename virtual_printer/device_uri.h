// The backend's device URI: zr7700virtual:/path/to/spool?cartridge=Q&discs=5
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_DEVICE_URI_H_
#define ZR7700_VIRTUAL_PRINTER_DEVICE_URI_H_

#include <optional>
#include <string>
#include <string_view>

#include "virtual_printer/settings.h"

namespace zr7700::printer {

inline constexpr std::string_view kUriScheme = "zr7700virtual";

// The settings that `uri` asks for: the path is the folder for the pictures, the parameters are the
// names that SetByName knows. Percent escapes are decoded in both. Nothing, with one sentence in
// `error`, when the URI is wrong. Any thread.
std::optional<Settings> ParseDeviceUri(std::string_view uri, std::string& error);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_DEVICE_URI_H_
