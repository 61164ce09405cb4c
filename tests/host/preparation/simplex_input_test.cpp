#include "host/preparation/simplex_input.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/adjusted.h"

using namespace vornhost;

namespace {

const std::string points = "targets = '''\nname x y z code\nA 0 0 0 fixed\nB 120 0 0 fixed\nC 0 160 0 fixed\n'''\n";

std::string network(int dimension, const std::string &tables, const std::string &sections = "")
{
    return "[run]\ndimension = " + std::to_string(dimension) + "\nsolver = \"simplex\"\n" + sections + "[tables]\n" +
           tables;
}

struct Case : ReadCase {
    using ReadCase::ReadCase;
    Lines refused() { return shortened(not_for_simplex(folder.model)); }
};

bool contains(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

} // namespace

TEST(SimplexInput, TakesPlainNetworks)
{
    EXPECT_EQ(Case(network(2, points + "distances = '''\nfrom to value sigma\nA B 120 0.01\n'''\n")).refused(),
              Lines());
}

TEST(SimplexInput, RefusesAzimuthsThatTakePart)
{
    const std::string table = "azimuths = '''\nfrom to value sigma use\nA B 0 0.01 no\nA C 100 0.01 yes\n'''\n";
    EXPECT_EQ(Case(network(2, points + table)).refused(),
              Lines{"the simplex solver does not take azimuths: leave them out, or choose compact or jordan "
                    "(net.inp:14)"});
    const std::string unused = "azimuths = '''\nfrom to value sigma use\nA B 0 0.01 no\n'''\n";
    EXPECT_EQ(Case(network(2, points + unused)).refused(), Lines());
    // In one dimension angles drop out by themselves.
    const std::string heights = "height_differences = '''\nfrom to value sigma\nA B 0 1\n'''\n";
    EXPECT_EQ(Case(network(1, points + table + heights)).refused(), Lines());
}

TEST(SimplexInput, RefusesBaselines)
{
    const std::string table = "baselines = '''\nfrom to dx dy dz cxx cyy czz\nA B 120 0 0 1 1 1\n'''\n";
    EXPECT_EQ(Case(network(3, points + table)).refused(),
              Lines{"the simplex solver does not take baselines: leave them out, or choose compact or jordan "
                    "(net.inp:13)"});
}

TEST(SimplexInput, RefusesImages)
{
    Model model;
    model.path = "net.inp";
    model.p.dim = 3;
    model.p.iphoto = 1;
    image_input image = image_input();
    model.images.add(image, Source());
    EXPECT_EQ(not_for_simplex(model), Lines());
    model.images.records[0].status = 1;
    EXPECT_EQ(not_for_simplex(model), Lines{"the simplex solver does not take image coordinates: leave them out, or "
                                            "choose compact or jordan (net.inp)"});
}

TEST(SimplexInput, RefusesWeightedCoordinatesOfTheDimension)
{
    const std::string table = "stations = '''\nname x y z code_x code_y code_z sx sz status\nS 1 1 1 weighted free "
                              "weighted 0.1 0.2 used\nT 2 2 2 weighted free free 0.1 0.2 off\n'''\ndistances = "
                              "'''\nfrom to value sigma\nS T 1.7 0.1\n'''\n";
    const std::string tail = ", or choose compact or jordan (net.inp:7)";
    const std::string start = "the simplex solver does not take weighted coordinates: make ";
    EXPECT_EQ(Case(network(2, table)).refused(), Lines{start + "x of station S free or fixed" + tail});
    EXPECT_EQ(Case(network(1, table)).refused(), Lines{start + "z of station S free or fixed" + tail});
    EXPECT_EQ(Case(network(3, table)).refused(), Lines{start + "x, z of station S free or fixed" + tail});
    const std::string targets =
        "targets = '''\nname x y code_x code_y sy\nP 1 1 free weighted 0.1\nQ 9 9 free free -\n'''\ndistances = "
        "'''\nfrom to value sigma\nP Q 11.3 0.1\n'''\n";
    EXPECT_EQ(Case(network(2, targets)).refused(), Lines{start + "y of target P free or fixed" + tail});
}

TEST(SimplexInput, RefusesWeightedOrientationsOfTheDimension)
{
    Model model;
    model.path = "net.inp";
    station_input s = station_input();
    s.status = STATUS_ON;
    snprintf(s.name, sizeof s.name, "S");
    s.ir[0] = CODE_WEIGHTED;
    model.stations.add(s, Source());
    model.p.dim = 2;
    EXPECT_EQ(not_for_simplex(model), Lines());
    model.p.dim = 3;
    const Lines refused = {"the simplex solver does not take weighted orientations: make the orientation of station S "
                           "free or fixed, or choose compact or jordan (net.inp)"};
    EXPECT_EQ(not_for_simplex(model), refused);
    model.p.dim = 2;
    model.stations.records[0].ir[2] = CODE_WEIGHTED;
    EXPECT_EQ(not_for_simplex(model), refused);
    model.p.dim = 1;
    EXPECT_EQ(not_for_simplex(model), Lines());
}

TEST(SimplexInput, CountsWeightedPointsBeyondTwenty)
{
    Model model;
    model.p.dim = 1;
    for (int i = 0; i < 23; i++) {
        target_input t = target_input();
        t.status = STATUS_ON;
        t.ix[2] = CODE_WEIGHTED;
        model.targets.add(t, Source());
    }
    const Lines lines = not_for_simplex(model);
    ASSERT_EQ(lines.size(), 21u);
    EXPECT_EQ(lines[20], "weights stand at 3 more points");
}

// ---- whole runs ----

TEST(SimplexRun, IsRefusedBeforeTheEngineStarts)
{
    Case c(network(2, points + "azimuths = '''\nfrom to value sigma\nA C 100 0.01\n'''\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Refused);
    EXPECT_EQ(outcome.words.size(), 1u);
    EXPECT_EQ(c.text(), "");
}

TEST(SimplexRun, ShowsAGrossError)
{
    Case c(network(1, "targets = '''\nname z code\nA 0 fixed\nB 1 free\n'''\nheight_differences = '''\nfrom to value "
                      "sigma\nA B 1.001 0.001\nA B 1.002 0.001\nA B 1.1 0.001\n'''\n"));
    const RunOutcome outcome = c.run();
    ASSERT_TRUE(outcome.adjusted());
    EXPECT_NEAR(c.folder.model.p.runresults->zpt[1], 1.002, 1e-9);
    EXPECT_TRUE(contains(c.text(), "A        B          -0.098000 *\n"));
}

// A weight would hold the orientation of a station without directions in a free network with the
// other solvers; this one leaves it alone.
TEST(SimplexRun, LeavesAnOrientationAloneThatNothingDetermines)
{
    Case c(network(3, "stations = '''\n"
                      "name x y z\n"
                      "S 0.01 0 0\n"
                      "T 100 0 2\n"
                      "'''\n"
                      "targets = '''\n"
                      "name x y z\n"
                      "A 0 100 10.01\n"
                      "B 90 110 20\n"
                      "C 50 60 -15\n"
                      "'''\n"
                      "distances = '''\n"
                      "from to value sigma\n"
                      "S A 100.4988 0.001\n"
                      "S B 143.5270 0.001\n"
                      "S C 79.5299 0.001\n"
                      "S T 100.0200 0.001\n"
                      "T A 141.6474 0.001\n"
                      "T B 111.9107 0.001\n"
                      "T C 79.9312 0.001\n"
                      "T S 100.0200 0.001\n"
                      "A B 91.1043 0.001\n"
                      "B C 72.9726 0.001\n"
                      "A C 68.7386 0.001\n"
                      "'''\n"
                      "vertical_angles = '''\n"
                      "from to value sigma\n"
                      "S A 93.65490 0.001\n"
                      "S B 91.09996 0.001\n"
                      "S C 112.07954 0.001\n"
                      "S T 98.72693 0.001\n"
                      "T A 96.40257 0.001\n"
                      "T B 89.71577 0.001\n"
                      "T C 113.64402 0.001\n"
                      "T S 101.27307 0.001\n"
                      "'''\n"));
    const RunOutcome outcome = c.run();
    ASSERT_TRUE(outcome.adjusted()) << (outcome.words.empty() ? "" : outcome.words[0]);
    ASSERT_EQ(c.folder.model.stations.size(), 2u);
    for (const station_input &station : c.folder.model.stations.records) EXPECT_EQ(station.ir[2], CODE_FREE);
    for (const std::string &note : outcome.prepared.notes) EXPECT_FALSE(contains(note, "orientation")) << note;
    EXPECT_FALSE(contains(c.text(), " *\n"));
}

// The height of P is fixed, its position is not: a row of its own holds the height.
TEST(SimplexRun, HoldsFixedHeightsByTheirRows)
{
    const std::string shots = "A P 100.2447 0.01\nB P 100.02 0.01\nC P 100.02 0.01\n";
    Case c(network(3,
                   "targets = '''\nname x y z code_x code_y code_z\nA 0 0 0 fixed fixed fixed\nB 120 0 5 fixed fixed "
                   "fixed\nC 0 160 9 fixed fixed fixed\nP 60.001 80.002 7 free free fixed\n'''\ndistances = '''\nfrom "
                   "to value sigma\n" +
                       shots + shots + shots + "'''\n",
                   "[earth]\nmodel = \"mixed\"\n"));
    const RunOutcome outcome = c.run();
    ASSERT_TRUE(outcome.adjusted()) << (outcome.words.empty() ? "" : outcome.words[0]);
    EXPECT_TRUE(contains(c.text(), "number of fixed heights              1\n"));
    const double curvature = 100.0 * 100.0 / (2.0 * 6371007.0); // below the plane that touches the sphere
    EXPECT_NEAR(c.folder.model.p.runresults->zpt[3], 7.0 - curvature, 1e-6);
    EXPECT_EQ(c.folder.model.targets.records[3].ix[2], CODE_FIXED);
}

TEST(SimplexRun, SaysThatLumpsAreNotAdjusted)
{
    Model model;
    model.path = "net.inp";
    model.p.dim = 3;
    target_input t = target_input();
    t.status = STATUS_ON;
    t.ilump = 1;
    model.targets.add(t, Source());
    EXPECT_EQ(not_for_simplex(model), Lines());
    model.p.lumpmethod = 1;
    EXPECT_EQ(not_for_simplex(model), Lines{"the simplex solver does not adjust lumps: choose compact or jordan, or "
                                            "write method = 0 in [lumps] (net.inp)"});
}

// The example of the user guide: a distance that is 36 mm short.
TEST(SimplexRun, FindsTheSlipOfTheExample)
{
    Model model;
    Faults faults;
    ASSERT_TRUE(read_network(SOURCE_DIR "/examples/gross_error.inp", model, faults)) << faults.lines()[0];
    EXPECT_EQ(model.solver, Solver::Simplex);
    const std::unique_ptr<FILE, int (*)(FILE *)> out(tmpfile(), fclose);
    Recorder messages;
    ASSERT_TRUE(vornhost::run(model, out.get(), messages).adjusted());
    std::string text;
    rewind(out.get());
    for (int c = fgetc(out.get()); c != EOF; c = fgetc(out.get())) text += (char)c;
    EXPECT_TRUE(contains(text, "S2       P           0.033596 *\n"));
    EXPECT_EQ(text.find(" *\n"), text.rfind(" *\n"));
    model.p.freerun(model.p.runresults);
}

// Nothing but distances on a line: the rotation about the line moves no point.
TEST(SimplexRun, SaysWhatStoodInTheWay)
{
    Case c(network(3, "targets = '''\nname x y z\nA 0 0 0\nB 120 0 0\nC 260 0 0\nD 300 0 0\n'''\ndistances = "
                      "'''\nfrom to value sigma\nA B 120 0.01\nB C 140 0.01\nA C 260 0.01\nA D 300 0.01\nB D 180 "
                      "0.01\nC D 40 0.01\n'''\n"));
    const RunOutcome outcome = c.run();
    EXPECT_EQ(outcome.reached, Stage::Solving);
    EXPECT_EQ(outcome.code, -3);
    ASSERT_EQ(outcome.words.size(), 2u);
    EXPECT_EQ(outcome.words[0], "the simplex solver could not solve the network (Program stops in resolution)");
    EXPECT_EQ(outcome.words[1].rfind("in a free network the datum points must hold it, and points on one line", 0), 0u);
}

// The direction straight up ends its list; the vertical angles behind it still count.
TEST(SimplexRun, GoesOnBehindASightStraightUp)
{
    Case c(network(3, "stations = '''\nname x y z\nS 50 50 0.3\n'''\ntargets = '''\nname x y z code\nA 0 0 0 fixed\nB "
                      "120 0 0 fixed\nC 0 160 0 fixed\nT 50 50 9 fixed\n'''\ndistances = '''\nfrom to value "
                      "sigma\nS A 70.7107 0.01\nS B 86.0233 0.01\nS C 120.8305 0.01\n'''\ndirections = '''\nfrom to "
                      "value sigma\nS A 250 0.01\nS B 350 0.01\nS T 0 0.01\n'''\nvertical_angles = '''\nfrom to value "
                      "sigma\nS A 100 0.01\nS B 100 0.01\nS C 100 0.02\n'''\n"));
    const RunOutcome outcome = c.run();
    ASSERT_TRUE(outcome.adjusted()) << (outcome.words.empty() ? "" : outcome.words[0]);
    EXPECT_TRUE(contains(c.text(), "\nProblem with horizontal direction 2\n\nSimplex loop first step\n"));
    EXPECT_TRUE(contains(c.text(), "S        T           0.000000  \n"));
    EXPECT_NEAR(c.folder.model.p.runresults->zpt[0], 0.0, 1e-4);
}

TEST(SimplexRun, SaysThatTheTableauCouldNotBeBuilt)
{
    Case c(network(3,
                   "stations = '''\nname x y z\nS 50 50 0\n'''\ntargets = '''\nname x y z code\nA 0 0 0 fixed\nB 120 "
                   "0 0 fixed\nC 0 160 0 fixed\nT 50 50 9 fixed\n'''\ndistances = '''\nfrom to value sigma\nS A 70.71 "
                   "0.01\nS B 86.02 0.01\nS C 120.83 0.01\nS T 9 0.01\n'''\ndirections = '''\nfrom to value sigma\nS "
                   "A 250 0.01\nS B 350 0.01\nS T 0 0.01\n'''\n"));
    class Yes : public Recorder {
    public:
        int decision(char *question, char *) override { return contains(question, "balance"); }
    } yes;
    const RunOutcome outcome = vornhost::run(c.folder.model, c.report, yes);
    EXPECT_EQ(outcome.code, -2);
    ASSERT_EQ(outcome.words.size(), 2u);
    EXPECT_EQ(outcome.words[0].rfind("the tableau of the simplex solver could not be built (", 0), 0u);
}
