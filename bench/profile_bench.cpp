// Processor time of the factorization and of the inverse of one matrix in profile storage:
// full profiles against their order, beside LAPACK on the same matrix where the build found it,
// and banded profiles against the width of the band. Give OPENBLAS_NUM_THREADS=1.

#include <time.h>

#include <algorithm>

#include <benchmark/benchmark.h>
#ifdef HAVE_LAPACK
#include <lapacke.h>
#endif

#include "solvers/profile.h"
#include "support/profiles.h"

using namespace vornengine;

namespace {

typedef std::vector<double> Vector;

double processor_seconds()
{
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return (double)t.tv_sec + 1e-9 * (double)t.tv_nsec;
}

template <class Call> void timed(benchmark::State &state, Call call)
{
    const double start = processor_seconds();
    call();
    state.SetIterationTime(processor_seconds() - start);
}

// Billions of operations a second, and the sum of the squared lengths of the rows, which the
// operations of the factorization are.
void rates(benchmark::State &state, double operations, const Profile &p)
{
    double squares = 0.0;
    for (int i = 0; i < p.n; i++) squares += pow((double)(p.add[i + 1] - p.add[i]), 2);
    state.counters["squares"] = squares;
    state.counters["rate"] = benchmark::Counter(operations, benchmark::Counter::kIsIterationInvariantRate);
}

Profile full(int n) { return random_profile(full_rows(n), 1); }

void factor(benchmark::State &state, const Profile &p, int kind)
{
    if (!tilesfor(kind)) return state.SkipWithError("not on this processor");
    Vector d(p.n), space(factorspace(p.n, p.add.data()));
    for (auto _ : state) {
        Profile q = p;
        timed(state, [&] { factorprofile(q.n, q.a.data(), q.add.data(), d.data(), space.data(), tilesfor(kind)); });
    }
    rates(state, pow(p.n, 3) / 3.0, p);
}

void factor_and_invert(benchmark::State &state, const Profile &p)
{
    Vector d(solvespace(p.n, p.add.data())), space(invertspace(p.n));
    for (auto _ : state) {
        Profile q = p;
        Vector inv((size_t)p.n * p.n, 0.0);
        timed(state, [&] { cinverse(q.n, q.a.data(), q.add.data(), inv.data(), d.data(), space.data()); });
    }
    rates(state, pow(p.n, 3), p);
}

void Factor(benchmark::State &state) { factor(state, full((int)state.range(0)), (int)state.range(1)); }
void FactorInverse(benchmark::State &state) { factor_and_invert(state, full((int)state.range(0))); }

#ifdef HAVE_LAPACK
void lapack(benchmark::State &state, bool invert)
{
    const int n = (int)state.range(0);
    const Profile p = full(n);
    const Vector m = p.full();
    for (auto _ : state) {
        Vector a = m;
        timed(state, [&] {
            LAPACKE_dpotrf_work(LAPACK_COL_MAJOR, 'U', n, a.data(), n);
            if (invert) LAPACKE_dpotri_work(LAPACK_COL_MAJOR, 'U', n, a.data(), n);
        });
    }
    rates(state, pow(n, 3) / (invert ? 1.0 : 3.0), p);
}

void LapackFactor(benchmark::State &state) { lapack(state, false); }
void LapackFactorInverse(benchmark::State &state) { lapack(state, true); }
#endif

const int BANDED_ORDER = 6000;

Profile band(benchmark::State &state) { return random_profile(banded(BANDED_ORDER, (int)state.range(0)), 1); }

void BandedFactor(benchmark::State &state)
{
    int best = TILES_KINDS - 1;
    while (!tilesfor(best)) best--;
    factor(state, band(state), best);
}
void BandedFactorInverse(benchmark::State &state) { factor_and_invert(state, band(state)); }

double least(const std::vector<double> &v) { return *std::min_element(v.begin(), v.end()); }

// Other work on the machine only ever adds time: the least of five repetitions counts.
void repeat(benchmark::internal::Benchmark *bench)
{
    bench->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.05)
        ->Repetitions(5)
        ->ComputeStatistics("least", least);
    bench->DisplayAggregatesOnly();
}

void orders(benchmark::internal::Benchmark *bench)
{
    for (const int n : {100, 300, 1000, 3000, 6000}) bench->Arg(n);
    repeat(bench);
}

void orders_and_kinds(benchmark::internal::Benchmark *bench)
{
    for (int kind = TILES_KINDS - 1; kind >= 0; kind--)
        for (const int n : {100, 300, 1000, 3000, 6000})
            if (kind > TILES_PLAIN || n <= 3000) bench->Args({n, kind});
    repeat(bench);
}

void widths(benchmark::internal::Benchmark *bench)
{
    for (const int width : {25, 50, 100, 200, 400, 800, 1600, 3200}) bench->Arg(width);
    repeat(bench);
}

} // namespace

BENCHMARK(Factor)->Apply(orders_and_kinds);
BENCHMARK(FactorInverse)->Apply(orders);
#ifdef HAVE_LAPACK
BENCHMARK(LapackFactor)->Apply(orders);
BENCHMARK(LapackFactorInverse)->Apply(orders);
#endif
BENCHMARK(BandedFactor)->Apply(widths);
BENCHMARK(BandedFactorInverse)->Apply(widths);

BENCHMARK_MAIN();
