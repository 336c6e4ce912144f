// What a filter tells the person who prints, and CUPS, on standard error.
//
// Standard error is shared by all filters of a job, and the filter after ours leaves a line without
// an end there: every message begins with a line end and is written in one call, so that whatever
// stands before it cannot swallow it. Control characters in a sentence become "?", so that no text
// from outside becomes a line of its own. Any thread.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_USER_MESSAGE_H_
#define ZR7700_DISC_USER_MESSAGE_H_

#include <string_view>

namespace zr7700 {

// The first error of a job is what the person reads when it stops: one sentence that says what is
// wrong and what to do. At most 1,900 bytes of it are written; CUPS cuts longer lines. Where
// standard error is a pipe this returns when it has been read, or after a second: a scheduler that
// sees a filter die before it reads that filter's last words shows "Filter failed" instead of them.
void TellError(std::string_view sentence);

// Tells the error; returns false, for a caller that says so of a step that cannot be done.
bool Refuse(std::string_view sentence);

// Something that may come out otherwise than it was meant.
void TellWarning(std::string_view sentence);

// A page has gone on: CUPS adds `copies` discs to those that it counts.
void TellPage(unsigned page, unsigned copies);

}  // namespace zr7700

#endif  // ZR7700_DISC_USER_MESSAGE_H_
