# SPDX-License-Identifier: MIT
# The options, what every target of the project is compiled with, and what those of other
# projects are.

# The options, all of them.  Another project that adds this one as a folder does not get what
# depends on PROJECT_IS_TOP_LEVEL unless it asks for it.
option(HOPLAUNCH_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(HOPLAUNCH_HOPOPEN "Build hopopen, which needs three further libraries"
  ${PROJECT_IS_TOP_LEVEL})
option(HOPLAUNCH_INSTALL "Install, and prepare what is installed" ${PROJECT_IS_TOP_LEVEL})
option(HOPLAUNCH_STATIC "Link the C library into hoplaunch, too" ${PROJECT_IS_TOP_LEVEL})
option(HOPLAUNCH_HARDENING "Harden release builds" ${PROJECT_IS_TOP_LEVEL})
option(HOPLAUNCH_LONG_TESTS "Run all tests with gigabytes of text, which take ten minutes" OFF)
option(HOPLAUNCH_SEPARATE_TESTS "Build a program of each test source" OFF)
option(HOPLAUNCH_SHARED "Build the shared library, too" ON)
option(HOPLAUNCH_BENCHMARKS "Build what bench/run measures" OFF)
option(HOPLAUNCH_AGREEMENT "Build what scripts/check agreement runs" OFF)
option(HOPLAUNCH_WERROR "Treat warnings as errors" OFF)
set(HOPLAUNCH_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")
option(HOPLAUNCH_COVERAGE "Build for measuring coverage" OFF)
option(HOPLAUNCH_FUZZ "Build the fuzzers in place of the tests, by clang" OFF)

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

add_library(hoplaunch_options INTERFACE)
target_include_directories(hoplaunch_options INTERFACE ${PROJECT_SOURCE_DIR}/include)
target_compile_features(hoplaunch_options INTERFACE cxx_std_20)
target_compile_options(hoplaunch_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  # Assertions name their source from the top folder on: "../utilities/uri".
  "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=../"
  # A program takes out of the library what it uses, not whole sources.
  -ffunction-sections -fdata-sections)
if(HOPLAUNCH_WERROR)
  target_compile_options(hoplaunch_options INTERFACE -Werror)
endif()

# What is shipped makes a fault hard to turn into an attack: it is at random
# addresses, notices a broken stack, checks the sizes that the compiler knows, and
# has its tables read-only before `main`.  scripts/check hardening looks at the result.
if(HOPLAUNCH_HARDENING AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT HOPLAUNCH_SANITIZE)
  set(type $<TARGET_PROPERTY:TYPE>)
  target_compile_options(hoplaunch_options INTERFACE
    -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
    $<$<NOT:$<STREQUAL:${type},SHARED_LIBRARY>>:-fPIE>)
  target_link_options(hoplaunch_options INTERFACE
    LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack
    $<$<AND:$<STREQUAL:${type},EXECUTABLE>,$<NOT:$<BOOL:$<TARGET_PROPERTY:STATIC_PIE>>>>:-pie>)
endif()

# The standard library's own checks of what it is asked for.
target_compile_definitions(hoplaunch_options INTERFACE
  $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

# A shorter form of the table of relocations.  Linkers ignore it on some machines, and say so.
include(CheckCXXSourceCompiles)
set(short_relocations LINKER:-z,pack-relative-relocs)
set(CMAKE_REQUIRED_LINK_OPTIONS ${short_relocations} LINKER:--fatal-warnings)
check_cxx_source_compiles("int main() {}" HOPLAUNCH_HAS_SHORT_RELOCATIONS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(NOT HOPLAUNCH_HAS_SHORT_RELOCATIONS)
  set(short_relocations)
endif()

# How a program is linked that brings the C++ library along.  (Sanitizers bring theirs.)
add_library(hoplaunch_own_library INTERFACE)
if(NOT HOPLAUNCH_SANITIZE)
  target_link_options(hoplaunch_own_library INTERFACE
    -static-libstdc++ -static-libgcc LINKER:--gc-sections
    # Symbols of the C++ library are of no use to anybody else, and take relocations.
    LINKER:--exclude-libs=libstdc++.a:libgcc.a:libgcc_eh.a
    ${short_relocations})
endif()

# How a program is linked that must start quickly: docs/performance.md has the figures.
if(HOPLAUNCH_SANITIZE)
  set(HOPLAUNCH_STATIC OFF)  # sanitizers replace functions of the C library
endif()
if(HOPLAUNCH_STATIC)  # the C library must have a part for it, which it has not on all machines
  set(CMAKE_REQUIRED_FLAGS -fPIE)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  check_cxx_source_compiles("int main() {}" HOPLAUNCH_HAS_STATIC_PIE)
  unset(CMAKE_REQUIRED_FLAGS)
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
  if(NOT HOPLAUNCH_HAS_STATIC_PIE)
    message(STATUS "-static-pie does not link here, so HOPLAUNCH_STATIC is off.")
    set(HOPLAUNCH_STATIC OFF)
  endif()
endif()
add_library(hoplaunch_quick_start INTERFACE)
if(HOPLAUNCH_STATIC)
  target_link_options(hoplaunch_quick_start INTERFACE
    -static-pie LINKER:--gc-sections ${short_relocations}
    # What is exported is for stack traces, which read the older form of the table.
    LINKER:--exclude-libs=libstdc++.a:libgcc.a:libgcc_eh.a LINKER:--hash-style=sysv
    LINKER:--dynamic-list=${CMAKE_CURRENT_LIST_DIR}/traced.list)
  set_target_properties(hoplaunch_quick_start PROPERTIES INTERFACE_LINK_DEPENDS
    "${CMAKE_CURRENT_LIST_DIR}/traced.list")
else()
  target_link_libraries(hoplaunch_quick_start INTERFACE hoplaunch_own_library)
endif()

if(HOPLAUNCH_SANITIZE)
  target_compile_options(hoplaunch_options INTERFACE
    "-fsanitize=${HOPLAUNCH_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(hoplaunch_options INTERFACE "-fsanitize=${HOPLAUNCH_SANITIZE}")
endif()

if(HOPLAUNCH_COVERAGE)
  target_compile_options(hoplaunch_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(hoplaunch_options INTERFACE --coverage)
endif()

# The fuzzers themselves are linked with libFuzzer.
if(HOPLAUNCH_FUZZ)
  target_compile_options(hoplaunch_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Other projects that build this one as a folder include the headers as they are installed,
# <hoplaunch/uri.h>, and see none of the short names.
set(includes ${PROJECT_BINARY_DIR}/include)
file(MAKE_DIRECTORY ${includes})
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/include ${includes}/hoplaunch SYMBOLIC)
add_library(hoplaunch_headers INTERFACE)
target_include_directories(hoplaunch_headers SYSTEM INTERFACE ${includes})
