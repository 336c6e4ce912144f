// Replacing a file's content as a whole.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_REPLACED_FILE_H_
#define ZR7700_BASE_REPLACED_FILE_H_

#include <string_view>

namespace zr7700 {

// Replaces the content of the existing file at `path` by way of a new file beside it and a rename,
// so that a reader sees the old content or the new one. The mode stays, the owner too where the
// process may set it; a symbolic link stays, and its target is replaced. False, with the old file
// untouched and the new one removed, on failure. Any thread.
bool ReplaceFile(const char* path, std::string_view bytes);

}  // namespace zr7700

#endif  // ZR7700_BASE_REPLACED_FILE_H_
