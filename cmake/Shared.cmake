# SPDX-License-Identifier: MIT
# The shared library, and the name by which other projects link the library: built within
# this project, as a folder of theirs or installed, hoplaunch::hoplaunch is the shared
# library if there is one, and hoplaunch::static the other.

# The programs of the project link the static library, as it starts faster.
set_target_properties(hoplaunch_support PROPERTIES EXPORT_NAME static)
set(libraries hoplaunch_support)
if(HOPLAUNCH_SHARED)
  get_target_property(sources hoplaunch_support SOURCES)
  add_library(hoplaunch_support_shared SHARED ${sources})
  set(exports ${PROJECT_SOURCE_DIR}/cmake/libhoplaunch.map)
  # Those are the names with the usual standard library; in others, its classes have other names.
  include(CheckCXXSourceCompiles)
  check_cxx_source_compiles("#include <string>
    #ifndef __GLIBCXX__
    #error
    #endif
    int main() {}" HOPLAUNCH_HAS_LIBSTDCXX)
  if(NOT HOPLAUNCH_HAS_LIBSTDCXX)
    set(exports ${CMAKE_CURRENT_BINARY_DIR}/libhoplaunch.map)
    add_custom_command(OUTPUT ${exports} DEPENDS hoplaunch_support VERBATIM
      COMMAND sh -c [["$1" "$2" >"$3"]] sh ${PROJECT_SOURCE_DIR}/scripts/exports
        $<TARGET_FILE:hoplaunch_support> ${exports})
    add_custom_target(hoplaunch_exports DEPENDS ${exports})
  endif()
  # The SONAME stands for the binary interface.  It goes up when a program that was
  # linked with the version before could not run with the new one.  What is exported is
  # said by the map alone, whatever a project around this one hides of its own.
  set_target_properties(hoplaunch_support_shared PROPERTIES
    OUTPUT_NAME hoplaunch SOVERSION 1 EXPORT_NAME hoplaunch LINK_DEPENDS ${exports}
    CXX_VISIBILITY_PRESET default VISIBILITY_INLINES_HIDDEN OFF)
  if(TARGET hoplaunch_exports)
    add_dependencies(hoplaunch_support_shared hoplaunch_exports)
  endif()
  target_compile_features(hoplaunch_support_shared PUBLIC cxx_std_20)
  target_link_libraries(hoplaunch_support_shared PUBLIC $<BUILD_INTERFACE:hoplaunch_headers>
    PRIVATE $<BUILD_INTERFACE:hoplaunch_options>)
  target_precompile_headers(hoplaunch_support_shared PRIVATE ${hoplaunch_common_headers})
  target_link_options(hoplaunch_support_shared PRIVATE
    "LINKER:--version-script=${exports}" LINKER:--no-undefined)
  # Not every build has every table of a template.
  include(CheckLinkerFlag)
  check_linker_flag(CXX LINKER:--undefined-version hoplaunch_undefined_version)
  if(hoplaunch_undefined_version)
    target_link_options(hoplaunch_support_shared PRIVATE LINKER:--undefined-version)
  endif()
  add_library(hoplaunch::hoplaunch ALIAS hoplaunch_support_shared)
  list(APPEND libraries hoplaunch_support_shared)
else()
  add_library(hoplaunch_default INTERFACE)
  set_target_properties(hoplaunch_default PROPERTIES EXPORT_NAME hoplaunch)
  target_link_libraries(hoplaunch_default INTERFACE hoplaunch_support)
  add_library(hoplaunch::hoplaunch ALIAS hoplaunch_default)
  list(APPEND libraries hoplaunch_default)
endif()
