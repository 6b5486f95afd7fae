# Toolchain file: Linux on aarch64.
set(KSV_MACHINE aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/linux_cross.cmake)
