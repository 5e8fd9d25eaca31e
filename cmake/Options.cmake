# What every target of the project is compiled with.

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

add_library(build_options INTERFACE)
target_compile_features(build_options INTERFACE cxx_std_20)
target_compile_options(build_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
  # Assertions name their source from the top folder on: "../utilities/uri".
  "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=../")
if(HOPLAUNCH_WERROR)
  target_compile_options(build_options INTERFACE -Werror)
endif()

if(HOPLAUNCH_SANITIZE)
  target_compile_options(build_options INTERFACE
    "-fsanitize=${HOPLAUNCH_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(build_options INTERFACE "-fsanitize=${HOPLAUNCH_SANITIZE}")
endif()

if(HOPLAUNCH_COVERAGE)
  target_compile_options(build_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(build_options INTERFACE --coverage)
endif()
