// The settings file, as any bytes and as a list that a person or a tool has written well: the first
// changes nothing that it does not name, the second is read to the last digit in either form.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "base/settings.h"
#include "fuzz/input.h"
#include "fuzz/open_descriptors.h"

namespace zr7700 {
namespace {

using fuzz::Require;

struct Key {
  const char* name;
  int32_t Settings::*field;
};

constexpr Key kKeys[] = {
    {"LeftMarginOffset", &Settings::LeftMarginOffset},
    {"TopMarginOffset", &Settings::TopMarginOffset},
    {"TopMarginOffsetHeron", &Settings::TopMarginOffsetHeron},
    {"LeftMarginOffsetHeron", &Settings::LeftMarginOffsetHeron},
    {"LeftMarginOffsetHeronHighQuality", &Settings::LeftMarginOffsetHeronHighQuality},
    {"ImageSharpeningLevel", &Settings::ImageSharpeningLevel},
    {"RunComp", &Settings::RunComp},
    {"RunCompDiv", &Settings::RunCompDiv},
    {"dwStatusFrequency", &Settings::dwStatusFrequency},
    {"FeedAdjust", &Settings::FeedAdjust},
    {"OutputDest", &Settings::OutputDest},
};

// A file in memory that is rewritten for every run.
class SettingsFile {
 public:
  SettingsFile()
      : file_(memfd_create("settings", MFD_CLOEXEC)),
        path_("/proc/self/fd/" + std::to_string(file_)) {
    Require(file_ >= 0);
  }
  void Write(std::string_view bytes) const {
    Require(ftruncate(file_, 0) == 0);
    Require(pwrite(file_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
  }
  const char* path() const { return path_.c_str(); }

 private:
  int file_;
  std::string path_;
};

Settings Read(std::string_view bytes) {
  static const SettingsFile file;
  const uint32_t open_before = fuzz::OpenDescriptors();
  file.Write(bytes);
  settings = Settings();
  ReadSettings(file.path());
  Require(fuzz::OpenDescriptors() == open_before);
  return settings;
}

// Text in which a key can stand in no other way than letter by letter.
bool IsPlain(std::string_view list) {
  return !list.starts_with("bplist") && list.find_first_of("&!?") == list.npos;
}

void TryAnyBytes(std::string_view list) {
  const Settings read = Read(list);
  const Settings defaults;
  for (const Key& key : kKeys) {
    if (!IsPlain(list) || list.find(key.name) != list.npos) continue;
    Require(read.*key.field == defaults.*key.field);
  }
  // Nothing is kept from one reading to the next.
  const Settings again = Read(list);
  for (const Key& key : kKeys) Require(again.*key.field == read.*key.field);
}

// A number under a key, or a text that is passed over.
struct Entry {
  std::string key;
  bool is_number;
  int32_t number;
};

// Each key of ours at most once, in an order that the input gives, and strangers between them. What
// they come to is written into `expected`.
std::vector<Entry> TakeEntries(fuzz::Input& input, Settings& expected) {
  std::vector<Entry> entries;
  bool taken[std::size(kKeys)] = {};
  for (unsigned count = input.U8() % 16; count > 0; --count) {
    const unsigned choice = input.U8();
    const auto number = static_cast<int32_t>(input.U32());
    const unsigned row = choice % 16;
    if (row >= std::size(kKeys)) {
      entries.push_back({"Stranger" + std::to_string(entries.size()), choice < 128, number});
    } else if (!taken[row]) {
      taken[row] = true;
      const bool is_number = choice < 240;
      entries.push_back({kKeys[row].name, is_number, number});
      if (is_number) expected.*kKeys[row].field = number;
    }
  }
  return entries;
}

// What a person may put between two elements.
std::string Space(fuzz::Input& input) {
  static constexpr const char* kSpaces[] = {"", "\n  ", "\t", "\r\n", " <!-- a note -->\n"};
  return kSpaces[input.U8() % std::size(kSpaces)];
}

std::string AsXml(const std::vector<Entry>& entries, fuzz::Input& input) {
  std::string list = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";
  list += Space(input) + "<dict>";
  for (const Entry& entry : entries) {
    list += Space(input) + "<key>" + entry.key + "</key>" + Space(input);
    const std::string number = std::to_string(entry.number);
    if (!entry.is_number) {
      list += "<string>" + number + "</string>";
    } else if (input.U8() % 8 == 0) {
      list += "<real>" + number + ".0</real>";
    } else {
      list += "<integer>" + number + "</integer>";
    }
  }
  return list + Space(input) + "</dict>" + Space(input) + "</plist>\n";
}

void PutBigEndian(std::string& to, uint64_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) to += static_cast<char>(value >> (8 * i));
}

// A text of up to 255 letters, in one byte or in two each.
std::string BinaryText(const std::string& text, bool wide) {
  std::string object;
  object += static_cast<char>(wide ? 0x6F : 0x5F);
  object += '\x10';
  object += static_cast<char>(text.size());
  for (const char letter : text) {
    if (wide) object += '\0';
    object += letter;
  }
  return object;
}

// The numbers take 8 bytes, in which alone a negative one can stand.
std::string BinaryValue(const Entry& entry) {
  if (!entry.is_number) return BinaryText(std::to_string(entry.number), false);
  std::string object = "\x13";
  PutBigEndian(object, static_cast<uint64_t>(int64_t{entry.number}), 8);
  return object;
}

// The dictionary is object 0, its keys follow, then its values. Offsets take two bytes.
std::string AsBinary(const std::vector<Entry>& entries, fuzz::Input& input) {
  std::vector<std::string> objects(1);
  for (const Entry& entry : entries) {
    objects.push_back(BinaryText(entry.key, input.U8() % 4 == 0));
  }
  for (const Entry& entry : entries) objects.push_back(BinaryValue(entry));
  objects[0] = "\xDF\x10" + std::string(1, static_cast<char>(entries.size()));
  for (size_t i = 1; i < objects.size(); ++i) objects[0] += static_cast<char>(i);
  std::string list = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    PutBigEndian(offsets, list.size(), 2);
    list += object;
  }
  const size_t offsets_at = list.size();
  list += offsets + std::string("\0\0\0\0\0\0\x02\x01", 8);
  PutBigEndian(list, objects.size(), 8);
  PutBigEndian(list, 0, 8);
  PutBigEndian(list, offsets_at, 8);
  return list;
}

void TryGoodList(fuzz::Input input) {
  Settings expected;
  const bool binary = input.U8() % 2 == 0;
  const std::vector<Entry> entries = TakeEntries(input, expected);
  const Settings read = Read(binary ? AsBinary(entries, input) : AsXml(entries, input));
  for (const Key& key : kKeys) Require(read.*key.field == expected.*key.field);
}

}  // namespace
}  // namespace zr7700

// The first byte says which.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t bytes) {
  zr7700::fuzz::Input input(data, bytes);
  if (input.U8() == 'g') {
    zr7700::TryGoodList(input);
  } else if (bytes != 0) {
    zr7700::TryAnyBytes({reinterpret_cast<const char*>(data + 1), bytes - 1});
  }
  return 0;
}
