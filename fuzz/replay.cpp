// SPDX-License-Identifier: MIT
// Gives a fuzzer every file of the folders named on the command line once, for builds
// without libFuzzer.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** folders) {
  int inputs = 0;
  for (int i = 1; i < count; i++) {
    for (const auto& entry : std::filesystem::directory_iterator(folders[i])) {
      std::fprintf(stderr, "%s\n", entry.path().c_str());
      std::ifstream file(entry.path(), std::ios::binary);
      // A vector has exactly the bytes of the file, so that sanitizers know its end.
      const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
      inputs++;
    }
  }
  return inputs > 0 ? 0 : 1;
}
