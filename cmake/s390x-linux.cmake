# Toolchain file: Linux on s390x.
set(KSV_MACHINE s390x)
include(${CMAKE_CURRENT_LIST_DIR}/linux_cross.cmake)
