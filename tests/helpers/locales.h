// SPDX-License-Identifier: MIT
// Locales that the build makes in a folder of its own, so that they need not be installed.
#pragma once

#include <clocale>
#include <cstdlib>
#include <string>

/// Sets the locale of the program, "tr_TR.UTF-8" for example.  False if the build could not
/// make it, since the package locales is not installed.
inline bool chooseLocale(const std::string& name) {
  setenv("LOCPATH", TEST_LOCALES, 1);
  return std::setlocale(LC_ALL, name.c_str()) != nullptr;
}
