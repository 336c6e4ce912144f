// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/color_table.h"

#include <lcms2.h>
#include <lcms2_plugin.h>
#include <sys/stat.h>

#include <array>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "base/regular_file.h"

namespace zr7700::reference_engine {
namespace {

// A device link with a grid of 33 nodes has about 220 kB; nobody's table is near this.
constexpr size_t kMaxTableBytes = 16 << 20;

// Where an ICC profile's header carries the profile ID.
constexpr size_t kHeaderBytes = 128;
constexpr size_t kIdOffset = 84;
constexpr size_t kIdBytes = 16;

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct TransformDeleter {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
struct ContextDeleter {
  void operator()(_cmsContext_struct* context) const { cmsDeleteContext(context); }
};
using Context = std::unique_ptr<_cmsContext_struct, ContextDeleter>;
using Profile = std::unique_ptr<void, ProfileCloser>;
using Transform = std::unique_ptr<void, TransformDeleter>;

using Bytes = std::span<const cmsUInt8Number>;

uint32_t LoadBig32(const cmsUInt8Number* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// The MD5 of the file with zeros for the ID. The standard also leaves out the flags and the intent,
// but those are zero in our tables: hashed as they are, they are guarded like everything else.
cmsProfileID IdOf(cmsContext context, Bytes file) {
  const cmsUInt8Number zeros[kIdBytes] = {};
  const Bytes after = file.subspan(kIdOffset + kIdBytes);
  cmsProfileID id = {};
  if (cmsHANDLE const sum = cmsMD5alloc(context); sum != nullptr) {
    cmsMD5add(sum, file.data(), kIdOffset);
    cmsMD5add(sum, zeros, kIdBytes);
    cmsMD5add(sum, after.data(), static_cast<cmsUInt32Number>(after.size()));
    cmsMD5finish(&id, sum);
  }
  return id;
}

bool IsWhole(cmsContext context, Bytes file) {
  if (file.size() < kHeaderBytes || LoadBig32(file.data()) != file.size()) return false;
  const cmsProfileID id = IdOf(context, file);
  return std::memcmp(id.ID8, file.data() + kIdOffset, kIdBytes) == 0;
}

bool IsInkLink(Family family, cmsHPROFILE profile) {
  char description[80] = "";
  cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", description, sizeof description);
  return cmsGetDeviceClass(profile) == cmsSigLinkClass &&
         cmsGetColorSpace(profile) == cmsSigRgbData && cmsGetPCS(profile) == cmsSigCmyData &&
         std::string_view(description).starts_with(TableDescription(family));
}

// The 16-bit input that node `node` stands for; the widening skips the value 128.
cmsUInt16Number NodeInput(uint32_t node) {
  const auto widened = static_cast<double>(node << kTableStepShift);
  const double value = widened <= 127 ? widened : widened == 128 ? 127.5 : widened - 1;
  return static_cast<cmsUInt16Number>(value * 257);
}

InkNode PackNode(const cmsUInt16Number* inks) {
  const auto code = [](cmsUInt16Number ink) { return (ink + 128U) / 257U; };
  return code(inks[0]) | code(inks[1]) << 8 | code(inks[2]) << 16;
}

void SampleRow(cmsHTRANSFORM transform, uint32_t red, uint32_t green, InkNode* row) {
  std::array<cmsUInt16Number, size_t{kTableNodes} * 3> in;
  std::array<cmsUInt16Number, size_t{kTableNodes} * 3> out;
  for (size_t blue = 0; blue < kTableNodes; ++blue) {
    in[blue * 3] = NodeInput(red);
    in[blue * 3 + 1] = NodeInput(green);
    in[blue * 3 + 2] = NodeInput(static_cast<uint32_t>(blue));
  }
  cmsDoTransform(transform, in.data(), out.data(), kTableNodes);
  for (size_t blue = 0; blue < kTableNodes; ++blue) row[blue] = PackNode(&out[blue * 3]);
}

std::vector<InkNode> Sample(cmsHTRANSFORM transform) {
  std::vector<InkNode> nodes(size_t{kTableNodes} * kTableNodes * kTableNodes);
  for (uint32_t red = 0; red < kTableNodes; ++red)
    for (uint32_t green = 0; green < kTableNodes; ++green)
      SampleRow(transform, red, green, &nodes[(size_t{red} * kTableNodes + green) * kTableNodes]);
  // Bare paper stays bare whatever the table says.
  nodes.back() = 0;
  return nodes;
}

std::vector<InkNode> NodesOf(Family family, Bytes file) {
  const Context context(cmsCreateContext(nullptr, nullptr));
  if (!IsWhole(context.get(), file)) return {};
  const Profile profile(cmsOpenProfileFromMemTHR(context.get(), file.data(),
                                                 static_cast<cmsUInt32Number>(file.size())));
  if (!profile || !IsInkLink(family, profile.get())) return {};
  const Transform transform(cmsCreateTransformTHR(context.get(), profile.get(), TYPE_RGB_16,
                                                  nullptr, TYPE_CMY_16, INTENT_PERCEPTUAL,
                                                  cmsFLAGS_NOCACHE | cmsFLAGS_NOOPTIMIZE));
  return transform ? Sample(transform.get()) : std::vector<InkNode>();
}

}  // namespace

bool ColorTable::Identify(const std::string& path, Identity* identity) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  *identity = {path,
               static_cast<uint64_t>(status.st_dev),
               static_cast<uint64_t>(status.st_ino),
               status.st_size,
               status.st_mtim.tv_sec,
               status.st_mtim.tv_nsec};
  return true;
}

bool ColorTable::Load(Family family, const std::string& path) {
  Identity identity;
  if (!Identify(path, &identity)) return false;
  if (loaded() && identity == identity_) return true;
  std::string file;
  if (ReadRegularFile(path.c_str(), Links::kFollowed, kMaxTableBytes, file) != FileReading::kRead)
    return false;
  std::vector<InkNode> nodes =
      NodesOf(family, Bytes(reinterpret_cast<const cmsUInt8Number*>(file.data()), file.size()));
  if (nodes.empty()) return false;
  // Together, whatever memory there is.
  static_assert(std::is_nothrow_move_assignable_v<Identity>);
  nodes_ = std::move(nodes);
  identity_ = std::move(identity);
  return true;
}

}  // namespace zr7700::reference_engine
