# Run by CPack once the files of the packages are in their folders: Debian's manual
# pages are compressed.
file(GLOB pages ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/man1/*.1)
foreach(page ${pages})
  execute_process(COMMAND gzip -9n ${page} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
