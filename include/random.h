// SPDX-License-Identifier: MIT
// Pseudo-random numbers.
//
// `PRNG` hands out bytes and dice throws from the C library's `random()`, seeded
// once per process from the clock; all objects share that one sequence.  Not for
// secrets.  A forked child goes on with a copy of its parent's sequence.  May be used
// before `main` and at exit.
//
// What is kept here is for one thread of a process only.
#pragma once

#pragma GCC visibility push(default)

/// A source of pseudo-random numbers.
class PRNG {
 public:
  /// Seeds the generator on the first construction in the process.
  PRNG();

  /// A value 0 to 255.
  unsigned char byte();

  /// A value 0 to `n` - 1, each equally likely.  REQUIRES: `n` is at least 1;
  /// otherwise the assertion "n >= 1" fails.
  int die(int n);

 private:
  [[maybe_unused]] int state = 0;  // kept for generators that have a state of their own
};

#pragma GCC visibility pop
