# SPDX-License-Identifier: MIT
# What belongs to the front door: the program, the viewers that it knows, and the desktop
# entries that start it.

install(TARGETS hopopen RUNTIME COMPONENT program)
install(DIRECTORY viewers DESTINATION ${share}/hoplaunch COMPONENT program
  FILES_MATCHING PATTERN "*.toml")
# With this folder in XDG_DATA_DIRS, the program knows them before it is installed, too.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/share/hoplaunch)
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/viewers ${PROJECT_BINARY_DIR}/share/hoplaunch/viewers
  SYMBOLIC)

# Desktops search PATH, which has the usual prefixes; elsewhere they need the full path.
set(hopopen hopopen)
if(NOT CMAKE_INSTALL_PREFIX MATCHES "^/usr(/local)?/?$")
  set(hopopen ${CMAKE_INSTALL_FULL_BINDIR}/hopopen)
endif()
# An argument with other characters than these is in quotes, where four have a backslash.
# A percent sign is doubled.
set(hopopen_argument "${hopopen}")
if(NOT hopopen MATCHES "^[A-Za-z0-9/._+-]+$")
  string(REGEX REPLACE "([\"`$\\])" "\\\\\\1" hopopen_argument "${hopopen}")
  string(REPLACE "%" "%%" hopopen_argument "\"${hopopen_argument}\"")
endif()
if(hopopen MATCHES "%")
  # GLib looks for the program before it replaces what is doubled.
  string(PREPEND hopopen_argument "/usr/bin/env ")
endif()
# Of any value of an entry, backslashes are doubled.
foreach(value hopopen hopopen_argument)
  string(REPLACE "\\" "\\\\" ${value} "${${value}}")
endforeach()
configure_file(desktop/hopopen.desktop.in hopopen.desktop @ONLY)
# The entries that there were before, one for each scheme.
foreach(scheme vnc ssh)
  string(TOUPPER ${scheme} name)
  configure_file(desktop/chosen-before.desktop.in hoplaunch-${scheme}.desktop @ONLY)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/hopopen.desktop
  ${PROJECT_BINARY_DIR}/hoplaunch-vnc.desktop ${PROJECT_BINARY_DIR}/hoplaunch-ssh.desktop
  DESTINATION ${share}/applications COMPONENT program)

install(FILES man/hopopen.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
install(FILES completions/hopopen.bash RENAME hopopen
  DESTINATION ${share}/bash-completion/completions COMPONENT program)
install(FILES completions/_hopopen
  DESTINATION ${share}/zsh/vendor-completions COMPONENT program)
install(FILES completions/hopopen.fish
  DESTINATION ${share}/fish/vendor_completions.d COMPONENT program)
