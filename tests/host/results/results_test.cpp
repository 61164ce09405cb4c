// Results of runs, checked against closed formulas.

#include "host/results/results.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

#include "host/folder.h"
#include "host/results/json_writer.h"
#include "vorn/result.h"
#include "host/results/result_parts.h"
#include "host/run/runner.h"

using namespace vornhost;

namespace {

const double pi = std::acos(-1.0);

class Silence : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

// Results of a whole run on the text of a network file.
Results results_of(const std::string &text, bool checking = false)
{
    Lines faults;
    Model model = model_of(text, &faults);
    for (const std::string &line : faults) ADD_FAILURE() << line;
    FILE *report = tmpfile();
    Silence silence;
    const RunOutcome outcome = checking ? check(model, report, silence) : run(model, report, silence);
    fclose(report);
    const Results results = collect(model, outcome, "1.2.3");
    model.p.freerun(model.p.runresults);
    return results;
}

const PointResult &point(const Results &r, const std::string &name)
{
    const auto found = std::find_if(r.points.begin(), r.points.end(), [&](const auto &p) { return p.name == name; });
    if (found == r.points.end()) throw std::runtime_error("no point " + name);
    return *found;
}

// Levelled triangle with a misclosure of 3 mm and lines of 1 mm.
std::string triangle(const std::string &mode)
{
    return "[run]\ntitle = \"Triangle\"\ndimension = 1\nsolver = \"compact\"\nmode = \"" + mode +
           "\"\n[tables]\ntargets = \"\"\"\n"
           "name z code\nA 100 fixed\nB 101.2 free\nC 103.5 free\n\"\"\"\nheight_differences = \"\"\"\n"
           "from to value sigma\nA B 1.234 0.001\nB C 2.221 0.001\nC A -3.452 0.001\n\"\"\"\n";
}

// Covariance block, as the engine turns it into an ellipse.
EllipseResult ellipse_of(double qxx, double qyy, double qxy)
{
    const double theta = 0.5 * std::atan2(2.0 * qxy, qxx - qyy), r = std::hypot(qxx - qyy, 2.0 * qxy);
    return {std::sqrt(0.5 * (qxx + qyy + r)), std::sqrt(std::max(0.0, 0.5 * (qxx + qyy - r))),
            theta < 0.0 ? -theta : pi - theta};
}

double *array(std::initializer_list<double> values)
{
    double *a = (double *)calloc(values.size(), sizeof *a);
    std::copy(values.begin(), values.end(), a);
    return a;
}

int *array_of_int(std::initializer_list<int> values)
{
    int *a = (int *)calloc(values.size(), sizeof *a);
    std::copy(values.begin(), values.end(), a);
    return a;
}

} // namespace

TEST(Ellipse, GivesTheStandardDeviationsOfItsCovarianceBlock)
{
    const double blocks[][3] = {{4, 1, 1.5}, {4, 1, -1.5}, {1, 4, 1.5}, {1, 4, -1.5}, {2, 2, 0},   {3, 1, 0},
                                {1, 3, 0},   {4, 0, 0},    {0, 4, 0},   {1e-8, 4, 0}, {1, 1, 0.99}};
    for (const auto &b : blocks) {
        const EllipseResult e = ellipse_of(b[0], b[1], b[2]);
        EXPECT_NEAR(deviation_first(e), std::sqrt(b[0]), 1e-8); // root of a rounding of some 1e-16
        EXPECT_NEAR(deviation_second(e), std::sqrt(b[1]), 1e-8);
    }
}

TEST(Results, TellWhatRan)
{
    const Results r = results_of(triangle("statistics"));
    EXPECT_EQ(r.program, "vorn");
    EXPECT_EQ(r.version, "1.2.3");
    EXPECT_EQ(r.title, "Triangle");
    EXPECT_EQ(r.solver, "compact");
    EXPECT_EQ(r.mode, "statistics");
    EXPECT_EQ(r.dimension, 1);
    EXPECT_TRUE(r.adjusted);
    EXPECT_EQ(r.engine_code, 0);
    EXPECT_EQ(r.code, "adjusted");
    EXPECT_EQ(r.stage, "done");
    ASSERT_EQ(r.accounts.size(), 1u);
    EXPECT_EQ(r.accounts[0].used, 3);
}

// Normal matrix 1e6 (2 -1; -1 2): cofactors 2/3 mm^2; residuals a third of the misclosure;
// variance 3 for one degree of freedom.
TEST(Results, HoldHeightsWithTheirDeviations)
{
    const Results r = results_of(triangle("statistics"));
    EXPECT_NEAR(*point(r, "B").adjusted[2], 101.233, 1e-9);
    EXPECT_NEAR(*point(r, "C").adjusted[2], 103.453, 1e-9);
    EXPECT_NEAR(*point(r, "B").approximate[2], 101.2, 1e-12);
    EXPECT_NEAR(*r.sigma_aposteriori, std::sqrt(3.0), 1e-9);
    EXPECT_EQ(*r.sigma_apriori, 1.0);
    EXPECT_EQ(*r.degrees_of_freedom, 1);
    EXPECT_TRUE(r.one_tailed_test.has_value());
    EXPECT_NEAR(*point(r, "B").deviation[2], 1e-3 * std::sqrt(2.0), 1e-10);
    EXPECT_FALSE(point(r, "B").deviation[0]);
    EXPECT_FALSE(point(r, "B").ellipse[1]);
    EXPECT_FALSE(point(r, "B").adjusted[0]);
    EXPECT_EQ(point(r, "B").code[2], "free");
    EXPECT_EQ(point(r, "A").code[2], "fixed");
    EXPECT_EQ(point(r, "A").code[0], "");
    EXPECT_FALSE(point(r, "A").deviation[2]);
}

TEST(Results, HoldResidualsWithTheirPlaceAndMarks)
{
    const Results r = results_of(triangle("statistics"));
    ASSERT_EQ(r.residuals.size(), 3u);
    const ResidualResult &m = r.residuals[2];
    EXPECT_EQ(m.kind, "height difference");
    EXPECT_EQ(m.from, "C");
    EXPECT_EQ(m.to, "A");
    EXPECT_EQ(m.line, 17);
    EXPECT_EQ(m.value, -3.452);
    EXPECT_EQ(m.sigma, 0.001);
    EXPECT_NEAR(m.residual, 0.001, 1e-9);
    EXPECT_NEAR(*m.deviation, 0.001 / std::sqrt(3.0), 1e-10);
    EXPECT_EQ(m.outside, std::optional<bool>(false));
    EXPECT_TRUE(m.normal.has_value() && m.normal_divided.has_value() && m.tau.has_value() && m.tau_divided);
    ASSERT_EQ(r.kinds.size(), 1u);
    EXPECT_EQ(r.kinds[0].kind, "height difference");
    EXPECT_NEAR(r.kinds[0].sigma_aposteriori, std::sqrt(3.0), 1e-9);
}

TEST(Results, HaveNoPrecisionAndNoMarksFromASolution)
{
    const Results r = results_of(triangle("solution"));
    EXPECT_NEAR(*point(r, "B").adjusted[2], 101.233, 1e-9);
    EXPECT_FALSE(point(r, "B").deviation[2]);
    ASSERT_EQ(r.residuals.size(), 3u);
    EXPECT_NEAR(r.residuals[0].residual, 0.001, 1e-9);
    EXPECT_FALSE(r.residuals[0].deviation);
    EXPECT_FALSE(r.residuals[0].outside);
    EXPECT_FALSE(r.residuals[0].tau_divided);
    EXPECT_TRUE(r.kinds.empty());
    EXPECT_NEAR(*r.sigma_aposteriori, std::sqrt(3.0), 1e-9);
}

TEST(Results, HaveOnlyPrecisionFromAPropagation)
{
    const Results r = results_of(triangle("propagation"));
    EXPECT_FALSE(point(r, "B").adjusted[2]);
    EXPECT_NEAR(*point(r, "B").deviation[2], 1e-3 * std::sqrt(2.0 / 3.0), 1e-10);
    EXPECT_TRUE(r.residuals.empty());
    EXPECT_FALSE(r.degrees_of_freedom);
    EXPECT_FALSE(r.sigma_aposteriori);
}

TEST(Results, HaveNoTestsWithoutRedundancy)
{
    const Results r = results_of("[run]\ndimension = 1\n[tables]\ntargets = \"\"\"\nname z code\nA 100 fixed\n"
                                 "B 101 free\n\"\"\"\nheight_differences = \"\"\"\nfrom to value sigma\n"
                                 "A B 1.25 0.001\n\"\"\"\n");
    EXPECT_NEAR(*point(r, "B").deviation[2], 0.001, 1e-10);
    EXPECT_EQ(r.degrees_of_freedom, std::optional<int>(0));
    EXPECT_FALSE(r.sigma_aposteriori);
    EXPECT_FALSE(r.one_tailed_test);
    ASSERT_EQ(r.residuals.size(), 1u);
    EXPECT_FALSE(r.residuals[0].outside);
    EXPECT_TRUE(r.kinds.empty());
}

TEST(Results, HaveNoPrecisionAfterACheck)
{
    const Results r = results_of(triangle("statistics"), true);
    for (const PointResult &p : r.points) EXPECT_FALSE(p.deviation[2]);
    EXPECT_NEAR(*point(r, "B").approximate[2], 101.2, 1e-12);
}

TEST(Results, HaveNoPointsWhenTheNetworkWasRefused)
{
    const Results r =
        results_of("[run]\ndimension = 2\n[tables]\ntargets = \"\"\"\nname x y code\nA 0 0 fixed\n"
                   "B 10 0 free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\nA B 10 0.001\n\"\"\"\n");
    EXPECT_FALSE(r.adjusted);
    EXPECT_FALSE(r.words.empty());
    EXPECT_NE(r.engine_code, 0);
    EXPECT_TRUE(r.points.empty());
    EXPECT_TRUE(r.residuals.empty());
    EXPECT_FALSE(r.sigma_apriori);
}

// P lies in the axes through four fixed points 100 m away: distances along x have 1 mm, along
// y 2 mm, so sx = 1 mm / sqrt 2 and sy = 2 mm / sqrt 2.
TEST(Results, TakeDeviationsInThePlaneFromTheEllipse)
{
    const Results r = results_of(
        "[run]\ndimension = 2\nmode = \"propagation\"\n[tables]\ntargets = \"\"\"\nname x y code\nN 100 0 fixed\n"
        "S -100 0 fixed\nE 0 100 fixed\nW 0 -100 fixed\nP 0 0 free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\n"
        "P N 100 0.001\nP S 100 0.001\nP E 100 0.002\nP W 100 0.002\n\"\"\"\n");
    const PointResult &p = point(r, "P");
    EXPECT_NEAR(*p.deviation[0], 0.001 / std::sqrt(2.0), 1e-9);
    EXPECT_NEAR(*p.deviation[1], 0.002 / std::sqrt(2.0), 1e-9);
    ASSERT_TRUE(p.ellipse[0]);
    EXPECT_NEAR(p.ellipse[0]->a, 0.002 / std::sqrt(2.0), 1e-9);
    EXPECT_NEAR(p.ellipse[0]->bearing, pi / 2, 1e-6);
    EXPECT_FALSE(p.ellipse[1]);
    EXPECT_FALSE(point(r, "N").deviation[0]);
    EXPECT_FALSE(point(r, "N").ellipse[0]);
    EXPECT_EQ(point(r, "N").code[0], "fixed");
    EXPECT_EQ(p.code[0], "free");
}

// Two points on a line, each with y held: x of P from A, x of Q from P; 1 mm each.
TEST(Results, KnowTheDeviationOfACoordinateWhoseNeighbourIsHeld)
{
    const Results r = results_of(
        "[run]\ndimension = 2\nmode = \"propagation\"\n[tables]\ntargets = \"\"\"\nname x y code_x code_y\n"
        "A 0 0 fixed fixed\nP 100 0 free fixed\nQ 200 0 free fixed\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\n"
        "A P 100 0.001\nP Q 100 0.001\nA Q 200 0.001\n\"\"\"\n");
    for (const char *name : {"P", "Q"}) {
        EXPECT_NEAR(*point(r, name).deviation[0], 0.001 * std::sqrt(2.0 / 3.0), 1e-9) << name;
        EXPECT_FALSE(point(r, name).deviation[1]) << name;
        EXPECT_FALSE(point(r, name).ellipse[0]) << name;
    }
}

// A set of directions between fixed points: the residuals are what is left of the means.
TEST(Results, TurnResidualsOfAnglesIntoRadians)
{
    const Results r =
        results_of("[run]\ndimension = 2\nmode = \"solution\"\n[tables]\nstations = \"\"\"\nname x y code\n"
                   "S 0 0 fixed\n\"\"\"\ntargets = \"\"\"\nname x y code\nN 100 0 fixed\nE 0 100 fixed\nP 50 50 free\n"
                   "\"\"\"\ndirections = \"\"\"\nfrom to value sigma\nS N 10.001 0.001\nS E 109.999 0.001\n\"\"\"\n"
                   "distances = \"\"\"\nfrom to value sigma\nN P 70.710678 0.001\nE P 70.710678 0.001\n\"\"\"\n");
    ASSERT_EQ(r.residuals.size(), 4u);
    const ResidualResult &n = r.residuals[2], &e = r.residuals[3];
    EXPECT_EQ(n.kind, "direction");
    EXPECT_NEAR(n.value, 10.001 * pi / 200, 1e-12);
    EXPECT_NEAR(n.sigma, 0.001 * pi / 200, 1e-15);
    EXPECT_NEAR(n.residual, 0.001 * pi / 200, 1e-9);
    EXPECT_NEAR(e.residual, -0.001 * pi / 200, 1e-9);
    EXPECT_TRUE(point(r, "S").station);
    EXPECT_FALSE(point(r, "N").station);
    EXPECT_TRUE(r.orientations.empty());
}

// P in space: distances along the three axes with 1, 2 and 3 mm.
TEST(Results, HoldDeviationsAndEllipsesInSpace)
{
    const Results r = results_of(
        "[run]\ndimension = 3\nmode = \"propagation\"\n[tables]\ntargets = \"\"\"\nname x y z code\nN 100 0 0 fixed\n"
        "E 0 100 0 fixed\nU 0 0 100 fixed\nP 0 0 0 free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\n"
        "P N 100 0.001\nP E 100 0.002\nP U 100 0.003\n\"\"\"\n");
    const PointResult &p = point(r, "P");
    for (int c = 0; c < 3; c++) {
        EXPECT_NEAR(*p.deviation[c], 0.001 * (c + 1), 1e-9);
        ASSERT_TRUE(p.ellipse[c]);
    }
    EXPECT_NEAR(p.ellipse[2]->a, 0.003, 1e-9);
    EXPECT_NEAR(p.ellipse[2]->b, 0.002, 1e-9);
}

// The user's coordinates come back: the origin is added, heights are heights again.
TEST(Results, ShowHeightsAndTheOriginOfMixedCoordinates)
{
    const Results r = results_of(
        "[run]\ndimension = 3\nmode = \"solution\"\n[earth]\nmodel = \"mixed\"\nradius = 6371000\n"
        "origin = [600000, 200000, 50]\nheight = 450\n[tables]\ntargets = \"\"\"\nname x y z code\n"
        "A 610000 215000 1050 fixed\nB 612000 215000 1150 fixed\nC 610000 217000 1250 fixed\n"
        "P 611000 216000 1350 free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\nA P 1445 0.001\nB P 1428 0.001\n"
        "C P 1418 0.001\n\"\"\"\nheight_differences = \"\"\"\nfrom to value sigma\nA P 300.25 0.000001\n\"\"\"\n");
    ASSERT_TRUE(r.adjusted) << (r.words.empty() ? "" : r.words[0]);
    EXPECT_NEAR(*point(r, "A").adjusted[0], 610000, 1e-9);
    EXPECT_NEAR(*point(r, "A").adjusted[1], 215000, 1e-9);
    EXPECT_NEAR(*point(r, "A").adjusted[2], 1050, 1e-8); // rounding of coordinates of 1e6 m
    EXPECT_NEAR(*point(r, "C").approximate[2], 1250, 1e-8);
    EXPECT_NEAR(*point(r, "P").approximate[2], 1350, 1e-8);
}

TEST(Results, ShowTheOriginOfCartesianCoordinates)
{
    const Results r =
        results_of("[run]\ndimension = 2\nmode = \"solution\"\n[earth]\nmodel = \"cartesian\"\nradius = 6371000\n"
                   "origin = [600000, 200000, 0]\n[tables]\ntargets = \"\"\"\nname x y code\nA 600100 200000 fixed\n"
                   "B 600000 200100 fixed\nP 600000 200000 free\n\"\"\"\ndistances = \"\"\"\nfrom to value sigma\n"
                   "A P 100.5 0.001\nB P 100.25 0.001\n\"\"\"\n");
    ASSERT_TRUE(r.adjusted);
    const double *x[2] = {&*point(r, "P").adjusted[0], &*point(r, "P").adjusted[1]};
    EXPECT_NEAR(std::hypot(*x[0] - 600100, *x[1] - 200000), 100.5, 1e-6);
    EXPECT_NEAR(std::hypot(*x[0] - 600000, *x[1] - 200100), 100.25, 1e-6);
    EXPECT_NEAR(*point(r, "B").adjusted[1], 200100, 1e-9);
}

// A station without angles is handed over as a target and stays a station for the user.
TEST(Results, KeepTheStationsOfTheFile)
{
    const Results r =
        results_of("[run]\ndimension = 2\nmode = \"solution\"\n[tables]\nstations = \"\"\"\nname x y code\n"
                   "P 0 0 free\n\"\"\"\ntargets = \"\"\"\nname x y code\nN 100 0 fixed\nE 0 100 fixed\n\"\"\"\n"
                   "distances = \"\"\"\nfrom to value sigma\nP N 100 0.001\nP E 100 0.001\n\"\"\"\n");
    ASSERT_EQ(r.points.size(), 3u);
    EXPECT_TRUE(point(r, "P").station);
    EXPECT_FALSE(point(r, "N").station);
    EXPECT_FALSE(r.notes.empty());
}

// Distances between fixed points, all 100 parts in a million too long.
TEST(Results, HoldAdjustedConstantsOfGroups)
{
    const std::string text =
        "[run]\ndimension = 2\n[tables]\nstations = \"\"\"\nname x y code group\nS 0 0 fixed EDM\n\"\"\"\n"
        "targets = \"\"\"\nname x y code\nN 1000 0 fixed\nE 0 500 fixed\nW 0 -800 free\n\"\"\"\n"
        "groups = \"\"\"\nname code_scale\nEDM free\n\"\"\"\n"
        "distances = \"\"\"\nfrom to value sigma constants\nS N 1000.1 0.001 yes\nS E 500.05 0.001 yes\n"
        "S W 800.08 0.001 yes\n\"\"\"\ndirections = \"\"\"\nfrom to value sigma\nS N 0 0.001\nS E 100 0.001\n"
        "S W 300 0.001\n\"\"\"\n";
    const Results r = results_of(text);
    ASSERT_TRUE(r.adjusted) << (r.words.empty() ? "" : r.words[0]);
    ASSERT_EQ(r.groups.size(), 1u);
    EXPECT_EQ(r.groups[0].name, "EDM");
    EXPECT_FALSE(r.groups[0].value[0]);
    EXPECT_NEAR(*r.groups[0].value[1], 1.0001, 1e-9);
    EXPECT_FALSE(r.groups[0].value[2]);
}

TEST(Results, HoldPairsThatTheRunFilled)
{
    const Results r = results_of(
        "[run]\ndimension = 3\nmode = \"propagation\"\n[tables]\ntargets = \"\"\"\nname x y z code\nN 100 0 0 fixed\n"
        "E 0 100 0 fixed\nU 0 0 100 fixed\nP 0 0 0 free\nQ 10 0 0 free\n\"\"\"\nbaselines = \"\"\"\n"
        "from to dx dy dz cxx cyy czz\nN P -100 0 0 4e-12 9e-12 1e-6\nN Q -90 0 0 12e-12 16e-12 3e-6\n"
        "E P 0 -100 0 1 1 1\nE Q 10 -100 0 1 1 1\nU P 0 0 -100 1 1 1\nU Q 10 0 -100 1 1 1\n\"\"\"\n"
        "pairs = \"\"\"\nfrom to\nP Q\nP N\n\"\"\"\n");
    ASSERT_TRUE(r.adjusted) << (r.words.empty() ? "" : r.words[0]);
    ASSERT_EQ(r.pairs.size(), 1u);
    EXPECT_EQ(r.pairs[0].from, "P");
    EXPECT_NEAR(r.pairs[0].deviation[0].value(), 4e-6, 1e-8); // variances below 1e-10 too
    EXPECT_NEAR(r.pairs[0].deviation[1].value(), 5e-6, 1e-8);
    EXPECT_NEAR(r.pairs[0].deviation[2].value(), 2e-3, 1e-8); // the baselines from E weigh a millionth
}

TEST(Results, HoldTheMovementsOfLumps)
{
    Model model;
    model.p.lumpmethod = 1;
    model.p.runresults = (result *)calloc(1, sizeof(result));
    result *run = model.p.runresults;
    run->irun = 1;
    run->dim = 3;
    run->nrow = 2; // the lump of the first row could not be compared
    run->ilump = array_of_int({3, 7});
    run->iepoch = array_of_int({0, 2});
    run->iref = array_of_int({0, 1});
    run->tx = array({0, 1.5});
    run->lrz = array({0, 0.25});
    run->tscale = array({0, 1.01});
    run->stx = array({0, 0.1});
    run->stscale = array({0, 0.0});
    RunOutcome outcome;
    outcome.reached = Stage::Done;
    const Results r = collect(model, outcome, "");
    model.p.freerun(model.p.runresults);
    ASSERT_EQ(r.lumps.size(), 1u);
    EXPECT_EQ(r.lumps[0].lump, 7);
    EXPECT_EQ(r.lumps[0].epoch, 2);
    EXPECT_EQ(r.lumps[0].reference, 1);
    EXPECT_EQ(r.lumps[0].translation[0], 1.5);
    EXPECT_EQ(r.lumps[0].rotation[2], 0.25);
    EXPECT_EQ(r.lumps[0].scale, 1.01);
    EXPECT_EQ(r.lumps[0].translation_deviation[0], std::optional<double>(0.1));
    EXPECT_FALSE(r.lumps[0].translation_deviation[1]);
    EXPECT_FALSE(r.lumps[0].scale_deviation);
}

// What a run without memory leaves: a record whose arrays are missing.
TEST(Results, DoWithoutArraysThatARunDidNotMake)
{
    Model model;
    model.p.runresults = (result *)calloc(1, sizeof(result));
    model.p.runresults->irun = 1;
    model.p.runresults->dim = 3;
    model.p.runresults->nstar = model.p.runresults->ntarr = model.p.runresults->ndist = 5;
    model.targets.records.resize(3);
    for (target_input &t : model.targets.records) t.status = STATUS_ON;
    model.attach();
    RunOutcome outcome;
    outcome.reached = Stage::Solving;
    EXPECT_EQ(collect(model, outcome, "").points.size(), 3u);
    outcome.reached = Stage::Done;
    const Results r = collect(model, outcome, "");
    EXPECT_FALSE(r.points[0].approximate[0]);
    EXPECT_FALSE(r.points[0].deviation[0]);
    EXPECT_TRUE(r.residuals.empty());
    model.p.freerun(model.p.runresults);
}

TEST(NotNumbers, NamesEveryQuantityThatIsNotFinite)
{
    Results r = results_of(triangle("statistics"));
    EXPECT_TRUE(not_numbers(r).empty());
    r.sigma_aposteriori = std::nan("");
    r.points[1].adjusted[2] = HUGE_VAL;
    r.points[1].ellipse[1] = EllipseResult{1, 1, std::nan("")};
    r.residuals[0].deviation = std::nan("");
    r.lumps.resize(1);
    r.lumps[0].scale = std::nan("");
    r.pairs.resize(1);
    r.pairs[0].deviation[1] = std::nan("");
    const std::string are = " that are not finite numbers: ";
    EXPECT_EQ(not_numbers(r),
              (Lines{"standard deviations of unit weight" + are + "a posteriori", "adjusted coordinates" + are + "B z",
                     "ellipses of points" + are + "B xz bearing",
                     "standard deviations of residuals" + are + "height difference A B",
                     "motions of lumps" + are + "lump 0 epoch 0 scale", "standard deviations of pairs" + are + "  y"}));
}

// A result with every quantity that there is, each found when it alone is spoilt.
TEST(NotNumbers, MissNoQuantity)
{
    Results r;
    r.points.resize(1);
    r.orientations.resize(1);
    r.residuals.resize(1);
    r.kinds.resize(1);
    r.groups.resize(1);
    r.cameras.resize(1);
    r.lumps.resize(1);
    r.pairs.resize(1);
    std::vector<double *> all;
    const auto add = [&](double &value) { all.push_back(&value); };
    const auto make = [&](std::optional<double> &value) { add(value.emplace(1.0)); };
    const auto axes_of = [&](EllipseResult &e) {
        for (double *value : {&e.a, &e.b, &e.bearing}) add(*value);
    };
    make(r.sigma_apriori);
    make(r.sigma_aposteriori);
    for (int c = 0; c < 3; c++) {
        for (auto *value : {&r.points[0].approximate[c], &r.points[0].adjusted[c], &r.points[0].deviation[c],
                            &r.orientations[0].deviation[c], &r.groups[0].value[c], &r.groups[0].deviation[c],
                            &r.lumps[0].translation_deviation[c], &r.lumps[0].rotation_deviation[c]})
            make(*value);
        axes_of(r.points[0].ellipse[c].emplace());
        axes_of(r.pairs[0].ellipse[c].emplace());
        for (double *value : {&r.orientations[0].rotation[c], &r.lumps[0].translation[c], &r.lumps[0].rotation[c]})
            add(*value);
        make(r.pairs[0].deviation[c]);
    }
    for (int k = 0; k < 10; k++)
        for (auto *value : {&r.cameras[0].value[k], &r.cameras[0].deviation[k]}) make(*value);
    make(r.lumps[0].scale_deviation);
    for (auto *value :
         {&r.residuals[0].adjusted, &r.residuals[0].deviation, &r.residuals[0].redundancy, &r.residuals[0].normalised})
        make(*value);
    for (double *value : {&r.lumps[0].scale, &r.residuals[0].value, &r.residuals[0].sigma, &r.residuals[0].residual,
                          &r.kinds[0].sigma_apriori, &r.kinds[0].sigma_aposteriori})
        add(*value);
    EXPECT_EQ(not_numbers(r), Lines());
    std::set<std::string> lines;
    for (double *value : all)
        for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
            const double good = *value;
            *value = bad;
            const Lines found = not_numbers(r);
            EXPECT_EQ(found.size(), 1u);
            if (bad == HUGE_VAL && !found.empty()) lines.insert(found[0]);
            EXPECT_TRUE(nlohmann::json::accept(to_json(r)));
            *value = good;
        }
    EXPECT_EQ(lines.size(), all.size()); // each has a name of its own
}

// A point with a held y: its standard deviation in x comes from the direction of the ellipse.
TEST(NotNumbers, AreNotLostOnTheWayFromTheEngine)
{
    Model model;
    project &p = model.p;
    p.dim = 2;
    target_input target = target_input();
    target.status = STATUS_ON;
    target.ix[1] = CODE_FIXED;
    model.targets.records = {target};
    p.targets = model.targets.records.data();
    p.ntargets = 1;
    double one[1] = {1.0}, bad[1] = {std::nan("")};
    result run = result();
    run.irun = 1;
    run.dim = 2;
    run.ntarr = 1;
    run.ell12a = run.ell12b = one;
    RunOutcome outcome;
    outcome.reached = Stage::Done;
    const auto lines = [&](double *bearing) {
        run.ell12t = bearing;
        Results results;
        collect_points({model, outcome, run}, results);
        return not_numbers(results);
    };
    EXPECT_EQ(lines(one), Lines());
    EXPECT_EQ(lines(bad), Lines{"standard deviations of coordinates that are not finite numbers:  x"});
}

// P lies on A, so that nothing determines it and its cofactors are no numbers.
TEST(NotNumbers, AreStandardDeviationsThatTheEngineGivesAsZero)
{
    const std::string plane = "[run]\ndimension = 2\nmode = \"propagation\"\n[tables]\ntargets = '''\nname x y code\n"
                              "A 0 0 fixed\nB 120 0 fixed\nC 0 90 fixed\nP ",
                      rest = " free\n'''\ndistances = '''\nfrom to value sigma\nA P 1 ";
    for (const std::string solver : {"compact", "jordan"}) {
        const auto lines = [&](const std::string &p, const std::string &sigma) {
            std::string text = plane + p + rest + sigma + "\nB P 1 " + sigma + "\n'''\n";
            text.replace(text.find("mode"), 0, "solver = \"" + solver + "\"\n");
            return not_numbers(results_of(text));
        };
        EXPECT_EQ(lines("0 0", "0.01"),
                  Lines{"standard deviations of coordinates that are not finite numbers: P x, P y"});
        EXPECT_EQ(lines("60 60", "0.01"), Lines());
        EXPECT_EQ(lines("60 60", "1e-12"), Lines()); // less than the smallest axis
    }
}

// The point that is the whole datum of its network, and the heights of three points that
// conditions hold in space, do not move.
TEST(NotNumbers, AreNotCofactorsOfZeroThatTheDatumMakes)
{
    const std::string
        levels = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 10 free\nB 11 no_datum\n"
                 "C 12 no_datum\n'''\nheight_differences = '''\nfrom to value sigma\nA B 1.001 0.001\n"
                 "B C 1.002 0.001\nA C 2.001 0.001\n'''\n",
        head = "[run]\nsolver = \"jordan\"\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\n",
        rest = "B 100 0 0 free\nC 50 80 0 free\n'''\ndistances = '''\nfrom to value sigma\n"
               "A B 100.001 0.001\nB C 94.34 0.001\nA C 94.341 0.001\nA C 94.340 0.001\nA B 100.002 0.001\n'''\n";
    for (const std::string &text : {levels, head + "A 0 0 0 free\n" + rest, head + "A 0 0 0 fixed\n" + rest}) {
        const Results r = results_of(text);
        EXPECT_TRUE(r.adjusted) << text;
        EXPECT_EQ(not_numbers(r), Lines()) << text;
    }
}

TEST(NotNumbers, FillOneLineHoweverManyThereAre)
{
    Results r;
    for (int i = 0; i < 5000; i++) {
        r.points.emplace_back();
        r.points.back().name = "P" + std::to_string(i);
        r.points.back().adjusted[0] = std::nan("");
    }
    EXPECT_EQ(not_numbers(r), (Lines{"adjusted coordinates that are not finite numbers: P0 x, P1 x, P2 x, P3 x, P4 x "
                                     "and 4995 more"}));
    r.points.resize(5);
    EXPECT_EQ(not_numbers(r),
              (Lines{"adjusted coordinates that are not finite numbers: P0 x, P1 x, P2 x, P3 x, P4 x"}));
}

// Three readings of one height difference and of one direction, the last with a gross error: the least
// absolute values keep to the two that agree.
TEST(Residuals, AreObservedLessComputedWithEverySolver)
{
    for (const std::string solver : {"compact", "jordan", "simplex"}) {
        const double kept = solver == "simplex" ? 1.0 : 2.0 / 3.0, shared = 1.0 - kept;
        const Results levelled =
            results_of("[run]\ndimension = 1\nmode = \"solution\"\nsolver = \"" + solver +
                       "\"\n[tables]\ntargets = '''\nname z code\nA 0 fixed\nB 1 free\n'''\nheight_differences = '''\n"
                       "from to value sigma\nA B 1 1\nA B 1 1\nA B 1.03 1\n'''\n");
        ASSERT_EQ(levelled.residuals.size(), 3u) << solver;
        EXPECT_NEAR(levelled.residuals[2].residual, 0.03 * kept, 1e-9) << solver;
        EXPECT_NEAR(levelled.residuals[0].residual, -0.03 * shared, 1e-9) << solver;
        EXPECT_FALSE(std::signbit(levelled.residuals[0].residual) && levelled.residuals[0].residual == 0.0) << solver;

        const Results turned = results_of(
            "[run]\ndimension = 2\nmode = \"solution\"\nsolver = \"" + solver +
            "\"\n[tables]\nstations = '''\nname x y code orientation\nS 0 0 fixed 0\n'''\ntargets = '''\nname x y "
            "code\n"
            "P 100 0 fixed\n'''\ndirections = '''\nfrom to value sigma\nS P 0 1\nS P 0 1\nS P 0.03 1\n'''\n");
        ASSERT_EQ(turned.residuals.size(), 3u) << solver;
        EXPECT_NEAR(turned.residuals[2].residual, 0.03 * kept * pi / 200.0, 1e-12) << solver;
    }
}
