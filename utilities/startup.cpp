#include "startup.h"

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
