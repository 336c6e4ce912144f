// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include "reference_engine/ink_line_paths.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>

namespace zr7700::reference_engine {
namespace {

#define ZR7700_AVX2 __attribute__((target("avx2")))

constexpr uint32_t kLanes = 8;

// One channel of eight pixels, in the lowest byte of each lane, to its node numbers.
ZR7700_AVX2 inline __m256i NodeNumbers(__m256i channel, __m256i dither) {
  const __m256i values = _mm256_and_si256(channel, _mm256_set1_epi32(0xFF));
  const __m256i widened = _mm256_add_epi32(values, _mm256_srli_epi32(values, 7));
  return _mm256_srli_epi32(_mm256_add_epi32(widened, dither), kTableStepShift);
}

// All node numbers and products stay below 65536, so 16-bit products do.
ZR7700_AVX2 inline __m256i NodeIndexes(__m256i pixels, __m256i dither) {
  const __m256i nodes = _mm256_set1_epi32(kTableNodes);
  const __m256i red = NodeNumbers(pixels, dither);
  const __m256i green = NodeNumbers(_mm256_srli_epi32(pixels, 8), dither);
  const __m256i blue = NodeNumbers(_mm256_srli_epi32(pixels, 16), dither);
  const __m256i red_green = _mm256_add_epi32(_mm256_mullo_epi16(red, nodes), green);
  return _mm256_add_epi32(_mm256_mullo_epi16(red_green, nodes), blue);
}

// Splits eight nodes into eight bytes of each ink.
ZR7700_AVX2 inline void StoreInks(__m256i inks, uint32_t cell, uint8_t* const codes[kPlanes]) {
  const __m256i by_ink = _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15,  //
                                          0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  const __m256i halves_together = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  const __m256i sorted =
      _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(inks, by_ink), halves_together);
  const __m128i cyan_magenta = _mm256_castsi256_si128(sorted);
  const __m128i yellow = _mm256_extracti128_si256(sorted, 1);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(codes[kCyan] + cell), cyan_magenta);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(codes[kMagenta] + cell),
                   _mm_unpackhi_epi64(cyan_magenta, cyan_magenta));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(codes[kYellow] + cell), yellow);
}

ZR7700_AVX2 inline __m256i LoadPixels(const uint8_t* first, __m256i places, uint32_t step) {
  if (step == 1) return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(first));
  return _mm256_i32gather_epi32(reinterpret_cast<const int*>(first), places, 4);
}

// The cells that fill whole vectors; answers how many they were.
ZR7700_AVX2 uint32_t LookUpVectors(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                                   uint8_t* const codes[kPlanes]) {
  const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  const __m256i places = _mm256_mullo_epi32(lanes, _mm256_set1_epi32(static_cast<int>(run.step)));
  const __m256i lane_dither = _mm256_mullo_epi32(places, _mm256_set1_epi32(kDitherPerColumn));
  uint32_t cell = 0;
  for (; cell + kLanes <= run.cells; cell += kLanes) {
    const uint32_t column = run.first_column + cell * run.step;
    const uint32_t dither = column * kDitherPerColumn + run.line * kDitherPerLine;
    const __m256i dithers =
        _mm256_and_si256(_mm256_add_epi32(lane_dither, _mm256_set1_epi32(static_cast<int>(dither))),
                         _mm256_set1_epi32(kDitherMask));
    const __m256i colors = LoadPixels(pixels + size_t{column} * kPixelBytes, places, run.step);
    const __m256i inks = _mm256_i32gather_epi32(reinterpret_cast<const int*>(nodes),
                                                NodeIndexes(colors, dithers), 4);
    StoreInks(inks, cell, codes);
  }
  return cell;
}

}  // namespace

bool HasAvx2() { return __builtin_cpu_supports("avx2") != 0; }

void LookUpInksAvx2(const uint8_t* pixels, const CellRun& run, const InkNode* nodes,
                    uint8_t* const codes[kPlanes]) {
  const uint32_t done = LookUpVectors(pixels, run, nodes, codes);
  uint8_t* const rest[kPlanes] = {codes[kCyan] + done, codes[kMagenta] + done,
                                  codes[kYellow] + done};
  LookUpInksPlain(pixels,
                  {run.line, run.first_column + done * run.step, run.step, run.cells - done}, nodes,
                  rest);
}

}  // namespace zr7700::reference_engine

#else

namespace zr7700::reference_engine {

bool HasAvx2() { return false; }

void LookUpInksAvx2(const uint8_t* /*pixels*/, const CellRun& /*run*/, const InkNode* /*nodes*/,
                    uint8_t* const /*codes*/[kPlanes]) {}

}  // namespace zr7700::reference_engine

#endif
