// What CUPS starts a filter with.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_DISC_FILTER_ARGUMENTS_H_
#define ZR7700_DISC_FILTER_ARGUMENTS_H_

#include <cups/cups.h>

namespace zr7700 {

struct FilterArguments {
  int option_count = 0;
  cups_option_t* options = nullptr;  // lives as long as the job
  const char* file = nullptr;        // null: the document comes on standard input
  char** words = nullptr;            // argv itself

  // How often a filter writes the document: as often as the job has copies (1 to 9999) when it is
  // the first filter, which is the one that gets a file; once otherwise, since the copies are in
  // the stream already.
  int copies = 1;
};

// The main() of a filter: answers --help (with `about`, a sentence) and --version on standard
// output, says on standard error how the program is used when the arguments are not those of a
// filter, and runs the job otherwise. Returns the exit status. What all filters of a job have in
// common: a reader that has gone is an error of the write and no signal; a cancel (SIGTERM) ends
// the process, but not before the next filter has heard of it too, which would take the end of its
// input for the end of the page. Main thread.
int RunFilter(int argc, char** argv, const char* program, const char* about,
              int (*job)(const FilterArguments& arguments));

// The descriptor of the document, or -1 with a sentence told to the person. Main thread.
int OpenDocument(const FilterArguments& arguments);

}  // namespace zr7700

#endif  // ZR7700_DISC_FILTER_ARGUMENTS_H_
