// What CUPS starts a filter with.
#ifndef ZR7700_DISC_FILTER_ARGUMENTS_H_
#define ZR7700_DISC_FILTER_ARGUMENTS_H_

#include <cups/cups.h>

namespace zr7700 {

struct FilterArguments {
  int option_count = 0;
  cups_option_t* options = nullptr;  // lives until the process ends
  const char* file = nullptr;        // null: the document comes on standard input

  // How often a filter writes the document: as often as the job has copies (1 to 9999) when it is
  // the first filter, which is the one that gets a file; once otherwise, since the copies are in
  // the stream already.
  int copies = 1;
};

// For main(): answers --help (`about`, one line) and --version on standard output, or says on
// standard error how the program is used. Returns true when the process is to run a job, with
// `arguments` filled; otherwise it ends with `exit_status`. Main thread.
bool TakeArguments(int argc, char** argv, const char* about, FilterArguments& arguments,
                   int& exit_status);

// The descriptor of the document, or -1 with a sentence told to the person. Main thread.
int OpenDocument(const FilterArguments& arguments);

// What every filter of a job has in common: a reader that has gone is an error of the write and no
// signal; a cancel (SIGTERM) ends the process, but not before the next filter has heard of it too,
// which would take the end of its input for the end of the page. Main thread, first of all.
void PrepareFilterProcess();

}  // namespace zr7700

#endif  // ZR7700_DISC_FILTER_ARGUMENTS_H_
