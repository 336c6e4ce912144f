#include "reference_engine/color_table.h"

#include <lcms2.h>
#include <sys/stat.h>

#include <array>
#include <fstream>
#include <memory>

namespace zr7700::reference_engine {
namespace {

// A device link with a grid of 33 nodes has about 220 kB; nobody's table is near this.
constexpr int64_t kMaxTableBytes = 16 << 20;

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

bool ReadWhole(const std::string& path, int64_t length_bytes, std::vector<char>* bytes) {
  std::ifstream file(path, std::ios::binary);
  bytes->resize(static_cast<size_t>(length_bytes));
  return file.read(bytes->data(), length_bytes).gcount() == length_bytes;
}

bool IsInkLink(cmsHPROFILE profile) {
  return cmsGetDeviceClass(profile) == cmsSigLinkClass &&
         cmsGetColorSpace(profile) == cmsSigRgbData && cmsGetPCS(profile) == cmsSigCmyData;
}

// The 16-bit input that node `node` stands for; the widening skips the value 128.
cmsUInt16Number NodeInput(uint32_t node) {
  const double widened = static_cast<double>(node << kTableStepShift);
  const double value = widened <= 127 ? widened : widened == 128 ? 127.5 : widened - 1;
  return static_cast<cmsUInt16Number>(value * 257);
}

InkNode PackNode(const cmsUInt16Number* inks) {
  const auto code = [](cmsUInt16Number ink) { return (ink + 128U) / 257U; };
  return code(inks[0]) | code(inks[1]) << 8 | code(inks[2]) << 16;
}

void SampleRow(cmsHTRANSFORM transform, uint32_t red, uint32_t green, InkNode* row) {
  std::array<cmsUInt16Number, kTableNodes * 3> in;
  std::array<cmsUInt16Number, kTableNodes * 3> out;
  for (uint32_t blue = 0; blue < kTableNodes; ++blue) {
    in[blue * 3] = NodeInput(red);
    in[blue * 3 + 1] = NodeInput(green);
    in[blue * 3 + 2] = NodeInput(blue);
  }
  cmsDoTransform(transform, in.data(), out.data(), kTableNodes);
  for (uint32_t blue = 0; blue < kTableNodes; ++blue) row[blue] = PackNode(&out[blue * 3]);
}

std::vector<InkNode> Sample(cmsHTRANSFORM transform) {
  std::vector<InkNode> nodes(kTableNodes * kTableNodes * kTableNodes);
  for (uint32_t red = 0; red < kTableNodes; ++red)
    for (uint32_t green = 0; green < kTableNodes; ++green)
      SampleRow(transform, red, green, &nodes[(red * kTableNodes + green) * kTableNodes]);
  // Bare paper stays bare whatever the table says.
  nodes.back() = 0;
  return nodes;
}

std::vector<InkNode> NodesOf(const std::vector<char>& file) {
  const Context context(cmsCreateContext(nullptr, nullptr));
  const Profile profile(cmsOpenProfileFromMemTHR(context.get(), file.data(),
                                                 static_cast<cmsUInt32Number>(file.size())));
  if (!profile || !IsInkLink(profile.get())) return {};
  const Transform transform(cmsCreateTransformTHR(context.get(), profile.get(), TYPE_RGB_16,
                                                  nullptr, TYPE_CMY_16, INTENT_PERCEPTUAL,
                                                  cmsFLAGS_NOCACHE | cmsFLAGS_NOOPTIMIZE));
  return transform ? Sample(transform.get()) : std::vector<InkNode>();
}

}  // namespace

bool ColorTable::Identify(const std::string& path, Identity* identity) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  *identity = {path, static_cast<uint64_t>(status.st_ino), status.st_size,
               status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec};
  return status.st_size > 0 && status.st_size <= kMaxTableBytes;
}

bool ColorTable::Load(const std::string& path) {
  Identity identity;
  if (!Identify(path, &identity)) return false;
  if (loaded() && identity == identity_) return true;
  std::vector<char> file;
  if (!ReadWhole(path, identity.length_bytes, &file)) return false;
  std::vector<InkNode> nodes = NodesOf(file);
  if (nodes.empty()) return false;
  nodes_ = std::move(nodes);
  identity_ = identity;
  return true;
}

}  // namespace zr7700::reference_engine
