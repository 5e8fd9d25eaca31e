// SPDX-License-Identifier: MIT
// What the kernel would say to a program in its own format, ELF.
#pragma once

#include "explain_source.h"

/// 0 for a program that is made for this kernel's machine and whose loader may be
/// executed, else the error number: ENOEXEC for whatever is no such program, and for a
/// missing loader the error of opening it.
int programError(const sourceFile& program);
