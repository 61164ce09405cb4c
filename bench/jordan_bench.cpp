// Time of one adjustment without statistics by Gauss-Jordan against the number of unknowns.

#include "trial.h"

static void Jordan(benchmark::State &state) { trial::adjust(state, &vorn::vornjordan, 0); }

// Sizes that give about 50, 100, 200, 400 and 800 unknowns.
BENCHMARK(Jordan)
    ->Arg(13)
    ->Arg(24)
    ->Arg(45)
    ->Arg(87)
    ->Arg(171)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.2)
    ->Apply(trial::report_least)
    ->Complexity();

BENCHMARK_MAIN();
