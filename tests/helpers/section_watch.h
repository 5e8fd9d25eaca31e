// What the library does to the critical sections, seen at the system call.
//
// For a program that is linked with `semop` wrapped and section_watch.cpp.
#pragma once

#include "threading.h"

struct sectionWatch {
  static inline int entries[CS_COUNT];
  static inline bool held[CS_COUNT];
};

/// How often `action` takes a section.
template <class Action>
int entriesDuring(sectionId section, Action&& action) {
  const int before = sectionWatch::entries[section];
  action();
  return sectionWatch::entries[section] - before;
}
