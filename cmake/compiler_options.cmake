# One target that everything of ours links: warnings as errors, and the
# sanitizers when they are asked for.
add_library(ksv_options INTERFACE)
target_compile_options(ksv_options INTERFACE -Wall -Wextra -Wconversion -Werror)

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
