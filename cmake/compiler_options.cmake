# One target that everything of ours links: warnings, and the sanitizers when they are asked for.
add_library(ksv_options INTERFACE)
target_compile_options(ksv_options INTERFACE -Wall -Wextra -Wconversion)
# GCC 11 tells that it does nothing about fields that only one system uses, and is asked for nothing.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12)
  target_compile_options(ksv_options INTERFACE -Wno-attributes)
endif()
if(KSV_WERROR)
  target_compile_options(ksv_options INTERFACE -Werror)
endif()

if(KSV_SANITIZE)
  target_compile_options(ksv_options INTERFACE -fsanitize=address,undefined
                         -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(ksv_options INTERFACE -fsanitize=address,undefined)
endif()

if(KSV_SANITIZE_THREADS)
  target_compile_options(ksv_options INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(ksv_options INTERFACE -fsanitize=thread)
endif()

if(KSV_BUILD_FUZZERS)
  target_compile_options(ksv_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

include(cmake/hardening.cmake)

# What is shipped links this as well, and is what KSV_COVERAGE counts: the tests themselves need no counters, only what makes
# room for those of others.
add_library(ksv_counted INTERFACE)
target_link_libraries(ksv_counted INTERFACE ksv_options ksv_hardening)
# Each function in a section of its own, so that linkers leave out what a program does not need.
if(NOT WIN32 AND NOT KSV_SANITIZE AND NOT KSV_SANITIZE_THREADS AND NOT KSV_COVERAGE)
  target_compile_options(ksv_counted INTERFACE -ffunction-sections -fdata-sections)
  target_link_options(ksv_counted INTERFACE -Wl,--gc-sections)
endif()

# Programs and libraries that are shipped are linked with this, too.
add_library(ksv_linked INTERFACE)
target_link_libraries(ksv_linked INTERFACE ksv_hardening ksv_options)
if(NOT WIN32 AND NOT KSV_SANITIZE AND NOT KSV_SANITIZE_THREADS AND NOT KSV_COVERAGE)
  target_link_options(ksv_linked INTERFACE -Wl,--gc-sections)
endif()
# Where addresses stand among the data is said by bits, where it was 24 bytes for each: the loader is
# done with them sooner. A C library that is older does not know it, and what is built with a
# newer one needs that anyhow.
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
check_linker_flag(CXX -Wl,-z,pack-relative-relocs KSV_LINKER_PACKS_RELOCATIONS)
check_cxx_source_compiles("
  #include <features.h>
  #if !__GLIBC_PREREQ(2, 36)
  #error older
  #endif
  int main() {}" KSV_LOADER_UNPACKS_RELOCATIONS)
if(KSV_LINKER_PACKS_RELOCATIONS AND KSV_LOADER_UNPACKS_RELOCATIONS)
  target_link_options(ksv_linked INTERFACE -Wl,-z,pack-relative-relocs)
endif()

# ksv_compile_for_size(source...): of what runs once for each call or file at most, and not for each
# character. Sources with options of their own are compiled alone; builds that compile several at once
# are not shipped.
function(ksv_compile_for_size)
  if(NOT CMAKE_UNITY_BUILD)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-Os>)
  endif()
endfunction()

if(KSV_COVERAGE)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "KSV_COVERAGE needs clang; use the preset 'coverage'")
  endif()
  # The counters are pages of a file that all processes of a program share, so that one that
  # is killed, or that ends without its exit handlers, has counted too. Where the file is has
  # to be built in: tests start programs without an environment.
  set(counters -fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%m%c.profraw)
  target_compile_options(ksv_counted INTERFACE ${counters} -fcoverage-mapping
                         -fprofile-update=atomic "SHELL:-mllvm -runtime-counter-relocation")
  target_link_options(ksv_options INTERFACE ${counters})
endif()

# GCC 12 sees overlapping copies in "literal" + std::string, where there are none.
set(KSV_NO_FALSE_OVERLAPS $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# For sources that work with vectors of 32 bytes and more. Windows promises a stack that is aligned
# for 16 bytes, which the compiler does not believe: what it spills there has to be moved as unaligned.
set(KSV_UNALIGNED_VECTORS)
if(WIN32)
  set(KSV_UNALIGNED_VECTORS -Wa,-muse-unaligned-vector-move)
endif()
