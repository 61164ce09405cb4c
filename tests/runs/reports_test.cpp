// Whole runs, text in, text out: the report of each network equals its kept file byte by
// byte. With VORN_KEEP_REPORTS set in the environment the files are written instead; read
// every line of a file before you keep it.

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

#include "host/input/network_file.h"
#include "host/run/runner.h"
#include "support/network.h"

namespace {

using namespace vornhost;

struct ReportCase {
    const char *network;
    Solver solver;
    Mode mode;
    int trace;
    Stage reached;
};

const char *name_of(Solver s) { return s == Solver::Jordan ? "jordan" : s == Solver::Compact ? "compact" : "simplex"; }
const char *name_of(Mode m)
{
    return m == Mode::Solution ? "solution" : m == Mode::Statistics ? "statistics" : "propagation";
}

std::string kept_file(const ReportCase &c)
{
    return std::string(SOURCE_DIR "/tests/reports/") + c.network + "_" + name_of(c.solver) + "_" + name_of(c.mode) +
           "_" + std::to_string(c.trace) + ".txt";
}

std::string first_difference(const std::string &wanted, const std::string &found)
{
    std::istringstream w(wanted), f(found);
    std::string lw, lf;
    for (int line = 1;; line++) {
        const bool more_w = (bool)std::getline(w, lw), more_f = (bool)std::getline(f, lf);
        if (!more_w && !more_f) return "line ends differ";
        if (more_w != more_f || lw != lf)
            return "line " + std::to_string(line) + "\nwanted: " + (more_w ? lw : "end") +
                   "\nfound:  " + (more_f ? lf : "end");
    }
}

class Reports : public testing::TestWithParam<ReportCase> {};

TEST_P(Reports, EqualTheKeptFile)
{
    const ReportCase &c = GetParam();
    Model model;
    Faults faults;
    ASSERT_TRUE(read_network(std::string(SOURCE_DIR "/tests/runs/") + c.network + ".inp", model, faults))
        << faults.lines().front();
    model.solver = c.solver;
    model.mode = c.mode;
    model.p.idebug = c.trace;

    FILE *report = tmpfile();
    ASSERT_TRUE(report);
    Recorder messages;
    const RunOutcome outcome = run(model, report, messages);
    EXPECT_EQ(outcome.reached, c.reached);
    fflush(report);
    rewind(report);
    std::string text;
    for (int ch = fgetc(report); ch != EOF; ch = fgetc(report)) text += (char)ch;
    fclose(report);
    model.p.freerun(model.p.runresults);
    model.p.runresults = nullptr;

    if (getenv("VORN_KEEP_REPORTS")) {
        std::ofstream(kept_file(c), std::ios::binary) << text;
        return;
    }
    const std::string wanted = file_text(kept_file(c));
    EXPECT_TRUE(wanted == text) << kept_file(c) << ": " << first_difference(wanted, text);
}

const ReportCase cases[] = {
    {"height", Solver::Jordan, Mode::Solution, 0, Stage::Done},
    {"height", Solver::Jordan, Mode::Solution, 1, Stage::Done},
    {"height", Solver::Jordan, Mode::Solution, 9, Stage::Done},
    {"height_free", Solver::Jordan, Mode::Solution, 9, Stage::Done},
    {"plane", Solver::Jordan, Mode::Solution, 0, Stage::Done},
    {"plane", Solver::Jordan, Mode::Solution, 1, Stage::Done},
    {"plane", Solver::Jordan, Mode::Solution, 9, Stage::Done},
    {"plane_free", Solver::Jordan, Mode::Solution, 1, Stage::Done},
    {"space", Solver::Jordan, Mode::Solution, 0, Stage::Done},
    {"space", Solver::Jordan, Mode::Solution, 1, Stage::Done},
    {"space", Solver::Jordan, Mode::Solution, 9, Stage::Done},
    {"height", Solver::Compact, Mode::Statistics, 0, Stage::Done},
    {"plane", Solver::Compact, Mode::Statistics, 0, Stage::Done},
    {"plane", Solver::Compact, Mode::Propagation, 0, Stage::Done},
    {"space", Solver::Compact, Mode::Statistics, 0, Stage::Done},
    {"pairs", Solver::Compact, Mode::Statistics, 0, Stage::Done},
    {"exact", Solver::Compact, Mode::Statistics, 0, Stage::Done},
    {"stopped", Solver::Compact, Mode::Statistics, 0, Stage::Solving},
};

INSTANTIATE_TEST_SUITE_P(Runs, Reports, testing::ValuesIn(cases), [](const auto &one) {
    const ReportCase &c = one.param;
    return std::string(c.network) + "_" + name_of(c.solver) + "_" + name_of(c.mode) + "_" + std::to_string(c.trace);
});

} // namespace
