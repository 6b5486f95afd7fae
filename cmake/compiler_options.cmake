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
