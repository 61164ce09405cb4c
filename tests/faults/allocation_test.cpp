// The engine without memory: in whole runs of every kind of network each allocation fails in
// turn. A run ends by a documented code, names what it lacked, leaks nothing (the sanitizers
// see to that), and the project serves the next run as if nothing had been.

#include <gtest/gtest.h>
#include <math.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <utility>

#include "faults/engine_run.h"
#include "host/folder.h"
#include "host/network_files.h"
#include "host/preparation/simplex_input.h"
#include "support/faults.h"

namespace {

using vornhost::Mode;
using vornhost::Solver;

int injected = 0;

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

enum { ANY = 1, AS_USUAL = 2 };

// A way for a run to go on or end: results of vornstart and of the solver, the line that names
// what found no memory, and the line by which the caller ends.
struct Road {
    int start, code;
    const char *line, *end;
};

const Road roads[] = {
    // goes on without
    {ANY, ANY, "> fill_vorn: Could not allocate ilumtable=> no lumps", ""},
    {ANY, ANY, "> fill_vorn: Could not allocate itimetable=> no lumps", ""},
    {ANY, ANY, "> fill_vorn: Could not allocate isplit", ""},
    {ANY, ANY, "> fill_connect: Incompatibilities with 2 code", "=>disable connected computation"},
    {AS_USUAL, AS_USUAL, "> Pb with justout()", ""},
    {AS_USUAL, AS_USUAL, "input_for_tessalpin: cannot allocate", ""},
    {AS_USUAL, AS_USUAL, "In ludcmp: pb with vv", ""}, // in the balancing of observations
    {AS_USUAL, AS_USUAL, "> usesimili: Could not allocate itimetable", "> backtoproject: Pb with usesimili"},
    {AS_USUAL, AS_USUAL, "> usesimili: Could not allocate tab", "> backtoproject: Pb with usesimili"},
    {AS_USUAL, AS_USUAL, "> usesimili: Could not allocate lumps", "> backtoproject: Pb with usesimili"},
    {AS_USUAL, AS_USUAL, "> usesimili: pb with pref", ""},
    {AS_USUAL, AS_USUAL, "> usesimili: pb pend", ""},
    {AS_USUAL, AS_USUAL, "Lump 1 observed at 1 epochs", ""}, // of two: the comparison was left out
    {AS_USUAL, AS_USUAL, "Lump 2 observed at 1 epochs", ""},
    {ANY, ANY, "> vornapprox: Cannot allocate approx", ""},
    // without results
    {AS_USUAL, AS_USUAL, "> Create pproject->runresults failed", "> backtoproject failed"},
    {AS_USUAL, AS_USUAL, "> Allocation in pproject->runresults failed", "> backtoproject failed"},
    {AS_USUAL, AS_USUAL, "> Allocation # 1 for lumps in runresults failed", "> backtoproject failed"},
    {AS_USUAL, AS_USUAL, "> Allocation # 2 for lumps in runresults failed", "> backtoproject failed"},
    {AS_USUAL, AS_USUAL, "> Allocation for ell 1-2 in pproject->runresults failed", "> backtoproject failed"},
    {AS_USUAL, AS_USUAL, "> Allocation for ell 1-3 in pproject->runresults failed", "> backtoproject failed"},
    {AS_USUAL, AS_USUAL, "> Allocation for ell 2-3 in pproject->runresults failed", "> backtoproject failed"},
    // vornstart
    {-1, 0, "chk_connect: Cannot allocate lcon or Qcon", "fill_vorn: Stop in chk_connect"},
    {-1, 0, "Program stops with the allocation of points", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of dist", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of difh", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of dir1", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of dir2", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of az", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of gps", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of camera", "fill_vorn: Stop in vornallocate"},
    {-1, 0, "Program stops with the allocation of obsuv", "fill_vorn: Stop in vornallocate"},
    {-2, 0, "lumpcheck: Cannot allocate arrays", ""},
    {-2, 0, "lumpcheck: Cannot allocate columns for tab_epoch", ""},
    {-2, 0, "lumpcheck: Cannot allocate columns for table", ""},
    {-2, 0, "lumpcheck: Cannot allocate lumps structure", ""},
    {-2, 0, "lumpcheck: Cannot allocate lumps arrays", ""},
    {-2, 0, "lumpcheck: Cannot allocate lumps stds", ""},
    {-4, 0, "In approx: Cannot allocate savn0, savn1", ""},
    {-4, 0, "In approx: Cannot allocate columns for savn0, savn1", ""},
    {-4, 0, "In spread: pb with xap", ""},
    {-4, 0, "In spread: pb with table", ""},
    {-4, 0, "In spread: pb with tabpair", ""},
    {-4, 0, "in buildtabpair: cannot allocate", ""},
    {-4, 0, "in t2pt, cannot allocate", "In spread: stop in t2pt"},
    {-4, 0, "In ludcmp: pb with vv", "In spread: stop in t2pt"},
    {-4, 0, "in guess_spread: cannot allocate", ""},
    {-4, 0, "guess_spread: cannot allocate isys, app or rhs", ""},
    {-4, 0, "guess_solve: cannot allocate iweak", "in guess_spread: cannot solve"},
    {-4, 0, "guess_solve: cannot allocate mat, indx or rhssav", "in guess_spread: cannot solve"},
    {-4, 0, "guess_solve: cannot allocate mat[", "in guess_spread: cannot solve"},
    {-4, 0, "In ludcmp: pb with vv", "in guess_spread: cannot solve"},
    {-4, 0, "patch_spread: cannot allocate isys, app or rhs", ""},
    {-6, 0, "set_connect: cannot allocate ltemp", ""},
    // the solvers
    {0, -1, "vornL2+: Cannot allocate temp_res", ""},
    {0, -1, "vornjordan: Cannot allocate temp_res", ""},
    {0, -1, "> vornL2: Cannot allocate the solver", ""},
    {0, -1, "> vornjordan: Cannot allocate the solver", ""},
    {0, -1, "> vornL1: Cannot allocate the solver", ""},
    {0, -2, "pb with allocation of norm", "Program stops in prepare"},
    {0, -2, "pb with allocation of inv", "Program stops in prepare"},
    {0, -2, "*** pb with allocation of compadd ***", "Program stops in prepare"},
    {0, -2, "*** pb with allocation of t ***", "Program stops in prepare"},
    {0, -2, "*** pb with compact allocation ***", "Program stops in prepare"},
    {0, -2, "pb with matrix or others", "Program stops in prepare"},
    {0, -2, "pb with matrix when i=0", "Program stops in prepare"},
    {0, -2, "pb with adesign", "Program stops in prepare"},
    {0, -2, "pb with anorm..", "Program stops in prepare"},
    {0, -2, "pb with anorm or ainv when i=0", "Program stops in prepare"},
    {0, -3, "pb with allocation of iobsout", "Program stops in resolution"},
    {0, -3, "Program stops in resolution", "Gauss Jordan solution"}, // its work arrays
    {0, -5, "*** pb with allocation of inv ***", "Program stops in inverse"},
    {0, -5, "Program stops in inverse", "Gauss Jordan solution"},
    {0, -1, "> statalloc () - memory allocation failed", ""},
};

bool begins(const std::string &line, const char *words) { return line.rfind(words, 0) == 0; }

bool fits(int wanted, int result, int usual)
{
    return wanted == ANY || result == (wanted == AS_USUAL ? usual : wanted);
}

// Whether the run took a road that the good one did not take.
bool documented(const Ended &bad, const Ended &good, const std::set<std::string> &usual)
{
    std::vector<std::string> more;
    for (const std::string &line : lines_of(bad.all()))
        if (usual.count(line) == 0) more.push_back(line);
    const std::string text = bad.all();
    for (const Road &road : roads)
        for (const std::string &line : more)
            if (fits(road.start, bad.start, good.start) && fits(road.code, bad.code, good.code) &&
                begins(line, road.line) && text.find(road.end) != std::string::npos)
                return true;
    return false;
}

std::string last_line(const Ended &bad)
{
    const std::string text = bad.all();
    const size_t end = text.find_last_not_of('\n'), begin = text.rfind('\n', end);
    return end == std::string::npos ? text : text.substr(begin == std::string::npos ? 0 : begin + 1, end - begin);
}

// Runs work in a folder of their own: some write files beside the report.
class EachFails : public testing::Test {
protected:
    bool simplex_takes(const std::string &path) const
    {
        vornhost::Model model;
        vornhost::Faults faults;
        return vornhost::read_network(path, model, faults) && vornhost::not_for_simplex(model).empty();
    }

    // Every allocation in turn, then every object.
    void each_fails(const std::string &path, const Setting &setting)
    {
        EngineRun network;
        ASSERT_TRUE(network.read(path, setting));
        const Ended good = network.run();
        const std::set<std::string> usual = lines_of(good.all());
        for (int n = 1;; n++) {
            fail_allocation(n);
            const Ended bad = network.run();
            const bool failed = allocations() >= n;
            fail_allocation(0);
            if (!failed) break;
            injected++;
            check(bad, good, usual, n);
        }
        objects_fail(network, good, usual);
        EXPECT_TRUE(network.run().same(good));
    }

    // Objects come from new: that of the first coordinates where they are computed, that of a
    // solver.
    void objects_fail(EngineRun &network, const Ended &good, const std::set<std::string> &usual)
    {
        for (int n = 1;; n++) {
            fail_object(n);
            const Ended bad = network.run();
            const bool failed = object_failed();
            fail_object(0);
            if (!failed) break;
            injected++;
            check(bad, good, usual, -n);
        }
    }

    void check(const Ended &bad, const Ended &good, const std::set<std::string> &usual, int n) const
    {
        if (bad.same(good)) return; // an index is made up for by a search
        EXPECT_TRUE(documented(bad, good, usual))
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
    InFolder in{folder.path};
};

class Allocations : public EachFails, public testing::WithParamInterface<std::string> {};

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

// Stages that no network of the others reaches.
class Stage : public EachFails {
protected:
    struct Place {
        const char *name;
        double x, y, z, turn;
    };

    // Three stations and five targets. No station sights another, so that two of them are guessed;
    // orientations of the other sense are none of the search, and a station is patched in vain.
    std::string guess(const std::string &known, double sense) const
    {
        const double pi = 4.0 * atan(1.0), base = atan2(20, 90);
        const Place stations[] = {{"P", 1000, 2000, 50, base + 3 * pi / 10},
                                  {"Q", 1090, 2020, 50, base + 7 * pi / 10},
                                  {"R", 1040, 1910, 45, 0.2}};
        const Place targets[] = {{"A", 1030, 2070, 70, 0},
                                 {"B", 1080, 2075, 35, 0},
                                 {"C", 1055, 1940, 58, 0},
                                 {"D", 980, 2090, 81, 0},
                                 {"E", 1130, 1930, 33, 0}};
        std::string directions, verticals;
        for (const Place &s : stations)
            for (const Place &t : targets) {
                if (*s.name == 'Q' && *t.name == 'E') continue;
                if (*s.name == 'R' && *t.name == 'D') continue;
                const double angle = atan2(t.y - s.y, t.x - s.x) + sense * s.turn;
                directions += sight(s, t, angle < 0 ? angle + 2 * pi : angle);
                verticals += sight(s, t, atan2(t.z - s.z, hypot(t.x - s.x, t.y - s.y)));
            }
        return "[run]\ntitle = \"guess\"\ndimension = 3\n[units]\nangle = \"radian\"\nvertical = \"elevation\"\n"
               "[tables]\nstations = \"\"\"\nname x y z code\n" +
               points(stations, 3, "") + "\"\"\"\ntargets = \"\"\"\nname x y z code\n" + points(targets, 5, known) +
               "\"\"\"\ndirections = \"\"\"\nfrom to value sigma\n" + directions +
               "\"\"\"\nvertical_angles = \"\"\"\nfrom to value sigma\n" + verticals +
               "\"\"\"\ndistances = \"\"\"\nfrom to value sigma\nA B 61.237 0.01\n\"\"\"\n";
    }

private:
    static std::string sight(const Place &from, const Place &to, double value)
    {
        return std::string(from.name) + " " + to.name + " " + std::to_string(value) + " 0.001\n";
    }

    static std::string points(const Place *list, int n, const std::string &known)
    {
        std::string text;
        for (const Place *p = list; p < list + n; p++)
            text += std::string(p->name) + " " + std::to_string(p->x) + " " + std::to_string(p->y) + " " +
                    std::to_string(p->z) + (known.find(p->name) == std::string::npos ? " free\n" : " fixed\n");
        return text;
    }
};

TEST_F(Stage, OfAGuessFailsInTurn)
{
    Setting setting;
    setting.compute = true;
    const std::pair<const char *, double> networks[] = {{"AE", 1.0}, {"AD", 1.0}, {"AE", -1.0}};
    for (const int trace : {0, 9})
        for (const auto &network : networks) {
            setting.trace = trace;
            each_fails(folder.write("guess.inp", guess(network.first, network.second)), setting);
        }
}

TEST_F(Stage, OfTheCofactorsOfStationsFailsInTurn)
{
    folder.write("tessalpin.sta", "S1\nS2\n");
    for (const Solver solver : {Solver::Compact, Solver::Jordan}) {
        Setting setting;
        setting.solver = solver;
        each_fails(SOURCE_DIR "/tests/runs/space.inp", setting);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Allocations, testing::ValuesIn(network_files()),
                         [](const auto &one) { return std::filesystem::path(one.param).stem().string(); });

} // namespace
