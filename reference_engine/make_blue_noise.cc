// Build tool: makes the three blue-noise threshold masks by void-and-cluster and prints them as a
// C++ source. A mask of kMaskSide squared cells holds each rank 0 .. cells - 1 once; the cells
// below any rank lie as evenly as can be, also across the edges, where the mask meets itself.
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "reference_engine/blue_noise.h"

namespace zr7700::reference_engine {
namespace {

constexpr int kSide = kMaskSide;
constexpr int kCells = kMaskCells;
constexpr int kReach = 8;
constexpr double kSigmaCells = 1.5;
constexpr int kSeedCells = kCells / 10;

// A pattern of ones and how crowded each cell is by the ones around it.
class Pattern {
 public:
  Pattern() : ones_(kCells, 0), crowd_(kCells, 0) {
    for (int dy = -kReach; dy <= kReach; ++dy)
      for (int dx = -kReach; dx <= kReach; ++dx)
        weights_[Slot(dx, dy)] = std::exp(-(dx * dx + dy * dy) / (2 * kSigmaCells * kSigmaCells));
  }

  bool Has(int cell) const { return ones_[Index(cell)] != 0; }
  void Set(int cell) { Change(cell, 1); }
  void Clear(int cell) { Change(cell, 0); }

  // The most crowded one, and the least crowded zero.
  int TightestOne() const { return Extreme(1, 1); }
  int LargestVoid() const { return Extreme(0, -1); }

 private:
  static size_t Index(int cell) { return static_cast<size_t>(cell); }
  static size_t Slot(int dx, int dy) {
    return Index(dy + kReach) * Index(2 * kReach + 1) + Index(dx + kReach);
  }

  void Change(int cell, uint8_t value) {
    ones_[Index(cell)] = value;
    const double sign = value != 0 ? 1 : -1;
    for (int dy = -kReach; dy <= kReach; ++dy)
      for (int dx = -kReach; dx <= kReach; ++dx) {
        const int x = (cell % kSide + dx + kSide) % kSide;
        const int y = (cell / kSide + dy + kSide) % kSide;
        crowd_[Index(y * kSide + x)] += sign * weights_[Slot(dx, dy)];
      }
  }

  int Extreme(uint8_t value, double sign) const {
    int best = -1;
    for (int cell = 0; cell < kCells; ++cell)
      if (ones_[Index(cell)] == value &&
          (best < 0 || sign * crowd_[Index(cell)] > sign * crowd_[Index(best)]))
        best = cell;
    return best;
  }

  std::array<double, size_t{2 * kReach + 1} * (2 * kReach + 1)> weights_;
  std::vector<uint8_t> ones_;
  std::vector<double> crowd_;
};

// Random ones, moved from the tightest cluster to the largest void until nothing moves.
Pattern EvenSeed(uint32_t seed) {
  std::mt19937 random(seed);
  Pattern pattern;
  for (int placed = 0; placed < kSeedCells;) {
    const int cell = static_cast<int>(random() % kCells);
    if (pattern.Has(cell)) continue;
    pattern.Set(cell);
    ++placed;
  }
  // The bound only guards against a swap that repeats for ever through rounding.
  for (int moves = 0; moves < kCells; ++moves) {
    const int from = pattern.TightestOne();
    pattern.Clear(from);
    const int to = pattern.LargestVoid();
    pattern.Set(to);
    if (to == from) break;
  }
  return pattern;
}

std::vector<int> MakeMask(uint32_t seed) {
  std::vector<int> ranks(kCells);
  const Pattern even = EvenSeed(seed);
  Pattern falling = even;
  for (int rank = kSeedCells - 1; rank >= 0; --rank) {
    const int cell = falling.TightestOne();
    falling.Clear(cell);
    ranks[static_cast<size_t>(cell)] = rank;
  }
  Pattern rising = even;
  for (int rank = kSeedCells; rank < kCells; ++rank) {
    const int cell = rising.LargestVoid();
    rising.Set(cell);
    ranks[static_cast<size_t>(cell)] = rank;
  }
  return ranks;
}

void Print(const std::vector<int>& ranks) {
  std::printf("{");
  for (size_t i = 0; i < ranks.size(); ++i) std::printf(i % 16 == 15 ? "%d,\n" : "%d,", ranks[i]);
  std::printf("},\n");
}

}  // namespace
}  // namespace zr7700::reference_engine

int main() {
  using namespace zr7700::reference_engine;
  std::printf(
      "// Made by make_blue_noise.\n#include \"reference_engine/blue_noise.h\"\n\n"
      "namespace zr7700::reference_engine {\n\n"
      "const uint16_t kBlueNoise[kPlanes][kMaskCells] = {\n");
  for (uint32_t seed = 1; seed <= kPlanes; ++seed) Print(MakeMask(seed));
  std::printf("};\n\n}  // namespace zr7700::reference_engine\n");
  return 0;
}
