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

// One engine family: its four libraries in the order in which they are opened, and the files that
// they read. The engine completes the four path prefixes itself.
struct EngineFamily {
  const char* name;
  const char* flib;
  const char* hpec;
  const char* hpeh;
  const char* hpep;
  const char* engine_path1;
  const char* engine_path2;
  const char* engine_path3;
  const char* engine_path4;
  const char* color_table_standard;
  const char* color_table_photo;
  const char* color_table_photo_glossy;
  const char* engine_ini;
};

// Both photo tables of Heron are one file, and all its prefixes lie in the shared folder, while
// Granite keeps its first three with the libraries: the engines are installed like that.
inline constexpr EngineFamily kHeron = {
    .name = "Heron",
    .flib = ZR7700_LIBRARIES "/tqheflib.framework/tqheflib",
    .hpec = ZR7700_LIBRARIES "/tqhehpec.framework/tqhehpec",
    .hpeh = ZR7700_LIBRARIES "/tqhehpeh.framework/tqhehpeh",
    .hpep = ZR7700_LIBRARIES "/tqhehpep.framework/tqhehpep",
    .engine_path1 = ZR7700_ENGINE_DATA "/tqhe",
    .engine_path2 = ZR7700_ENGINE_DATA "/tqhe",
    .engine_path3 = ZR7700_ENGINE_DATA "/tqhe",
    .engine_path4 = ZR7700_ENGINE_DATA "/tqhe",
    .color_table_standard = ZR7700_ENGINE_DATA "/tqhebsclr1",
    .color_table_photo = ZR7700_ENGINE_DATA "/tqhebsclrL",
    .color_table_photo_glossy = ZR7700_ENGINE_DATA "/tqhebsclrL",
    .engine_ini = ZR7700_ENGINE_DATA "/tqhecfg.ini",
};

inline constexpr EngineFamily kGranite = {
    .name = "Granite",
    .flib = ZR7700_LIBRARIES "/tqgrflib.framework/tqgrflib",
    .hpec = ZR7700_LIBRARIES "/tqgrhpec.framework/tqgrhpec",
    .hpeh = ZR7700_LIBRARIES "/tqgrhpeh.framework/tqgrhpeh",
    .hpep = ZR7700_LIBRARIES "/tqgrhpep.framework/tqgrhpep",
    .engine_path1 = ZR7700_LIBRARIES "/tqgr",
    .engine_path2 = ZR7700_LIBRARIES "/tqgr",
    .engine_path3 = ZR7700_LIBRARIES "/tqgr",
    .engine_path4 = ZR7700_ENGINE_DATA "/tqgr",
    .color_table_standard = ZR7700_ENGINE_DATA "/tqgrclr1",
    .color_table_photo = ZR7700_ENGINE_DATA "/tqgrclrPhoto",
    .color_table_photo_glossy = ZR7700_ENGINE_DATA "/tqgrclrPhGlossy",
    .engine_ini = ZR7700_ENGINE_DATA "/tqgrcfg.ini",
};

}  // namespace zr7700::paths

#endif  // ZR7700_BASE_PATHS_H_
