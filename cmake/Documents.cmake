# SPDX-License-Identifier: MIT
# What describes the programs to other programs: the metadata for software centres, and the bill
# of materials.  Both have the date of SOURCE_DATE_EPOCH, if that is set.

string(TIMESTAMP release_date "%Y-%m-%d" UTC)
string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)

# The names of the metadata are the host's, from its end.
string(REGEX REPLACE "^https?://([^/]*)/.*" "\\1" host "${PROJECT_HOMEPAGE_URL}")
string(REPLACE "." ";" labels "${host}")
list(REVERSE labels)
list(JOIN labels "." developer)
set(component ${developer}.hopopen)
configure_file(desktop/hoplaunch.metainfo.xml.in ${component}.metainfo.xml @ONLY)

# --- The bill of materials: SPDX 2.3 ---------------------------------------------

# header_version(VARIABLE HEADER MACRO...): a version of which each macro is a number.
function(header_version variable header)
  file(STRINGS "${header}" lines REGEX "#[ \t]*define[ \t]")
  set(numbers)
  foreach(macro ${ARGN})
    if(NOT "${lines}" MATCHES "define[ \t]+${macro}[ \t]+([0-9]+)")
      message(FATAL_ERROR "${header} has no ${macro}.")
    endif()
    list(APPEND numbers ${CMAKE_MATCH_1})
  endforeach()
  list(JOIN numbers "." version)
  set(${variable} ${version} PARENT_SCOPE)
endfunction()

set(bill_packages)
set(bill_relations)

# bill_package(NAME VERSION LICENSE SUPPLIER RELATION): what is in the programs.
function(bill_package name version license supplier relation)
  string(REGEX REPLACE "[^A-Za-z0-9.-]" "-" id "SPDXRef-Package-${name}")
  set(package ",
    {
      \"SPDXID\": \"${id}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"supplier\": \"${supplier}\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"${license}\",
      \"licenseDeclared\": \"${license}\",
      \"copyrightText\": \"NOASSERTION\"
    }")
  set(of ",
    {
      \"spdxElementId\": \"SPDXRef-Package-hoplaunch\",
      \"relationshipType\": \"${relation}\",
      \"relatedSpdxElement\": \"${id}\"
    }")
  set(bill_packages "${bill_packages}${package}" PARENT_SCOPE)
  set(bill_relations "${bill_relations}${of}" PARENT_SCOPE)
endfunction()

if(HOPLAUNCH_HOPOPEN)
  get_filename_component(folder "${hoplaunch_header_CLI/CLI.hpp}" DIRECTORY)
  header_version(version "${folder}/Version.hpp"
    CLI11_VERSION_MAJOR CLI11_VERSION_MINOR CLI11_VERSION_PATCH)
  bill_package(CLI11 ${version} BSD-3-Clause "Person: Henry Schreiner" CONTAINS)
  get_filename_component(folder "${hoplaunch_header_toml++/toml.h}" DIRECTORY)
  file(GLOB_RECURSE header "${folder}/*version.h*")  # its folder differs from version to version
  header_version(version "${header}" TOML_LIB_MAJOR TOML_LIB_MINOR TOML_LIB_PATCH)
  bill_package(toml++ ${version} MIT "Person: Mark Gillard" CONTAINS)
  get_filename_component(folder "${hoplaunch_header_nlohmann/json.hpp}" DIRECTORY)
  header_version(version "${folder}/detail/abi_macros.hpp" NLOHMANN_JSON_VERSION_MAJOR
    NLOHMANN_JSON_VERSION_MINOR NLOHMANN_JSON_VERSION_PATCH)
  bill_package(nlohmann-json ${version} MIT "Person: Niels Lohmann" CONTAINS)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT HOPLAUNCH_SANITIZE)
  bill_package(libstdc++ ${CMAKE_CXX_COMPILER_VERSION} "GPL-3.0-or-later WITH GCC-exception-3.1"
    "Organization: Free Software Foundation" STATIC_LINK)
endif()
find_file(hoplaunch_header_features features.h)
mark_as_advanced(hoplaunch_header_features)
if(HOPLAUNCH_STATIC AND hoplaunch_header_features)
  header_version(version "${hoplaunch_header_features}" __GLIBC__ __GLIBC_MINOR__)
  bill_package(glibc ${version} LGPL-2.1-or-later "Organization: Free Software Foundation" STATIC_LINK)
endif()
# Two builds have the same name only if they have the same parts.
string(SHA256 hash "${created}${bill_packages}${CMAKE_SYSTEM_PROCESSOR}")
set(data_license CC0-1.0)  # as SPDX wants it
configure_file(cmake/bill_of_materials.json.in hoplaunch.spdx.json @ONLY)

install(FILES ${PROJECT_BINARY_DIR}/${component}.metainfo.xml
  DESTINATION ${share}/metainfo COMPONENT program)
install(FILES ${PROJECT_BINARY_DIR}/hoplaunch.spdx.json
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
