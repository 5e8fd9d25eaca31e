// SPDX-License-Identifier: MIT
// How a launch ends that cannot go on: no semaphore set can be had, a signal ends the
// process, memory runs out.  Nothing is left, and the log says why.
#pragma once

#include <string>

/// Has SIGINT, SIGTERM and SIGHUP remove the semaphore set before they end the process,
/// and has a semaphore call that fails and memory that runs out noted in the log at `log`.
/// The log is made when there is something to note; with an empty path there is none.
/// A signal that is ignored stays so.  A program that the process becomes gets the signals
/// as they were, since handlers do not outlive that.
void guardLaunch(const std::string& log);

/// Ends the process where memory runs out or an exception is left over: without its
/// semaphore set, and for want of memory as a failed launch does, with status 0.  To be
/// called once, before anything is done.
void guardProcess();
