// Time of one adjustment in compact storage, without and with statistics, against the number
// of unknowns.

#include "trial.h"

static void Compact(benchmark::State &state) { trial::adjust(state, &vorn::vornL2, 0); }
static void CompactStatistics(benchmark::State &state) { trial::adjust(state, &vorn::vornL2, 1); }

// Sizes that give about 50, 100, 200, 400, 800, 1,600 and 3,200 unknowns.
static void sweep(benchmark::internal::Benchmark *bench)
{
    for (const int stations : {13, 24, 45, 87, 171, 339, 667}) bench->Arg(stations);
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2)->Complexity();
    trial::report_least(bench);
}

BENCHMARK(Compact)->Apply(sweep);
BENCHMARK(CompactStatistics)->Apply(sweep);

BENCHMARK_MAIN();
