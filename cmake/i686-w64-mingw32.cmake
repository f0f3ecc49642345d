# Cross-build for 32-bit Windows. The compiler is named with its thread model: the unsuffixed name is
# whichever variant was installed last, and the posix one imports what old systems lack.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

# The compiler of this machine, or the one in the user's cache. Asked once for each run of CMake, which reads this file
# several times.
if(NOT DEFINED ENV{KESTRELGUARD_CROSS_PROGRAMS})
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../scripts/cross-compiler
    OUTPUT_VARIABLE cross_programs OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(ENV{KESTRELGUARD_CROSS_PROGRAMS} ${cross_programs})
endif()
set(programs $ENV{KESTRELGUARD_CROSS_PROGRAMS}/i686-w64-mingw32)

set(CMAKE_C_COMPILER ${programs}-gcc-win32)
set(CMAKE_CXX_COMPILER ${programs}-g++-win32)
set(CMAKE_RC_COMPILER ${programs}-windres)
set(CMAKE_AR ${programs}-ar)
set(CMAKE_RANLIB ${programs}-ranlib)
set(CMAKE_OBJDUMP ${programs}-objdump)

set(CMAKE_FIND_ROOT_PATH $ENV{KESTRELGUARD_CROSS_PROGRAMS}/../i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
