// Writing a file's content as a whole.
//
// Other programs see the old content or the new one, never an empty file or a half: the bytes go
// into a new file beside the old one ("name.new0" to "name.new7"), which is then renamed. A killed
// process leaves that file behind; a later call removes it once it is a minute old.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_REPLACED_FILE_H_
#define ZR7700_BASE_REPLACED_FILE_H_

#include <string_view>

namespace zr7700 {

// Replaces the content of the existing file at `path`, which the process must be able to open for
// writing. A symbolic link that root or the process's own user made stays, and what it leads to is
// replaced; any other is refused. Owner, group and mode stay. Where the folder does not allow that,
// or the file has a second name, the content is written in place, and only a kill in that very
// moment can leave a part of it. False, with the old content (but for a failure in place), when
// something fails. Any thread.
bool ReplaceFile(const char* path, std::string_view bytes);

// Makes the file at `path`, with the rights that the process's file mode mask leaves it. False when
// there is something already, or something fails; then there is no new file. Any thread.
bool CreateFile(const char* path, std::string_view bytes);

}  // namespace zr7700

#endif  // ZR7700_BASE_REPLACED_FILE_H_
