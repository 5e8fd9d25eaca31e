#include "section_watch.h"

#include <sys/sem.h>

#include <cstddef>

extern "C" {
int __real_semop(int set, sembuf* operations, std::size_t count);
int __wrap_semop(int set, sembuf* operations, std::size_t count);

// A section is taken by -1 and given back by +1.
int __wrap_semop(int set, sembuf* operations, std::size_t count) {
  const int result = __real_semop(set, operations, count);
  if (result == 0 && count == 1 && operations->sem_num < CS_COUNT) {
    sectionWatch::held[operations->sem_num] = operations->sem_op < 0;
    if (operations->sem_op < 0) {
      sectionWatch::entries[operations->sem_num]++;
    }
  }
  return result;
}
}
