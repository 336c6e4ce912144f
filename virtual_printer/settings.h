// How one virtual printer is set up, whichever way it is started.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_VIRTUAL_PRINTER_SETTINGS_H_
#define ZR7700_VIRTUAL_PRINTER_SETTINGS_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace zr7700::printer {

struct Settings {
  std::string out;            // folder for the pictures, which must be there
  std::string name = "disc";  // what the names of the pictures begin with
  std::string script;         // file with the fault script; empty for none
  std::string control;        // Unix-domain socket to make; empty for none
  std::string report;         // file for the report; empty for none
  uint8_t cartridge = 'Q';
  uint32_t discs = 25;       // in the bin at the start
  uint32_t rate_per_s = 20;  // status records a second
  uint32_t diameter_mm = 0;  // of the discs: 80 or 120; 0: what the page asks for
  double pace_s = 0;         // a disc takes at least this long
};

// Sets what `name` (out, name, script, control, report, cartridge, discs, rate, diameter, pace)
// stands for from its text. False, with one sentence in `error`, when there is no such name or the
// text is wrong. Any thread.
bool SetByName(std::string_view name, std::string_view text, Settings& settings,
               std::string& error);

}  // namespace zr7700::printer

#endif  // ZR7700_VIRTUAL_PRINTER_SETTINGS_H_
