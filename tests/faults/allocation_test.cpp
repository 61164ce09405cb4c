// The engine without memory: in whole runs of every kind of network each allocation fails in
// turn. A run ends by a documented code, names what it lacked, leaks nothing (the sanitizers
// see to that), and the project serves the next run as if nothing had been.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <new>
#include <set>
#include <sstream>

#include "faults/engine_run.h"
#include "host/folder.h"
#include "simplex_input.h"
#include "support/faults.h"

namespace {

using vornhost::Mode;
using vornhost::Solver;

int injected = 0;
bool objects_fail = false;

class Total : public testing::Environment {
public:
    void TearDown() override { std::cout << "allocations failed: " << injected << "\n"; }
};
const auto *const total = testing::AddGlobalTestEnvironment(new Total);

std::set<std::string> lines_of(const std::string &text)
{
    std::set<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.insert(line);
    return lines;
}

// A line that the good run does not say.
bool says_more(const Ended &bad, const std::set<std::string> &good)
{
    const std::set<std::string> lines = lines_of(bad.all());
    return !std::includes(good.begin(), good.end(), lines.begin(), lines.end());
}

std::string last_line(const Ended &bad)
{
    const std::string text = bad.all();
    const size_t end = text.find_last_not_of('\n'), begin = text.rfind('\n', end);
    return end == std::string::npos ? text : text.substr(begin == std::string::npos ? 0 : begin + 1, end - begin);
}

std::vector<std::string> networks()
{
    std::vector<std::string> paths;
    for (const char *folder : {SOURCE_DIR "/examples", SOURCE_DIR "/tests/runs"})
        for (const auto &entry : std::filesystem::directory_iterator(folder))
            if (entry.path().extension() == ".inp") paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

// Runs work in a folder of their own: some write files beside the report.
class Allocations : public testing::TestWithParam<std::string> {
protected:
    Allocations() { std::filesystem::current_path(folder.path); }
    ~Allocations() override { std::filesystem::current_path(before); }

    bool simplex_takes(const std::string &path) const
    {
        vornhost::Model model;
        vornhost::Faults faults;
        return vornhost::read_network(path, model, faults) && vornhost::not_for_simplex(model).empty();
    }

    // Every allocation up to the 200th (the 20th of the long runs with images), then every
    // seventh.
    void each_fails(const std::string &path, const Setting &setting)
    {
        EngineRun network;
        ASSERT_TRUE(network.read(path, setting));
        const Ended good = network.run();
        const std::set<std::string> usual = lines_of(good.all());
        const int all = network.model.images.size() > 0 ? 20 : 200;
        for (int n = 1;; n += n < all ? 1 : 7) {
            fail_allocation(n);
            const Ended bad = network.run();
            const bool failed = allocations() >= n;
            fail_allocation(0);
            if (!failed) break;
            injected++;
            check(bad, good, usual, n);
        }
        object_fails(network, good, usual);
        EXPECT_TRUE(network.run().same(good));
    }

    // The objects of the solvers come from new.
    void object_fails(EngineRun &network, const Ended &good, const std::set<std::string> &usual)
    {
        objects_fail = true;
        const Ended bad = network.run();
        objects_fail = false;
        injected++;
        check(bad, good, usual, 0);
    }

    void check(const Ended &bad, const Ended &good, const std::set<std::string> &usual, int n) const
    {
        EXPECT_TRUE(bad.documented()) << n << ": " << bad.start << " " << bad.code;
        if (bad.same(good)) return; // an index is made up for by a search
        EXPECT_TRUE(says_more(bad, usual))
            << n << ": " << bad.start << " " << bad.code << " " << bad.results << " after: " << last_line(bad);
    }

    void all_solvers(const std::string &path, Setting setting)
    {
        for (const Solver solver : {Solver::Compact, Solver::Jordan, Solver::Simplex}) {
            setting.solver = solver;
            if (solver == Solver::Simplex && !simplex_takes(path)) continue;
            SCOPED_TRACE("solver " + std::to_string((int)solver));
            each_fails(path, setting);
        }
    }

    Folder folder;
    std::filesystem::path before = std::filesystem::current_path();
};

TEST_P(Allocations, FailInTurnInEveryModeOfEverySolver)
{
    Setting setting;
    for (const Mode mode : {Mode::Statistics, Mode::Solution, Mode::Propagation}) {
        SCOPED_TRACE("mode " + std::to_string((int)mode));
        setting.mode = mode;
        all_solvers(GetParam(), setting);
    }
}

TEST_P(Allocations, FailInTurnInRunsWithTraces)
{
    Setting setting;
    for (const int trace : {1, 9}) {
        SCOPED_TRACE("trace " + std::to_string(trace));
        setting.trace = trace;
        all_solvers(GetParam(), setting);
    }
}

TEST_P(Allocations, FailInTurnInRunsThatFindFirstCoordinates)
{
    Setting setting;
    setting.compute = true;
    each_fails(GetParam(), setting);
}

class Lumps : public Allocations {};

TEST_P(Lumps, FailInTurnByBothMethodologies)
{
    Setting setting;
    for (const int method : {1, 9})
        for (const Mode mode : {Mode::Statistics, Mode::Solution}) {
            SCOPED_TRACE("method " + std::to_string(method));
            setting.lumpmethod = method;
            setting.mode = mode;
            all_solvers(GetParam(), setting);
        }
}

INSTANTIATE_TEST_SUITE_P(Of, Lumps, testing::Values(SOURCE_DIR "/examples/monitoring_wall.inp"),
                         [](const auto &) { return "monitoring_wall"; });

class Connected : public Allocations {};

// The first network writes the file that the second one reads.
TEST_P(Connected, FailInTurnInAnExportAndInAnImport)
{
    for (const char *net : {"first.inp", "second.inp"})
        std::filesystem::copy(SOURCE_DIR "/examples/chained/" + std::string(net), folder.file(net));
    for (const Mode mode : {Mode::Statistics, Mode::Propagation})
        for (const char *net : {"first.inp", "second.inp"}) {
            SCOPED_TRACE(net);
            Setting setting;
            setting.mode = mode;
            setting.solver = GetParam() == "jordan" ? Solver::Jordan : Solver::Compact;
            each_fails(folder.file(net), setting);
        }
}

INSTANTIATE_TEST_SUITE_P(Of, Connected, testing::Values("compact", "jordan"),
                         [](const auto &one) { return one.param; });

INSTANTIATE_TEST_SUITE_P(Of, Allocations, testing::ValuesIn(networks()),
                         [](const auto &one) { return std::filesystem::path(one.param).stem().string(); });

} // namespace

// The engine's only use of new: an object of a solver.
void *operator new(size_t size, const std::nothrow_t &) noexcept { return objects_fail ? nullptr : operator new(size); }
