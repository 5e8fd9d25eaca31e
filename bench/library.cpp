// SPDX-License-Identifier: MIT
// The benchmarks of the library, each beside the comparable functions of well-known
// libraries.  Accepts the options of Google Benchmark.

#include "library.h"

#include <random>

#include "system.h"

std::string InterfaceFinder::FQDN() {
  return std::string();
}

std::string anyBytes(std::size_t size) {
  std::mt19937 random(1);
  std::string result(size, '\0');
  for (char& c : result) {
    c = static_cast<char>(random());
  }
  return result;
}

std::string linkText(std::size_t size) {
  std::string result;
  while (result.size() < size) {
    result += "share view/host=";
  }
  result.resize(size);
  return result;
}

int main(int count, char** args) {
  benchmark::Initialize(&count, args);
  if (benchmark::ReportUnrecognizedArguments(count, args)) {
    return 1;
  }
  addTextBenchmarks();
  addDateBenchmarks();
  addListBenchmarks();
  addConfigBenchmarks();
  addRuntimeBenchmarks();
  addURIBenchmarks();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
