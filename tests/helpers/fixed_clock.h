// A clock that always says 2026-11-15 11:07:34.042517 UTC, for a program that is linked with
// `gettimeofday` wrapped and fixed_clock.cpp.
#pragma once

/// Minutes west of Greenwich, as the clock says.
inline int minutesWest = 0;
