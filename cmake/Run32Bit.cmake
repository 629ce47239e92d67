# How a 32-bit build's programs run on this 64-bit machine: directly where the kernel runs
# 32-bit programs, otherwise under qemu-user, which then runs the tests and also the listing
# of each suite's tests at build time.
if(CMAKE_CROSSCOMPILING_EMULATOR)
  return()  # one given on the command line wins
endif()
try_run(TUK_RUN32_EXIT TUK_RUN32_BUILT
        SOURCE_FROM_CONTENT runs32.c "int main(void) { return 0; }"
        COMPILE_OUTPUT_VARIABLE run32_compile_output)
if(NOT TUK_RUN32_BUILT)
  message(FATAL_ERROR "cannot build a 32-bit program:\n${run32_compile_output}")
endif()
if(TUK_RUN32_EXIT STREQUAL "0")
  message(STATUS "32-bit programs run natively")
  return()
endif()
find_program(TUK_QEMU_I386 qemu-i386)
if(NOT TUK_QEMU_I386)
  message(FATAL_ERROR "this kernel does not run 32-bit programs and qemu-i386 (qemu-user) is "
                      "not installed")
endif()
message(STATUS "32-bit programs run under ${TUK_QEMU_I386}")
set(CMAKE_CROSSCOMPILING_EMULATOR ${TUK_QEMU_I386} -L /)
