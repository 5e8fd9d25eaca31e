// SPDX-License-Identifier: MIT
// The trace flags of the library.
//
// trace.cpp defines all of them.  So a program that uses any flag has all of them, however
// it is linked.  They register before everything else that registers.
#pragma once

#include "lasting.h"
#include "trace.h"

namespace internal {

extern lasting<traceFlag> configDBflag;      ///< "configDB"
extern lasting<traceFlag> refcountFlag;      ///< "refcount"
extern lasting<traceFlag> reportStackFlag;   ///< "reportStack"
extern lasting<traceFlag> reportThreadFlag;  ///< "reportThread"

}  // namespace internal
