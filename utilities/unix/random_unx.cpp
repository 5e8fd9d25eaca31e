// SPDX-License-Identifier: MIT
#include "random.h"

#include <cstdint>
#include <cstdlib>

#include "assertion.h"
#include "datetime.h"

PRNG::PRNG() {
  static constinit bool unseeded = true;
  if (unseeded) {
    unseeded = false;
    const std::uint64_t time = DateTime::now(0).VNCtime();
    srandom(static_cast<unsigned int>(time >> 32 ^ (time & 0xFFFFFFFF)));
  }
}

unsigned char PRNG::byte() {
  long result;
  do {
    result = random() / 8388608;
  } while (result < 0 || result > 255);
  return static_cast<unsigned char>(result);
}

int PRNG::die(int n) {
  ASSERT(n >= 1);
  // A draw in the partial last bucket is repeated, so there is no bias.
  const std::int64_t bucket = ((std::int64_t{1} << 31) - n) / n + 1;
  std::int64_t result;
  do {
    result = random() / bucket;
  } while (result < 0 || result >= n);
  return static_cast<int>(result);
}
