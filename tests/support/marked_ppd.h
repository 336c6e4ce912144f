// A real PPD file with its defaults marked.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_TESTS_SUPPORT_MARKED_PPD_H_
#define ZR7700_TESTS_SUPPORT_MARKED_PPD_H_

#include <cups/ppd.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace zr7700::test {

class MarkedPpd {
 public:
  // Option and keyword. An option that comes several times offers all the keywords; the first is
  // its default.
  using Choices = std::vector<std::pair<std::string, std::string>>;

  // Writes, opens and marks a PPD with just these options; ends the process when CUPS refuses it.
  explicit MarkedPpd(const Choices& choices);
  ~MarkedPpd() { ppdClose(ppd_); }
  MarkedPpd(const MarkedPpd&) = delete;
  MarkedPpd& operator=(const MarkedPpd&) = delete;

  ppd_file_t* get() const { return ppd_; }

 private:
  TemporaryFolder folder_;
  ppd_file_t* ppd_;
};

}  // namespace zr7700::test

#endif  // ZR7700_TESTS_SUPPORT_MARKED_PPD_H_
