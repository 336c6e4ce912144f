// The diagnostic log: one plain-text file shared by every job, one line a call.
//
// A line is the date, a blank, the message, "\r\n". Nothing stays open between calls, so that an
// administrator can move or empty the file at any time.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_LOG_H_
#define ZR7700_BASE_LOG_H_

namespace zr7700 {

// The levels in use. A message is written when its level is at most the threshold.
enum LogLevel : int {
  kLogDetail = 1,     // ordinary progress
  kLogClipping = 2,   // errors of the clip tables
  kLogMilestone = 3,  // the job's milestones and problems
  kLogChannel = 4,    // the back channel
  kLogTrace = 5,      // the finest traces
};

// Sets the file and the highest level that is written, makes an existing file readable by everybody
// and lets LogMessage write. A path over 255 bytes leaves the log closed. Main thread, once, before
// any other thread exists.
void LogOpen(const char* path, int threshold);

// Gives group and others the right to read the file at `path`. What LogMessage would not write to
// is left alone, and so is a file that can be opened neither for writing nor for reading. Main
// thread.
void LogFixPermissions(const char* path);

// Writes one line; does nothing before LogOpen. A message is cut after 899 bytes, the line end
// never is. A file of 3,000,000 bytes or more is started afresh with this line. A line that cannot
// be written is lost without a word. As the folder may be writable by others, so is one whose file
// is no regular file, a symbolic link that neither root nor the process's own user made, or a file
// of another user that has a second name. Needs no heap. Keeps errno. Any thread, but no signal
// handler.
void LogMessage(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace zr7700

#endif  // ZR7700_BASE_LOG_H_
