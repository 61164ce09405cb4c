// Time of one adjustment in compact storage, without and with statistics, against the number
// of unknowns; processor time of the inversion of a network with 100,000 observations, with and
// without the statistics of their residuals.

#include <string.h>
#include <time.h>

#include "trial.h"

namespace {

void Compact(benchmark::State &state) { trial::adjust(state, &vorn::vornL2, 0); }
void CompactStatistics(benchmark::State &state) { trial::adjust(state, &vorn::vornL2, 1); }

// Notes the processor time at which the inversion begins.
class Stopwatch : public Feedback {
public:
    void feedback(char *line) override
    {
        if (strcmp(line, "Start inversion...") == 0) start = now();
    }
    int decision(char *, char *) override { return 0; }
    double seconds() const { return now() - start; }

private:
    static double now()
    {
        timespec t;
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
        return (double)t.tv_sec + 1e-9 * (double)t.tv_nsec;
    }
    double start = 0.0;
};

template <class Record> void repeat(std::vector<Record> &list, size_t times)
{
    const std::vector<Record> once = list;
    for (size_t k = 1; k < times; k++) list.insert(list.end(), once.begin(), once.end());
}

// Every observation several times, so that there are at least 100,000.
networks::Network observed_often(int stations)
{
    networks::Recipe recipe;
    recipe.size = stations;
    recipe.noise = 1.2; // near a variance factor of 1 the tests of large networks write lines on standard error
    networks::Network network = networks::plane(recipe);
    const size_t times = 100000 / network.observations() + 1;
    repeat(network.distances, times);
    repeat(network.directions, times);
    return network;
}

void inversion(benchmark::State &state, int irun)
{
    const trial::Workplace here;
    trial::Trial t(observed_often((int)state.range(0)));
    Stopwatch watch;
    t.p.pfeedback = &watch;
    t.p.irun = irun;
    for (auto _ : state) {
        t.release_results();
        vorn run(&t.p);
        if (run.vornstart() != 0 || run.vornL2() != 0) state.SkipWithError("the run failed");
        state.SetIterationTime(watch.seconds());
    }
    trial::count(state, t.network);
}

void InverseOnly(benchmark::State &state) { inversion(state, -2); }
void InverseAndResiduals(benchmark::State &state) { inversion(state, 1); }

// Sizes that give about 50, 100, 200, 400, 800, 1,600 and 3,200 unknowns.
void sweep(benchmark::internal::Benchmark *bench)
{
    for (const int stations : {13, 24, 45, 87, 171, 339, 667}) bench->Arg(stations);
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2)->Complexity();
    trial::report_least(bench);
}

// About 1,600, 3,200 and 6,400 unknowns.
void large(benchmark::internal::Benchmark *bench)
{
    for (const int stations : {339, 667, 1331}) bench->Arg(stations);
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->DisplayAggregatesOnly();
    trial::report_least(bench);
}

} // namespace

BENCHMARK(Compact)->Apply(sweep);
BENCHMARK(CompactStatistics)->Apply(sweep);
BENCHMARK(InverseOnly)->Apply(large);
BENCHMARK(InverseAndResiduals)->Apply(large);

BENCHMARK_MAIN();
