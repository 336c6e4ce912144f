// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/support/marked_ppd.h"

#include <cstdio>
#include <cstdlib>
#include <map>

namespace zr7700::test {
namespace {

std::string PpdText(const MarkedPpd::Choices& choices) {
  std::map<std::string, std::vector<std::string>> keywords_of;
  for (const auto& [option, keyword] : choices) keywords_of[option].push_back(keyword);
  std::string text =
      "*PPD-Adobe: \"4.3\"\n*FormatVersion: \"4.3\"\n*FileVersion: \"1.0\"\n"
      "*LanguageVersion: English\n*LanguageEncoding: ISOLatin1\n*PCFileName: \"TEST.PPD\"\n"
      "*Manufacturer: \"Tessary\"\n*ModelName: \"Test\"\n*NickName: \"Test\"\n"
      "*ShortNickName: \"Test\"\n*Product: \"(Test)\"\n*PSVersion: \"(3010.000) 0\"\n";
  for (const auto& [option, keywords] : keywords_of) {
    text += "*OpenUI *" + option + ": PickOne\n*Default" + option + ": " + keywords.front() + "\n";
    for (const std::string& keyword : keywords) {
      text += "*" + option + " " + keyword + "/" + keyword + ": \"\"\n";
    }
    text += "*CloseUI: *" + option + "\n";
  }
  return text;
}

}  // namespace

MarkedPpd::MarkedPpd(const Choices& choices)
    : ppd_(ppdOpenFile(folder_.WriteFile("test.ppd", PpdText(choices)).c_str())) {
  if (ppd_ == nullptr) {
    int line = 0;
    fprintf(stderr, "MarkedPpd: %s\n", ppdErrorString(ppdLastError(&line)));
    abort();
  }
  ppdMarkDefaults(ppd_);
}

}  // namespace zr7700::test
