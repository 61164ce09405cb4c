// Time of one adjustment without statistics by Gauss-Jordan, and in compact storage for
// comparison, against the number of unknowns of a plane network.

#include "trial.h"

namespace {

int free_coordinates(const networks::Network &network)
{
    int n = 0;
    for (const station_input &s : network.stations)
        for (int k = 0; k < 2; k++) n += s.ix[k] == CODE_FREE;
    for (const target_input &t : network.targets)
        for (int k = 0; k < 2; k++) n += t.ix[k] == CODE_FREE;
    return n;
}

// One orientation a station besides the coordinates.
int unknowns(const networks::Network &network) { return free_coordinates(network) + (int)network.stations.size(); }

void adjust(benchmark::State &state, int (vorn::*solver)())
{
    const trial::Workplace here;
    networks::Recipe recipe;
    recipe.size = (int)state.range(0);
    trial::Trial t(networks::plane(recipe));
    for (auto _ : state) {
        t.release_results();
        vorn run(&t.p);
        int code = run.vornstart();
        if (code != 0) state.SkipWithError("vornstart failed");
        state.SetIterationTime(trial::seconds([&] { code = (run.*solver)(); }));
        if (code != 0) state.SkipWithError("the solver failed");
    }
    trial::count(state, t.network);
    state.counters["unknowns"] = unknowns(t.network);
    state.SetComplexityN(unknowns(t.network));
}

void Jordan(benchmark::State &state) { adjust(state, &vorn::vornjordan); }
void Compact(benchmark::State &state) { adjust(state, &vorn::vornL2); }

} // namespace

#define SWEEP UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2)->Apply(trial::report_least)->Complexity()
BENCHMARK(Jordan)->Arg(13)->Arg(24)->Arg(45)->Arg(87)->Arg(168)->SWEEP;
BENCHMARK(Compact)->Arg(13)->Arg(24)->Arg(45)->Arg(87)->Arg(168)->SWEEP;

BENCHMARK_MAIN();
