// Every absolute path and system-wide name that the outside world knows.
//
// ZR7700_ROOT, empty in a production build, is put in front of all of them so that tests and the
// demonstration leave the machine alone.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#ifndef ZR7700_BASE_PATHS_H_
#define ZR7700_BASE_PATHS_H_

#ifndef ZR7700_ROOT
#define ZR7700_ROOT ""
#endif
// A shared-memory name is flat: the build derives this prefix from the root.
#ifndef ZR7700_SHM_PREFIX
#define ZR7700_SHM_PREFIX ""
#endif

#define ZR7700_RESOURCES ZR7700_ROOT "/Library/Printers/Tessary/ZR7700.bundle/Contents/Resources"
#define ZR7700_LIBRARIES ZR7700_ROOT "/Library/Printers/Tessary/Frameworks"
#define ZR7700_ENGINE_DATA ZR7700_ROOT "/Users/Shared/Tessary/ZR7700/Frameworks"
#define ZR7700_SOCKETS ZR7700_ROOT "/var/tmp/tessary"

namespace zr7700::paths {

inline constexpr char kLog[] = ZR7700_ROOT "/Library/Caches/ZR7700Filter.log";
inline constexpr char kSettings[] = ZR7700_RESOURCES "/ZR7700Config.plist";

// Message catalogues: kCatalogues/<language>/LC_MESSAGES/<kCatalogueDomain>.mo.
inline constexpr char kCatalogues[] = ZR7700_RESOURCES "/locale";
inline constexpr char kCatalogueDomain[] = "rastertoZR7700";

// The printer utility listens on the first; the filter waits for replies on the second.
inline constexpr char kUtilitySocket[] = ZR7700_SOCKETS "/com.tessary.zr7700.socket";
inline constexpr char kReplySocket[] = ZR7700_SOCKETS "/com.tessary.zr77002.socket";

inline constexpr char kStatusMemory[] = "/" ZR7700_SHM_PREFIX "TessaryZR7700PrinterMMap";

// What an engine reads. It completes the four path prefixes itself.
struct EngineFiles {
  const char* enginePath1;
  const char* enginePath2;
  const char* enginePath3;
  const char* enginePath4;
  const char* colorTableStandard;
  const char* colorTablePhoto;
  const char* colorTablePhotoGlossy;
  const char* engineIniPath;
};

// One engine family, Granite or Heron: the letters of its cartridges, its four libraries in the
// order in which they are opened, and its files.
struct EngineFamily {
  const char* cartridge_letters;
  bool is_heron;
  const char* libraries[4];
  EngineFiles files;
};

// The library of the four that holds the entries.
inline constexpr int kEntryLibrary = 1;

// Both photo tables of Heron are one file, and all its prefixes lie in the shared folder, while
// Granite keeps its first three with the libraries: the engines are installed like that.
inline constexpr EngineFamily kEngineFamilies[] = {
    {
        .cartridge_letters = "QP",
        .is_heron = false,
        .libraries = {ZR7700_LIBRARIES "/tqgrflib.framework/tqgrflib",
                      ZR7700_LIBRARIES "/tqgrhpec.framework/tqgrhpec",
                      ZR7700_LIBRARIES "/tqgrhpeh.framework/tqgrhpeh",
                      ZR7700_LIBRARIES "/tqgrhpep.framework/tqgrhpep"},
        .files =
            {
                .enginePath1 = ZR7700_LIBRARIES "/tqgr",
                .enginePath2 = ZR7700_LIBRARIES "/tqgr",
                .enginePath3 = ZR7700_LIBRARIES "/tqgr",
                .enginePath4 = ZR7700_ENGINE_DATA "/tqgr",
                .colorTableStandard = ZR7700_ENGINE_DATA "/tqgrclr1",
                .colorTablePhoto = ZR7700_ENGINE_DATA "/tqgrclrPhoto",
                .colorTablePhotoGlossy = ZR7700_ENGINE_DATA "/tqgrclrPhGlossy",
                .engineIniPath = ZR7700_ENGINE_DATA "/tqgrcfg.ini",
            },
    },
    {
        .cartridge_letters = "UV",
        .is_heron = true,
        .libraries = {ZR7700_LIBRARIES "/tqheflib.framework/tqheflib",
                      ZR7700_LIBRARIES "/tqhehpec.framework/tqhehpec",
                      ZR7700_LIBRARIES "/tqhehpeh.framework/tqhehpeh",
                      ZR7700_LIBRARIES "/tqhehpep.framework/tqhehpep"},
        .files =
            {
                .enginePath1 = ZR7700_ENGINE_DATA "/tqhe",
                .enginePath2 = ZR7700_ENGINE_DATA "/tqhe",
                .enginePath3 = ZR7700_ENGINE_DATA "/tqhe",
                .enginePath4 = ZR7700_ENGINE_DATA "/tqhe",
                .colorTableStandard = ZR7700_ENGINE_DATA "/tqhebsclr1",
                .colorTablePhoto = ZR7700_ENGINE_DATA "/tqhebsclrL",
                .colorTablePhotoGlossy = ZR7700_ENGINE_DATA "/tqhebsclrL",
                .engineIniPath = ZR7700_ENGINE_DATA "/tqhecfg.ini",
            },
    },
};

}  // namespace zr7700::paths

#endif  // ZR7700_BASE_PATHS_H_
