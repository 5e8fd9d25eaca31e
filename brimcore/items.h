// SPDX-License-Identifier: MIT
// The configuration items of the library.
//
// items.cpp defines all of them, and the database that every item registers in.  So a
// program that uses any item has all of them, however it is linked.  The items of links,
// `PROGRAMS`, `URI_SCHEME` and `VNC_OPTIONS`, are declared in uri.h.
#pragma once

#include "configDB.h"
#include "configRef.h"

namespace internal {

extern configString LogDateFormat;    ///< the dates of a `loggingHandler`, unless it has its own
extern configString LogTimeZone;      ///< and their time zone
extern configInt MaxShortName;        ///< the longest short name that name generation may produce
extern configString defaultLanguage;  ///< the language of `language::Default`

/// The database that items register in.  The first read publishes it.
/// REQUIRES: not `registrationGone`.
writeableConfigDB& registrationDatabase();

/// True once that database was destroyed at exit.
extern constinit bool registrationGone;

}  // namespace internal
