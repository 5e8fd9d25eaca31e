// SPDX-License-Identifier: MIT
// The signals of the tools.
//
// Output that nobody reads raises SIGPIPE; a file that may not grow any more, SIGXFSZ.
// Neither ends a tool: the write fails, and the tool says so or goes on.  A program that
// the tool becomes, or starts, gets both as the tool was given them.
#pragma once

/// Ignores SIGPIPE and SIGXFSZ, and remembers what was done about them until now.
void ignoreOutputSignals();

/// Does about SIGPIPE and SIGXFSZ what was done before `ignoreOutputSignals`; nothing
/// without that.  Safe in a forked child.
void restoreOutputSignals();
