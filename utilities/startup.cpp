#include "startup.h"

#include <ostream>

#include "DistName.h"
#include "configDB.h"
#include "events.h"
#include "language.h"
#include "refcount.h"
#include "uri.h"

// An object file comes out of a library for the sake of any of its symbols, and
// brings its static objects along.
const void* const startUpObjects[] = {
    reinterpret_cast<const void*>(&getTimeZone),  // reportThread, reportStack, Log...
    &displayOrder::instance,                      // MaxShortName
    &PROGRAMS,                                    // and the other items of URIs
    reinterpret_cast<const void*>(&threadedConfigDB::theInstance),  // configDB
    reinterpret_cast<const void*>(&language::Default),              // defaultLanguage
    reinterpret_cast<const void*>(static_cast<const char* (*)(refCountStage)>(&text)),  // refcount
};

// What <iostream> declares.  The header itself would set the standard streams up at the
// start of every process, and with them the locale, which a launch has no use for.
namespace std {  // NOLINT(cert-dcl58-cpp)
extern ostream cerr;
}

std::ostream& standardError() {
  static const std::ios_base::Init standardStreams;
  return std::cerr;
}
