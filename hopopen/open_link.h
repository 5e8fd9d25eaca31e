// SPDX-License-Identifier: MIT
// Opening a link.
#pragma once

#include "folders.h"
#include "options.h"

namespace hopopen {

/// Becomes the viewer for the link, or says why not, or says what would happen.  Returns the
/// exit status unless it became the viewer.
int openLink(const options& asked, const folders& where);

}  // namespace hopopen
