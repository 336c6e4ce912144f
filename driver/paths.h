// Every absolute path and system-wide name that the outside world knows.
//
// ZR7700_ROOT, empty in a production build, is put in front of all of them so that tests and the
// demonstration leave the machine alone.
#ifndef ZR7700_DRIVER_PATHS_H_
#define ZR7700_DRIVER_PATHS_H_

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

}  // namespace zr7700::paths

#endif  // ZR7700_DRIVER_PATHS_H_
