// SPDX-License-Identifier: MIT
// The tables of hosts in the text of a settings file.
#pragma once

#include <string>
#include <vector>

#include "settings_change.h"
#include "settings_pairs.h"
#include "text_edit.h"
#include "toml.h"
#include "toml_text.h"
#include "trusted.h"

namespace hopopen {

// REQUIRES of all: the text is TOML, and its settings have no fault.

/// The table of viewers that a change is about, [use] or that of a host; null when there is none.
const toml::table* usedBy(const tomlText& source, const change& what);

/// What the table of the host says of trust, or null.
const toml::node* trustIn(const tomlText& source, const trustedHost& host);

/// Adds viewers to those of a host, which must not be there yet.
void addUse(textEdit& edit, tomlText& source, const trustedHost& host,
            const std::vector<keyAndValue>& viewers);

/// The text in which tables that say the opposite trust or distrust as the change wants it.
std::string turn(tomlText& source, const change& what);

}  // namespace hopopen
