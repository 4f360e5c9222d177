// Included first by sources compiled with -mavx2. The universal intrinsics of an application follow SSE2 unless
// told otherwise; the mode gives their functions a namespace of their own.
#pragma once

#include <immintrin.h>

#define CV_SSE3 1
#define CV_SSSE3 1
#define CV_SSE4_1 1
#define CV_SSE4_2 1
#define CV_AVX 1
#define CV_AVX2 1
#define CV_CPU_DISPATCH_MODE weld_avx2
