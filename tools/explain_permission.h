// SPDX-License-Identifier: MIT
// Whether this process may execute a file.
#pragma once

#include <string>

/// 0 when this process may execute the file, else the error number.
int permissionError(const std::string& path);
