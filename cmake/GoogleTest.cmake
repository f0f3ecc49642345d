# GoogleTest from Debian's source package, built with our own flags so that it fits the sanitizers and the
# cross compiler alike.
set(KESTRELGUARD_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "GoogleTest's source folder")
if(NOT EXISTS ${KESTRELGUARD_GOOGLETEST_DIR}/CMakeLists.txt)
  message(WARNING "GoogleTest's sources are not in ${KESTRELGUARD_GOOGLETEST_DIR} (Debian: googletest); building without tests.")
  set(KESTRELGUARD_TESTS OFF)
  return()
endif()

add_library(kg_gtest STATIC
  ${KESTRELGUARD_GOOGLETEST_DIR}/googletest/src/gtest-all.cc
  ${KESTRELGUARD_GOOGLETEST_DIR}/googlemock/src/gmock-all.cc
  ${KESTRELGUARD_GOOGLETEST_DIR}/googlemock/src/gmock_main.cc)
target_include_directories(kg_gtest SYSTEM PUBLIC
  ${KESTRELGUARD_GOOGLETEST_DIR}/googletest/include ${KESTRELGUARD_GOOGLETEST_DIR}/googlemock/include)
target_include_directories(kg_gtest PRIVATE
  ${KESTRELGUARD_GOOGLETEST_DIR}/googletest ${KESTRELGUARD_GOOGLETEST_DIR}/googlemock)
target_compile_options(kg_gtest PRIVATE -w)
if(WIN32)
  target_compile_definitions(kg_gtest PUBLIC GTEST_HAS_PTHREAD=0)
  target_compile_options(kg_gtest PUBLIC -include ${CMAKE_SOURCE_DIR}/tests/support/GoogleTestPort.h)
  target_link_options(kg_gtest PUBLIC -static)
else()
  find_package(Threads REQUIRED)
  target_link_libraries(kg_gtest PUBLIC Threads::Threads)
  if(KESTRELGUARD_SANITIZE)
    target_compile_options(kg_gtest PRIVATE -fsanitize=address,undefined)
  endif()
endif()
