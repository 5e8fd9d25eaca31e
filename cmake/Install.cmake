# SPDX-License-Identifier: MIT
# What `cmake --install` puts where.  Three components:
# "program", "library" (the shared library alone) and "development".

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# --- The library -------------------------------------------------------------

install(TARGETS ${libraries} EXPORT hoplaunch
  LIBRARY COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
file(GLOB headers CONFIGURE_DEPENDS include/*.h)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/hoplaunch
  COMPONENT development)

# find_package(hoplaunch CONFIG): the targets hoplaunch::hoplaunch and hoplaunch::static.
set(config ${CMAKE_INSTALL_LIBDIR}/cmake/hoplaunch)
install(EXPORT hoplaunch NAMESPACE hoplaunch:: FILE hoplaunchConfig.cmake
  DESTINATION ${config} COMPONENT development)
write_basic_package_version_file(hoplaunchConfigVersion.cmake COMPATIBILITY SameMinorVersion)
# The pkg-config file names the prefix from where it is itself, unless that is a place of
# its own.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" up "${up}")
  set(prefix "\${pcfiledir}/${up}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
  set(${folder} ${CMAKE_INSTALL_${folder}})
  if(NOT IS_ABSOLUTE "${${folder}}")
    string(PREPEND ${folder} "\${prefix}/")
  endif()
endforeach()
configure_file(cmake/hoplaunch.pc.in hoplaunch.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/hoplaunchConfigVersion.cmake
  DESTINATION ${config} COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/hoplaunch.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# --- The programs, and what belongs to them ----------------------------------

set(share ${CMAKE_INSTALL_DATAROOTDIR})
install(TARGETS hoplaunch hopexplain RUNTIME COMPONENT program)
install(FILES desktop/hoplaunch.svg
  DESTINATION ${share}/icons/hicolor/scalable/apps COMPONENT program)
# Every icon theme must have this size as a bitmap.
install(FILES desktop/hoplaunch.png
  DESTINATION ${share}/icons/hicolor/48x48/apps COMPONENT program)
foreach(program hoplaunch hopexplain)
  install(FILES man/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
  # bash and fish find the completions of a command under its name.
  install(FILES completions/hoplaunch.bash RENAME ${program}
    DESTINATION ${share}/bash-completion/completions COMPONENT program)
  install(FILES completions/hoplaunch.fish RENAME ${program}.fish
    DESTINATION ${share}/fish/vendor_completions.d COMPONENT program)
endforeach()
install(FILES completions/_hoplaunch
  DESTINATION ${share}/zsh/vendor-completions COMPONENT program)
if(HOPLAUNCH_HOPOPEN)
  include(cmake/InstallHopopen.cmake)
endif()
include(cmake/Documents.cmake)
install(FILES README.md SECURITY.md docs/viewers.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
install(DIRECTORY docs/images DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program
  FILES_MATCHING PATTERN "*.png")
install(PROGRAMS desktop/ssh-in-terminal desktop/vnc-address-only desktop/vnc-in-remmina
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT program)
