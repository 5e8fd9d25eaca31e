// SPDX-License-Identifier: MIT
#include "own_root.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// A folder of the outer root, at the same path in the new one.
bool show(const fs::path& root, const fs::path& name) {
  const fs::path outside = "/" / name;
  const fs::path inside = root / name;
  std::error_code ignored;
  if (fs::is_symlink(outside, ignored)) {
    fs::copy_symlink(outside, inside, ignored);
    return true;
  }
  if (!fs::is_directory(outside, ignored)) {
    return true;
  }
  fs::create_directories(inside, ignored);
  return mount(outside.c_str(), inside.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

}  // namespace

void enterRoot(const std::string& folder, const std::vector<std::string>& kept) {
  const int namespaces = geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
  if (unshare(namespaces) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    _exit(NO_ROOT_OF_ITS_OWN);
  }
  std::set<std::string> names = {"bin", "dev", "lib", "lib32", "lib64", "libx32", "proc", "usr"};
  for (const fs::path path : kept) {
    names.insert(*std::next(path.begin()));
  }
  const std::string working = fs::current_path();
  for (const std::string& name : names) {
    if (!show(folder, name)) {
      _exit(NO_ROOT_OF_ITS_OWN);
    }
  }
  if (chroot(folder.c_str()) != 0 || chdir(working.c_str()) != 0) {
    _exit(NO_ROOT_OF_ITS_OWN);
  }
}
