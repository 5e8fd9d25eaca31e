# The tests of the front door: of its units, and of the program as its users run it.
set(opening LINKS hoplaunch_opening hoplaunch_driver test_programs)
test_program(opening_test TOGETHER ${opening} TESTS
  associations browser_policy catalog click_places desktop_entry file host key_file link_entry
  patterns settings settings_edit settings_random shown template toml WRAPS fstat read regcomp)
set(file_calls mkdir open flock read write fsync fchmod close rename unlink stat lstat fstat
  readlink)
test_program(settings_fault_test ${opening} TESTS settings_fault WRAPS ${file_calls})
test_program(settings_file_test ${opening} TESTS settings_file WRAPS ${file_calls})
test_program(hopopen_test TOGETHER RUNNERS TESTS ${hopopen_tests} links)
