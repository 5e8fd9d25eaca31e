// SPDX-License-Identifier: MIT
// Changing the settings file of a user on disk.
//
// The file is never written to: a new one is written next to it, synced, and renamed over it.
// So a reader, a crash or a full disk meets the old file or the new one, whole.  A lock, on a
// file next to it that stays, lets only one process at a time read, change and rename, so
// that two at once lose nothing.
#pragma once

#include <string>

#include "settings_change.h"

namespace hopopen {

/// Changes the settings file at `path`, or makes it.
///
/// - Missing folders are made, for their owner alone (mode 0700).
/// - A symbolic link stays: what it leads to is changed, or made.
/// - The new file is its owner's alone (mode 0600).
/// - A file with a fault is never touched.
/// - Without a change, nothing is written.
/// - When a call fails, the file is as it was, and nothing but the lock is left next to it.
///
/// Waits while another process changes the same file.  Returns nothing when all is well;
/// otherwise what was wrong and what to do, in sentences, printable ASCII.
std::string changeSettings(const std::string& path, const change& what);

}  // namespace hopopen
