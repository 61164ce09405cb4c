// Runs the solvers for the benchmarks; see trial.h.

#include "trial.h"

#include <stdlib.h>

#include <algorithm>
#include <system_error>

namespace trial {

namespace fs = std::filesystem;

Workplace::Workplace() : before(fs::current_path())
{
    std::string name = (fs::temp_directory_path() / "vorn-bench-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::system_error(errno, std::generic_category(), name);
    folder = name;
    fs::current_path(folder);
}

Workplace::~Workplace()
{
    std::error_code ignored;
    fs::current_path(before, ignored);
    fs::remove_all(folder, ignored);
}

Trial::Trial(networks::Network made)
    : report(fopen("/dev/null", "w"), fclose), network(std::move(made)), p(network.run(report.get(), &feedback))
{
    if (!report) throw std::system_error(errno, std::generic_category(), "/dev/null");
}

Trial::~Trial() { release_results(); }

void Trial::release_results()
{
    if (p.runresults) p.freerun(p.runresults);
    p.runresults = nullptr;
}

namespace {

template <class Record> int free_coordinates(const std::vector<Record> &points)
{
    int n = 0;
    for (const Record &p : points)
        for (int code : p.ix) n += code == CODE_FREE;
    return n;
}

// One orientation a station besides the coordinates.
int unknowns(const networks::Network &network)
{
    return free_coordinates(network.stations) + free_coordinates(network.targets) + (int)network.stations.size();
}

} // namespace

void adjust(benchmark::State &state, int (vorn::*solver)(), int irun)
{
    const Workplace here;
    networks::Recipe recipe;
    recipe.size = (int)state.range(0);
    recipe.noise = 1.2; // near a variance factor of 1 the tests of large networks write lines on standard error
    Trial t(networks::plane(recipe));
    t.p.irun = irun;
    for (auto _ : state) {
        t.release_results();
        vorn run(&t.p);
        int code = run.vornstart();
        if (code != 0) state.SkipWithError("vornstart failed");
        state.SetIterationTime(seconds([&] { code = (run.*solver)(); }));
        if (code != 0) state.SkipWithError("the solver failed");
    }
    count(state, t.network);
    state.counters["unknowns"] = unknowns(t.network);
    state.SetComplexityN(unknowns(t.network));
}

void count(benchmark::State &state, const networks::Network &network)
{
    state.counters["points"] = (double)network.points();
    state.counters["observations"] = (double)network.observations();
}

void report_least(benchmark::internal::Benchmark *bench)
{
    bench->ComputeStatistics("least",
                             [](const std::vector<double> &v) { return *std::min_element(v.begin(), v.end()); });
}

} // namespace trial
