// Long lines, long files and long arguments.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include "engine/ini_file.h"
#include "engine/job_variables.h"
#include "tests/support/job_test.h"
#include "tests/support/temporary_folder.h"

namespace zr7700 {
namespace {

using testing::ElementsAre;

class IniLimitsTest : public test::JobTest {
 protected:
  IniLimitsTest() { job_variables.files.engineIniPath = path_.c_str(); }

  void Given(const std::string& text) { folder_.WriteFile("engine.ini", text); }
  std::string Text() const { return test::ReadFile(path_); }

  // The call ends the process with one line in the log, which names limit and file, and one error
  // line on standard error; the file keeps its text.
  void ExpectFatal(const std::string& limit, const std::function<void()>& call) {
    const std::string before = Text();
    const bool was_there = std::filesystem::exists(path_);
    log_.Clear();
    EXPECT_EXIT(call(), testing::ExitedWithCode(1), "^ERROR: [^\n]*" + limit + "[^\n]*\n$");
    EXPECT_THAT(LogLines(),
                ElementsAre(testing::AllOf(testing::HasSubstr(limit), testing::HasSubstr(path_))));
    EXPECT_EQ(Text(), before);
    EXPECT_EQ(std::filesystem::exists(path_), was_there);
  }

  test::TemporaryFolder folder_;
  const std::string path_ = folder_.PathOf("engine.ini");
};

std::string Repeated(size_t bytes, char c = 'x') { return std::string(bytes, c); }

// Lines of 100 bytes that hold no key, `bytes` in all, the last one shorter.
std::string Filler(size_t bytes) {
  std::string text;
  while (text.size() + 100 <= bytes) text += Repeated(99) + "\n";
  return text + Repeated(bytes - text.size());
}

TEST_F(IniLimitsTest, LineOf1023BytesWithItsEndIsOneLine) {
  Given("[A]\n" + Repeated(1015) + "Color=1\n[B]\n");
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_EQ(Text(), "[A]\nColor=2 \n[B]\n");
}

TEST_F(IniLimitsTest, LongerLineIsTreatedInPieces) {
  // The key ends with the first piece; the second piece, "1\n", stays.
  Given("[A]\n" + Repeated(1017) + "Color=1\n[B]\n");
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_EQ(Text(), "[A]\nColor=2 \n1\n[B]\n");
}

TEST_F(IniLimitsTest, KeyThatStraddlesTwoPiecesIsNotSeen) {
  const std::string text = "[A]\n" + Repeated(1020) + "Color=1\n";
  Given(text);
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_EQ(Text(), text + "\nColor=2 \n");
}

TEST_F(IniLimitsTest, PieceThatBeginsWithABracketIsAHeader) {
  Given("[A]\n" + Repeated(1023) + "[B]\nX=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_EQ(Text(), "[A]\n" + Repeated(1023) + "Color=2 \n[B]\nX=1\n");
}

TEST_F(IniLimitsTest, PieceOfALongLineIsRemovedAlone) {
  Given("[A]\n" + Repeated(1017) + "Color=" + Repeated(3) + "\n");
  EXPECT_TRUE(RemoveFerroIniKey("[A]", "Color="));
  EXPECT_EQ(Text(), "[A]\nxxx\n");
}

TEST_F(IniLimitsTest, NewTextMayReach7999Bytes) {
  Given(Filler(7999 - 13));
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_EQ(Text(), Filler(7999 - 13) + "[A]\nColor=2 \n");
}

TEST_F(IniLimitsTest, NewTextOf8000BytesEndsTheProcess) {
  Given(Filler(8000 - 13));
  ExpectFatal("8000", [] { WriteFerroIniFile("[A]", "Color=", "2"); });
}

TEST_F(IniLimitsTest, FarTooLongFileEndsTheProcess) {
  Given(Filler(3'000'000));
  ExpectFatal("8000", [] { WriteFerroIniFile("[A]", "Color=", "2"); });
}

TEST_F(IniLimitsTest, RemovingHoldsTheNewTextToTheLimit) {
  Given(Filler(7995) + "\n[A]");  // 8000 bytes less one
  EXPECT_TRUE(RemoveFerroIniKey("[A]", "Color="));
  Given(Filler(7995) + "\n[A]\n");
  ExpectFatal("8000", [] { RemoveFerroIniKey("[A]", "Color="); });
}

TEST_F(IniLimitsTest, LongFileThatRemovingMakesShortEnoughIsFine) {
  Given(Filler(7900) + "\n[A]\nColor=" + Repeated(500) + "\n");
  EXPECT_TRUE(RemoveFerroIniKey("[A]", "Color="));
  EXPECT_EQ(Text(), Filler(7900) + "\n[A]\n");
}

TEST_F(IniLimitsTest, KeyLineOf500BytesEndsTheProcess) {
  Given("[A]\nColor=1\n");
  const std::string value = Repeated(500 - 8 - 1);  // with "Color=" and " \n" 499 bytes
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", value.c_str()));
  EXPECT_EQ(Text(), "[A]\nColor=" + value + " \n");
  ExpectFatal("500", [&] { WriteFerroIniFile("[A]", "Color=", (value + "x").c_str()); });
}

TEST_F(IniLimitsTest, AppendedKeyLineCountsItsLeadingLineEnd) {
  Given("[A]\n");
  const std::string value = Repeated(500 - 9 - 1);
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", value.c_str()));
  EXPECT_EQ(Text(), "[A]\n\nColor=" + value + " \n");
  Given("[A]\n");
  ExpectFatal("500", [&] { WriteFerroIniFile("[A]", "Color=", (value + "x").c_str()); });
}

TEST_F(IniLimitsTest, TooLongKeyLineCreatesNoFile) {
  const auto write = [] { WriteFerroIniFile("[A]", "Color=", Repeated(600).c_str()); };
  EXPECT_EXIT(write(), testing::ExitedWithCode(1), "^ERROR: [^\n]*500[^\n]*\n$");
  EXPECT_THAT(LogLines(), ElementsAre("ferro ini file not present trying to create",
                                      testing::HasSubstr(path_)));
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(IniLimitsTest, HeaderLineOf100BytesEndsTheProcess) {
  Given("[" + Repeated(97) + "\nColor=1\n");  // 99 bytes with its end
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_TRUE(RemoveFerroIniKey("[A]", "Color="));
  Given("[" + Repeated(98) + "\nColor=1\n");
  ExpectFatal("100", [] { WriteFerroIniFile("[A]", "Color=", "2"); });
  ExpectFatal("100", [] { RemoveFerroIniKey("[A]", "Color="); });
}

TEST_F(IniLimitsTest, OtherLinesMayBeLongerThan100Bytes) {
  Given(Repeated(500) + "\n[A]\nColor=1\n");
  EXPECT_TRUE(WriteFerroIniFile("[A]", "Color=", "2"));
  EXPECT_EQ(Text(), Repeated(500) + "\n[A]\nColor=2 \n");
}

}  // namespace
}  // namespace zr7700
