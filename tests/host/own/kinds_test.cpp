// Kinds of observations that the engine does not know, each against the same thing said by other kinds.

#include "host/own/two_ways.h"

namespace {

const char plane[] = "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\n"
                     "C 60.02 79.97 free\nD 20 90.03 free\n'''\n";
const char plane_distances[] = "distances = '''\nfrom to value sigma\nA C 100.003 0.003\nB C 89.444 0.003\n"
                               "A D 92.197 0.003\nC D 41.232 0.003\n'''\n";

const char space[] = "[run]\ndimension = 3\n[tables]\ntargets = '''\nname x y z code\nA 0 0 0 fixed\n"
                     "B 100 0 5 fixed\nC 60.02 79.97 10 free\nD 20 90.03 -7 free\n'''\n";

} // namespace

// A free orientation takes the mean of two directions with it: what is left is their difference, with twice the
// variance of each.
TEST(Angles, AreTwoDirectionsWithAnOrientationOfTheirOwn)
{
    const std::string text = std::string(plane) + plane_distances;
    const SolvedNetwork angles = solve_text(text + "angles = '''\nat from to value sigma\nA B C 59.0334 0.002\n"
                                                   "B C A 70.4833 0.002\nC A D 81.9 0.002\n'''\n");
    const std::string sigma = " 0.001414213562373095\n";
    const SolvedNetwork directions = solve_text(text + "directions = '''\nfrom to setup value sigma\nA B 1 10" + sigma +
                                                "A C 1 69.0334" + sigma + "B C 1 399" + sigma + "B A 1 69.4833" +
                                                sigma + "C A 1 20" + sigma + "C D 1 101.9" + sigma + "'''\n");
    expect_same(angles, directions);
    const auto residuals = residuals_of(angles, "angle");
    ASSERT_EQ(residuals.size(), 3u);
    const auto pairs = residuals_of(directions, "direction");
    ASSERT_EQ(pairs.size(), 6u);
    for (size_t i = 0; i < 3; i++) {
        EXPECT_NEAR(residuals[i].residual, pairs[2 * i + 1].residual - pairs[2 * i].residual, 1e-12);
        EXPECT_NEAR(std::fabs(*residuals[i].normalised), std::fabs(*pairs[2 * i].normalised), 1e-7);
    }
    EXPECT_EQ(residuals[0].from, "B");
    EXPECT_EQ(residuals[0].to, "C");
    EXPECT_EQ(angles.results().words_of(residuals[0]).at, "A");
}

// The instrument leans by 20 and 30 mgon, which it knows; its orientation has no part in an angle.
TEST(Angles, OfATiltedInstrumentAreDifferencesOfItsDirections)
{
    const std::string text =
        "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code levelled rx1 rx2 code_rx1 code_rx2\n"
        "A 0 0 0 fixed no 0.02 0.03 fixed fixed\n'''\n"
        "targets = '''\nname x y z code\nB 100 0 30 fixed\nC 60.02 79.97 -20 free\n'''\n"
        "distances = '''\nfrom to value sigma\nA C 101.98 0.003\nB C 102.5 0.003\n'''\n"
        "vertical_angles = '''\nfrom to value sigma\nA C 112.5 0.003\n'''\n";
    const std::string sigma = " 0.001414213562373095\n";
    expect_same(
        solve_text(text + "angles = '''\nat from to value sigma\nA B C 59.033 0.002\n'''\n"),
        solve_text(text + "directions = '''\nfrom to value sigma\nA B 0" + sigma + "A C 59.033" + sigma + "'''\n"));
}

TEST(Bearings, AreAzimuthsWithoutEarth)
{
    const std::string text = std::string(plane) + plane_distances;
    const SolvedNetwork bearings =
        solve_text(text + "bearings = '''\nfrom to value sigma\nA C 59.03 0.002\nD C 384.41 0.002\n'''\n");
    expect_same(bearings,
                solve_text(text + "azimuths = '''\nfrom to value sigma\nA C 59.03 0.002\nD C 384.41 0.002\n'''\n"));
    ASSERT_EQ(residuals_of(bearings, "bearing").size(), 2u);
}

TEST(Bearings, KnowNothingOfTheMeridian)
{
    const std::string bearings =
        std::string(plane) + plane_distances + "bearings = '''\nfrom to value sigma\nA C 59.03 0.002\n'''\n";
    expect_same(solve_text(bearings),
                solve_text("[earth]\nlatitude = 47\nazimuth_rotation = 12\nradius = 6380000\n" + bearings));
}

// In space they say of the plan what distances say in the plane.
TEST(HorizontalDistances, TellOfThePlanAlone)
{
    const std::string rows = "from to value sigma\nA C 100.003 0.003\nB C 89.444 0.003\nA D 92.197 0.003\n"
                             "C D 41.232 0.003\nB D 120.418 0.003\n'''\n";
    const SolvedNetwork in_plane = solve_text(std::string(plane) + "distances = '''\n" + rows);
    const SolvedNetwork in_space = solve_text(std::string(space) +
                                              "height_differences = '''\nfrom to value sigma\nA C 10.01 0.002\n"
                                              "A D -7.02 0.002\nC D -17.03 0.002\n'''\nhorizontal_distances = '''\n" +
                                              rows);
    ASSERT_TRUE(in_plane.adjusted() && in_space.adjusted()) << in_space.words();
    for (const char *name : {"C", "D"})
        for (int k = 0; k < 2; k++)
            EXPECT_NEAR(*in_plane.point(name).adjusted[k], *in_space.point(name).adjusted[k], 1e-8);
}

TEST(ScaleBars, AreDistancesBetweenTheMarks)
{
    const std::string rows = "from to value sigma\nA C 100.503 0.003\nB C 89.584 0.003\nA D 92.467 0.003\n"
                             "C D 44.603 0.003\nB D 121.018 0.003\nA C 100.504 0.003\n'''\n"
                             "coordinates = '''\nname z sz\nC 10 0.01\nD -7 0.01\n'''\n";
    expect_same(solve_text(std::string(space) + "scale_bars = '''\n" + rows),
                solve_text(std::string(space) + "distances = '''\n" + rows));
    expect_same(solve_text(std::string(plane) + plane_distances +
                           "scale_bars = '''\nfrom to value sigma\nB D 120.4 "
                           "0.002\n'''\n"),
                solve_text(with(std::string(plane) + plane_distances, "C D 41", "B D 120.4 0.002\nC D 41")));
}

TEST(ObservedCoordinates, AreWeightedCoordinates)
{
    const std::string weighted =
        with(with(std::string(plane) + plane_distances, "name x y code\nA 0 0 fixed\nB 100 0 fixed",
                  "name x y code sx sy\nA 0 0 fixed - -\nB 100 0 fixed - -"),
             "C 60.02 79.97 free\nD 20 90.03 free", "C 60.02 79.97 weighted 0.004 0.006\nD 20 90.03 free - -");
    const SolvedNetwork observed = solve_text(std::string(plane) + plane_distances +
                                              "coordinates = '''\nname x y sx sy\nC 60.02 79.97 0.004 0.006\n'''\n");
    const SolvedNetwork held = solve_text(weighted);
    expect_same(observed, held);
    const auto rows = residuals_of(observed, "observed coordinate");
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[1].component, "y");
    EXPECT_NEAR(rows[1].value, 79.97, 1e-12);
    EXPECT_NEAR(rows[1].residual, residuals_of(held, "weighted coordinate")[1].residual, 1e-12);
}

// The origin of the file lies in between.
TEST(ObservedCoordinates, CountFromTheOriginOfTheFile)
{
    const std::string text = "[run]\ndimension = 3\n[earth]\nmodel = \"cartesian\"\norigin = [1000, 2000, 300]\n"
                             "[tables]\ntargets = '''\nname x y z code\nP 1100 2100 310 free\n'''\n"
                             "coordinates = '''\nname x y z sx sy sz\nP 1100.01 2100.02 310.03 0.01 0.01 0.01\n"
                             "P 1100.03 2100.02 310.05 0.01 0.01 0.01\n'''\n";
    const SolvedNetwork solved = solve_text(text);
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_NEAR(*solved.point("P").adjusted[0], 1100.02, 1e-9);
    EXPECT_NEAR(*solved.point("P").adjusted[1], 2100.02, 1e-9);
    EXPECT_NEAR(*solved.point("P").adjusted[2], 310.04, 1e-9);
    EXPECT_EQ(solved.results().degrees_of_freedom, 3);
}

TEST(CoordinateDifferences, AreBaselinesWithoutCorrelation)
{
    const std::string heading = space;
    const SolvedNetwork differences =
        solve_text(heading + "coordinate_differences = '''\nfrom to dx dy dz sx sy sz\nA C 60.01 79.98 10.01 0.01 0.02 "
                             "0.03\nB C -39.98 79.99 5.02 0.01 0.02 0.03\nC D -40 10.05 -17 0.01 0.01 0.02\n'''\n");
    const SolvedNetwork baselines = solve_text(
        heading + "baselines = '''\nfrom to dx dy dz cxx cyy czz\nA C 60.01 79.98 10.01 1e-4 4e-4 9e-4\nB C -39.98 "
                  "79.99 5.02 1e-4 4e-4 9e-4\nC D -40 10.05 -17 1e-4 1e-4 4e-4\n'''\n");
    expect_same(differences, baselines);
}

// Heights alone: a difference of the third coordinate is a height difference.
TEST(CoordinateDifferences, MayHaveOneComponent)
{
    const std::string text = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101 free\n"
                             "C 102 free\n'''\n";
    expect_same(solve_text(text + "coordinate_differences = '''\nfrom to dz sz\nA B 1.001 0.01\nB C 1.002 0.01\n"
                                  "C A -2.007 0.02\n'''\n"),
                solve_text(text + "height_differences = '''\nfrom to value sigma\nA B 1.001 0.01\nB C 1.002 0.01\n"
                                  "C A -2.007 0.02\n'''\n"));
}

TEST(Kinds, WithoutADatumSayWhatIsOpen)
{
    const std::string free = with(with(plane, "A 0 0 fixed", "A 0 0 no_datum"), "B 100 0 fixed", "B 100 0 no_datum");
    const SolvedNetwork angles =
        solve_text(with(with(free, "79.97 free", "79.97 no_datum"), "90.03 free", "90.03 no_datum") +
                   "angles = '''\nat from to value sigma\nA B C 59.0334 0.002\nB C A 70.4833 0.002\nC A D 81.9 0.002\n"
                   "D C A 60 0.002\n'''\n");
    EXPECT_EQ(angles.code(), "datum: no datum");
}

// One free network of bearings: no turn, but two shifts and the scale are open, and the datum points hold them.
TEST(Kinds, LeaveOpenInAFreeNetworkWhatTheyDoNotSee)
{
    const std::string free = with(with(plane, "A 0 0 fixed", "A 0 0 free"), "B 100 0 fixed", "B 100 0 free");
    const auto datum = [&](const std::string &tables) { return solve_text(free + tables).results().datum; };
    const std::string five = "A B 0.001 0.002\nA C 59.03 0.002\nB C 129.52 0.002\nC D 184.4 0.002\nA D 86.1 0.002\n"
                             "B D 146.4 0.002\n'''\n";
    EXPECT_NE(datum("bearings = '''\nfrom to value sigma\n" + five).find("2 shifts, scale"), std::string::npos)
        << datum("bearings = '''\nfrom to value sigma\n" + five);
    const std::string bars = "A B 100 0.01\nA C 100.003 0.01\nB C 89.444 0.01\nA D 92.197 0.01\nC D 41.232 0.01\n'''\n";
    EXPECT_NE(datum("scale_bars = '''\nfrom to value sigma\n" + bars).find("2 shifts, 1 turn"), std::string::npos)
        << datum("scale_bars = '''\nfrom to value sigma\n" + bars);
}

TEST(Kinds, StandInTheAccountsWithTheReasonOfEachLeftOut)
{
    const SolvedNetwork solved =
        solve_text(with(std::string(plane), "D 20 90.03 free", "D 20 90.03 free\nE 5 5 free") + plane_distances +
                   "targets = '''\nname x y status\nF 1 1 off\n'''\nangles = '''\nat from to value sigma use\n"
                   "A B C 59.0334 0.002 yes\nA B F 59.0334 0.002 yes\nA B C 1 0.002 no\n'''\n"
                   "coordinates = '''\nname x y sx sy\nE 5 5 0.01 0.01\nF 5 5 0.01 0.01\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    const std::vector<vornhost::Account> &accounts = solved.results().accounts;
    ASSERT_EQ(accounts.size(), 3u);
    EXPECT_EQ(accounts[1].kind, "angles");
    EXPECT_EQ(accounts[1].read, 3);
    EXPECT_EQ(accounts[1].used, 1);
    ASSERT_EQ(accounts[1].left_out.size(), 2u);
    EXPECT_EQ(accounts[1].left_out[0].at, "A");
    EXPECT_EQ(accounts[1].left_out[0].reason, "point F is off");
    EXPECT_EQ(accounts[1].left_out[1].reason, "use = no in the file");
    EXPECT_EQ(accounts[2].kind, "observed coordinates");
    EXPECT_EQ(accounts[2].used, 1);
    EXPECT_NE(solved.report.find("angles left out"), std::string::npos);
}

TEST(Kinds, TakeNoValuesInAPlan)
{
    const SolvedNetwork solved =
        solve_text(with(std::string(plane), "dimension = 2", "dimension = 2\nmode = \"propagation\"") +
                   "angles = '''\nat from to value sigma\nA B C - 0.002\nB C A - 0.002\nA B D - 0.002\nB D A - 0.002\n"
                   "'''\nscale_bars = '''\nfrom to value sigma\nC D - 0.001\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_TRUE(solved.point("C").deviation[0].has_value());
    EXPECT_FALSE(solved.results().residuals[0].observed);
}

TEST(Kinds, AreRefusedByTheEngineInOneLine)
{
    const SolvedNetwork solved =
        solve_text(std::string(plane) + plane_distances + "angles = '''\nat from to value sigma\nA B C 59 0.002\n'''\n",
                   Solver::Compact);
    EXPECT_FALSE(solved.adjusted());
    EXPECT_EQ(solved.words(), "the engine does not take table angles (net.inp:20): choose the solver sparse\n");
}

// ---- points without a height ----

// The plan of P is known from its direction and its horizontal distance; what needs its height stays out.
TEST(AbsentHeights, LeaveOutWhatNeedsThemAndNothingElse)
{
    const SolvedNetwork solved =
        solve_text("[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\nA 0 0 0 fixed\n'''\n"
                   "targets = '''\nname x y z code code_z\nB 100 0 5 fixed fixed\nP 60 80 - free absent\n"
                   "Q 60 -80 3 free free\n'''\n"
                   "directions = '''\nfrom to value sigma\nA B 0 0.001\nA P 59.03 0.001\nA Q 340.9665 0.001\n'''\n"
                   "horizontal_distances = '''\nfrom to value sigma\nA P 100.001 0.002\nB P 89.443 0.002\n'''\n"
                   "distances = '''\nfrom to value sigma\nA Q 100.045 0.002\nA P 100.3 0.002\n'''\n"
                   "vertical_angles = '''\nfrom to value sigma\nA Q 98.09 0.002\nA P 90 0.002\n'''\n"
                   "coordinates = '''\nname x y z sx sy sz\nP 60 80 7 0.01 0.01 0.01\n'''\n");
    ASSERT_TRUE(solved.adjusted()) << solved.words();
    EXPECT_EQ(solved.results().notes, Lines()); // nothing was computed for P
    EXPECT_TRUE(solved.point("P").deviation[0].has_value());
    EXPECT_FALSE(solved.point("P").adjusted[2].has_value());
    for (const vornhost::Account &a : solved.results().accounts) {
        const bool needs = a.kind == "distances" || a.kind == "vertical angles";
        EXPECT_EQ(a.left_out.size(), needs ? 1u : 0u) << a.kind;
        if (needs) {
            EXPECT_EQ(a.left_out[0].reason, "z of P is absent");
        }
    }
    EXPECT_EQ(residuals_of(solved, "observed coordinate").size(), 2u);
}
