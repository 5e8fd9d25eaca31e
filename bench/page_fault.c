// SPDX-License-Identifier: MIT
/* Prints what a page fault costs, in nanoseconds: the median of many rounds in which fresh
   pages of memory are touched. */

#define _GNU_SOURCE
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

enum { ROUNDS = 101, PAGES = 1000 };

static int ascending(const void* a, const void* b) {
  const double difference = *(const double*)a - *(const double*)b;
  return (difference > 0) - (difference < 0);
}

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec * 1e9 + (double)time.tv_nsec;
}

int main(void) {
  const size_t page = (size_t)sysconf(_SC_PAGESIZE);
  double times[ROUNDS];
  for (int round = 0; round < ROUNDS; round++) {
    char* const memory =
        mmap(NULL, PAGES * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
      return 1;
    }
    madvise(memory, PAGES * page, MADV_NOHUGEPAGE);
    const double began = now();
    for (size_t i = 0; i < PAGES; i++) {
      *(volatile char*)(memory + i * page) = 1;
    }
    times[round] = (now() - began) / PAGES;
    munmap(memory, PAGES * page);
  }
  qsort(times, ROUNDS, sizeof *times, ascending);
  printf("%.0f\n", times[ROUNDS / 2]);
  return 0;
}
