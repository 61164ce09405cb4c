// Order, factor and inverse on the pattern of normal matrices of shuffled plane networks, three
// unknowns a point and eight neighbours, beside CHOLMOD on the same matrix where the build found it.
// Give OMP_NUM_THREADS=1 and OPENBLAS_NUM_THREADS=1. Wall and processor times; the second argument of a bench is the
// number of threads, or of right-hand sides.

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#ifdef HAVE_CHOLMOD
#include <cholmod.h>
#endif

#include "adjust/factor.h"
#include "adjust/inverse.h"
#include "adjust/order.h"

namespace {

using namespace vornadjust;

const int UNKNOWNS = 3; // a point

// Points of a square grid in random order, each tied to the eight around it.
class PlaneNetwork {
public:
    explicit PlaneNetwork(int unknowns) : side(1), random(1)
    {
        while (side * side * UNKNOWNS < unknowns) side++;
        name.resize((std::size_t)side * side);
        for (std::size_t i = 0; i < name.size(); i++) name[i] = (int)i;
        std::shuffle(name.begin(), name.end(), random);
        at.resize(name.size());
        for (std::size_t i = 0; i < name.size(); i++) at[name[i]] = (int)i;
    }

    SymmetricMatrix matrix()
    {
        SymmetricMatrix a;
        a.n = (int)name.size() * UNKNOWNS;
        for (int p = 0; p < (int)name.size(); p++) {
            const std::vector<int> later = neighbours(p);
            for (int u = 0; u < UNKNOWNS; u++) {
                for (int v = u; v < UNKNOWNS; v++) add(a, p * UNKNOWNS + v, v == u);
                for (const int q : later)
                    for (int v = 0; v < UNKNOWNS; v++) add(a, q * UNKNOWNS + v, false);
                a.start.push_back((std::int64_t)a.row.size());
            }
        }
        return a;
    }

private:
    // Neighbours of a point that come behind it, ascending.
    std::vector<int> neighbours(int p) const
    {
        std::vector<int> later;
        const int row = at[p] / side, column = at[p] % side;
        for (int r = row - 1; r <= row + 1; r++)
            for (int c = column - 1; c <= column + 1; c++)
                if (r >= 0 && r < side && c >= 0 && c < side && name[(std::size_t)r * side + c] > p)
                    later.push_back(name[(std::size_t)r * side + c]);
        std::sort(later.begin(), later.end());
        return later;
    }

    void add(SymmetricMatrix &a, int row, bool diagonal)
    {
        a.row.push_back(row);
        a.value.push_back(diagonal ? 27.0 : std::uniform_real_distribution<double>(-1.0, 1.0)(random));
    }

    int side;
    std::mt19937 random;
    std::vector<int> name, at; // point at a node of the grid, node of a point
};

struct Problem {
    SymmetricMatrix a;
    Symbolic symbolic;
};

const Problem &problem(int unknowns)
{
    static std::map<int, std::unique_ptr<Problem>> made;
    std::unique_ptr<Problem> &p = made[unknowns];
    if (!p) {
        p.reset(new Problem);
        p->a = PlaneNetwork(unknowns).matrix();
        p->symbolic = analyse(p->a, fill_reducing_order(p->a).unknown);
    }
    return *p;
}

void describe(benchmark::State &state, const Symbolic &s)
{
    state.counters["elements"] = (double)s.elements;
    state.counters["kept"] = (double)s.values();
    state.counters["operations"] = s.operations;
}

void order(benchmark::State &state, Ordering ordering)
{
    const Problem &p = problem((int)state.range(0));
    Order found;
    for (auto _ : state) found = fill_reducing_order(p.a, ordering);
    state.counters["elements"] = (double)found.elements;
}

void BestOrder(benchmark::State &state) { order(state, Ordering::best); }
void DegreeOrder(benchmark::State &state) { order(state, Ordering::minimum_degree); }
void OwnOrder(benchmark::State &state) { order(state, Ordering::own_degree); }
void DissectionOrder(benchmark::State &state) { order(state, Ordering::dissection); }

void Analyse(benchmark::State &state)
{
    const Problem &p = problem((int)state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(analyse(p.a, p.symbolic.unknown));
}

void FactorPlane(benchmark::State &state)
{
    const Problem &p = problem((int)state.range(0));
    FactorOptions options;
    options.threads = (int)state.range(1);
    for (auto _ : state) {
        Factor f;
        if (!factorize(p.a, p.symbolic, f, options)) state.SkipWithError("pivot");
    }
    describe(state, p.symbolic);
    state.counters["MB"] = (double)factor_bytes(p.symbolic, options.threads) / 1e6;
}

void InversePlane(benchmark::State &state)
{
    const Problem &p = problem((int)state.range(0));
    Factor f;
    factorize(p.a, p.symbolic, f);
    InverseOptions options;
    options.threads = (int)state.range(1);
    for (auto _ : state) {
        Inverse z;
        invert(p.symbolic, f, z, options);
    }
    state.counters["MB"] = (double)inverse_bytes(p.symbolic, options.threads) / 1e6;
}

void SolvePlane(benchmark::State &state)
{
    const Problem &p = problem((int)state.range(0));
    const int m = (int)state.range(1);
    Factor f;
    factorize(p.a, p.symbolic, f);
    std::vector<double> b((std::size_t)p.a.n * m, 1.0);
    for (auto _ : state) solve(p.symbolic, f, m, b.data());
}

#ifdef HAVE_CHOLMOD
class Cholmod {
public:
    explicit Cholmod(const SymmetricMatrix &a, const std::vector<int> &fixed_order = {})
        : given(fixed_order.begin(), fixed_order.end())
    {
        cholmod_l_start(&c);
        c.supernodal = CHOLMOD_SUPERNODAL;
        m = cholmod_l_allocate_sparse(a.n, a.n, a.row.size(), 1, 1, -1, CHOLMOD_REAL, &c);
        std::copy(a.start.begin(), a.start.end(), (SuiteSparse_long *)m->p);
        std::copy(a.row.begin(), a.row.end(), (SuiteSparse_long *)m->i);
        std::copy(a.value.begin(), a.value.end(), (double *)m->x);
    }
    ~Cholmod()
    {
        cholmod_l_free_factor(&l, &c);
        cholmod_l_free_sparse(&m, &c);
        cholmod_l_finish(&c);
    }
    void analyse()
    {
        cholmod_l_free_factor(&l, &c);
        if (given.empty()) {
            l = cholmod_l_analyze(m, &c);
            return;
        }
        c.nmethods = 1;
        c.method[0].ordering = CHOLMOD_GIVEN;
        l = cholmod_l_analyze_p(m, given.data(), nullptr, 0, &c);
    }
    void factor() { cholmod_l_factorize(m, l, &c); }
    double elements() const { return c.lnz; }

private:
    std::vector<SuiteSparse_long> given; // order, empty for one of its own
    cholmod_common c;
    cholmod_sparse *m = nullptr;
    cholmod_factor *l = nullptr;
};

void CholmodAnalyse(benchmark::State &state)
{
    Cholmod c(problem((int)state.range(0)).a);
    for (auto _ : state) c.analyse();
    state.counters["elements"] = c.elements();
}

void cholmod_factor(benchmark::State &state, Cholmod &c)
{
    c.analyse();
    for (auto _ : state) c.factor();
    state.counters["elements"] = c.elements();
}

void CholmodFactor(benchmark::State &state)
{
    Cholmod c(problem((int)state.range(0)).a);
    cholmod_factor(state, c);
}

void CholmodFactorSameOrder(benchmark::State &state)
{
    const Problem &p = problem((int)state.range(0));
    Cholmod c(p.a, p.symbolic.unknown);
    cholmod_factor(state, c);
}

void CholmodBoth(benchmark::State &state)
{
    Cholmod c(problem((int)state.range(0)).a);
    for (auto _ : state) {
        c.analyse();
        c.factor();
    }
}
#endif

double least(const std::vector<double> &v) { return *std::min_element(v.begin(), v.end()); }

// Other work on the machine only ever adds time: the least of three repetitions counts.
void repeat(benchmark::internal::Benchmark *bench)
{
    bench->UseRealTime()
        ->MeasureProcessCPUTime()
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.05)
        ->Repetitions(3)
        ->ComputeStatistics("least", least);
    bench->DisplayAggregatesOnly();
}

void sizes(benchmark::internal::Benchmark *bench)
{
    for (const int n : {10000, 100000, 1000000}) bench->Arg(n);
    repeat(bench);
}

void sizes_and_threads(benchmark::internal::Benchmark *bench)
{
    for (const int n : {10000, 100000, 1000000})
        for (const int threads : {1, 2}) bench->Args({n, threads});
    repeat(bench);
}

void sizes_and_sides(benchmark::internal::Benchmark *bench)
{
    for (const int n : {10000, 100000, 1000000})
        for (const int sides : {1, 8}) bench->Args({n, sides});
    repeat(bench);
}

} // namespace

BENCHMARK(BestOrder)->Apply(sizes);
BENCHMARK(DegreeOrder)->Apply(sizes);
BENCHMARK(OwnOrder)->Apply(sizes);
BENCHMARK(DissectionOrder)->Apply(sizes);
BENCHMARK(Analyse)->Apply(sizes);
BENCHMARK(FactorPlane)->Apply(sizes_and_threads);
BENCHMARK(InversePlane)->Apply(sizes_and_threads);
BENCHMARK(SolvePlane)->Apply(sizes_and_sides);
#ifdef HAVE_CHOLMOD
BENCHMARK(CholmodAnalyse)->Apply(sizes);
BENCHMARK(CholmodFactor)->Apply(sizes);
BENCHMARK(CholmodFactorSameOrder)->Apply(sizes);
BENCHMARK(CholmodBoth)->Apply(sizes);
#endif

BENCHMARK_MAIN();
