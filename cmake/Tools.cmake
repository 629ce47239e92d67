# Build-time tools.

# rcgen turns a resource script into the C++ source of a ResourceTable, or into the script the
# Windows resource compiler takes. It runs on the build machine, so a 32-bit or a cross build
# (whose programs this machine may not run) makes it natively.
if(CMAKE_CROSSCOMPILING)
  find_program(TUK_NATIVE_CXX NAMES c++ g++ REQUIRED)
  set(rcgen_compiler ${TUK_NATIVE_CXX})
else()
  set(rcgen_compiler ${CMAKE_CXX_COMPILER})
endif()
if(CMAKE_CROSSCOMPILING OR CMAKE_SIZEOF_VOID_P EQUAL 4)
  set(rcgen_path ${CMAKE_BINARY_DIR}/tools/tuk_rcgen)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/tools)
  execute_process(
    COMMAND ${rcgen_compiler} -std=c++17 -O1 ${PROJECT_SOURCE_DIR}/tools/rcgen/rcgen.cpp
            -o ${rcgen_path}
    RESULT_VARIABLE rcgen_result)
  # Built at configure time: a change to rcgen needs a fresh configure.
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
               ${PROJECT_SOURCE_DIR}/tools/rcgen/rcgen.cpp)
  if(NOT rcgen_result EQUAL 0)
    message(FATAL_ERROR "cannot build the native resource compiler")
  endif()
  add_executable(tuk_rcgen IMPORTED)
  set_target_properties(tuk_rcgen PROPERTIES IMPORTED_LOCATION ${rcgen_path})
else()
  add_executable(tuk_rcgen ${PROJECT_SOURCE_DIR}/tools/rcgen/rcgen.cpp)
  set_target_properties(tuk_rcgen PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tools)
endif()

# tuk_resource_source(<out_var> RC <script> SYMBOL <name> [EXPORT] [DEPENDS <headers>...])
# Generates <binary dir>/<name>.cpp defining `const ResourceTable <name>`; with EXPORT the
# table is defined with C linkage and default visibility (a language module's export).
function(tuk_resource_source out_var)
  cmake_parse_arguments(ARG "EXPORT" "RC;SYMBOL" "DEPENDS" ${ARGN})
  set(output ${CMAKE_CURRENT_BINARY_DIR}/${ARG_SYMBOL}.cpp)
  set(flags)
  if(ARG_EXPORT)
    set(flags --export)
  endif()
  add_custom_command(
    OUTPUT ${output}
    COMMAND tuk_rcgen ${flags} --symbol ${ARG_SYMBOL} --output ${output} ${ARG_RC}
    DEPENDS tuk_rcgen ${ARG_RC} ${ARG_DEPENDS}
    COMMENT "Compiling resources ${ARG_RC}"
    VERBATIM)
  set(${out_var} ${output} PARENT_SCOPE)
endfunction()

# tuk_windows_resource_script(<out_var> RC <script> NAME <stem> [DEPENDS <headers>...])
# Generates <binary dir>/<stem>.rc, the script windres compiles into a DLL's resources.
function(tuk_windows_resource_script out_var)
  cmake_parse_arguments(ARG "" "RC;NAME" "DEPENDS" ${ARGN})
  set(output ${CMAKE_CURRENT_BINARY_DIR}/${ARG_NAME}.rc)
  add_custom_command(
    OUTPUT ${output}
    COMMAND tuk_rcgen --windows-script --output ${output} ${ARG_RC}
    DEPENDS tuk_rcgen ${ARG_RC} ${ARG_DEPENDS}
    COMMENT "Writing the Windows resource script of ${ARG_RC}"
    VERBATIM)
  set(${out_var} ${output} PARENT_SCOPE)
endfunction()
