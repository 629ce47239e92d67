# GoogleTest for the suites: the system's own build, or, with TUK_GTEST_FROM_SOURCE, one built
# here from its sources with this build's compiler and flags, for targets the system's
# prebuilt libraries do not fit. Either way the suites link GTest::gtest and GTest::gtest_main.
option(TUK_GTEST_FROM_SOURCE "Build GoogleTest from its sources with this build's flags" OFF)
set(TUK_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest's sources")

if(TUK_GTEST_FROM_SOURCE)
  # Only the two libraries: no gmock, no install rules, none of its own tests or samples.
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  set(gtest_build_tests OFF)
  set(gtest_build_samples OFF)
  add_subdirectory(${TUK_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  # Older releases name the targets gtest and gtest_main only.
  foreach(library gtest gtest_main)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()
