// SPDX-License-Identifier: MIT
// What hoplaunch and hopexplain have in common before they look at a URI.
#pragma once

#include "assoclist.h"
#include "events.h"

/// The run time, set up for one command line: the semaphore set, the thread data, the
/// handler of reports, and the options that name configuration items or trace flags, which
/// are applied.  What it sets up stays for as long as the process; the handler and what is
/// left of the options stay for as long as the session.
class session {
 public:
  /// Keys of `options` are compared ignoring case.
  explicit session(const assocList& options);

  /// The options that name neither an item nor a trace flag.
  const assocList& rest() const { return m_rest; }

 private:
  // The semaphore set, the thread data and the first version of the configuration.
  struct runTime {
    runTime();
  };

  runTime m_runTime;
  stderrHandler m_handler;
  assocList m_rest;
};
