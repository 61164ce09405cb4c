// Solutions with a factor: forward through the supernodes, division by the pivots, backward.
//
// Several right-hand sides are taken BATCH at a time, side by side, by places. A boundary is passed over, and on the
// way forward every supernode whose unknowns have no part in the right-hand sides. Columns of the right-hand sides are
// copied before they are multiplied, so that the compiler sees that they do not change meanwhile.

#include "adjust/factor.h"

#include <algorithm>
#include <cstddef>

namespace vornadjust {

static bool is_zero(const double *x, std::size_t n)
{
    return std::all_of(x, x + n, [](double v) { return v == 0.0; });
}

// y[i] += f v[i] x for N right-hand sides side by side.
template <int N> static void add_multiples(double f, const double *v, int n, const double *x, double *y)
{
    double t[N];
    for (int c = 0; c < N; c++) t[c] = f * x[c];
    for (int i = 0; i < n; i++, y += N)
        for (int c = 0; c < N; c++) y[c] += v[i] * t[c];
}

// sum += the sum of v[i] x[i] for N right-hand sides side by side, in partial sums that do not wait for one another:
// the same ones for any N, so that a solution does not depend on those beside it.
template <int N> static void add_products(const double *v, int n, const double *x, double *sum)
{
    constexpr int parts = 4;
    double part[parts * N] = {0.0};
    int i = 0;
    for (; i + parts <= n; i += parts)
        for (int p = 0; p < parts; p++)
            for (int c = 0; c < N; c++) part[p * N + c] += v[i + p] * x[(i + p) * N + c];
    for (; i < n; i++)
        for (int c = 0; c < N; c++) part[c] += v[i] * x[i * N + c];
    for (int p = 0; p < parts; p++)
        for (int c = 0; c < N; c++) sum[c] += part[p * N + c];
}

// Forward and backward substitution for N right-hand sides, x[place][N].
//   below  work  [largest number of rows below][N]
template <int N> static void forward(const Symbolic &symbolic, const Factor &factor, double *x, double *below)
{
    Trail trail(factor.value);
    for (int s = 0; s < symbolic.nsuper; s++) {
        if (s == symbolic.boundary) continue;
        const int w = symbolic.width(s), r = symbolic.below(s);
        const int *row = symbolic.row.data() + symbolic.rowstart[s];
        const double *v = factor.value.data() + symbolic.valuestart[s];
        double *own = x + (std::size_t)symbolic.first[s] * N;
        if (is_zero(own, (std::size_t)w * N)) continue;
        std::fill(below, below + (std::size_t)r * N, 0.0);
        for (int j = 0; j < w; j++, v += w + r) {
            const double *xj = own + (std::size_t)j * N;
            add_multiples<N>(-1.0, v + j + 1, w - j - 1, xj, own + (std::size_t)(j + 1) * N);
            add_multiples<N>(1.0, v + w, r, xj, below);
        }
        for (int i = 0; i < r; i++)
            for (int c = 0; c < N; c++) x[(std::size_t)row[i] * N + c] -= below[i * N + c];
        trail.done(symbolic.valuestart[s], symbolic.valuestart[s + 1]);
    }
}

template <int N> static void backward(const Symbolic &symbolic, const Factor &factor, double *x, double *below)
{
    Trail trail(factor.value);
    for (int s = symbolic.nsuper - 1; s >= 0; s--) {
        if (s == symbolic.boundary) continue;
        const int w = symbolic.width(s), r = symbolic.below(s);
        const int *row = symbolic.row.data() + symbolic.rowstart[s];
        double *own = x + (std::size_t)symbolic.first[s] * N;
        for (int i = 0; i < r; i++)
            for (int c = 0; c < N; c++) below[i * N + c] = x[(std::size_t)row[i] * N + c];
        for (int j = w - 1; j >= 0; j--) {
            const double *v = factor.value.data() + symbolic.valuestart[s] + (std::size_t)j * (w + r);
            double sum[N] = {0.0};
            add_products<N>(v + j + 1, w - j - 1, own + (std::size_t)(j + 1) * N, sum);
            add_products<N>(v + w, r, below, sum);
            for (int c = 0; c < N; c++) own[j * N + c] -= sum[c];
        }
        trail.done(symbolic.valuestart[s], symbolic.valuestart[s + 1]);
    }
}

enum class Half { first, second, both };

// Right-hand sides b[c], n apart from each other.
template <int N>
static void solve_batch(const Symbolic &symbolic, const Factor &factor, Half half, double *b, double *x, double *below)
{
    const std::size_t n = (std::size_t)symbolic.n;
    for (std::size_t k = 0; k < n; k++)
        for (int c = 0; c < N; c++) x[k * N + c] = b[c * n + symbolic.unknown[k]];
    if (half != Half::second) {
        forward<N>(symbolic, factor, x, below);
        for (std::size_t k = 0; k < n; k++)
            for (int c = 0; c < N; c++) x[k * N + c] *= factor.reciprocal[k];
    }
    if (half != Half::first) backward<N>(symbolic, factor, x, below);
    for (std::size_t k = 0; k < n; k++)
        for (int c = 0; c < N; c++) b[c * n + symbolic.unknown[k]] = x[k * N + c];
}

static void solve_half(const Symbolic &symbolic, const Factor &factor, Half half, int m, double *b)
{
    const int BATCH = 8, PAIR = 2;
    const std::size_t n = (std::size_t)symbolic.n, wide = (std::size_t)std::min(m, BATCH);
    int most = 0;
    for (int s = 0; s < symbolic.nsuper; s++) most = std::max(most, symbolic.below(s));
    std::vector<double> x(n * wide), below((std::size_t)most * wide);
    int done = 0;
    for (; m - done >= BATCH; done += BATCH)
        solve_batch<BATCH>(symbolic, factor, half, b + done * n, x.data(), below.data());
    for (; m - done >= PAIR; done += PAIR)
        solve_batch<PAIR>(symbolic, factor, half, b + done * n, x.data(), below.data());
    for (; done < m; done++) solve_batch<1>(symbolic, factor, half, b + done * n, x.data(), below.data());
}

void solve(const Symbolic &symbolic, const Factor &factor, double *b) { solve(symbolic, factor, 1, b); }

void solve(const Symbolic &symbolic, const Factor &factor, int m, double *b)
{
    solve_half(symbolic, factor, Half::both, m, b);
}

void reduce(const Symbolic &symbolic, const Factor &factor, int m, double *b)
{
    solve_half(symbolic, factor, Half::first, m, b);
}

void complete(const Symbolic &symbolic, const Factor &factor, int m, double *b)
{
    solve_half(symbolic, factor, Half::second, m, b);
}

} // namespace vornadjust
