// The one kind of message that goes to the user in their own language.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DRIVER_USER_MESSAGE_H_
#define ZR7700_DRIVER_USER_MESSAGE_H_

namespace zr7700 {

// Makes standard error unbuffered and takes the message language from the environment:
// "APPLE_LANGUAGE", else "LANG", else the language stays as it is. Main thread, before other
// threads exist.
void SetUpMessageLanguage();

// Writes "prefix: text\n" to standard error, the text being `format` (from a message catalogue that
// keeps the conversions of its key) filled with the arguments. A text over 2,047 bytes is dropped.
// Main thread.
void WriteUserMessage(const char* prefix, const char* format, ...);

}  // namespace zr7700

#endif  // ZR7700_DRIVER_USER_MESSAGE_H_
