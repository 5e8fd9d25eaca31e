// SPDX-License-Identifier: MIT
// What the benchmarks of the library share: how they are named and registered.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

/// Sizes in bytes, for what reads or writes texts.
inline const std::vector<std::size_t> textSizes = {16, 1024, 1048576};

/// Registers a benchmark "TASK/LIBRARY/SIZE" for each size.  `prepare(size)` makes the
/// input and returns what is timed, a function that returns its result.
template <class Prepare>
void add(const std::string& task, const std::string& library, const std::vector<std::size_t>& sizes,
         Prepare prepare) {
  for (const std::size_t size : sizes) {
    const std::string name = task + "/" + library + "/" + std::to_string(size);
    benchmark::RegisterBenchmark(name.c_str(), [prepare, size](benchmark::State& state) {
      auto run = prepare(size);
      for ([[maybe_unused]] const auto& iteration : state) {
        benchmark::DoNotOptimize(run());
      }
    });
  }
}

/// `size` bytes without a pattern, the same in every run.
std::string anyBytes(std::size_t size);

/// `size` characters as they are in a link: words, and every sixth one to be escaped.
std::string linkText(std::size_t size);

void addTextBenchmarks();
void addDateBenchmarks();
void addListBenchmarks();
void addConfigBenchmarks();
void addRuntimeBenchmarks();
void addURIBenchmarks();
