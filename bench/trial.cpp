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
