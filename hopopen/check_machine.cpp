// SPDX-License-Identifier: MIT
#include "check_machine.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "definition.h"
#include "definitions.h"
#include "enumeration.h"
#include "notify.h"
#include "preferences.h"
#include "semaphores.h"

namespace hopopen {

namespace {

constexpr int FEW_SETS = 10;
constexpr const char* INSTALL_TERMINAL =
    "Install a terminal, such as the package xterm: \"sudo apt-get install xterm\"";

// The variable that says where the screen is, or null.
const char* screenVariable(variableReader get) {
  for (const char* const name : {"WAYLAND_DISPLAY", "DISPLAY"}) {
    if (!valueOf(get, name).empty()) {
      return name;
    }
  }
  return nullptr;
}

// Without a full stop, as an alternative may follow.
std::string installation(const definition& viewer) {
  std::string result = "Install " + viewer.title;
  if (!viewer.packages.empty()) {
    result += ": \"sudo apt-get install";
    for (const std::string& package : viewer.packages) {
      result += ' ' + package;
    }
    result += '"';
  }
  return result;
}

// The viewer to install: the first by rank, of those that may open every link if there is one.
const definition& preferred(const std::vector<const definition*>& viewers) {
  const auto found = std::find_if(viewers.begin(), viewers.end(), [](const definition* viewer) {
    return viewer->unguarded.empty();
  });
  return found == viewers.end() ? *viewers.front() : **found;
}

std::string described(const definition& viewer) {
  return viewer.title + " (" + viewer.name + ')';
}

// True when the viewer could be started if only there were a terminal.
bool lacksTerminal(const candidates& among, const definition& viewer) {
  definition alone = viewer;
  alone.terminal = false;
  return viewer.terminal && !among.find(viewer) && among.find(alone);
}

// The viewer that would open links of the scheme if only there were a terminal, or null.
const definition* waiting(const candidates& among, const std::string& scheme) {
  if (const auto wish = among.wishes.viewerFor(scheme)) {
    const definition* const chosen = among.known.named(wish->viewer);
    return chosen != nullptr && lacksTerminal(among, *chosen) ? chosen : nullptr;
  }
  if (lowestRank(among, scheme, false) != nullptr) {
    return nullptr;
  }
  const auto viewers = ranked(among.known, scheme);
  const auto found = std::find_if(viewers.begin(), viewers.end(), [&](const definition* viewer) {
    return viewer->unguarded.empty() && lacksTerminal(among, *viewer);
  });
  return found == viewers.end() ? nullptr : *found;
}

finding ofChosen(const candidates& among, const std::string& scheme, const wanted& wish) {
  const std::string name = "viewer " + scheme;
  const std::string by = wish.by == chooser::USER ? "you chose" : "the administrator chose";
  const std::string other = "choose another with \"hopopen --use NAME " + scheme + '"';
  const definition* const viewer = among.known.named(wish.viewer);
  if (viewer == nullptr) {
    return {state::FAULT, name, wish.viewer, by + " this viewer, but it is not known",
            "See \"hopopen --list\", and " + other + '.'};
  }
  if (!viewer->opens(scheme)) {
    return {state::FAULT, name, viewer->file,
            by + ' ' + described(*viewer) + ", which does not open " + scheme + " links",
            "See \"hopopen --list\", and " + other + '.'};
  }
  if (const auto program = among.find(*viewer)) {
    return {state::OK, name, program->viewer.path,
            by + ' ' + described(*viewer) + " for " + scheme + " links", ""};
  }
  const bool needs = lacksTerminal(among, *viewer);
  return {state::FAULT, name, viewer->file,
          by + ' ' + described(*viewer) +
              (needs ? ", which needs a terminal, and there is none" : ", which is not installed"),
          (needs ? INSTALL_TERMINAL : installation(*viewer)) + ", or " + other + '.'};
}

// A viewer that is there, and would open links to trusted machines alone; and the one to install.
finding ofUnguarded(const std::string& scheme, const definition& viewer, const installed& found,
                    const definition& better) {
  return {
      state::WARNING, "viewer " + scheme, found.viewer.path,
      described(viewer) + " opens links to machines that you trust only: it lets through " +
          enumeration(viewer.unguarded),
      (better.unguarded.empty() ? installation(better)
                                : "Trust a machine that you know with \"hopopen --trust HOST\"") +
          ", or choose it all the same with \"hopopen --use " + viewer.name + ' ' + scheme + "\"."};
}

}  // namespace

finding checkDisplay(variableReader get) {
  if (const char* const variable = screenVariable(get)) {
    return {state::OK, "display", variable, "is " + valueOf(get, variable), ""};
  }
  return {state::WARNING, "display", "DISPLAY", "is not set, and neither is WAYLAND_DISPLAY",
          "Type the command in a terminal on the desktop."};
}

finding checkViewer(const candidates& among, const std::string& scheme) {
  if (const auto wish = among.wishes.viewerFor(scheme)) {
    return ofChosen(among, scheme, *wish);
  }
  const std::string name = "viewer " + scheme;
  if (const definition* const viewer = lowestRank(among, scheme, false)) {
    return {state::OK, name, among.find(*viewer)->viewer.path,
            described(*viewer) + " opens " + scheme + " links", ""};
  }
  if (const definition* const viewer = waiting(among, scheme)) {
    return {state::WARNING, name, viewer->file,
            described(*viewer) + " would open " + scheme + " links, but there is no terminal",
            std::string(INSTALL_TERMINAL) + '.'};
  }
  const std::vector<const definition*> known = ranked(among.known, scheme);
  const definition& best = preferred(known);
  if (const definition* const viewer = lowestRank(among, scheme, true)) {
    return ofUnguarded(scheme, *viewer, *among.find(*viewer), best);
  }
  return {state::WARNING, name, "PATH", "no viewer for " + scheme + " links is installed",
          installation(best) + '.'};
}

finding checkTerminal(const candidates& among, const std::vector<std::string>& schemes,
                      const programFinder& programs) {
  for (const char* const name : {"xdg-terminal-exec", "x-terminal-emulator"}) {
    if (const auto found = programs.find(name)) {
      return {state::OK, "terminal", found->path, "shows viewers that need a terminal", ""};
    }
  }
  for (const std::string& scheme : schemes) {
    if (const definition* const viewer = waiting(among, scheme)) {
      return {state::WARNING, "terminal", "PATH",
              "has neither xdg-terminal-exec nor x-terminal-emulator, and " + described(*viewer) +
                  " needs one",
              std::string(INSTALL_TERMINAL) + '.'};
    }
  }
  return {state::OK, "terminal", "PATH", "has no terminal, and no viewer waits for one", ""};
}

finding checkNotifier(variableReader get, const programFinder& programs) {
  for (const std::string& name : NOTIFIERS) {
    if (const auto found = programs.find(name)) {
      return {state::OK, "notifier", found->path, "shows why a link was not opened", ""};
    }
  }
  if (screenVariable(get) == nullptr) {
    return {state::OK, "notifier", "PATH", "has none, and there is no desktop to show one", ""};
  }
  return {state::WARNING, "notifier", "PATH", "has none of " + enumeration(NOTIFIERS),
          "Install the package libnotify-bin: \"sudo apt-get install libnotify-bin\"."};
}

finding checkSemaphores() {
  constexpr const char* place = "/proc/sys/kernel/sem";
  const auto left = semaphoreSetsLeft();
  if (left && *left >= FEW_SETS) {
    return {state::OK, "semaphores", place, "leaves enough sets for hoplaunch", ""};
  }
  return {state::WARNING, "semaphores", place,
          left ? "leaves " + std::to_string(*left) + " semaphore sets; hoplaunch needs two"
               : "cannot be asked for semaphore sets; hoplaunch needs two",
          "See who has them with \"ipcs -s\". Links that hopopen opens need none."};
}

}  // namespace hopopen
