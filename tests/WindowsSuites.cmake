# The suites that run on Windows: under wine on this machine (scripts/wine-run.sh, in a wine
# prefix of the build's own), natively on Windows. They are the platform-neutral suites of the
# agent, the store and the hostile hosts, and the Windows-only suites of tests/win/.
if(CMAKE_HOST_WIN32)
  set(tuk_windows_bin_dir ${TUK_BIN_DIR})
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/scripts/wine-run.sh
                                    ${CMAKE_BINARY_DIR}/wineprefix)
  # Wine shows this machine's root as drive Z:.
  set(tuk_windows_bin_dir Z:${TUK_BIN_DIR})
endif()

add_library(tuk_test_support STATIC support/TestFiles.cpp support/TestFilesWin32.cpp
                                     support/LoadedAgent.cpp support/ClientStores.cpp
                                     support/Reference.cpp)
target_include_directories(tuk_test_support PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(tuk_test_support PUBLIC GTest::gtest)
target_compile_options(tuk_test_support PUBLIC -include
                       ${CMAKE_CURRENT_SOURCE_DIR}/support/WindowsShims.h)
target_compile_definitions(tuk_test_support PRIVATE TUK_BIN_DIR="${tuk_windows_bin_dir}")

add_library(tuk_agent_session STATIC support/AgentSession.cpp support/HostWalk.cpp
                                      support/AgentStore.cpp)
target_link_libraries(tuk_agent_session PUBLIC tuk_test_support tuk_mhmail_core)

# The agent's code linked into a test program looks its strings and dialogs up in the
# program's own resources, so each program carries the agent's.
tuk_windows_resource_script(tuk_test_windows_script RC ${PROJECT_SOURCE_DIR}/resources/mhmail.rc
  NAME mhmail DEPENDS ${PROJECT_SOURCE_DIR}/resources/resource.h)

# tuk_windows_suite(<name> <sources>...): one test program, its tests found under wine.
function(tuk_windows_suite name)
  add_executable(${name}_tests ${ARGN} ${tuk_test_windows_script})
  target_link_libraries(${name}_tests PRIVATE tuk_agent_session GTest::gtest_main)
  target_compile_definitions(${name}_tests PRIVATE TUK_BIN_DIR="${tuk_windows_bin_dir}"
                                                   TUK_SOURCE_DIR="Z:${PROJECT_SOURCE_DIR}")
  add_dependencies(${name}_tests tuk_mhmail tuk_mhmailDE)
  gtest_discover_tests(${name}_tests DISCOVERY_TIMEOUT 120)
endfunction()

tuk_windows_suite(store store/FastKernels_test.cpp store/LocalTime_test.cpp
                  store/MailDate_test.cpp store/MailMsg_test.cpp store/MailProps_test.cpp)
tuk_windows_suite(agent agent/Language_test.cpp agent/Lifecycle_test.cpp)
tuk_windows_suite(hostile hostile/HostCalls_test.cpp win/WinHostile_test.cpp)
tuk_windows_suite(cmn cmn/Acdr_test.cpp platform/CString_test.cpp)

# The DLL's one export, read from its export table.
add_test(NAME DllExportsOnlyInitAgent
         COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/win/dll_exports.sh ${CMAKE_OBJDUMP}
                 $<TARGET_FILE:tuk_mhmail>)
# The class library, the settings pages and the View Email window on the system's dialogs.
tuk_windows_suite(win win/WinDialogs_test.cpp)

# The digest of the sample stores under wine, record for record the POSIX build's (its build
# folder, build/default, must be built first).
add_subdirectory(win)
set(TUK_POSIX_BIN_DIR ${PROJECT_SOURCE_DIR}/build/default/bin CACHE PATH
    "The POSIX build's output folder, whose digest the Windows one must match")
add_test(NAME DigestMatchesThePosixBuild
         COMMAND bash -c [[set -e
           test -x "$3/tuk_digest" || { echo "no POSIX build in $3: build the default preset"; exit 1; }
           "$1/digest_samples.sh" "$3" "$4" "$5/posix.digest"
           "$1/digest_samples.sh" "$2" "$4" "$5/windows.digest" "$6" "$7"
           "$1/compare_digests.sh" "$5/posix.digest" "$5/windows.digest"]]
                 digest ${CMAKE_CURRENT_SOURCE_DIR}/win ${TUK_BIN_DIR} ${TUK_POSIX_BIN_DIR}
                 ${PROJECT_SOURCE_DIR}/samples ${CMAKE_CURRENT_BINARY_DIR}
                 ${PROJECT_SOURCE_DIR}/scripts/wine-run.sh ${CMAKE_BINARY_DIR}/wineprefix-digest)
