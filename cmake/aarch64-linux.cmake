# Toolchain file: Linux programs for aarch64 from a Debian machine. Packages: g++-aarch64-linux-gnu, and
# qemu-user to run what was built.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(KSV_EMULATOR NAMES qemu-aarch64 qemu-aarch64-static)
if(KSV_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KSV_EMULATOR} -L /usr/aarch64-linux-gnu)
endif()
