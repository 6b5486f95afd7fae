// Lets the functions of a region of a source file use instructions that not every processor has,
// whatever the command line says: KSV_TARGET_BEGIN("avx2") ... KSV_TARGET_END. What is included
// stands in front of the region: an inline function that was compiled with more instructions
// could be the one that the linker takes for all.
#pragma once

#define KSV_PRAGMA(text) _Pragma(#text)

#if defined(__clang__)
#define KSV_TARGET_BEGIN(features) \
  KSV_PRAGMA(clang attribute push(__attribute__((target(features))), apply_to = function))
#define KSV_TARGET_END KSV_PRAGMA(clang attribute pop)
#else
#define KSV_TARGET_BEGIN(features) \
  KSV_PRAGMA(GCC push_options)     \
  KSV_PRAGMA(GCC target(features))
#define KSV_TARGET_END KSV_PRAGMA(GCC pop_options)
#endif

#define KSV_AVX512 "avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt"
