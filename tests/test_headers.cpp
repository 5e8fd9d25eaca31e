// SPDX-License-Identifier: MIT
// Carries the headers that are compiled once for all tests.
