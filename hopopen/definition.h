// SPDX-License-Identifier: MIT
// The definition of a viewer: a TOML file that says which links it opens, under which names
// its program may be found, and how its arguments are made of a link.
//
//     name = "TigerVNC"
//     schemes = ["vnc"]
//     programs = ["xtigervncviewer", "vncviewer"]
//     arguments = ["{bracketed}::{port}"]
//     [default]
//     port = 5900
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "stamp.h"
#include "template.h"

namespace hopopen {

/// What a viewer is given for one parameter of a link.
struct parameterRule {
  std::string name;   ///< compared without letter case
  std::string allow;  ///< an extended regular expression for the whole value, if `limited`
  bool limited = false;
  std::vector<element> arguments;
};

/// A definition, whole or in outline.  The members up to `inVariables` are the outline: enough
/// to choose the viewer, and too little to start it.
struct definition {
  std::string file;   ///< its path
  stamp identity;     ///< of the file when it was read
  bool whole = true;  ///< false: the outline is all that is known
  std::string name;   ///< the name of the file without ".toml", by which it is chosen
  std::string title;  ///< what people read
  std::vector<std::string> schemes;
  std::vector<std::string> programs;   ///< tried in this order
  std::int64_t rank = 50;              ///< the lowest is preferred
  std::vector<std::string> unguarded;  ///< what the viewer has no option to protect
  bool terminal = false;               ///< runs inside a terminal
  bool inVariables = false;            ///< `unset` or `environment` has something
  std::vector<std::string> packages;
  std::vector<element> arguments;
  std::optional<std::vector<element>> tunnelled;  ///< instead, through a gateway
  std::vector<element> stranger;                  ///< for hosts that nobody trusts
  std::vector<element> trusted;                   ///< for the others
  std::vector<std::string> unset;  ///< variables that are taken out of the environment
  std::vector<std::pair<std::string, textTemplate>> environment;
  std::vector<parameterRule> parameters;
  std::optional<std::uint16_t> port;  ///< where the link names none

  bool opens(const std::string& scheme) const;
  /// The rule for a parameter, or null.
  const parameterRule* rule(const std::string& parameter) const;
};

}  // namespace hopopen
