// Time of one adjustment for least absolute values against the number of unknowns of a plane
// network; 87 stations give about 400 unknowns and 1,700 observations.

#include "trial.h"

static void Simplex(benchmark::State &state) { trial::adjust(state, &vorn::vornL1, -1); }

static void sweep(benchmark::internal::Benchmark *bench)
{
    for (const int stations : {13, 24, 45, 87, 102}) bench->Arg(stations);
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2)->Complexity();
    trial::report_least(bench);
}

BENCHMARK(Simplex)->Apply(sweep);

BENCHMARK_MAIN();
