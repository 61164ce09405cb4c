#include "numerics/tiles.h"

#include <gtest/gtest.h>
#include <math.h>
#include <stdio.h>

#include <vector>

using namespace vornengine;

namespace {

typedef std::vector<double> Vector;

double number(size_t k) { return sin(1.0 + 0.7 * (double)k); }

Vector numbers(size_t n)
{
    Vector v(n);
    for (size_t k = 0; k < n; k++) v[k] = number(k);
    return v;
}

} // namespace

TEST(Tiles, RunPlainOnEveryProcessor)
{
    ASSERT_NE(tilesfor(TILES_PLAIN), nullptr);
    EXPECT_STREQ(tilesfor(TILES_PLAIN)->name, "plain");
    EXPECT_EQ(tilesfor(TILES_KINDS), nullptr);
    EXPECT_EQ(tilesfor(-1), nullptr);
}

TEST(Tiles, RunOnTheVectorsThatTheProcessorHas)
{
    const struct {
        int kind;
        bool there;
        const char *name;
    } kinds[] = {{TILES_AVX2, __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"), "avx2"},
                 {TILES_AVX512, sizeof(void *) == 8 && __builtin_cpu_supports("avx512f"), "avx512f"}};
    for (const auto &k : kinds) {
        EXPECT_EQ(tilesfor(k.kind) != nullptr, k.there) << k.name;
        if (k.there) printf("this processor runs %s\n", k.name);
    }
}

TEST(Tiles, TakeTheWidestVectorsOfTheProcessor)
{
    const tilekernel *best = nullptr;
    for (int kind = 0; kind < TILES_KINDS; kind++)
        if (tilesfor(kind)) best = tilesfor(kind);
    EXPECT_EQ(besttiles(), best);
}

TEST(TileProduct, TakesTheSumsOffEveryColumnAtAnyDepthAndDistance)
{
    for (int kind = 0; kind < TILES_KINDS; kind++) {
        const tilekernel *t = tilesfor(kind);
        if (!t) continue;
        for (int n : {0, 1, 2, 3, 5, 8, 31, 100, (int)TILE_DEPTH})
            for (size_t ldc : {(size_t)TILE_LANES, (size_t)TILE_LANES + 1, (size_t)77}) {
                const Vector a = numbers((size_t)n * TILE_LANES), b = numbers(TILE_COLUMNS * TILE_STRIDE);
                Vector c = numbers(TILE_COLUMNS * ldc + 3), want = c;
                const size_t odd = 1; // at an address that no vector is aligned to
                for (int j = 0; j < TILE_COLUMNS; j++)
                    for (int r = 0; r < TILE_LANES; r++)
                        for (int k = 0; k < n; k++)
                            want[odd + j * ldc + r] -= a[(size_t)k * TILE_LANES + r] * b[j * TILE_STRIDE + k];
                t->product(n, a.data(), b.data(), c.data() + odd, ldc);
                for (size_t i = 0; i < c.size(); i++)
                    ASSERT_NEAR(c[i], want[i], 1e-15 * (n + 4)) << t->name << " " << n << " " << ldc << " " << i;
            }
    }
}

TEST(TileCorner, SubstitutesColumnsForward)
{
    for (int kind = 0; kind < TILES_KINDS; kind++) {
        const tilekernel *t = tilesfor(kind);
        if (!t) continue;
        Vector b = numbers(TILE_COLUMNS * TILE_STRIDE), x = numbers(TILE_COLUMNS * TILE_LANES + 1);
        const Vector before = x;
        t->corner(b.data(), x.data() + 1);
        EXPECT_EQ(x[0], before[0]);
        // L x = before with the unit triangle L
        for (int j = 0; j < TILE_COLUMNS; j++)
            for (int r = 0; r < TILE_LANES; r++) {
                double sum = x[1 + j * TILE_LANES + r];
                for (int e = 0; e < j; e++) sum += b[j * TILE_STRIDE + e] * x[1 + e * TILE_LANES + r];
                ASSERT_NEAR(sum, before[1 + j * TILE_LANES + r], 1e-13) << t->name << " " << j << " " << r;
            }
    }
}
