// Marks a pixel loop to be compiled for wider vectors as well, chosen when the library is loaded. Sanitizers
// and coverage need plain functions.
#pragma once

#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__) && \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && defined(NDEBUG)
#define TAVI_WIDE_VECTORS __attribute__((target_clones("avx2", "default"), optimize("O3")))
#else
#define TAVI_WIDE_VECTORS
#endif
