# Toolchain: 64-bit ARM Linux programs built on another Linux (Debian: g++-aarch64-linux-gnu, qemu-user).

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Nothing of the build machine may be found and linked by mistake.
set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# One file without companions: it runs on any distribution, and in the emulator without the libraries of the target.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

# How the programs are run here.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
