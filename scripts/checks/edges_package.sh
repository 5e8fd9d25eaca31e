# SPDX-License-Identifier: MIT
# The library from outside, at its edges.
# Hidden visibility, no run-time types, no shared library, absolute folders, and as a part of
# another project.
# Arguments: [FOLDER]
# Builds in FOLDER, which stays, or in one that is removed at the end.
# shellcheck shell=bash source=scripts/lib.sh
set -uo pipefail
source scripts/lib.sh
need "${build_packages[@]}" pkgconf
top=$PWD
if (($# > 0)); then
  mkdir -p "$1"
  scratch=$(cd "$1" && pwd)
else
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
fi
jobs=${JOBS:-2}
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
say_all=1

# shortly COMMAND...: its output only when it fails, and only the end of it.
shortly() {
  local said
  said=$(timeout 900 "$@" 2>&1) || {
    tail -n 12 <<<"$said"
    return 1
  }
}

# built FOLDER OPTION...: the library alone, built and installed.
built() {
  local folder=$1
  shift
  shortly cmake -S "$top" -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DHOPLAUNCH_TESTS=OFF -DHOPLAUNCH_HOPOPEN=OFF "${launcher[@]}" "$@" || return 1
  shortly cmake --build "$folder" -j "$jobs" || return 1
  local component
  for component in library development; do
    shortly cmake --install "$folder" --component "$component" || return 1
  done
}

file() { find "$1" -name "$2" -print -quit; }

# prints PROGRAM LIBRARY-FOLDER
prints() {
  LD_LIBRARY_PATH=$2 timeout 20 "$1" 2>&1 | diff <(expected_outside '') -
}

# --- Hidden visibility ---
check 'the shared library is built and installed' \
  built "$scratch/shared" -DHOPLAUNCH_SHARED=ON "-DCMAKE_INSTALL_PREFIX=$scratch/one"
library=$(dirname "$(file "$scratch/one" 'libhoplaunch.so')")
archive=$(file "$scratch/one" libhoplaunch.a)
cat >"$scratch/canonical.cpp" <<'END'
#include <hoplaunch/configDB.h>
#include <hoplaunch/refcount.h>
#include <hoplaunch/threading.h>
#include <hoplaunch/uri.h>

#include <iostream>

int main() {
  ThreadData::instance(false);
  { editableConfigDB editor; }
  threadedConfigDB::refresh();
  if (URI_SCHEME.value(true) != "VNC") return 1;
  const configDB database(RT_READ);
  std::cout << configDB::getCanonical().null() << (database.ptr() == configDB::getCanonical().ptr())
            << (&database.find("none") == &configDB::dummy()) << '\n';
}
END
canonical() {
  [[ $(LD_LIBRARY_PATH=$library timeout 20 "$1") == 011 ]]
}
# compiled NAME FLAG...: both programs, by hand, with the shared and the static library.
compiled() {
  local name=$1
  shift
  local include=$scratch/one/include
  shortly g++ -std=c++20 "$@" -I"$include" -o "$scratch/outside_$name" \
    "$top/tests/outside/main.cpp" -L"$library" -lhoplaunch &&
    shortly g++ -std=c++20 "$@" -I"$include" -o "$scratch/canonical_$name" \
      "$scratch/canonical.cpp" -L"$library" -lhoplaunch &&
    shortly g++ -std=c++20 "$@" -I"$include" -o "$scratch/static_$name" \
      "$top/tests/outside/main.cpp" "$archive"
}
for flags in '' -fvisibility=hidden '-fvisibility=hidden -fvisibility-inlines-hidden' \
  '-O2 -fvisibility=hidden' '-O2 -flto -fvisibility=hidden'; do
  read -ra words <<<"$flags"
  check "compiles with ${flags:-no flags}" compiled program "${words[@]}"
  check "the shared library with ${flags:-no flags}: prints what is expected" \
    prints "$scratch/outside_program" "$library"
  check "the shared library with ${flags:-no flags}: one canonical instance" \
    canonical "$scratch/canonical_program"
  check "the static library with ${flags:-no flags}: prints what is expected" \
    prints "$scratch/static_program" "$library"
done
hidden_outside() {
  shortly cmake -S "$top/tests/outside" -B "$scratch/outside" -G Ninja \
    -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "-DCMAKE_PREFIX_PATH=$scratch/one" || return 1
  grep -q -e '-fvisibility=hidden' "$scratch/outside/compile_commands.json"
}
check 'tests/outside is built with hidden visibility, too' hidden_outside

# --- Without run-time types ---
# Either all headers compile, or the first error and the tutorial say what is needed.
without_rtti() {
  local header said clean=0
  for header in "$scratch"/one/include/hoplaunch/*.h; do
    said=$(g++ -std=c++20 -fno-rtti -fsyntax-only -x c++ "-I$scratch/one/include" \
      -include "$header" /dev/null 2>&1) && continue
    clean=1
    grep -m 1 -i 'error' <<<"$said" | grep -iq 'rtti' || {
      printf '%s: %s\n' "${header##*/}" "$(grep -m 1 -i error <<<"$said")"
      return 1
    }
  done
  if ((clean == 0)); then
    shortly g++ -std=c++20 -fno-rtti -I"$scratch/one/include" -o "$scratch/no_rtti" \
      "$top/tests/outside/main.cpp" -L"$library" -lhoplaunch && prints "$scratch/no_rtti" "$library"
  else
    grep -iq 'rtti' "$top/README.md" "$top/docs/tutorial.md" || { echo 'the tutorial does not say it'; return 1; }
  fi
}
check 'programs without run-time types compile, or learn what is needed' without_rtti

# --- Without the shared library ---
check 'the library is built and installed without the shared one' \
  built "$scratch/plain" -DHOPLAUNCH_SHARED=OFF "-DCMAKE_INSTALL_PREFIX=$scratch/two"
consumer() {
  mkdir -p "$scratch/consumer"
  cat >"$scratch/consumer/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX)
find_package(hoplaunch CONFIG REQUIRED)
foreach(name hoplaunch static)
  if(NOT TARGET hoplaunch::${name})
    message(FATAL_ERROR "no target hoplaunch::${name}")
  endif()
  add_executable(use_${name} ${MAIN})
  target_link_libraries(use_${name} PRIVATE hoplaunch::${name})
endforeach()
END
  rm -rf "$scratch/consumer/build"
  shortly cmake -S "$scratch/consumer" -B "$scratch/consumer/build" -G Ninja \
    "-DCMAKE_PREFIX_PATH=$1" "-DMAIN=$top/tests/outside/main.cpp" &&
    shortly cmake --build "$scratch/consumer/build" -j "$jobs"
}
for prefix in one two; do
  check "installed in $prefix: both targets are there" consumer "$scratch/$prefix"
  for name in hoplaunch static; do
    check "installed in $prefix: hoplaunch::$name works" \
      prints "$scratch/consumer/build/use_$name" "$library"
  done
done
no_shared() { [[ -z $(find "$scratch/two" -name '*.so*') ]]; }
check 'no shared library is installed' no_shared

# --- Absolute folders ---
absolute() {
  built "$scratch/plain" -DHOPLAUNCH_SHARED=OFF "-DCMAKE_INSTALL_PREFIX=$scratch/three" \
    "-DCMAKE_INSTALL_LIBDIR=$scratch/far/lib" "-DCMAKE_INSTALL_INCLUDEDIR=$scratch/far/headers"
}
check 'the library is installed in absolute folders' absolute
pc() { PKG_CONFIG_PATH=$(dirname "$(file "$scratch/far" hoplaunch.pc)") pkg-config "$@" hoplaunch; }
# pc_says OPTION TEXT
pc_says() {
  local said
  said=$(pc "$1")
  [[ " $said " == *" $2 "* ]] || { printf '%s\n' "$said"; return 1; }
}
check 'pkg-config: libdir' pc_says --variable=libdir "$scratch/far/lib"
check 'pkg-config: includedir' pc_says --variable=includedir "$scratch/far/headers"
check 'pkg-config: -I' pc_says --cflags "-I$scratch/far/headers"
check 'pkg-config: -L' pc_says --libs "-L$scratch/far/lib"
by_pkg_config() {
  local flags
  read -ra flags <<<"$(pc --static --cflags --libs)"
  shortly g++ -std=c++20 -o "$scratch/far_program" "$top/tests/outside/main.cpp" "${flags[@]}" &&
    prints "$scratch/far_program" "$scratch/far/lib"
}
check 'pkg-config: a program works' by_pkg_config
check 'absolute folders: both targets are there' consumer "$scratch/far"
one_pc() { PKG_CONFIG_PATH=$(dirname "$(file "$scratch/one" hoplaunch.pc)") pkg-config "$@" hoplaunch; }
relative() { [[ $(one_pc --define-variable=prefix=/else --variable=libdir) == /else/* ]]; }
check 'pkg-config: usual folders are still below the prefix' relative

# --- As a part of another project ---
mkdir -p "$scratch/outer"
cat >"$scratch/outer/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(outer LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
include(CTest)
add_subdirectory(${LIBRARY} library)
foreach(name hoplaunch static)
  if(NOT TARGET hoplaunch::${name})
    message(FATAL_ERROR "no target hoplaunch::${name}")
  endif()
  add_executable(use_${name} outer.cpp)
  target_link_libraries(use_${name} PRIVATE hoplaunch::${name})
  add_executable(outside_${name} ${LIBRARY}/tests/outside/main.cpp)
  target_link_libraries(outside_${name} PRIVATE hoplaunch::${name})
endforeach()
function(list_targets folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target ${targets})
    message(STATUS "TARGET ${target}")
  endforeach()
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(each ${folders})
    list_targets(${each})
  endforeach()
endfunction()
list_targets(${LIBRARY})
message(STATUS "STANDARD ${CMAKE_CXX_STANDARD}, TYPE [${CMAKE_BUILD_TYPE}], FLAGS [${CMAKE_CXX_FLAGS}]")
END
# Shadowing, a sign that changes, and an unused variable: warnings, and no errors.
cat >"$scratch/outer/outer.cpp" <<'END'
#include <hoplaunch/uri.h>

#include <iostream>

int main(int count, char**) {
  int unused;
  unsigned int number = count;
  for (int count = 0; count < 0; count++) number += count;
  URI link("vnc://h/?a=b");
  for (char** argument = link.args("viewer", 1, AS_EQUALS, nullptr); *argument != nullptr; argument++) {
    std::cout << *argument << ' ';
  }
  std::cout << '\n';
  return number == 0;
}
END
for shared in OFF ON; do
  outer=$scratch/outer/$shared
  configured() {
    shortly cmake -S "$scratch/outer" -B "$outer" -G Ninja "-DLIBRARY=$top" \
      "-DHOPLAUNCH_SHARED=$shared" "${launcher[@]}"
  }
  check "add_subdirectory, shared $shared: both targets are there" configured
  listed=$(cmake -S "$scratch/outer" -B "$outer" 2>&1)
  own_names() {
    local others
    grep -q 'TARGET' <<<"$listed" || return 1
    others=$(sed -n 's/^-- TARGET //p' <<<"$listed" | grep -vE '^(hoplaunch|hopexplain$|hopopen$|demo_viewer$)')
    [[ -z $others ]] || { tr '\n' ' ' <<<"$others"; return 1; }
  }
  check "add_subdirectory, shared $shared: all targets have the project's name" own_names
  untouched() { grep -q 'STANDARD 20, TYPE \[\], FLAGS \[\]' <<<"$listed"; }
  check "add_subdirectory, shared $shared: the outer project's settings stay" untouched
  no_tests() { [[ -e $outer/build.ninja && $(ctest --test-dir "$outer" -N | tail -n 1) == 'Total Tests: 0' ]]; }
  check "add_subdirectory, shared $shared: no tests" no_tests
  no_errors() {
    "$(command -v python3)" - "$outer/compile_commands.json" <<'END'
import json, sys
for each in json.load(open(sys.argv[1])):
    if each["file"].endswith("outer.cpp") and ("-Werror" in each["command"] or "-Wall" in each["command"]):
        sys.exit(each["command"])
END
  }
  check "add_subdirectory, shared $shared: no warnings are forced on the outer project" no_errors
  runs() {
    shortly cmake --build "$outer" -j "$jobs" --target "use_$1" "outside_$1" || return 1
    [[ $(timeout 20 "$outer/use_$1") == 'viewer --autoreconnect=0 -a=b h ' ]] &&
      prints "$outer/outside_$1" ''
  }
  for name in hoplaunch static; do
    check "add_subdirectory, shared $shared: hoplaunch::$name works" runs "$name"
  done
done

closing_line
