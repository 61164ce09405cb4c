// A run holds the settings that its constructor found: what the host changes afterwards, before
// or after vornstart, reaches no step of it.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/access.h"
#include "support/random_network.h"

namespace {

struct Change {
    const char *name;
    std::function<void(project &)> make;
};

void forget_lists(project &p)
{
    p.stations = nullptr;
    p.targets = nullptr;
    p.distances = p.heightdiffs = p.directions = p.verticals = nullptr;
    p.nstations = p.ntargets = p.ndistances = p.nheightdiffs = p.ndirections = p.nverticals = 0;
}

const Change changes[] = {
    {"irun 0", [](project &p) { p.irun = 0; }},
    {"irun 1", [](project &p) { p.irun = 1; }},
    {"irun -1", [](project &p) { p.irun = -1; }},
    {"irun -2", [](project &p) { p.irun = -2; }},
    {"dim 1", [](project &p) { p.dim = 1; }},
    {"dim 2", [](project &p) { p.dim = 2; }},
    {"dim 3", [](project &p) { p.dim = 3; }},
    {"dim 100", [](project &p) { p.dim = 100; }},
    {"idebug", [](project &p) { p.idebug = 9; }},
    {"iearth", [](project &p) { p.iearth = 2; }},
    {"radius", [](project &p) { p.radius = 300.0; }},
    {"trans", [](project &p) { p.trans[0] = p.trans[1] = p.trans[2] = 1000.0; }},
    {"horigin", [](project &p) { p.horigin = 50.0; }},
    {"latitude", [](project &p) { p.latitude = 45.0; }},
    {"itmax", [](project &p) { p.itmax = 0; }},
    {"convergence", [](project &p) { p.convergence = 1e9; }},
    {"iredux", [](project &p) { p.iredux = 9; }},
    {"iunit", [](project &p) { p.iunit = 1; }},
    {"iphoto", [](project &p) { p.iphoto = 1; }},
    {"deviations", [](project &p) { p.sdist = p.sdifh = p.sdir1 = p.sdir2 = p.saz = p.sgps = p.suv = 7.0; }},
    {"out", [](project &p) { p.out = nullptr; }},
    {"pfeedback", [](project &p) { p.pfeedback = nullptr; }},
    {"lists", forget_lists},
};

enum Moment { NEVER, BEFORE_VORNSTART, BEFORE_THE_SOLVER };

void append(std::vector<double> *v, const double *a, int n)
{
    if (a) v->insert(v->end(), a, a + n);
}

// Codes, report, lines and results of one run.
struct Outcome {
    int start, solve;
    std::string report;
    std::vector<std::string> lines;
    std::vector<double> numbers;

    bool operator==(const Outcome &o) const
    {
        return start == o.start && solve == o.solve && report == o.report && lines == o.lines && numbers == o.numbers;
    }
};

std::vector<double> numbers_of(const result &r)
{
    std::vector<double> v = {(double)r.irun, (double)r.dim, (double)r.nstar, (double)r.ntarr,
                             (double)r.dof,  r.sig0,        r.sigpost};
    const int npt = r.nstar + r.ntarr, nres = r.ndist + r.ndifh + r.ndir1 + r.ndir2;
    for (const double *a : {r.xpt, r.ypt, r.zpt, r.sxpt, r.sypt, r.szpt, r.ell12a}) append(&v, a, npt);
    append(&v, r.res, nres);
    append(&v, r.sres, nres);
    return v;
}

typedef int (vorn::*Entry)();

Outcome run_of(int dim, int irun, Entry entry, Moment moment, const Change *change)
{
    RandomNetwork network(dim, dim == 1 ? 0 : 3, 4, 3, 11, 1.0, 0.01);
    Network &n = network.net;
    n.p.irun = irun;
    const project kept = *n.ready();
    Outcome o;
    {
        vorn run(&n.p);
        if (moment == BEFORE_VORNSTART) change->make(n.p);
        o.start = run.vornstart();
        if (moment == BEFORE_THE_SOLVER) change->make(n.p);
        o.solve = (run.*entry)();
    }
    result *results = n.p.runresults;
    n.p = kept;
    n.p.runresults = results;
    o.report = n.report();
    o.lines = n.messages.lines;
    if (results) o.numbers = numbers_of(*results);
    return o;
}

class Settings : public testing::TestWithParam<int> {};

TEST_P(Settings, OfTheConstructorHold)
{
    const int dim = GetParam();
    const struct {
        Entry entry;
        int irun;
    } runs[] = {{&vorn::vornL2, 1},     {&vorn::vornL2, 0},      {&vorn::vornL2, -2}, {&vorn::vornjordan, 1},
                {&vorn::vornjordan, 0}, {&vorn::vornjordan, -2}, {&vorn::vornL1, -1}};
    for (const auto &r : runs) {
        const Outcome wanted = run_of(dim, r.irun, r.entry, NEVER, nullptr);
        ASSERT_EQ(wanted.start, 0) << wanted.report;
        ASSERT_EQ(wanted.solve, 0) << wanted.report;
        for (const Change &change : changes)
            for (const Moment moment : {BEFORE_VORNSTART, BEFORE_THE_SOLVER})
                EXPECT_TRUE(run_of(dim, r.irun, r.entry, moment, &change) == wanted)
                    << change.name << ", moment " << moment << ", irun " << r.irun;
    }
}

INSTANTIATE_TEST_SUITE_P(Dimensions, Settings, testing::Values(1, 2, 3));

} // namespace
