// Runs a fuzz target over its corpus and over random inputs that are the same at every run: what
// the fuzzer has found stays tested where there is no fuzzer.
//
//   <target>_replay CORPUS-FOLDER RANDOM-INPUTS
// SPDX-FileCopyrightText: The rastertoZR7700 authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "fuzz/input.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kLongestRandomInput = 9000;

std::vector<Bytes> ReadCorpus(const char* folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  std::vector<Bytes> corpus;
  for (const std::filesystem::path& path : paths) {
    std::ifstream file(path, std::ios::binary);
    corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return corpus;
}

// Half of the inputs are random bytes, short ones more often; the others are of the corpus with
// some bytes changed and the end cut off.
Bytes RandomInput(const std::vector<Bytes>& corpus, std::mt19937& random) {
  if (random() % 2 == 0) {
    Bytes input(random() % (1 + random() % kLongestRandomInput));
    for (uint8_t& byte : input) byte = static_cast<uint8_t>(random());
    return input;
  }
  Bytes input = corpus[random() % corpus.size()];
  for (uint32_t changes = random() % 8; changes > 0 && !input.empty(); --changes) {
    input[random() % input.size()] = static_cast<uint8_t>(random());
  }
  if (random() % 4 == 0) input.resize(random() % (input.size() + 1));
  return input;
}

// At the exact size, so that a checker sees the first byte beyond.
void Run(const Bytes& input) {
  const std::vector<uint8_t> copy(input.begin(), input.end());
  LLVMFuzzerTestOneInput(copy.data(), copy.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return fprintf(stderr, "usage: %s CORPUS-FOLDER RANDOM-INPUTS\n", argv[0]), 2;
  const std::vector<Bytes> corpus = ReadCorpus(argv[1]);
  if (corpus.empty()) return fprintf(stderr, "%s is empty\n", argv[1]), 1;
  for (const Bytes& input : corpus) Run(input);
  std::mt19937 random(7700);
  const int count = atoi(argv[2]);
  for (int i = 0; i < count; ++i) Run(RandomInput(corpus, random));
  printf("%zu inputs of the corpus and %d random ones\n", corpus.size(), count);
  return 0;
}
