// SPDX-License-Identifier: MIT
#include "stubname.h"

const char* stubName(const char* path) {
  const char* result = path;
  for (const char* p = path; *p != '\0'; p++) {
    if (*p == '/' || *p == '\\') {
      result = p + 1;
    }
  }
  return result;
}
