// SPDX-License-Identifier: MIT
// The name of a program without its folder.
#pragma once

/// The last component of `path`, after the last "/" or "\\".
///
///     stubName("/usr/bin/vncviewer")   // vncviewer
const char* stubName(const char* path);
