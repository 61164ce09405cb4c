// Time and memory of the program from a network file to its report, without statistics, for
// networks of heights: grids and lines, with their points in order and shuffled.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "trial.h"

namespace {

using networks::Network;
using networks::Recipe;

const char *const name = "large.inp";

bool write(const Network &network)
{
    FILE *out = fopen(name, "w");
    if (!out) return false;
    networks::write_file(out, network);
    return fclose(out) == 0;
}

// Runs the program; false when it does not adjust.
bool run_program(rusage *used)
{
    const pid_t child = fork();
    if (child == 0) {
        if (freopen("/dev/null", "w", stderr))
            execl(VORN_PROGRAM, "vorn", "adjust", name, "--solver", "compact", "--mode", "solution", "-o", "report.txt",
                  (char *)nullptr);
        _exit(127);
    }
    int status = 0;
    return child > 0 && wait4(child, &status, 0, used) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

double seconds(const timeval &t) { return (double)t.tv_sec + 1e-6 * (double)t.tv_usec; }

void program(benchmark::State &state, Network (*make)(const Recipe &), bool shuffled)
{
    const trial::Workplace here;
    Recipe recipe;
    recipe.size = (int)state.range(0);
    recipe.shuffled = shuffled;
    const Network network = make(recipe);
    if (!write(network)) state.SkipWithError("the network file could not be written");
    rusage used = rusage();
    for (auto _ : state) {
        if (!run_program(&used)) state.SkipWithError("the program did not adjust the network");
        state.SetIterationTime(seconds(used.ru_utime) + seconds(used.ru_stime));
    }
    trial::count(state, network);
    state.counters["MB"] = (double)used.ru_maxrss / 1000.0; // kilobytes on Linux
}

void Grid(benchmark::State &state) { program(state, networks::levelling, false); }
void Chain(benchmark::State &state) { program(state, networks::chain, false); }
void ShuffledGrid(benchmark::State &state) { program(state, networks::levelling, true); }
void ShuffledChain(benchmark::State &state) { program(state, networks::chain, true); }

void once(benchmark::internal::Benchmark *bench)
{
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3)->DisplayAggregatesOnly();
    trial::report_least(bench);
}

// Squares of 56, 112, 224 and 448.
void in_order(benchmark::internal::Benchmark *bench)
{
    for (const int points : {3136, 12544, 50176, 200704}) bench->Arg(points);
    once(bench);
}

void shuffled(benchmark::internal::Benchmark *bench)
{
    for (const int points : {784, 3136, 12544}) bench->Arg(points);
    once(bench);
}

} // namespace

BENCHMARK(Grid)->Apply(in_order);
BENCHMARK(Chain)->Apply(in_order);
BENCHMARK(ShuffledGrid)->Apply(shuffled);
BENCHMARK(ShuffledChain)->Apply(shuffled);

BENCHMARK_MAIN();
