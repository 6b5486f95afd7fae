# Toolchain file: Linux programs for s390x from a Debian machine. Packages: g++-s390x-linux-gnu, and
# qemu-user to run what was built.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)

set(CMAKE_C_COMPILER s390x-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER s390x-linux-gnu-g++)

set(CMAKE_FIND_ROOT_PATH /usr/s390x-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(KSV_EMULATOR NAMES qemu-s390x qemu-s390x-static)
if(KSV_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KSV_EMULATOR} -L /usr/s390x-linux-gnu)
endif()
