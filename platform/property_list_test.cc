// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>

#include "platform/platform.h"
#include "platform/property_file.h"

namespace zr7700::platform {
namespace {

namespace fs = std::filesystem;

constexpr int32_t kUntouched = 77;
constexpr char kHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// The superuser may read and write everything: while this lives the process is an ordinary user.
class OrdinaryUser {
 public:
  OrdinaryUser() : was_root_(geteuid() == 0) {
    if (was_root_) {
      EXPECT_EQ(seteuid(65534), 0);
    }
  }
  ~OrdinaryUser() {
    if (was_root_) {
      EXPECT_EQ(seteuid(0), 0);
    }
  }

 private:
  const bool was_root_;
};

// {"FeedAdjust": -1800, "Name": "Disc"} in binary form, made by hand.
std::string BinaryList() {
  std::string list = "bplist00";
  list += std::string("\xd2\x01\x02\x03\x04", 5);  // at 8
  list +=
      "\x5a"
      "FeedAdjust";  // at 13
  list +=
      "\x54"
      "Name";                                                      // at 24
  list += std::string("\x13\xff\xff\xff\xff\xff\xff\xf8\xf8", 9);  // at 29: -1800
  list +=
      "\x54"
      "Disc";                                      // at 38
  list += std::string("\x08\x0d\x18\x1d\x26", 5);  // at 43: the offsets
  list += std::string(6, '\0') + "\x01\x01" + std::string("\0\0\0\0\0\0\0\5", 8);
  list += std::string(8, '\0') + std::string("\0\0\0\0\0\0\0\x2b", 8);
  return list;
}

class PropertyListTest : public testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/property_list_test.XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    folder_ = pattern;
    fs::permissions(folder_, fs::perms(0755));  // for the ordinary user below
    path_ = folder_ + "/settings.plist";
  }
  void TearDown() override { fs::remove_all(folder_); }

  void Put(const std::string& bytes) { std::ofstream(path_, std::ios::binary) << bytes; }
  void PutList(const std::string& body) {
    Put(kHead + ("<plist version=\"1.0\">" + body) + "</plist>\n");
  }
  void PutValue(const std::string& value) {
    PutList("<dict><key>Other</key><integer>1</integer><key>k</key>" + value + "</dict>");
  }
  std::string Content() const {
    std::ifstream file(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  Lookup Number(const char* key = "k") {
    value_ = kUntouched;
    return ReadPropertyNumber(path_.c_str(), key, value_);
  }
  Lookup String(const char* key = "k") {
    text_ = "untouched";
    return ReadPropertyString(path_.c_str(), key, text_);
  }
  void ExpectNoList() {
    EXPECT_EQ(Number(), Lookup::kNoList);
    EXPECT_EQ(value_, kUntouched);
    EXPECT_EQ(String(), Lookup::kNoList);
    EXPECT_EQ(text_, "untouched");
    EXPECT_FALSE(WritePropertyNumber(path_.c_str(), "k", 1));
  }
  size_t FilesInFolder() const {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  std::string folder_;
  std::string path_;
  int32_t value_ = 0;
  std::string text_;
};

struct NumberCase {
  const char* xml;
  int32_t value;
};

TEST_F(PropertyListTest, ReadsNumbers) {
  constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
  constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
  const NumberCase cases[] = {
      {"<integer>0</integer>", 0},
      {"<integer>-1800</integer>", -1800},
      {"<integer>2147483647</integer>", kMax},
      {"<integer>-2147483648</integer>", kMin},
      {"<integer> +12 </integer>", 12},
      {"<integer>-0190</integer>", -190},              // base 10, whatever the leading zero
      {"<integer>5000000000</integer>", 705032704},    // less 2^32
      {"<integer>-5000000000</integer>", -705032704},  // plus 2^32
      {"<integer>2147483648</integer>", kMin},
      {"<integer>4294967295</integer>", -1},
      {"<integer>9223372036854775807</integer>", -1},
      {"<integer>-9223372036854775808</integer>", 0},
      {"<integer>18446744073709551615</integer>", -1},
      {"<real>11.9</real>", 11},
      {"<real>-1.9</real>", -1},
      {"<real>2</real>", 2},
      {"<real>1e300</real>", kMax},
      {"<real>-1e300</real>", kMin},
      {"<real>inf</real>", kMax},
  };
  for (const NumberCase& one : cases) {
    PutValue(one.xml);
    EXPECT_EQ(Number(), Lookup::kFound) << one.xml;
    EXPECT_EQ(value_, one.value) << one.xml;
    EXPECT_EQ(String(), Lookup::kOtherType) << one.xml;
    EXPECT_EQ(text_, "untouched");
  }
}

TEST_F(PropertyListTest, TakesNothingElseForANumber) {
  for (const char* xml : {"<true/>", "<false/>", "<real>nan</real>", "<string>12</string>",
                          "<string/>", "<dict/>", "<array><integer>1</integer></array>",
                          "<data>AAAA</data>", "<date>2020-01-01T00:00:00Z</date>"}) {
    PutValue(xml);
    EXPECT_EQ(Number(), Lookup::kOtherType) << xml;
    EXPECT_EQ(value_, kUntouched) << xml;
  }
}

TEST_F(PropertyListTest, ReadsStrings) {
  PutValue("<string>Größe &lt;1&gt; &amp; 光</string>");
  EXPECT_EQ(String(), Lookup::kFound);
  EXPECT_EQ(text_, "Größe <1> & 光");
  PutValue("<string></string>");
  EXPECT_EQ(String(), Lookup::kFound);
  EXPECT_EQ(text_, "");
}

TEST_F(PropertyListTest, TellsAMissingKey) {
  PutList("<dict><key>FeedAdjust</key><integer>1</integer></dict>");
  for (const char* key : {"feedadjust", "FeedAdjus", "FeedAdjust ", "", "\xff"}) {
    EXPECT_EQ(Number(key), Lookup::kNoKey) << key;
    EXPECT_EQ(String(key), Lookup::kNoKey) << key;
  }
  EXPECT_EQ(Number("FeedAdjust"), Lookup::kFound);
}

TEST_F(PropertyListTest, FindsKeysBeyondAscii) {
  PutList("<dict><key>Größe</key><integer>3</integer></dict>");
  EXPECT_EQ(Number("Größe"), Lookup::kFound);
  EXPECT_EQ(value_, 3);
}

TEST_F(PropertyListTest, FindsNoKeyInAnotherRoot) {
  for (const char* root : {"<array><integer>1</integer></array>", "<string>k</string>",
                           "<integer>1</integer>", "<true/>"}) {
    PutList(root);
    const std::string before = Content();
    EXPECT_EQ(Number(), Lookup::kNoKey) << root;
    EXPECT_EQ(String(), Lookup::kNoKey) << root;
    EXPECT_FALSE(WritePropertyNumber(path_.c_str(), "k", 1)) << root;
    EXPECT_EQ(Content(), before);
  }
}

TEST_F(PropertyListTest, ReadsTheFileAnew) {
  PutValue("<integer>1</integer>");
  EXPECT_EQ(Number(), Lookup::kFound);
  PutValue("<integer>2</integer>");
  EXPECT_EQ(Number(), Lookup::kFound);
  EXPECT_EQ(value_, 2);
}

TEST_F(PropertyListTest, ReadsBinaryLists) {
  Put(BinaryList());
  EXPECT_EQ(Number("FeedAdjust"), Lookup::kFound);
  EXPECT_EQ(value_, -1800);
  EXPECT_EQ(String("Name"), Lookup::kFound);
  EXPECT_EQ(text_, "Disc");
  EXPECT_EQ(Number("Name"), Lookup::kOtherType);
  EXPECT_EQ(Number("k"), Lookup::kNoKey);
}

TEST_F(PropertyListTest, ReadsAListWithoutAnXmlDeclaration) {
  Put("<plist><dict><key>k</key><integer>4</integer></dict></plist>");
  EXPECT_EQ(Number(), Lookup::kFound);
  EXPECT_EQ(value_, 4);
}

TEST_F(PropertyListTest, RefusesWhatIsNoList) {
  for (const char* bytes :
       {"", "k = 1;", "{ k = 1; }", "k", "<", "<?xml version=\"1.0\"?>", "<dict/>", "bplist00",
        "bplist00xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
        "<plist><dict><key>k</key><integer>1</integer></dict>",
        "<plist><dict><key>k</key><integer>1x</integer></dict></plist>"}) {
    Put(bytes);
    SCOPED_TRACE(bytes);
    ExpectNoList();
    EXPECT_EQ(Content(), bytes);
  }
}

TEST_F(PropertyListTest, RefusesWhatIsNoReadableFile) {
  ExpectNoList();  // nothing there
  fs::create_directory(path_);
  ExpectNoList();
  fs::remove(path_);
  ASSERT_EQ(mkfifo(path_.c_str(), 0666), 0);
  ExpectNoList();
  fs::remove(path_);
  fs::create_symlink("/dev/zero", path_);
  ExpectNoList();
  fs::remove(path_);
  fs::create_symlink(path_, path_);
  ExpectNoList();
}

TEST_F(PropertyListTest, RefusesAFileThatItMayNotRead) {
  PutValue("<integer>1</integer>");
  chmod(path_.c_str(), 0);
  const OrdinaryUser user;
  ExpectNoList();
}

TEST_F(PropertyListTest, RefusesAFileBeyondTheBound) {
  PutValue("<integer>1</integer>");
  const std::string list = Content();
  Put(list + std::string(kMaxPropertyFileBytes - list.size(), '\n'));
  EXPECT_EQ(Number(), Lookup::kFound);
  Put(list + std::string(kMaxPropertyFileBytes - list.size() + 1, '\n'));
  ExpectNoList();
  fs::resize_file(path_, uintmax_t{1} << 33);
  ExpectNoList();
}

TEST_F(PropertyListTest, SurvivesDeepNesting) {
  std::string body;
  for (int i = 0; i < 15000; ++i) body += "<array>";
  for (int i = 0; i < 15000; ++i) body += "</array>";
  PutList(body);
  ExpectNoList();
}

// Sound in shape, but one parser throws at an integer of 16 bytes, or takes it.
TEST_F(PropertyListTest, SurvivesWhatOnlyTheParserRefuses) {
  std::string list = BinaryList();
  list.replace(38, 5, "\x54\x44\x69\x73\x63" + std::string(17, '\x14'));
  list.replace(60, 5, std::string("\x08\x0d\x18\x1d\x2b", 5));  // the last value: the integer
  list.back() = 60;
  Put(list);
  const Lookup outcome = Number("Name");
  EXPECT_TRUE(outcome == Lookup::kNoList || outcome == Lookup::kFound);
}

// Any answer is right as long as it is one: a number comes with kFound only.
TEST_F(PropertyListTest, SurvivesDamagedLists) {
  PutValue("<array><real>1.5</real><string>a&amp;b</string><dict/></array>");
  std::mt19937 random(7700);
  for (const std::string& sound : {Content(), BinaryList()}) {
    for (int round = 0; round < 3000; ++round) {
      std::string damaged = sound;
      for (int i = 0; i < 1 + round % 3; ++i) {
        damaged[random() % damaged.size()] = static_cast<char>(random());
      }
      Put(damaged);
      const Lookup outcome = Number("FeedAdjust");
      EXPECT_TRUE(outcome == Lookup::kFound || value_ == kUntouched) << round;
    }
  }
}

TEST_F(PropertyListTest, WritesANumberBesideTheOthers) {
  PutList(
      "<dict><key>a</key><integer>-7</integer><key>k</key><string>old</string>"
      "<key>s</key><string>x &amp; ä</string><key>big</key><integer>5000000000</integer></dict>");
  for (const int32_t value : {-1900, 0, 2147483647, std::numeric_limits<int32_t>::min()}) {
    EXPECT_TRUE(WritePropertyNumber(path_.c_str(), "k", value));
    EXPECT_EQ(Number(), Lookup::kFound);
    EXPECT_EQ(value_, value);
  }
  EXPECT_TRUE(WritePropertyNumber(path_.c_str(), "new", 3));
  EXPECT_EQ(Number("new"), Lookup::kFound);
  EXPECT_EQ(value_, 3);
  EXPECT_EQ(Number("a"), Lookup::kFound);
  EXPECT_EQ(value_, -7);
  EXPECT_EQ(String("s"), Lookup::kFound);
  EXPECT_EQ(text_, "x & ä");
  EXPECT_NE(Content().find("<integer>5000000000</integer>"), std::string::npos);
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(PropertyListTest, WritesXml) {
  Put(BinaryList());
  EXPECT_TRUE(WritePropertyNumber(path_.c_str(), "FeedAdjust", -1900));
  EXPECT_TRUE(Content().starts_with("<?xml"));
  EXPECT_NE(Content().find("<integer>-1900</integer>"), std::string::npos);
  EXPECT_EQ(String("Name"), Lookup::kFound);
  EXPECT_EQ(text_, "Disc");
}

TEST_F(PropertyListTest, WritingKeepsTheMode) {
  PutValue("<integer>1</integer>");
  const mode_t old_mask = umask(077);
  for (const mode_t mode : {0644U, 0600U, 0666U}) {
    ASSERT_EQ(chmod(path_.c_str(), mode), 0);
    EXPECT_TRUE(WritePropertyNumber(path_.c_str(), "k", 5));
    struct stat facts {};
    ASSERT_EQ(stat(path_.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777U, mode);
  }
  umask(old_mask);
}

TEST_F(PropertyListTest, WritingFollowsASymbolicLink) {
  PutValue("<integer>1</integer>");
  const std::string target = folder_ + "/target.plist";
  fs::rename(path_, target);
  fs::create_symlink("target.plist", path_);
  EXPECT_TRUE(WritePropertyNumber(path_.c_str(), "k", 5));
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(ReadPropertyNumber(target.c_str(), "k", value_), Lookup::kFound);
  EXPECT_EQ(value_, 5);
}

TEST_F(PropertyListTest, AFailedWriteBackLeavesTheOldListAndIsNotReported) {
  PutValue("<integer>1</integer>");
  chmod(folder_.c_str(), 0555);
  {
    const OrdinaryUser user;  // who cannot make a new file beside the old one
    EXPECT_TRUE(WritePropertyNumber(path_.c_str(), "k", 5));
  }
  chmod(folder_.c_str(), 0755);
  EXPECT_EQ(Number(), Lookup::kFound);
  EXPECT_EQ(value_, 1);
  EXPECT_EQ(FilesInFolder(), 1U);
}

}  // namespace
}  // namespace zr7700::platform
