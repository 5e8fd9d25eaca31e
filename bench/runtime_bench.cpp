// SPDX-License-Identifier: MIT
// Critical sections and event reports.

#include <pthread.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>

#include <memory>
#include <new>

#include "events.h"
#include "library.h"
#include "threading.h"

namespace {

// A set of one semaphore, with the value 1.
class bareSemaphore {
 public:
  bareSemaphore() : m_id(semget(IPC_PRIVATE, 1, 0600)) { change(1); }
  bareSemaphore(const bareSemaphore&) = delete;
  bareSemaphore& operator=(const bareSemaphore&) = delete;
  ~bareSemaphore() { semctl(m_id, 0, IPC_RMID); }

  int change(short by) const {
    struct sembuf operation = {0, by, 0};
    return semop(m_id, &operation, 1);
  }

 private:
  int m_id;
};

// A mutex that processes could share.
class sharedMutex {
 public:
  sharedMutex()
      : m_mutex(new (mmap(nullptr, sizeof(pthread_mutex_t), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0)) pthread_mutex_t) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutex_init(m_mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
  }
  sharedMutex(const sharedMutex&) = delete;
  sharedMutex& operator=(const sharedMutex&) = delete;
  ~sharedMutex() {
    pthread_mutex_destroy(m_mutex);
    munmap(m_mutex, sizeof *m_mutex);
  }

  int takeAndRelease() {
    const int result = pthread_mutex_lock(m_mutex);
    return result + pthread_mutex_unlock(m_mutex);
  }

 private:
  pthread_mutex_t* m_mutex;
};

}  // namespace

void addRuntimeBenchmarks() {
  const std::vector<std::size_t> once = {1};
  const char* const task = "section, take and release";
  add(task, "hoplaunch", once,
      [](std::size_t) { return [] { return criticalSection(CS_STDOUT, false).okay(); }; });
  add(task, "semop, bare", once, [](std::size_t) {
    return [semaphore = std::make_shared<bareSemaphore>()] {
      return semaphore->change(-1) + semaphore->change(1);
    };
  });
  add(task, "pthread_mutex, shared", once, [](std::size_t) {
    return [mutex = std::make_shared<sharedMutex>()] { return mutex->takeAndRelease(); };
  });
  // The process keeps stored reports as long as it lives, so there are not too many.
  benchmark::RegisterBenchmark("report, raise and store/hoplaunch/1", [](benchmark::State& state) {
    for ([[maybe_unused]] const auto& iteration : state) {
      commonEvent(WARNING, AUD_ALL, EC_COMMENT, "measured", "addRuntimeBenchmarks()");
    }
  })->Iterations(2000);
}
