# SPDX-License-Identifier: MIT
# The tests of the front door: of its units, and of the program as its users run it.
test_program(opening_test TOGETHER WRAPS
  LINKS hoplaunch_opening hoplaunch_driver test_programs TESTS ${door_tests})
test_program(hopopen_test TOGETHER RUNNERS TESTS ${hopopen_tests})
