// SPDX-License-Identifier: MIT
#include "tunnel_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "file.h"
#include "paths.h"
#include "shown.h"
#include "ssh_command.h"

namespace hopopen {

namespace {

constexpr std::string_view PREFIX = "hopopen-";
constexpr std::string_view PATTERN = "hopopen-XXXXXX";
constexpr const char* SOCKET = "socket";

constexpr mode_t OTHERS_MAY_WRITE = S_IWGRP | S_IWOTH;

std::string socketIn(const std::string& folder) {
  return within(folder, SOCKET);
}

// What is wrong with the folder of the session, or nothing.
std::string faultOf(const char* runtime) {
  if (runtime == nullptr || *runtime == '\0') {
    return "is not set";
  }
  struct stat status;
  if (*runtime != '/') {
    return "is not an absolute path";
  }
  if (stat(runtime, &status) != 0 || !S_ISDIR(status.st_mode)) {
    return "names a folder that is not there";
  }
  if (status.st_uid != geteuid()) {
    return "names a folder of another user";
  }
  if ((status.st_mode & OTHERS_MAY_WRITE) != 0) {
    return "names a folder that others may write to";
  }
  if (socketIn(within(runtime, std::string(PATTERN))).size() >= sizeof(sockaddr_un::sun_path)) {
    return "names a folder whose path is too long for a socket";
  }
  return isPlainPath(runtime) ? ""
                              : "names a folder whose path has characters that ssh reads otherwise";
}

descriptor openFolder(const std::string& path) {
  return descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool isOwn(const descriptor& folder) {
  struct stat status;
  return fstat(folder.number(), &status) == 0 && status.st_uid == geteuid();
}

// Whether somebody has a socket at the path.  A socket of another type is told who is there
// without being connected to it: a connection would go through the tunnel.
bool isServed(const std::string& path) {
  sockaddr_un address{};
  if (path.size() >= sizeof address.sun_path) {
    return true;
  }
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, path.size());
  const descriptor probe(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return !probe.isOpen() ||
         connect(probe.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
             0 ||
         (errno != ECONNREFUSED && errno != ENOENT);
}

void removeFolder(const std::string& path) {
  unlink(socketIn(path).c_str());
  rmdir(path.c_str());
}

void removeIfOld(const std::string& path) {
  const descriptor folder = openFolder(path);
  if (folder.isOpen() && isOwn(folder) && flock(folder.number(), LOCK_EX | LOCK_NB) == 0 &&
      !isServed(socketIn(path))) {
    removeFolder(path);
  }
}

}  // namespace

tunnelFolder::tunnelFolder(const char* runtime) {
  const std::string fault = faultOf(runtime);
  if (!fault.empty()) {
    m_fault = "A tunnel needs the folder of your session, but XDG_RUNTIME_DIR " + fault +
              ". Log out and in again, or set it to a folder that only you can use.";
    return;
  }
  constexpr int attempts = 10;
  for (int i = 0; i < attempts && m_path.empty(); i++) {
    if (!make(runtime)) {
      break;
    }
  }
  if (m_path.empty()) {
    m_fault = "No folder for a tunnel could be made in " + shownWord(runtime) + ": " +
              std::strerror(errno) + ". Make room there, or log out and in again.";
  }
}

// Makes a folder and locks it.  Between the two, somebody who cleans up may have removed it: then
// there is no path yet.  False when the system reports an error.
bool tunnelFolder::make(const std::string& runtime) {
  std::string path = within(runtime, std::string(PATTERN));
  if (mkdtemp(path.data()) == nullptr) {
    return false;
  }
  m_lock.emplace(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (m_lock->isOpen() && flock(m_lock->number(), LOCK_EX) == 0 &&
      fstat(m_lock->number(), &status) == 0 && status.st_nlink > 0) {
    m_path = path;
  }
  return true;
}

tunnelFolder::~tunnelFolder() {
  if (!m_path.empty()) {
    removeFolder(m_path);
  }
}

std::string tunnelFolder::socket() const {
  return socketIn(m_path);
}

bool tunnelFolder::hasSocket() const {
  struct stat status;
  return lstat(socket().c_str(), &status) == 0 && S_ISSOCK(status.st_mode) &&
         status.st_uid == geteuid();
}

void removeOldTunnels(const char* runtime) {
  if (!faultOf(runtime).empty()) {
    return;
  }
  std::string ignored;
  for (const std::string& name : namesIn(runtime, ignored)) {
    if (name.starts_with(PREFIX) && name.size() == PATTERN.size()) {
      removeIfOld(within(runtime, name));
    }
  }
}

}  // namespace hopopen
