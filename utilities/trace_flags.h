// The trace flags of the library.
//
// trace.cpp defines all of them: so a program that uses flags at all has all of them, in
// whatever way it is linked.  They register before everything else that does.
#pragma once

#include "lasting.h"
#include "trace.h"

namespace internal {

extern lasting<traceFlag> configDBflag;      ///< "configDB"
extern lasting<traceFlag> refcountFlag;      ///< "refcount"
extern lasting<traceFlag> reportStackFlag;   ///< "reportStack"
extern lasting<traceFlag> reportThreadFlag;  ///< "reportThread"

}  // namespace internal
