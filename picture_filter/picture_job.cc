// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "picture_filter/picture_job.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>

#include "disc/page_writer.h"
#include "disc/target_page.h"
#include "disc/user_message.h"
#include "picture_filter/document.h"
#include "picture_filter/picture_file.h"
#include "picture_filter/picture_options.h"
#include "picture_filter/picture_page.h"

namespace zr7700 {
namespace {

class PictureJob {
 public:
  PictureJob(const FilterArguments& arguments, const TargetPage& target)
      : options_(ReadPictureOptions(arguments.option_count, arguments.options)),
        target_(target),
        writer_(STDOUT_FILENO) {}

  // All pictures of the document, once. False, with a sentence told, when one cannot go on.
  bool PrintDocument(FILE* file) {
    std::string error;
    const auto reader = OpenPictureFile(file, error);
    if (reader == nullptr) return Refuse(error);
    pictures_ = 0;
    PictureReader::Next next;
    while ((next = reader->NextPicture()) == PictureReader::Next::kPicture) {
      if (!PrintPicture(*reader)) return false;
    }
    return next == PictureReader::Next::kEnd || Refuse(reader->error());
  }

  // The document again. The page of a single picture is still there.
  bool PrintAgain(FILE* file) { return pictures_ == 1 ? HandOn() : PrintDocument(file); }

 private:
  bool PrintPicture(PictureReader& reader) {
    const PictureLayout layout = LayOutPicture(reader.picture(), options_, target_);
    std::string error;
    page_ = DrawPicture(reader, layout, error);
    if (!page_) return Refuse(error);
    WarnOnce(blur_warned_, BlurWarning(layout, target_));
    if (reader.lacks_profile()) {
      WarnOnce(profile_warned_,
               "The picture's colour profile cannot be used; its colours may differ.");
    }
    ++pictures_;
    return HandOn();
  }

  static void WarnOnce(bool& warned, const std::string& sentence) {
    if (warned || sentence.empty()) return;
    warned = true;
    TellWarning(sentence);
  }

  bool HandOn() {
    return writer_.Write(target_.header, *page_) ||
           Refuse(std::string("The next filter has stopped taking the page (") +
                  std::strerror(errno) + "); print the job again.");
  }

  const PictureOptions options_;
  const TargetPage& target_;
  PageWriter writer_;
  std::optional<Canvas> page_;  // the newest
  unsigned pictures_ = 0;
  bool blur_warned_ = false;
  bool profile_warned_ = false;
};

}  // namespace

int RunPictureJob(const FilterArguments& arguments) {
  std::string error;
  const auto target = ReadTargetPage(arguments.option_count, arguments.options, error);
  if (!target) {
    TellError(error);
    return 1;
  }
  const DocumentFile file = OpenDocumentFile(arguments);
  if (file == nullptr) return 1;
  PictureJob job(arguments, *target);
  bool is_printed = job.PrintDocument(file.get());
  for (int copy = 1; is_printed && copy < arguments.copies; ++copy) {
    is_printed = job.PrintAgain(file.get());
  }
  return is_printed ? 0 : 1;
}

}  // namespace zr7700
