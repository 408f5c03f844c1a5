# Toolchain of 32-bit Windows, by the cross compiler of Debian. Programs that the build runs go through Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tests/windows/under_wine)

# Arithmetic with the precision that a double has; the processor's old stack would keep more.
set(CMAKE_C_FLAGS_INIT "-march=pentium4 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-march=pentium4 -mfpmath=sse")

set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(what LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${what} ONLY)
endforeach()
