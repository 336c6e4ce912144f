// A line editor for the engine's ini file: sets one key, or removes one.
//
// Plain lines ended by "\n". A line that begins with "[" is a section header; a key argument
// carries its "=", and every line written here ends in a blank before the line end ("Color=2 \n").
// Both functions take the file's name from the job variables' engineIniPath at every call. A line
// of more than 1,023 bytes is handled in pieces of 1,023, each like a line. A file that would reach
// 8,000 bytes, a key line that would reach 500, or a section header that reaches 100 ends the
// process with status 1, a log line and an "ERROR: " line on standard error; the file is untouched
// then. Anything but a regular file cannot be opened, and neither can a symbolic link, unless root
// or the process's own user made it. Other programs see the old text or the new one
// (base/replaced_file.h); where reading or writing fails the old one stays. Main thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_ENGINE_INI_FILE_H_
#define ZR7700_ENGINE_INI_FILE_H_

namespace zr7700 {

// Sets `key` to `value`: every line that contains the key anywhere, in whatever section, is
// replaced; where there is none the line goes to the end of `section`, which is added at the end of
// the file when it is missing, as is the file itself. A file in which that changes nothing is not
// written. False, logged, when the file could not be read or written; a file that is there, and may
// be written but not read, is begun anew.
bool WriteFerroIniFile(const char* section, const char* key, const char* value);

// Removes every line that contains `key` inside `section` (and only there). False, logged, when the
// file could not be read or written; without such a line it is left alone.
bool RemoveFerroIniKey(const char* section, const char* key);

}  // namespace zr7700

#endif  // ZR7700_ENGINE_INI_FILE_H_
