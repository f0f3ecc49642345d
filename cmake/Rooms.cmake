# Flags and helpers shared by every room.

add_library(kg_flags INTERFACE)
target_compile_options(kg_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_include_directories(kg_flags INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_BINARY_DIR}/generated)

if(WIN32)
  # "A" functions and the records of Windows 98 SE; newer headers silently grow records that carry their size.
  target_compile_definitions(kg_flags INTERFACE
    WINVER=0x0400 _WIN32_WINDOWS=0x0410 _WIN32_WINNT=0x0400 _WIN32_IE=0x0500
    WIN32_LEAN_AND_MEAN NOMINMAX)
  target_compile_options(kg_flags INTERFACE $<$<CONFIG:Release>:-ffunction-sections> $<$<CONFIG:Release>:-fdata-sections>)
  # Static: nothing to install beside the program. No time stamp: two builds are equal to the byte.
  target_link_options(kg_flags INTERFACE
    -static -Wl,--no-insert-timestamp $<$<CONFIG:Release>:-s> $<$<CONFIG:Release>:-Wl,--gc-sections>)
elseif(KESTRELGUARD_SANITIZE)
  target_compile_options(kg_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kg_flags INTERFACE -fsanitize=address,undefined)
  # Between the sanitizers' checks GCC 13 and 14 no longer see how much their own library copies (a list of one element,
  # an empty text), and warn of it. All other builds keep these warnings.
  if(CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 13)
    target_compile_options(kg_flags INTERFACE
      $<$<CONFIG:Release>:-Wno-array-bounds$<SEMICOLON>-Wno-stringop-overread>)
  endif()
endif()

# What the names of the native tests end with where they are built as the product is.
if(NOT WIN32 AND CMAKE_BUILD_TYPE STREQUAL "Release")
  set(KESTRELGUARD_OPTIMISED -optimised)
endif()

# kg_room(<name> [SOURCES ...] [WIN32_SOURCES ...] [DEPENDS room ...] [LIBS library ...])
#
# One room of the house as the static library kg_<name>. SOURCES decide and compile everywhere;
# WIN32_SOURCES talk to Windows. DEPENDS names the rooms below it.
function(kg_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;WIN32_SOURCES;DEPENDS;LIBS" ${ARGN})
  set(sources ${ROOM_SOURCES})
  if(WIN32)
    list(APPEND sources ${ROOM_WIN32_SOURCES})
  endif()
  if(sources)
    add_library(kg_${name} STATIC ${sources})
    set(scope PUBLIC)
  else()
    add_library(kg_${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_link_libraries(kg_${name} ${scope} kg_flags)
  if(WIN32 AND sources)
    # Small beats fast: the program is loaded at every log-on. What must be fast asks for -O2 where it stands.
    target_compile_options(kg_${name} PRIVATE $<$<CONFIG:Release>:-Os>)
    # The program's one thread makes every static object; the one that ticks for long calls has none.
    target_compile_options(kg_${name} PRIVATE -fno-threadsafe-statics)
    # What it calls is in runtime/win32/StackGuard.cpp. At compile time alone: at link time it would bring the
    # compiler's library for it.
    target_compile_options(kg_${name} PRIVATE -fstack-protector)
  endif()
  foreach(below IN LISTS ROOM_DEPENDS)
    target_link_libraries(kg_${name} ${scope} kg_${below})
  endforeach()
  if(WIN32)
    target_link_libraries(kg_${name} ${scope} ${ROOM_LIBS})
  endif()
endfunction()

# kg_quick_tests(<test> ...)
#
# Tests that run on this machine without Wine, and before all others.
function(kg_quick_tests)
  set_tests_properties(${ARGN} PROPERTIES LABELS host COST 4000)
endfunction()

# kg_host_tests(<room> [SOURCES ...] [DEPENDS room ...])
#
# The tests of a room's deciding half: one program kg_<room>_tests, run by ctest. They are native where the build is;
# in the Windows build they are made with the product's flags, and kg_portable_tests runs them all under Wine.
function(kg_host_tests room)
  cmake_parse_arguments(TESTS "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(kg_${room}_tests ${TESTS_SOURCES})
  target_link_libraries(kg_${room}_tests PRIVATE kg_${room} kg_gtest)
  foreach(below IN LISTS TESTS_DEPENDS)
    target_link_libraries(kg_${room}_tests PRIVATE kg_${below})
  endforeach()
  target_include_directories(kg_${room}_tests PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  if(WIN32)
    set_property(GLOBAL APPEND PROPERTY KG_PORTABLE_TESTS kg_${room}_tests)
  else()
    add_test(NAME ${room}${KESTRELGUARD_OPTIMISED} COMMAND kg_${room}_tests --gtest_brief=1)
    kg_quick_tests(${room}${KESTRELGUARD_OPTIMISED})
  endif()
endfunction()

# kg_portable_tests()
#
# One ctest entry for the programs of all kg_host_tests so far, in one Wine session. Does nothing on the build host.
function(kg_portable_tests)
  if(NOT WIN32)
    return()
  endif()
  get_property(programs GLOBAL PROPERTY KG_PORTABLE_TESTS)
  set(files "")
  foreach(program IN LISTS programs)
    list(APPEND files $<TARGET_FILE:${program}>)
  endforeach()
  add_test(NAME portable-windows
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/wine-session --time 900 --outside --
      ${CMAKE_SOURCE_DIR}/tests/support/EachInTurn.sh ${files})
  set_tests_properties(portable-windows PROPERTIES TIMEOUT 1000)
endfunction()

# kg_windows_tests(<room> [SOURCES ...] [DEPENDS room ...] [LIBS library ...])
#
# The tests of a room's Windows half: one program kg_<room>_windows_tests.exe, run by ctest in a Wine session.
function(kg_windows_tests room)
  if(NOT WIN32)
    return()
  endif()
  cmake_parse_arguments(TESTS "" "" "SOURCES;DEPENDS;LIBS" ${ARGN})
  add_executable(kg_${room}_windows_tests ${TESTS_SOURCES})
  target_link_libraries(kg_${room}_windows_tests PRIVATE kg_${room} kg_gtest ${TESTS_LIBS})
  foreach(below IN LISTS TESTS_DEPENDS)
    target_link_libraries(kg_${room}_windows_tests PRIVATE kg_${below})
  endforeach()
  target_include_directories(kg_${room}_windows_tests PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/tests)
  add_test(NAME ${room}-windows
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/wine-session -- $<TARGET_FILE:kg_${room}_windows_tests> --gtest_brief=1)
  # After the quick ones, before the desktop tests, which take minutes.
  set_tests_properties(${room}-windows PROPERTIES LABELS wine COST 3000)
endfunction()
