// Time of reading a network file against the number of its observations.

#include "trial.h"

#include "host/input/network_file.h"

namespace {

const char *const name = "read.inp";

size_t write(const networks::Network &network)
{
    FILE *out = fopen(name, "w");
    if (!out) return 0;
    networks::write_file(out, network);
    return fclose(out) == 0 ? (size_t)std::filesystem::file_size(name) : 0;
}

void read(benchmark::State &state, const networks::Network &network)
{
    const trial::Workplace here;
    const size_t bytes = write(network);
    if (bytes == 0) state.SkipWithError("the network file could not be written");
    for (auto _ : state) {
        vornhost::Model model;
        vornhost::Faults faults;
        bool good = false;
        state.SetIterationTime(trial::seconds([&] { good = vornhost::read_network(name, model, faults); }));
        if (!good) state.SkipWithError("the network file has faults");
    }
    state.SetBytesProcessed((int64_t)(state.iterations() * bytes));
    trial::count(state, network);
    state.SetComplexityN((benchmark::IterationCount)network.observations());
}

networks::Recipe recipe(const benchmark::State &state)
{
    networks::Recipe r;
    r.size = (int)state.range(0);
    return r;
}

void ReadPlane(benchmark::State &state) { read(state, networks::plane(recipe(state))); }
void ReadHall(benchmark::State &state) { read(state, networks::hall(recipe(state))); }

} // namespace

static void sweep(benchmark::internal::Benchmark *bench)
{
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2)->Complexity();
    trial::report_least(bench);
}

// Sizes that give about 1,000, 10,000 and 100,000 observations.
BENCHMARK(ReadPlane)->Arg(62)->Arg(536)->Arg(5120)->Apply(sweep);
BENCHMARK(ReadHall)->Arg(83)->Arg(833)->Arg(8333)->Apply(sweep);

BENCHMARK_MAIN();
