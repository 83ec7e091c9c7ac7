# Toolchain: 64-bit Windows programs built on Linux by MinGW-w64 (Debian: g++-mingw-w64-x86-64-posix).
# The posix variant of the compiler is the one whose standard library has std::thread and std::mutex.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Nothing of the build machine may be found and linked by mistake.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# One file without companions. The search is deeply recursive, and Windows gives a thread 2 MiB by default,
# so threads get the 8 MiB that they have on Linux.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--stack,8388608")

# How the programs are run here.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../tools/wine;${CMAKE_BINARY_DIR}/wine")
