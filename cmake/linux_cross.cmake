# Of the toolchain files for Linux on other machines: programs for KSV_MACHINE, built on a Debian
# machine with the packages g++-${KSV_MACHINE}-linux-gnu, and qemu-user to run them.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${KSV_MACHINE})

set(CMAKE_C_COMPILER ${KSV_MACHINE}-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER ${KSV_MACHINE}-linux-gnu-g++)

set(CMAKE_FIND_ROOT_PATH /usr/${KSV_MACHINE}-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(KSV_EMULATOR NAMES qemu-${KSV_MACHINE} qemu-${KSV_MACHINE}-static)
if(KSV_EMULATOR)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KSV_EMULATOR} -L /usr/${KSV_MACHINE}-linux-gnu)
endif()
