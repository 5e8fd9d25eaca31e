# The Debian packages: hoplaunch, libhoplaunch1 and libhoplaunch-dev, one for each
# component of the installation.  ./package builds and checks them.

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL program library development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_CONTACT "The hoplaunch authors <authors@hoplaunch.example>")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/compress_pages.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # the first line of each description
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME hoplaunch)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
# Without desktop-file-utils most desktops do not see that vnc: and other links have
# a handler; the commands themselves do not need it.  hopopen has use for a viewer of each
# scheme, and for a program that shows why a link was not opened.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS
  "desktop-file-utils, \
libnotify-bin | zenity | kdialog | x11-utils, \
openssh-client | putty | remmina, \
tigervnc-viewer | remmina | krdc, \
xterm | x-terminal-emulator")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS
  "bash-completion, freerdp3-sdl | freerdp2-x11, gvncviewer, inetutils-telnet, krdc, putty, remmina, \
spice-client-gtk, virt-viewer, xdg-utils, xtightvncviewer")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
"launcher for remote-access URIs such as vnc: and ssh: links
hopopen opens a vnc:, rdp:, spice:, ssh: or telnet: link in the right viewer,
safely, or says why it does not. It registers itself with the desktop as the
handler of such links, checks every piece of a link, and passes nothing else
on to the viewer.
Data files say which viewers there are, and how each is started.

hoplaunch is given one URI, such as vnc://host:5900/?shared=1, looks up the
viewer program for its scheme, turns the URI into that program's argument
vector, and becomes the program. hopexplain has the same command line,
starts nothing, and says what hoplaunch would do.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libhoplaunch1)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
"support library of hoplaunch (shared library)
A C++ library with a versioned configuration database, event reports with
pluggable handlers, trace flags, stack traces, dates, distinguished names,
remote-access URIs, and text utilities.

This package has the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libhoplaunch-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libhoplaunch1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkg-config")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
"support library of hoplaunch (development files)
A C++ library with a versioned configuration database, event reports with
pluggable handlers, trace flags, stack traces, dates, distinguished names,
remote-access URIs, and text utilities.

This package has the headers, the static library, and what CMake and
pkg-config take to find them.")

# --- Files that only a Debian package has ------------------------------------

find_program(rsvg_convert rsvg-convert REQUIRED)
set(changelog ${PROJECT_BINARY_DIR}/changelog.gz)
add_custom_command(OUTPUT ${changelog}
  COMMAND ${PROJECT_SOURCE_DIR}/packaging/changelog.sh "${CPACK_PACKAGE_CONTACT}" ${changelog}
  DEPENDS CHANGELOG.md packaging/changelog.sh VERBATIM)
# Every icon theme must have this size as a bitmap.
set(icon ${PROJECT_BINARY_DIR}/hoplaunch.png)
add_custom_command(OUTPUT ${icon}
  COMMAND ${rsvg_convert} --width=48 --height=48 --output=${icon}
    ${PROJECT_SOURCE_DIR}/desktop/hoplaunch.svg
  DEPENDS desktop/hoplaunch.svg VERBATIM)
add_custom_target(hoplaunch_package_files ALL DEPENDS ${changelog} ${icon})

install(FILES ${icon} DESTINATION ${share}/icons/hicolor/48x48/apps COMPONENT program)
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  install(FILES packaging/copyright ${changelog}
    DESTINATION ${share}/doc/${package} COMPONENT ${component})
  if(EXISTS ${PROJECT_SOURCE_DIR}/packaging/${package}.lintian-overrides)
    install(FILES packaging/${package}.lintian-overrides RENAME ${package}
      DESTINATION ${share}/lintian/overrides COMPONENT ${component})
  endif()
endforeach()

include(CPack)
