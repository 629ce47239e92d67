# Cross build for Windows with Debian's mingw-w64 compilers (the posix threading flavour, whose
# C++ library has std::thread and std::mutex). TUK_MINGW_ARCH picks the target: x86_64 for the
# 64-bit agent, i686 for the 32-bit one whose layouts are checked at compile time.
set(CMAKE_SYSTEM_NAME Windows)
if(NOT DEFINED TUK_MINGW_ARCH)
  set(TUK_MINGW_ARCH x86_64)
endif()
set(CMAKE_SYSTEM_PROCESSOR ${TUK_MINGW_ARCH})
set(triple ${TUK_MINGW_ARCH}-w64-mingw32)

set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
