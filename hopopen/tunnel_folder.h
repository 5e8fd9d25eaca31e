// SPDX-License-Identifier: MIT
// The folders that tunnels begin in.
//
// A tunnel begins at a socket, not at a port: no other user can connect to it, and none
// can answer in its place.  The socket is in a new folder of mode 0700 below the folder of the
// user's session.
//
// Whoever makes a tunnel holds a lock on its folder until it has become the viewer.  A folder
// that nobody has locked, and whose socket nobody listens at, is left over.
#pragma once

#include <optional>
#include <string>

#include "descriptor.h"

namespace hopopen {

/// The folder of one tunnel, which is removed with this object.
class tunnelFolder {
 public:
  /// Makes a folder below `runtime`, the value of XDG_RUNTIME_DIR, or null if there is none.
  explicit tunnelFolder(const char* runtime);
  ~tunnelFolder();
  tunnelFolder(const tunnelFolder&) = delete;
  tunnelFolder& operator=(const tunnelFolder&) = delete;

  /// Why there is no folder, in sentences, printable ASCII; empty when there is one.
  const std::string& fault() const { return m_fault; }
  /// The path of the socket, at which there is nothing yet.
  std::string socket() const;
  /// True when there is a socket of this user now.
  bool hasSocket() const;

 private:
  bool make(const std::string& runtime);

  std::string m_path;
  std::string m_fault;
  std::optional<descriptor> m_lock;
};

/// Removes the folders that are left over.  What cannot be removed stays.
void removeOldTunnels(const char* runtime);

}  // namespace hopopen
