# The tests of the front door: of its units, and of the program as its users run it.
foreach(source ${door_sources})
  cmake_path(GET source STEM name)
  target_link_libraries(${name} PRIVATE hoplaunch_opening test_runners)
  add_dependencies(${name} hopopen hoplaunch recording_viewer)
endforeach()
wraps(file_test fstat read)
foreach(name settings_fault_test settings_file_test)
  wraps(${name} mkdir open flock read write fsync fchmod close rename unlink stat lstat fstat
    readlink)
endforeach()
target_link_libraries(patterns_test PRIVATE hoplaunch_driver)
wraps(patterns_test regcomp)
