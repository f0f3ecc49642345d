# kg_desktop_tests(<name> SOURCES ... [LIBS ...])
#
# Tests that run under Wine, in a session of their own: one program kg_<name>_tests.exe with the stand-in
# desktop and the test toolkit linked in, run by ctest (label "desktop").
function(kg_desktop_tests name)
  cmake_parse_arguments(TESTS "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(kg_${name}_tests ${TESTS_SOURCES})
  target_link_libraries(kg_${name}_tests PRIVATE kg_testing kg_desktop kg_gtest ${TESTS_LIBS})
  add_test(NAME ${name}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/wine-session --time 600 -- $<TARGET_FILE:kg_${name}_tests> --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES LABELS desktop TIMEOUT 700)
endfunction()

# kg_long_run(<name> <seconds> [ARGUMENTS...])
#
# The same program once more as a long run: everything rather than a fixed part (label "long"). A configuration of
# ctest's own, not the label, keeps it out of other runs: several -LE of one command leave out only what has all labels.
function(kg_long_run name seconds)
  math(EXPR limit "${seconds} + 100")
  add_test(NAME ${name}_long CONFIGURATIONS long
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/wine-session --time ${seconds} --
      $<TARGET_FILE:kg_${name}_tests> --gtest_brief=1 ${ARGN})
  set_tests_properties(${name}_long PROPERTIES
    LABELS "desktop;long" TIMEOUT ${limit} ENVIRONMENT KESTRELGUARD_LONG=1)
endfunction()
