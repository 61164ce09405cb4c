// Products of tiles for plain processors and for those with vectors of 4 and 8 numbers.
//
// The vector routines keep 8 or 4 columns of 24 sums in registers: 24 of 32 registers of 8
// numbers, or 12 of 16 registers of 4. With 4-byte pointers a processor shows 8 registers only:
// vectors of 4 then take 2 columns, vectors of 8 are left unused.

#include "numerics/tiles.h"

#if defined(__x86_64__) || defined(__i386__)
#define VECTORS 1
#include <immintrin.h>
#else
#define VECTORS 0
#endif

namespace vornengine {

// GCC for 64-bit Windows does not align the stack for vectors of 4 numbers; an assembler that makes moves to any
// address of all moves helps.
#if VECTORS && defined(_WIN64) && !defined(__clang__) && !defined(VORN_UNALIGNED_MOVES)
#undef VECTORS
#define VECTORS 0
#endif

static void plain_product(int n, const double *a, const double *b, double *c, size_t ldc)
{
    for (int j = 0; j < TILE_COLUMNS; j++) {
        const double *bj = b + (size_t)j * TILE_STRIDE;
        for (int first = 0; first < TILE_LANES; first += 8) {
            double sum[8] = {0.0};
            for (int k = 0; k < n; k++) {
                const double *ak = a + (size_t)k * TILE_LANES + first, f = bj[k];
#pragma GCC unroll 8 // keeps the sums in registers
                for (int r = 0; r < 8; r++) sum[r] += ak[r] * f;
            }
            double *cj = c + j * ldc + first;
            for (int r = 0; r < 8; r++) cj[r] -= sum[r];
        }
    }
}

static void plain_corner(const double *b, double *x)
{
    for (int j = 1; j < TILE_COLUMNS; j++)
        for (int e = 0; e < j; e++) {
            const double f = b[j * TILE_STRIDE + e];
            const double *xe = x + (size_t)e * TILE_LANES;
            double *xj = x + (size_t)j * TILE_LANES;
            for (int r = 0; r < TILE_LANES; r++) xj[r] -= f * xe[r];
        }
}

static const tilekernel plain = {"plain", plain_product, plain_corner};

#if VECTORS

enum { COLUMNS4 = sizeof(void *) == 8 ? 4 : 2 }; // columns that one pass of vectors of 4 takes

// 12 lanes of some columns: 3 registers a column.
__attribute__((target("avx2,fma"))) static inline void half_product4(int n, const double *a, const double *b, double *c,
                                                                     size_t ldc)
{
    __m256d sum[COLUMNS4][3];
#pragma GCC unroll 4
    for (int j = 0; j < COLUMNS4; j++)
#pragma GCC unroll 3
        for (int v = 0; v < 3; v++) sum[j][v] = _mm256_setzero_pd();
    for (int k = 0; k < n; k++, a += TILE_LANES, b++) {
        const __m256d a0 = _mm256_loadu_pd(a), a1 = _mm256_loadu_pd(a + 4), a2 = _mm256_loadu_pd(a + 8);
#pragma GCC unroll 4
        for (int j = 0; j < COLUMNS4; j++) {
            const __m256d f = _mm256_broadcast_sd(b + (size_t)j * TILE_STRIDE);
            sum[j][0] = _mm256_fmadd_pd(a0, f, sum[j][0]);
            sum[j][1] = _mm256_fmadd_pd(a1, f, sum[j][1]);
            sum[j][2] = _mm256_fmadd_pd(a2, f, sum[j][2]);
        }
    }
#pragma GCC unroll 4
    for (int j = 0; j < COLUMNS4; j++)
#pragma GCC unroll 3
        for (int v = 0; v < 3; v++) {
            double *at = c + j * ldc + (size_t)v * 4;
            _mm256_storeu_pd(at, _mm256_sub_pd(_mm256_loadu_pd(at), sum[j][v]));
        }
}

__attribute__((target("avx2,fma"))) static void product4(int n, const double *a, const double *b, double *c, size_t ldc)
{
    for (int j = 0; j < TILE_COLUMNS; j += COLUMNS4)
        for (int half = 0; half < TILE_LANES; half += 12)
            half_product4(n, a + half, b + (size_t)j * TILE_STRIDE, c + j * ldc + half, ldc);
}

__attribute__((target("avx2,fma"))) static void corner4(const double *b, double *x)
{
    for (int v = 0; v < TILE_LANES; v += 4)
        for (int j = 1; j < TILE_COLUMNS; j++) {
            double *xj = x + (size_t)j * TILE_LANES + v;
            __m256d sum = _mm256_loadu_pd(xj);
            for (int e = 0; e < j; e++)
                sum = _mm256_fnmadd_pd(_mm256_loadu_pd(x + (size_t)e * TILE_LANES + v),
                                       _mm256_broadcast_sd(b + (size_t)j * TILE_STRIDE + e), sum);
            _mm256_storeu_pd(xj, sum);
        }
}

static const tilekernel vectors4 = {"vectors of 4", product4, corner4};

#if defined(__x86_64__)

__attribute__((target("avx512f"))) static void product8(int n, const double *a, const double *b, double *c, size_t ldc)
{
    __m512d sum[TILE_COLUMNS][3];
#pragma GCC unroll 8
    for (int j = 0; j < TILE_COLUMNS; j++)
#pragma GCC unroll 3
        for (int v = 0; v < 3; v++) sum[j][v] = _mm512_setzero_pd();
    for (int k = 0; k < n; k++, a += TILE_LANES, b++) {
        const __m512d a0 = _mm512_loadu_pd(a), a1 = _mm512_loadu_pd(a + 8), a2 = _mm512_loadu_pd(a + 16);
#pragma GCC unroll 8
        for (int j = 0; j < TILE_COLUMNS; j++) {
            const __m512d f = _mm512_set1_pd(b[(size_t)j * TILE_STRIDE]);
            sum[j][0] = _mm512_fmadd_pd(a0, f, sum[j][0]);
            sum[j][1] = _mm512_fmadd_pd(a1, f, sum[j][1]);
            sum[j][2] = _mm512_fmadd_pd(a2, f, sum[j][2]);
        }
    }
#pragma GCC unroll 8
    for (int j = 0; j < TILE_COLUMNS; j++)
#pragma GCC unroll 3
        for (int v = 0; v < 3; v++) {
            double *at = c + j * ldc + (size_t)v * 8;
            _mm512_storeu_pd(at, _mm512_sub_pd(_mm512_loadu_pd(at), sum[j][v]));
        }
}

__attribute__((target("avx512f"))) static void corner8(const double *b, double *x)
{
    for (int v = 0; v < TILE_LANES; v += 8)
        for (int j = 1; j < TILE_COLUMNS; j++) {
            double *xj = x + (size_t)j * TILE_LANES + v;
            __m512d sum = _mm512_loadu_pd(xj);
            for (int e = 0; e < j; e++)
                sum = _mm512_fnmadd_pd(_mm512_loadu_pd(x + (size_t)e * TILE_LANES + v),
                                       _mm512_set1_pd(b[(size_t)j * TILE_STRIDE + e]), sum);
            _mm512_storeu_pd(xj, sum);
        }
}

static const tilekernel vectors8 = {"vectors of 8", product8, corner8};

#endif

static int runs4() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"); }
#endif

const tilekernel *tilesfor(int kind)
{
    if (kind == TILES_PLAIN) return &plain;
#if VECTORS
    if (kind == TILES_AVX2 && runs4()) return &vectors4;
#if defined(__x86_64__)
    if (kind == TILES_AVX512 && __builtin_cpu_supports("avx512f")) return &vectors8;
#endif
#endif
    return NULL;
}

const tilekernel *besttiles()
{
    for (int kind = TILES_KINDS - 1; kind > TILES_PLAIN; kind--)
        if (const tilekernel *t = tilesfor(kind)) return t;
    return &plain;
}

} // namespace vornengine
