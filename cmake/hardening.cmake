# What makes mistakes in shipped binaries harder to use against those who run them. What the
# compiler does not know is left out; tests/hardening looks into what was built.
option(KSV_HARDENING "Build what is shipped with the hardening of distributions" ON)

include(CheckCXXCompilerFlag)
add_library(ksv_hardening INTERFACE)

function(ksv_harden_compilation flag)
  string(MAKE_C_IDENTIFIER KSV_HAS${flag} variable)
  check_cxx_compiler_flag(${flag} ${variable})
  if(${variable})
    target_compile_options(ksv_hardening INTERFACE ${flag})
  endif()
endfunction()

# The level that the compiler knows: others warn. Without optimisation there is none, and the
# sanitizers have checks of their own.
function(ksv_fortify)
  set(level 3)
  if((CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12) OR
     (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 12))
    set(level 2)
  endif()
  target_compile_options(ksv_hardening INTERFACE
    "$<$<NOT:$<CONFIG:Debug>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${level}>")
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
