// What a run leaves out when it is asked for less, what it tells on its way, and what is too large for it.

#include <algorithm>
#include <atomic>
#include <sstream>
#include <vector>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

// A loop of levelling with a gross error of 5 mm in one of its two lines from C to A.
const char loop[] = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\nC 102 free\n"
                    "'''\nheight_differences = '''\nfrom to value sigma\nA B 1.001 0.001\nB C 1.000 0.001\n"
                    "C A -2.000 0.001\nC A -2.005 0.001\nB C 1.001 0.001\n'''\n";

SolvedNetwork solve_loop(const std::function<void(Model &)> &change)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", loop);
    Model model;
    Faults faults;
    EXPECT_TRUE(read_network("net.inp", model, faults));
    change(model);
    return solve(model);
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

class Steps : public Progress {
public:
    void begin(const char *step) override { steps.push_back(step); }
    void share(double done) override { shares.push_back(done); }
    bool has(const std::string &step) const { return std::count(steps.begin(), steps.end(), step) > 0; }

    std::vector<std::string> steps;
    std::vector<double> shares;
};

// A run that stops when a step begins; empty: that does not.
class Stopper : public Steps {
public:
    explicit Stopper(std::string its_step) : last(std::move(its_step)) {}
    void begin(const char *step) override
    {
        Steps::begin(step);
        if (last == step) stop = true;
    }

    std::string last;
    std::atomic<bool> stop{false};
};

NetworkRun watched(Stopper &stopper, Mode mode)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", loop);
    Model model;
    Faults faults;
    EXPECT_TRUE(read_network("net.inp", model, faults));
    model.mode = mode;
    Recorder messages;
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    NetworkRun run = run_network(model, report.get(), messages, "test", {&stopper, &stopper.stop});
    EXPECT_EQ(whole_text(report.get()).empty(), run.stopped);
    return run;
}

} // namespace

TEST(OwnSize, ResidualStatisticsCanBeLeftOut)
{
    const SolvedNetwork whole = solve_loop([](Model &) {});
    const SolvedNetwork less = solve_loop([](Model &m) { m.residual_statistics = false; });
    ASSERT_TRUE(whole.adjusted() && less.adjusted());
    EXPECT_EQ(less.results().points[1].deviation[2], whole.results().points[1].deviation[2]);
    EXPECT_EQ(less.results().sigma_aposteriori, whole.results().sigma_aposteriori);
    EXPECT_TRUE(less.results().variance_test.has_value());
    EXPECT_TRUE(less.results().kinds.empty() && less.results().suspicious.empty());
    ASSERT_EQ(less.results().residuals.size(), 5u);
    for (size_t i = 0; i < 5; i++) {
        const ResidualResult &r = less.results().residuals[i];
        EXPECT_EQ(r.residual, whole.results().residuals[i].residual);
        EXPECT_FALSE(r.redundancy || r.normalised || r.deviation || r.normal);
        EXPECT_TRUE(whole.results().residuals[i].redundancy.has_value());
    }
    EXPECT_TRUE(contains(less.report, "No observation was tested.\n")) << less.report;
    EXPECT_TRUE(contains(whole.report, "suspicious observation")) << whole.report;
}

TEST(OwnSize, ABriefReportHasLinesForSuspiciousObservationsAlone)
{
    const SolvedNetwork whole = solve_loop([](Model &) {});
    const SolvedNetwork brief = solve_loop([](Model &m) { m.brief = true; });
    EXPECT_EQ(brief.results().residuals.size(), 5u);
    EXPECT_TRUE(contains(whole.report, "net.inp:12"));
    EXPECT_FALSE(contains(brief.report, "net.inp:12")) << brief.report;
    EXPECT_TRUE(contains(brief.report, "net.inp:15")) << brief.report; // the gross error
    const auto behind = [](const std::string &report) { return report.substr(report.find("\nTests\n")); };
    EXPECT_EQ(behind(brief.report), behind(whole.report));
}

TEST(OwnSize, TellsItsSteps)
{
    Stopper none("");
    EXPECT_FALSE(watched(none, Mode::Statistics).stopped);
    for (const char *step :
         {"first coordinates", "equations", "datum", "order", "factor", "inverse", "statistics", "writing"})
        EXPECT_TRUE(none.has(step)) << step;
    EXPECT_EQ(none.steps.front(), "first coordinates");
    EXPECT_EQ(none.steps.back(), "writing");
    EXPECT_EQ(none.shares.back(), 1.0);
}

TEST(OwnSize, MakesNoInverseInModeSolution)
{
    Stopper none("");
    const NetworkRun run = watched(none, Mode::Solution);
    EXPECT_TRUE(run.results.adjusted);
    EXPECT_TRUE(none.has("factor"));
    EXPECT_FALSE(none.has("inverse") || none.has("statistics"));
    for (const PointResult &p : run.results.points) EXPECT_FALSE(p.deviation[2].has_value());
    for (const ResidualResult &r : run.results.residuals) EXPECT_FALSE(r.redundancy.has_value());
}

TEST(OwnSize, StopsInEveryStepBeforeItWrites)
{
    for (const char *step : {"first coordinates", "equations", "datum", "order", "factor", "inverse", "statistics"}) {
        Stopper stopper(step);
        const NetworkRun run = watched(stopper, Mode::Statistics);
        EXPECT_TRUE(run.stopped) << step;
        EXPECT_FALSE(stopper.has("writing")) << step;
        EXPECT_FALSE(run.results.adjusted);
    }
}

TEST(OwnSize, RefusesToImportMoreThanACovarianceCanHold)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("main.con", "no connected net\n");
    const auto solved = [&](int points) {
        std::ostringstream text;
        text << "[run]\ndimension = 1\n[connected_net]\nfile = \"main.con\"\n[tables]\n"
                "targets = '''\nname z code connect\n";
        for (int i = 0; i < points; i++) text << "P" << i << " 0 free import\n";
        text << "'''\nheight_differences = '''\nfrom to value sigma\nP0 P1 0 0.001\n'''\n";
        folder.write("net.inp", text.str());
        return solve_file("net.inp");
    };
    const SolvedNetwork refused = solved(3001);
    EXPECT_EQ(refused.code(), "input: no import");
    EXPECT_TRUE(contains(refused.words(), "the network imports 3001 points: 3001 coordinates, whose covariance is a "
                                          "full matrix of 72 MB; at most 3000 coordinates can be imported\n"))
        << refused.words();
    EXPECT_FALSE(contains(solved(3000).words(), "at most")); // its file is no such file
}
