// SPDX-License-Identifier: MIT
// The rules of the schemes spice and spice+tls: a link has a plain port, one for TLS, or both,
// in the authority or in the query.  One that asks for TLS never goes plain.
//
//     spice://host:5900
//     spice://host?port=5900;tls-port=5901
//     spice+tls://host:5901
#pragma once

#include "scheme_rules.h"

namespace hopopen {

extern const schemeRules SPICE;
extern const schemeRules SPICE_TLS;

}  // namespace hopopen
