// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/property_shape.h"

#include <gtest/gtest.h>

namespace zr7700::platform {
namespace {

std::string In(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD\" "
         "\"http://x/y.dtd\">\n<plist version=\"1.0\">" +
         body + "</plist>\n";
}

bool IsSoundXml(std::string xml) { return SettleXmlPropertyList(xml); }

TEST(XmlShape, TakesEveryKindOfValue) {
  EXPECT_TRUE(IsSoundXml(In("<dict/>")));
  EXPECT_TRUE(
      IsSoundXml(In("<dict><key>a</key><integer>-5</integer><key>b</key><true/>"
                    "<key>c</key><array><real>1.5e3</real><false/><string/>"
                    "<string>x &lt; <![CDATA[</dict>]]></string></array>"
                    "<!-- <integer>abc --><key>d</key><data>AAAA</data>"
                    "<key>e</key><date>2020-01-01T00:00:00Z</date></dict>")));
  EXPECT_TRUE(
      IsSoundXml("\xef\xbb\xbf<!-- a & b --> <plist a='>'><string>x</string></plist>\n<!-- -->"));
}

TEST(XmlShape, RefusesWhatIsNotWellFormed) {
  for (const char* body : {"",
                           "<dict>",
                           "</dict>",
                           "<dict></array>",
                           "<dict/><dict/>",
                           "<dict",
                           "<unknown/>",
                           "<>",
                           "< dict/>",
                           "<true><true/></true>",
                           "<string><key>a</key></string>",
                           "<!-- ",
                           "<![CDATA[",
                           "<?x",
                           "<dict a=\">",
                           "<plist><dict/></plist>",
                           "<key>a</key>",
                           "<dict a=\"b\"></dict>",
                           "<dict>a</dict>",
                           "<array>a</array>",
                           "a<dict/>",
                           "<true>a</true>",
                           "<dict><![CDATA[x]]></dict>",
                           "<dict></dict a>",
                           "<?x?><dict/>",
                           "<!DOCTYPE x><dict/>",
                           "<![CDATA[]]><![CDATA[<dict/>"}) {
    EXPECT_FALSE(IsSoundXml(In(body))) << body;
  }
  for (const char* text : {"", "x", "<", "<dict/>", "<plist/>", "<plist>", "</plist>",
                           "<html></html>", "x<plist><dict/></plist>", "<plist><dict/></plist>x",
                           "<![CDATA[x]]><plist><dict/></plist>"}) {
    EXPECT_FALSE(IsSoundXml(text)) << text;
  }
  EXPECT_FALSE(IsSoundXml(In("<dict/>") + In("<dict/>")));
}

TEST(XmlShape, RefusesDictionariesThatAreNotMadeOfPairs) {
  for (const char* body : {"<key>a</key>", "<true/>", "<key>a</key><key>b</key>",
                           "<key>a</key><true/><true/>", "<key>a</key><true/><key>b</key>"}) {
    EXPECT_FALSE(IsSoundXml(In("<dict>" + std::string(body) + "</dict>"))) << body;
  }
}

TEST(XmlShape, RefusesNumbersThatAreNone) {
  for (const char* text : {"", " ", "abc", "12abc", "0x10", "--5", "1 2", "+", "1.5",
                           "18446744073709551616", "-9223372036854775809", "<!-- -->5"}) {
    EXPECT_FALSE(IsSoundXml(In("<integer>" + std::string(text) + "</integer>"))) << text;
  }
  for (const char* text : {"", "abc", "1.5x", "1,5"}) {
    EXPECT_FALSE(IsSoundXml(In("<real>" + std::string(text) + "</real>"))) << text;
  }
  EXPECT_FALSE(IsSoundXml(In("<integer/>")));
  EXPECT_FALSE(IsSoundXml(In("<real/>")));
  EXPECT_TRUE(IsSoundXml(In("<integer> 18446744073709551615\n</integer>")));
  EXPECT_TRUE(IsSoundXml(In("<integer>-9223372036854775808</integer>")));
}

TEST(XmlShape, RefusesCharactersThatAreNone) {
  for (const char* text : {"&", "&;", "&amp", "&nbsp;", "&#;", "&#x;", "&#0;", "&#xd800;", "&#12a;",
                           "&#xffff;", "&amplifier;", "\x01", "\x1b[0m", "\xff", "\xc3"}) {
    EXPECT_FALSE(IsSoundXml(In("<string>" + std::string(text) + "</string>"))) << text;
  }
  EXPECT_FALSE(IsSoundXml(In("<string>" + std::string(1, '\0') + "</string>")));
  EXPECT_TRUE(IsSoundXml(In("<string>&quot;&apos;&#65;&#x20AC;\t\n</string>")));
}

TEST(Utf8, TakesTheFirstAndLastOfEveryLength) {
  EXPECT_TRUE(IsUtf8("\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf"));
  EXPECT_TRUE(IsUtf8("\xf0\x90\x80\x80\xf4\x8f\xbf\xbf"));
  EXPECT_TRUE(IsUtf8(""));
}

TEST(Utf8, RefusesEverythingElse) {
  for (const char* text : {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80",
                           "\xed\xbf\xbf", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf8", "\xff",
                           "\xc3", "\xe2\x82", "\xf0\x9f\x98", "\xc3(", "a\xc3"}) {
    EXPECT_FALSE(IsUtf8(text)) << text;
  }
}

TEST(XmlShape, MovesLeadingZerosOutOfTheWay) {
  std::string xml = "<plist><array><integer>-0190</integer><integer>000</integer></array></plist>";
  EXPECT_TRUE(SettleXmlPropertyList(xml));
  EXPECT_NE(xml.find("<integer>-190 </integer><integer>0  </integer>"), std::string::npos);
}

TEST(XmlShape, PutsAFixedDeclarationInFront) {
  std::string xml =
      "<?xml version='1.0\" x?>\n<!DOCTYPE 'y>\n<plist version='9'> <dict/> </plist><!---->";
  EXPECT_TRUE(SettleXmlPropertyList(xml));
  EXPECT_EQ(
      xml,
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"> <dict/> </plist>\n");
}

TEST(XmlShape, BoundsTheNesting) {
  const auto nested = [](size_t depth) {
    std::string body;
    for (size_t i = 0; i < depth; ++i) body += "<array>";
    for (size_t i = 0; i < depth; ++i) body += "</array>";
    return In(body);
  };
  EXPECT_TRUE(IsSoundXml(nested(99)));
  EXPECT_FALSE(IsSoundXml(nested(100)));
}

TEST(XmlShape, RefusesEntityDeclarations) {
  EXPECT_FALSE(
      IsSoundXml("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>"));
}

// The binary list {"a": -5} by hand: a dictionary, a text, an integer of 8 bytes, the offsets.
std::string SmallBinary() {
  std::string list = "bplist00";
  list += std::string("\xd1\x01\x02", 3);  // at 8: one pair, 1 and 2
  list += std::string(
      "\x51"
      "a",
      2);                                                          // at 11
  list += std::string("\x13\xff\xff\xff\xff\xff\xff\xff\xfb", 9);  // at 13
  list += std::string("\x08\x0b\x0d", 3);                          // at 22: the offsets
  list += std::string(6, '\0') + "\x01\x01";                       // trailer: widths 1 and 1
  list += std::string("\0\0\0\0\0\0\0\3", 8);                      // three objects
  list += std::string("\0\0\0\0\0\0\0\0", 8);                      // the root is the first
  list += std::string("\0\0\0\0\0\0\0\x16", 8);                    // the table's offset
  return list;
}

std::string Changed(size_t offset, char byte) {
  std::string list = SmallBinary();
  list[offset] = byte;
  return list;
}

TEST(BinaryShape, TakesASoundList) { EXPECT_TRUE(IsSoundBinaryPropertyList(SmallBinary())); }

TEST(BinaryShape, RefusesWhatPointsOutside) {
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(9, 3)));        // a key that is not there
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(10, 3)));       // a value that is not there
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(8, '\xd8')));   // pairs beyond the objects
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(11, '\x5b')));  // text into the table
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(13, '\x14')));  // a number into the table
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(22, 7)));       // an object in the header
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(24, 22)));      // an object in the table
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(40, 4)));       // more objects than the table
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(48, 3)));       // a root that is not there
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(56, '\xff')));  // a table that is not there
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(49, '\xff')));
}

TEST(BinaryShape, RefusesOddWidthsAndKinds) {
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(31, 0)));
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(31, 9)));
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(32, 0)));
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(32, 9)));
  for (const char mark : {'\x00', '\x0f', '\x15', '\x21', '\x32', '\x70', '\x80', '\xc1', '\xe0'}) {
    EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(13, mark))) << +mark;
  }
}

TEST(BinaryShape, RefusesAKeyThatIsNoText) {
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(11, '\x50')));
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(9, 2)));
}

TEST(BinaryShape, RefusesTextThatIsNone) {
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(12, '\xe4')));
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(12, 0)));
  std::string wide = SmallBinary();  // the value as four letters of UTF-16
  wide.replace(13, 9, std::string("\x64\0a\xd8\x3d\xdc\xbf\0b", 9));
  EXPECT_TRUE(IsSoundBinaryPropertyList(wide));
  for (const size_t offset : {14U, 16U, 18U, 20U}) {
    std::string alone = wide;
    alone[offset] = '\xd8';
    alone[offset == 16 ? 18 : 16] = '\xd8';
    EXPECT_FALSE(IsSoundBinaryPropertyList(alone)) << offset;
  }
}

// Two pairs instead of one: {"a": -5, KEY: -5} with the second key's object given.
std::string TwoPairs(char second_key) {
  std::string list = SmallBinary();
  list.replace(8, 3, std::string("\xd2\x01", 2) + second_key + "\x02\x02");
  list.replace(13, 2, "\x51\x61\x51\x62");                  // "a" at 13, "b" at 15
  list.replace(26, 3, std::string("\x08\x0d\x11\x0f", 4));  // -5 at 17
  list[45] = 4;                                             // objects
  list[61] = 26;                                            // where the offsets begin
  return list;
}

TEST(BinaryShape, RefusesTwoValuesForOneKey) {
  EXPECT_TRUE(IsSoundBinaryPropertyList(TwoPairs(3)));
  EXPECT_FALSE(IsSoundBinaryPropertyList(TwoPairs(1)));
  std::string equal = TwoPairs(3);
  equal[16] = 'a';
  EXPECT_FALSE(IsSoundBinaryPropertyList(equal));
}

TEST(BinaryShape, RefusesSharedContainersAndCycles) {
  EXPECT_FALSE(IsSoundBinaryPropertyList(Changed(10, 0)));  // the root as its own value
  std::string twice = SmallBinary();                        // a list of one empty list, twice
  twice.replace(8, 14, std::string("\xa2\x01\x01\xa0", 4) + std::string(10, '\x08'));
  twice[23] = 11;
  twice[24] = 12;
  EXPECT_FALSE(IsSoundBinaryPropertyList(twice));
  twice[10] = 2;  // the second element is now a leaf
  EXPECT_TRUE(IsSoundBinaryPropertyList(twice));
}

TEST(BinaryShape, RefusesEveryPieceOfAList) {
  const std::string list = SmallBinary();
  for (size_t length = 0; length < list.size(); ++length) {
    EXPECT_FALSE(IsSoundBinaryPropertyList(list.substr(0, length))) << length;
  }
}

TEST(BinaryShape, RefusesCountsThatOverflow) {
  std::string list = SmallBinary();
  list[11] = '\x6f';  // text of UTF-16 whose count is the integer object after it
  list.replace(12, 9, "\x13\xff\xff\xff\xff\xff\xff\xff\xff");
  EXPECT_FALSE(IsSoundBinaryPropertyList(list));
}

// A leaf of 200 KB that a list of 100 elements refers to would unfold to 20 MB.
TEST(BinaryShape, BoundsWhatLeavesUnfoldTo) {
  const auto list_of = [](size_t elements) {
    std::string list = "bplist00";
    list += std::string("\xaf\x10", 2) + static_cast<char>(elements);
    list += std::string(elements, '\x01');
    const size_t leaf = list.size();
    list += std::string("\x4f\x12\x00\x03\x00\x00", 6) + std::string(0x30000, 'x');
    const size_t table = list.size();
    list += std::string("\0\0\x08\0\0", 5) + static_cast<char>(leaf);
    list += std::string(6, '\0') + "\x03\x01" + std::string("\0\0\0\0\0\0\0\2", 8);
    list += std::string(8, '\0') + std::string(5, '\0');
    for (const int shift : {16, 8, 0}) list += static_cast<char>(table >> shift);
    return list;
  };
  EXPECT_TRUE(IsSoundBinaryPropertyList(list_of(20)));
  EXPECT_FALSE(IsSoundBinaryPropertyList(list_of(100)));
}

}  // namespace
}  // namespace zr7700::platform
