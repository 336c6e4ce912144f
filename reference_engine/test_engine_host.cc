// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/test_engine_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace zr7700::reference_engine::testing {
namespace {

const std::string kRoot = ZR7700_ENGINE_ROOT;

void* OpenLibrary(const FamilyName& family, const std::string& part) {
  const std::string name = std::string("tq") + family.code + part;
  const std::string path =
      kRoot + "/Library/Printers/Tessary/Frameworks/" + name + ".framework/" + name;
  return dlopen(path.c_str(), RTLD_LAZY);
}

}  // namespace

EntryTable LoadFamily(const FamilyName& family) {
  EntryTable table;
  void* flib = OpenLibrary(family, "flib");
  void* hpec = OpenLibrary(family, "hpec");
  void* hpeh = OpenLibrary(family, "hpeh");
  void* hpep = OpenLibrary(family, "hpep");
  if (flib == nullptr || hpec == nullptr || hpeh == nullptr || hpep == nullptr) return table;
#define ZR7700_RESOLVE(name, type) table.name = reinterpret_cast<type>(dlsym(hpec, #name));
  HPE_ENTRIES(ZR7700_RESOLVE)
#undef ZR7700_RESOLVE
  return table;
}

std::string TablePath(const FamilyName& family, const std::string& short_name) {
  return kRoot + "/Users/Shared/Tessary/ZR7700/Frameworks/tq" + family.code + short_name;
}

std::string StandardTable(const FamilyName& family) {
  return TablePath(family, family.letter == 'H' ? "bsclr1" : "clr1");
}

std::string PhotoTable(const FamilyName& family) {
  return TablePath(family, family.letter == 'H' ? "bsclrL" : "clrPhoto");
}

void Picture::Fill(uint32_t x, uint32_t y, uint32_t columns, uint32_t lines,
                   std::array<uint8_t, 3> color) {
  for (uint32_t line = y; line < y + lines; ++line)
    for (uint32_t column = x; column < x + columns; ++column)
      std::copy(color.begin(), color.end(), pixel(column, line));
}

Picture NoisePicture(uint32_t width, uint32_t height) {
  Picture picture(width, height);
  uint32_t random = 12345;
  for (uint8_t& byte : picture.pixels) {
    random = random * 1664525 + 1013904223;
    byte = static_cast<uint8_t>(random >> 24);
  }
  return picture;
}

std::string IniText(int color, int passes, int direction) {
  return "[Configuration]\nUseDebugSettings=1 \nPrinter=1 \nColor=" + std::to_string(color) +
         " \n[ESwathBuilder]\nSlot1NumPassesOverride=" + std::to_string(passes) +
         " \nSlot1PrintDirection=" + std::to_string(direction) + " \n";
}

EngineHost::EngineHost(const FamilyName& family) : family_(family), entries_(LoadFamily(family)) {
  std::string pattern = std::filesystem::temp_directory_path() / "engine_host.XXXXXX";
  if (mkdtemp(pattern.data()) != nullptr) folder_ = pattern;
  if (entries_.CreateHostPrintEngine != nullptr) handle_ = entries_.CreateHostPrintEngine();
}

EngineHost::~EngineHost() {
  if (handle_ != nullptr) entries_.DestroyHostPrintEngine(handle_);
  if (!folder_.empty()) std::filesystem::remove_all(folder_);
}

int32_t EngineHost::Initialize() {
  const std::string prefix = folder_ / (std::string("tq") + family_.code);
  return entries_.HPEInitialize(handle_, prefix.c_str(), prefix.c_str(), prefix.c_str(),
                                prefix.c_str());
}

int32_t EngineHost::StartDocument(const std::string& table) {
  return entries_.HPEStartDoc(handle_, TakeOutput, table.c_str(), 0, 0, HPE_START_DOC_CODE, this);
}

void EngineHost::WriteIni(const std::string& text) {
  std::ofstream(folder_ / (std::string("tq") + family_.code + "cfg.ini")) << text;
}

int32_t EngineHost::SetProperties(const Job& job, int32_t width, int32_t height) {
  return entries_.SetInputResolution(handle_, 0, job.dots_per_inch) |
         entries_.SetInputResolution(handle_, 1, job.dots_per_inch) |
         entries_.SetLeftMargin(handle_, job.left_margin) |
         entries_.SetTopMargin(handle_, job.top_margin) |
         entries_.SetPhysicalWidth(handle_, job.physical_width) |
         entries_.SetPrintableWidth(handle_, width) | entries_.SetPrintableHeight(handle_, height) |
         entries_.SetInstalledCartridge(handle_, 0, 4, 1) |
         entries_.SetInstalledCartridge(handle_, 1, 3, 0) |
         entries_.SetMediaType(handle_, job.media) |
         entries_.SetOutputPrintQuality(handle_, job.quality) | entries_.SetPaperTray(handle_, 2) |
         entries_.SetPageIntent(handle_, 1) |
         entries_.SetImageSharpeningLevel(handle_, job.sharpening) |
         entries_.SetHPERasterFormat(handle_, 4) |
         entries_.SetAlignmentInformation(handle_, 6, job.alignment6);
}

int32_t EngineHost::SendLines(const Picture& picture) {
  int32_t status = 0;
  for (uint32_t y = 0; y < picture.height; ++y)
    status |= entries_.HPESendBand(handle_, 0, y, 1, picture.width, picture.width * 4,
                                   picture.pixel(0, y));
  return status;
}

int32_t EngineHost::Print(const Job& job, const Picture& picture) {
  WriteIni(job.ini);
  int32_t status = Initialize() | StartDocument(job.table);
  status |=
      SetProperties(job, static_cast<int32_t>(picture.width), static_cast<int32_t>(picture.height));
  status |= entries_.HPEStartPage(handle_) | SendLines(picture);
  return status | entries_.HPEEndPage(handle_, 0) | entries_.HPEEndDoc(handle_, 0);
}

std::vector<uint8_t> EngineHost::Stream() const {
  std::vector<uint8_t> stream;
  for (const auto& block : blocks_) stream.insert(stream.end(), block.begin(), block.end());
  return stream;
}

void EngineHost::TakeOutput(void* context, uint8_t* data, uint32_t length_bytes) {
  auto* const host = static_cast<EngineHost*>(context);
  host->blocks_.emplace_back(data, data + length_bytes);
  if (host->on_output) host->on_output();
}

PrintedPage PrintAndRead(const FamilyName& family, const Job& job, const Picture& picture) {
  EngineHost host(family);
  EXPECT_EQ(host.Print(job, picture), 0);
  const std::vector<uint8_t> stream = host.Stream();
  TestPrinter printer;
  EXPECT_TRUE(printer.Print(stream)) << printer.error();
  EXPECT_EQ(printer.documents().size(), 1U);
  if (printer.documents().size() != 1 || printer.documents()[0].pages.size() != 1) return {};
  EXPECT_EQ(printer.documents()[0].family, family.letter);
  return printer.documents()[0].pages[0];
}

}  // namespace zr7700::reference_engine::testing
