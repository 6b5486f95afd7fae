# What makes mistakes in shipped binaries harder to use against those who run them. What the
# compiler does not know is left out; tests/hardening looks into what was built.
option(KSV_HARDENING "Build what is shipped with the hardening of distributions" ON)

include(CheckCXXCompilerFlag)
add_library(ksv_hardening INTERFACE)

# What is taken and does nothing, as of another processor, is not known either.
function(ksv_harden_compilation flag)
  set(CMAKE_REQUIRED_FLAGS -Werror)
  string(MAKE_C_IDENTIFIER KSV_HAS${flag} variable)
  check_cxx_compiler_flag(${flag} ${variable})
  if(${variable})
    target_compile_options(ksv_hardening INTERFACE ${flag})
  endif()
endfunction()

# Without optimisation there are no checks of sizes, and the sanitizers have their own.
function(ksv_fortify)
  target_compile_options(ksv_hardening INTERFACE
    "$<$<NOT:$<CONFIG:Debug>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
endfunction()

# ksv_convert_unchecked(source...): of what every character goes through, where checks of sizes make
# texts of 40 bytes a quarter slower, and guards of stacks 2 to 6 hundredths. The tests of conversions cut
# input and output at every byte there, under the sanitizers as well, and so do the fuzz targets.
function(ksv_convert_unchecked)
  if(KSV_HARDENING AND NOT WIN32)
    set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS
                 -fno-stack-protector -U_FORTIFY_SOURCE)
  endif()
endfunction()

if(NOT KSV_HARDENING)
  return()
elseif(WIN32)
  # Code and stacks at random addresses of 64 bits, and no code among data.
  target_link_options(ksv_hardening INTERFACE
                      -Wl,--dynamicbase,--high-entropy-va,--nxcompat)
else()
  ksv_harden_compilation(-fstack-protector-strong)
  ksv_harden_compilation(-fstack-clash-protection)
  ksv_harden_compilation(-fcf-protection)
  ksv_harden_compilation(-mbranch-protection=standard)
  if(NOT KSV_SANITIZE AND NOT KSV_SANITIZE_THREADS)
    ksv_fortify()
  endif()
  target_link_options(ksv_hardening INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack
                      $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
endif()
