# SPDX-License-Identifier: MIT
# The front door.  It alone uses further libraries, all of them headers; scripts/check linked
# shows that nothing of them is in the other programs and the library.

foreach(header CLI/CLI.hpp toml++/toml.h nlohmann/json.hpp)
  find_file(hoplaunch_header_${header} ${header})
  mark_as_advanced(hoplaunch_header_${header})
  if(NOT hoplaunch_header_${header})
    message(FATAL_ERROR "<${header}> is missing.  hopopen needs Debian's packages libcli11-dev, "
      "libtomlplusplus-dev and nlohmann-json3-dev; -DHOPLAUNCH_HOPOPEN=OFF builds the rest.")
  endif()
endforeach()

add_library(hoplaunch_opening STATIC
  hopopen/associations.cpp
  hopopen/base_folders.cpp
  hopopen/browser_profile.cpp
  hopopen/catalog.cpp
  hopopen/catalog_file.cpp
  hopopen/check.cpp
  hopopen/check_browsers.cpp
  hopopen/check_desktop.cpp
  hopopen/check_machine.cpp
  hopopen/choose.cpp
  hopopen/chromium_policy.cpp
  hopopen/click_places.cpp
  hopopen/credentials.cpp
  hopopen/decide.cpp
  hopopen/definition.cpp
  hopopen/definition_reader.cpp
  hopopen/definitions.cpp
  hopopen/desktop_entry.cpp
  hopopen/enumeration.cpp
  hopopen/fault.cpp
  hopopen/file.cpp
  hopopen/file_replace.cpp
  hopopen/fill.cpp
  hopopen/finding.cpp
  hopopen/firefox_handler.cpp
  hopopen/firefox_policy.cpp
  hopopen/folders.cpp
  hopopen/gateway.cpp
  hopopen/host.cpp
  hopopen/host_rules.cpp
  hopopen/json.cpp
  hopopen/json_read.cpp
  hopopen/key_file.cpp
  hopopen/link_reader.cpp
  hopopen/link_text.cpp
  hopopen/list.cpp
  hopopen/meaning.cpp
  hopopen/notify.cpp
  hopopen/open_link.cpp
  hopopen/options.cpp
  hopopen/out_of_memory.cpp
  hopopen/outline.cpp
  hopopen/parameters.cpp
  hopopen/paths.cpp
  hopopen/percent.cpp
  hopopen/piece.cpp
  hopopen/place_reader.cpp
  hopopen/placeholder_values.cpp
  hopopen/port.cpp
  hopopen/preferences.cpp
  hopopen/programs.cpp
  hopopen/rdp_pairs.cpp
  hopopen/refusal.cpp
  hopopen/route.cpp
  hopopen/say.cpp
  hopopen/scheme.cpp
  hopopen/scheme_rdp.cpp
  hopopen/scheme_spice.cpp
  hopopen/semaphores.cpp
  hopopen/settings.cpp
  hopopen/settings_add.cpp
  hopopen/settings_edit.cpp
  hopopen/settings_file.cpp
  hopopen/settings_host.cpp
  hopopen/settings_pairs.cpp
  hopopen/settings_remove.cpp
  hopopen/shipped.cpp
  hopopen/shown.cpp
  hopopen/ssh_command.cpp
  hopopen/start.cpp
  hopopen/tell.cpp
  hopopen/tell_json.cpp
  hopopen/template.cpp
  hopopen/text_edit.cpp
  hopopen/text_lines.cpp
  hopopen/toml.cpp
  hopopen/toml_read.cpp
  hopopen/toml_text.cpp
  hopopen/trust_left.cpp
  hopopen/trusted.cpp
  hopopen/tunnel.cpp
  hopopen/tunnel_folder.cpp
  hopopen/wishes.cpp)
target_include_directories(hoplaunch_opening PUBLIC hopopen)
target_link_libraries(hoplaunch_opening PUBLIC hoplaunch_log hoplaunch_support PRIVATE hoplaunch_options)
target_precompile_headers(hoplaunch_opening PRIVATE ${hoplaunch_common_headers} <optional>)
target_compile_definitions(hoplaunch_opening PRIVATE HOPOPEN_VERSION="${PROJECT_VERSION}")
add_executable(hopopen hopopen/main.cpp)
target_link_libraries(hopopen PRIVATE hoplaunch_opening hoplaunch_options hoplaunch_quick_start)
if(HOPLAUNCH_STATIC)
  set_target_properties(hopopen PROPERTIES STATIC_PIE ON
    LINK_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/click.ld")
  target_link_options(hopopen PRIVATE LINKER:-T,${CMAKE_CURRENT_LIST_DIR}/click.ld)
endif()
