// Time of vornstart, which loads a network and sets the problem up, against the number of observations.

#include "trial.h"

namespace {

void load(benchmark::State &state, networks::Network network)
{
    trial::Trial t(std::move(network));
    for (auto _ : state) {
        t.release_results();
        int code = 0;
        vorn run(&t.p);
        state.SetIterationTime(trial::seconds([&] { code = run.vornstart(); }));
        if (code != 0) state.SkipWithError("vornstart failed");
    }
    trial::count(state, t.network);
    state.SetComplexityN((benchmark::IterationCount)t.network.observations());
}

networks::Recipe recipe(const benchmark::State &state)
{
    networks::Recipe r;
    r.size = (int)state.range(0);
    return r;
}

void LoadLevelling(benchmark::State &state) { load(state, networks::levelling(recipe(state))); }
void LoadPlane(benchmark::State &state) { load(state, networks::plane(recipe(state))); }
void LoadHall(benchmark::State &state) { load(state, networks::hall(recipe(state))); }

} // namespace

static void sweep(benchmark::internal::Benchmark *bench)
{
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2)->Complexity();
    trial::report_least(bench);
}

// Sizes that give about 1,000, 10,000 and 100,000 observations.
BENCHMARK(LoadLevelling)->Arg(516)->Arg(5070)->Arg(50224)->Apply(sweep);
BENCHMARK(LoadPlane)->Arg(62)->Arg(536)->Arg(5120)->Apply(sweep);
BENCHMARK(LoadHall)->Arg(83)->Arg(833)->Arg(8333)->Apply(sweep);

BENCHMARK_MAIN();
