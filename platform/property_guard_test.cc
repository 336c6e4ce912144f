// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/property_guard.h"

#include <gtest/gtest.h>

namespace zr7700::platform {
namespace {

constexpr char kDeclaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// What the parser is given for a list with this body.
std::string Guarded(const std::string& body) {
  const std::optional<std::string> xml = GuardedXml("<plist>" + body + "</plist>");
  EXPECT_TRUE(xml) << body.substr(0, 1000);
  const std::string head = kDeclaration + std::string("<plist version=\"1.0\">");
  const std::string tail = "</plist>";
  const std::string text = xml.value_or(head + tail);
  EXPECT_TRUE(text.starts_with(head) && text.ends_with(tail)) << text;
  return text.substr(head.size(), text.size() - head.size() - tail.size());
}

bool IsTaken(const std::string& body) {
  return GuardedXml("<plist>" + body + "</plist>").has_value();
}

std::string Times(size_t count, const std::string& text) {
  std::string all;
  for (size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST(XmlGuard, LeavesValuesAsTheyAre) {
  const std::string body =
      "<dict><key>a</key><integer>-5</integer>\n<key>b</key><true/><key>c</key><array>"
      "<real>1.5e3</real><string/><string>x &lt; &#x20AC; </string>"
      "</array><key>d</key><data>AAAA</data><key>e</key><date>2020-01-01T00:00:00Z</date></dict>";
  EXPECT_EQ(Guarded(body), body);
}

TEST(XmlGuard, LeavesOutWhatCarriesNoValue) {
  EXPECT_EQ(Guarded("<!-- <a> --><dict><?x > ?></dict><!---->"), "<dict></dict>");
  EXPECT_EQ(Guarded("<string>a<!-- > -->b<?c?>d</string>"), "<string>abd</string>");
  EXPECT_EQ(Guarded("<dict a='>' b=\"'>\" ></dict >"), "<dict></dict>");
  EXPECT_EQ(Guarded("<true />"), "<true/>");
}

TEST(XmlGuard, LeavesOutTheDocumentType) {
  for (const char* type :
       {"<!DOCTYPE plist>", "<!DOCTYPE plist PUBLIC \"->\" '>'>",
        "<!DOCTYPE plist [<!ENTITY a \"]>\"> <!-- ]> ' --> <!ELEMENT x ANY>] >"}) {
    EXPECT_EQ(GuardedXml(type + std::string("<plist/>")),
              kDeclaration + std::string("<plist version=\"1.0\"/>"))
        << type;
  }
}

TEST(XmlGuard, KeepsTheDeclarationForItsEncoding) {
  const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
  EXPECT_EQ(GuardedXml("\n" + latin + "<true/>"), latin + "<true/>");
  EXPECT_EQ(GuardedXml("\xef\xbb\xbf" + latin + "<true/>"), latin + "<true/>");
}

TEST(XmlGuard, WritesKeysNumbersAndReferencesAsEveryParserReadsThem) {
  EXPECT_EQ(Guarded("<dict><key/><true/></dict>"), "<dict><key></key><true/></dict>");
  EXPECT_EQ(Guarded("<integer> -0<!-- -->190</integer>"), "<integer> -190</integer>");
  EXPECT_EQ(Guarded("<integer>000</integer>"), "<integer>000</integer>");
  EXPECT_EQ(Guarded("<integer>0x1F</integer>"), "<integer>0x1F</integer>");
  EXPECT_EQ(Guarded("<integer>100</integer>"), "<integer>100</integer>");
  EXPECT_EQ(Guarded("<string>007</string>"), "<string>007</string>");
  EXPECT_EQ(Guarded("<string>&#x00000020AC;&#0000065;&amp;</string>"),
            "<string>&#x20AC;&#65;&amp;</string>");
  EXPECT_EQ(Guarded("<string>a<![CDATA[&#0065;<key/>]]]]>b<![CDATA[]]></string>"),
            "<string>a&amp;#0065;&lt;key/>]]b</string>");
}

TEST(XmlGuard, SurvivesWhatIsCutAnywhere) {
  const std::string list =
      "\xef\xbb\xbf<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"b\">]><plist><!-- c -->"
      "<dict><key a='b'>k</key><string>&#x0041;&amp;<![CDATA[d]]></string></dict></plist>";
  for (size_t length = 0; length <= list.size(); ++length) {
    const std::optional<std::string> xml = GuardedXml(list.substr(0, length));
    if (xml) {
      EXPECT_LE(xml->size(), list.size() + 60) << length;
    }
  }
}

TEST(XmlGuard, RefusesWhatIsNoXml) {
  for (const std::string& text :
       {std::string(), std::string("k = 1;"), std::string("{ k = 1; }"), std::string("((((")}) {
    EXPECT_FALSE(GuardedXml(text)) << text;
  }
  for (const char* text : {"<", "<plist", "<plist a='>", "<plist><!-- ->", "<plist><? >", "<?xml ?",
                           "<plist><![CDATA[x]>", "<!DOCTYPE [>", "<!DOCTYPE '>", "<?xml"}) {
    EXPECT_FALSE(GuardedXml(text)) << text;
  }
  EXPECT_FALSE(GuardedXml(std::string("<\0p\0l\0i\0s\0t\0>\0", 14)));
}

// Freeing a list, libplist recurses once a level: 200,000 of them are beyond the stack.
TEST(XmlGuard, BoundsTheNesting) {
  const auto nested = [](size_t depth) {
    return Times(depth, "<array>") + Times(depth, "</array>");
  };
  EXPECT_TRUE(IsTaken(nested(99)));
  EXPECT_FALSE(IsTaken(nested(100)));
  EXPECT_FALSE(IsTaken(Times(200'000, "<array>")));
  // Nothing that a parser passes over may hide a level.
  EXPECT_FALSE(IsTaken(Times(100'000, "<array><!-- </array> -->")));
  EXPECT_FALSE(IsTaken(Times(100'000, "<array><?x </array> ?>")));
  EXPECT_FALSE(IsTaken(Times(100'000, "<array a='</array>'>")));
  EXPECT_FALSE(IsTaken("<a'><array><array>'>"));
  EXPECT_FALSE(IsTaken(Times(100'000, "<array><![CDATA[</array>]]>")));
  EXPECT_FALSE(IsTaken("</plist></plist>" + Times(100'000, "<array>")));
  EXPECT_FALSE(GuardedXml("</array>"));
}

// libplist looks a key that comes again up from the list's beginning: hours for half a million.
TEST(XmlGuard, BoundsTheKeys) {
  EXPECT_TRUE(IsTaken("<dict>" + Times(32'000, "<key>k</key><true/>") + "</dict>"));
  EXPECT_FALSE(IsTaken("<dict>" + Times(32'001, "<key>k</key><true/>") + "</dict>"));
}

// libplist moves the rest of a text at every entity in it: half an hour for 16 MiB of them.
TEST(XmlGuard, BoundsTheEntitiesOfAText) {
  const auto text = [](size_t entities) {
    return "<string>" + Times(entities, "&amp;") + "</string>";
  };
  EXPECT_TRUE(IsTaken(text(200'000)));
  EXPECT_FALSE(IsTaken(text(300'000)));
  EXPECT_TRUE(IsTaken("<array>" + Times(3, text(200'000)) + "</array>"));
  EXPECT_TRUE(IsTaken("<string>" + std::string(10'000'000, 'x') + "&amp;</string>"));
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

TEST(BinaryGuard, TakesASoundList) { EXPECT_TRUE(IsBoundedBinary(SmallBinary())); }

TEST(BinaryGuard, RefusesWhatPointsOutside) {
  EXPECT_FALSE(IsBoundedBinary(Changed(9, 3)));        // a key that is not there
  EXPECT_FALSE(IsBoundedBinary(Changed(10, 3)));       // a value that is not there
  EXPECT_FALSE(IsBoundedBinary(Changed(8, '\xd8')));   // pairs beyond the objects
  EXPECT_FALSE(IsBoundedBinary(Changed(22, 7)));       // an object in the header
  EXPECT_FALSE(IsBoundedBinary(Changed(24, 22)));      // an object in the table
  EXPECT_FALSE(IsBoundedBinary(Changed(40, 4)));       // more objects than the table
  EXPECT_FALSE(IsBoundedBinary(Changed(48, 3)));       // a root that is not there
  EXPECT_FALSE(IsBoundedBinary(Changed(56, '\xff')));  // a table that is not there
  EXPECT_FALSE(IsBoundedBinary(Changed(49, '\xff')));
  EXPECT_FALSE(IsBoundedBinary(Changed(31, 0)));  // widths that are none
  EXPECT_FALSE(IsBoundedBinary(Changed(31, 9)));
  EXPECT_FALSE(IsBoundedBinary(Changed(32, 0)));
  EXPECT_FALSE(IsBoundedBinary(Changed(32, 9)));
}

TEST(BinaryGuard, RefusesEveryPieceOfAList) {
  const std::string list = SmallBinary();
  for (size_t length = 0; length < list.size(); ++length) {
    EXPECT_FALSE(IsBoundedBinary(list.substr(0, length))) << length;
  }
}

TEST(BinaryGuard, RefusesCountsThatOverflow) {
  std::string list = SmallBinary();
  list[11] = '\x6f';  // text of UTF-16 whose count is the integer object after it
  list.replace(12, 9, "\x13\xff\xff\xff\xff\xff\xff\xff\xff");
  EXPECT_FALSE(IsBoundedBinary(list));
  list[11] = '\xaf';  // an array
  EXPECT_FALSE(IsBoundedBinary(list));
}

// Arrays of two bytes offset, each of which holds the next one `fan` times; the last holds a
// number.
std::string Chain(size_t length, uint8_t fan) {
  std::string list = "bplist00";
  std::string table;
  const auto begin_object = [&] {
    table += static_cast<char>(list.size() >> 8);
    table += static_cast<char>(list.size());
  };
  for (size_t i = 0; i < length; ++i) {
    begin_object();
    list += static_cast<char>(0xa0 | fan);
    for (uint8_t j = 0; j < fan; ++j) list += static_cast<char>(i + 1);
  }
  begin_object();
  list += std::string("\x10\x05", 2);
  const size_t table_offset = list.size();
  list += table + std::string(6, '\0') + "\x02\x01";
  list += std::string(7, '\0') + static_cast<char>(length + 1) + std::string(8, '\0');
  list += std::string(6, '\0') + static_cast<char>(table_offset >> 8);
  return list + static_cast<char>(table_offset);
}

// A parser recurses once a level, also through a list that holds itself.
TEST(BinaryGuard, BoundsTheNesting) {
  EXPECT_TRUE(IsBoundedBinary(Chain(99, 1)));
  EXPECT_FALSE(IsBoundedBinary(Chain(100, 1)));
  EXPECT_FALSE(IsBoundedBinary(Changed(10, 0)));  // the root as its own value
}

// 30 arrays of 14 references each would unfold to 14^30 objects, from 600 bytes.
TEST(BinaryGuard, BoundsTheObjectsThatAListUnfoldsTo) {
  EXPECT_TRUE(IsBoundedBinary(Chain(5, 14)));   // 14^5: 537,824, and the arrays
  EXPECT_FALSE(IsBoundedBinary(Chain(6, 14)));  // 7.5 million
  EXPECT_FALSE(IsBoundedBinary(Chain(30, 14)));
}

// A leaf of 200 KB that a list of some elements refers to; a parser copies it each time.
TEST(BinaryGuard, BoundsWhatLeavesUnfoldTo) {
  const auto list_of = [](size_t elements) {
    std::string list = "bplist00";
    list += std::string("\xaf\x11", 2) + static_cast<char>(elements >> 8);
    list += static_cast<char>(elements) + std::string(elements, '\x01');
    const size_t leaf = list.size();
    list += std::string("\x4f\x12\x00\x03\x00\x00", 6) + std::string(0x30000, 'x');
    const size_t table = list.size();
    list += std::string("\0\0\x08\0", 4) + static_cast<char>(leaf >> 8) + static_cast<char>(leaf);
    list += std::string(6, '\0') + "\x03\x01" + std::string("\0\0\0\0\0\0\0\2", 8);
    list += std::string(8, '\0') + std::string(5, '\0');
    for (const int shift : {16, 8, 0}) list += static_cast<char>(table >> shift);
    return list;
  };
  EXPECT_TRUE(IsBoundedBinary(list_of(300)));   // 59 MB
  EXPECT_FALSE(IsBoundedBinary(list_of(400)));  // 79 MB
}

}  // namespace
}  // namespace zr7700::platform
