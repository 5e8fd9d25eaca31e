// SPDX-License-Identifier: MIT
#include "settings_file.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include "fault.h"
#include "file.h"
#include "file_replace.h"
#include "settings.h"
#include "settings_edit.h"
#include "shown.h"

namespace hopopen {

namespace {

std::string advice(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "Make room there, and try again.";
    case EACCES:
    case EPERM:
      return "Check who may write there.";
    case EROFS:
      return "Nobody can write there. Make it writable, or choose another folder by "
             "XDG_CONFIG_HOME.";
    default:
      return "Check what is there, and try again.";
  }
}

// REQUIRES: a call has just failed.
std::string failure(const std::string& path) {
  const int error = errno;
  return "Cannot write " + printable(path) + ": " + std::strerror(error) +
         ". Nothing was changed. " + advice(error);
}

// Replaces the file by one with that text.  The error, or nothing.
std::string replace(const std::string& path, const std::string& text) {
  switch (replaceFile(path, text)) {
    case replacement::DONE:
      break;
    case replacement::FAILED:
      return failure(path);
    case replacement::UNSYNCED:
      return "The settings in " + printable(path) + " are changed, but may be the old ones after " +
             "a power failure: " + std::strerror(errno) + ". Check the disk.";
  }
  return {};
}

// What to do about a file.
struct plan {
  std::string error = {};                // what prevents it
  std::optional<std::string> text = {};  // what to write, if anything
};

// `path` is what messages call the file.
plan planned(const std::string& path, const std::string& target, const change& what) {
  const fileText old = readFile(target);
  faults found;
  if (old.error.empty()) {
    readSettings(old.text, path, found);
  } else {
    found.push_back({path, 1, 1, old.error});
  }
  if (!found.empty()) {
    return {found.front().lineOfText() + ". Nothing was changed. Fix the file first.", {}};
  }
  const auto text = edited(old.text, what);
  if (!text) {
    return {"Cannot change " + printable(path) +
                " without losing something in it. Nothing was changed. Change it by hand.",
            {}};
  }
  if (text->size() > LONGEST_FILE) {
    return {"Cannot write " + printable(path) +
                ": it would be larger than 1 MiB. Nothing was changed. Remove something from it, "
                "and try again.",
            {}};
  }
  return {{}, *text == old.text ? std::nullopt : text};
}

}  // namespace

std::string changeSettings(const std::string& path, const change& what) {
  const plan first = planned(path, path, what);
  if (!first.text) {
    return first.error;
  }
  const auto target = makeFolders(path) ? followed(path) : std::nullopt;
  if (!target || !makeFolders(*target)) {
    return failure(path);
  }
  const std::string locked = *target + ".lock";
  const fileLock lock(locked);
  if (!lock.isHeld()) {
    return failure(locked);
  }
  // Others may have changed the file meanwhile.
  const plan last = planned(path, *target, what);
  return last.text ? replace(*target, *last.text) : last.error;
}

}  // namespace hopopen
