// Marks a pixel loop to be compiled for wider vectors as well, chosen when the library is loaded. Sanitizers
// and coverage need plain functions.
#pragma once

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && defined(NDEBUG)
#define TAVI_WIDE_VECTORS __attribute__((target_clones("avx2", "default"), optimize("O3")))
#else
#define TAVI_WIDE_VECTORS
#endif

// Where bytes can be put into any order sixteen at a time, which no compiler makes of a loop. Whether the processor has
// it is asked when the program runs.
#if defined(__x86_64__) && defined(__GNUC__)
#include <tmmintrin.h>
#define TAVI_HAS_SHUFFLE 1
#else
#define TAVI_HAS_SHUFFLE 0
#endif
