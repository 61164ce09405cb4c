#include "adjust/datum.h"

#include <gtest/gtest.h>

#include <string>

#include "adjust/small_net.h"

using namespace vornadjust;

namespace {

// "2 shift x y, turn z" as one string: kinds with their axes, "?" for a direction that is no axis.
std::string words(const std::vector<NamedMotion> &motions)
{
    std::string out;
    for (const NamedMotion &m : motions) {
        out += out.empty() ? "" : " ";
        out += m.kind == MotionKind::shift ? "shift-" : m.kind == MotionKind::turn ? "turn-" : "scale";
        if (m.kind == MotionKind::scale) continue;
        int axis = -1;
        for (int k = 0; k < 3; k++)
            if (std::fabs(m.direction[k] - 1) < 1e-9) axis = k;
        out += axis < 0 ? "?" : std::string(1, "xyz"[axis]);
    }
    return out;
}

// Largest answer of a unit row to the open motions.
double largest_answer(const UnitRows &rows, const Datum &datum)
{
    double most = 0;
    for (int j = 0; j < datum.motions.cols; j++) {
        std::vector<double> scaled(datum.motions.col(j), datum.motions.col(j) + datum.motions.rows);
        for (std::size_t u = 0; u < scaled.size(); u++) scaled[u] /= rows.column_factor[u];
        for (int r = 0; r < rows.rows(); r++) most = std::max(most, std::fabs(response(rows, r, scaled.data())));
    }
    return most;
}

// Four points of a plane square with sides of `size`, a little out of square.
struct Square : SmallNet {
    int a, b, c, d;
    explicit Square(Code code = Code::datum, double size = 1000, double x = 0, double y = 0) : SmallNet(Space::plane)
    {
        a = plane_point(x, y, code);
        b = plane_point(x + 1.1 * size, y + 0.1 * size, code);
        c = plane_point(x + size, y + 0.9 * size, code);
        d = plane_point(x - 0.1 * size, y + size, code);
    }
    void all_distances(int constants = -1)
    {
        for (int i = a; i <= d; i++)
            for (int j = i + 1; j <= d; j++) distance(i, j, constants);
    }
    void all_directions()
    {
        directions(a, {b, c, d});
        directions(b, {a, c, d});
        directions(c, {a, b, d});
        directions(d, {a, b, c});
    }
};

} // namespace

TEST(Datum, OfFreeLevellingIsOneShift)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 4; i++) net.height(100 + i * i);
    for (int i = 0; i < 4; i++) net.level(i, (i + 1) % 4);
    const UnitRows rows = net.rows();
    const Datum datum = find_datum(rows);
    EXPECT_EQ(datum.state, DatumState::by_points);
    EXPECT_EQ(words(datum.open), "shift-z");
    EXPECT_LT(largest_answer(rows, datum), 1e-14);
    for (int p = 0; p < 4; p++) EXPECT_NEAR(std::fabs(datum.conditions(3 * p + 2, 0)), 0.5, 1e-14);
    EXPECT_EQ(datum.holding[6].of_kind[static_cast<int>(Kind::height_difference)], 4);
}

TEST(Datum, OfPlaneDistancesHasTwoShiftsAndATurn)
{
    for (double size : {1.0, 1e3, 1e5})
        for (double grid : {0.0, 5e6}) {
            Square net(Code::datum, size, grid, grid);
            net.all_distances();
            const UnitRows rows = net.rows();
            const Datum datum = find_datum(rows);
            EXPECT_EQ(datum.state, DatumState::by_points);
            EXPECT_EQ(words(datum.open), "shift-x shift-y turn-z");
            EXPECT_EQ(datum.open[2].centred, false);
            EXPECT_LT(largest_answer(rows, datum), 1e-13);
            EXPECT_NEAR(datum.least_hold, 1, 1e-12);
            EXPECT_EQ(datum.holding[6].of_kind[static_cast<int>(Kind::plane_distance)], 6);
            EXPECT_EQ(dense_defect(rows), 3);
        }
}

TEST(Datum, OfPlaneDirectionsHasAScaleToo)
{
    for (double size : {1.0, 1e3, 1e5})
        for (double grid : {0.0, 5e6}) {
            Square net(Code::datum, size, grid, grid);
            net.all_directions();
            const UnitRows rows = net.rows();
            const Datum datum = find_datum(rows);
            EXPECT_EQ(words(datum.open), "shift-x shift-y turn-z scale");
            EXPECT_LT(largest_answer(rows, datum), 1e-13);
            EXPECT_EQ(dense_defect(rows), 4);
        }
}

TEST(Datum, MotionsTurnTheOrientationsAlong)
{
    Square net;
    net.all_directions();
    net.all_distances();
    const Datum datum = find_datum(net.rows());
    ASSERT_EQ(datum.open.size(), 3u);
    // An infinitesimal turn w moves d = x - c by w (-dy, dx) and every orientation by -w.
    for (int j = 0; j < 3; j++) {
        const double *m = datum.motions.col(j);
        const double *x = net.model.value.data();
        const double dx = x[3] - x[0], dy = x[4] - x[1];
        const double w = (-(m[3] - m[0]) * dy + (m[4] - m[1]) * dx) / (dx * dx + dy * dy);
        for (const auto &s : net.model.setups) EXPECT_NEAR(m[s.first + 2], -w, 1e-15);
    }
}

TEST(Datum, IsHeldByTwoFixedPoints)
{
    Square net(Code::free);
    for (int u : {0, 1, 3, 4}) net.model.code[u] = Code::fixed;
    net.all_directions();
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::held);
    EXPECT_EQ(datum.motions.cols, 0);
    EXPECT_EQ(datum.holding[0].fixed, 2);
    EXPECT_EQ(datum.holding[6].fixed, 4);
}

TEST(Datum, LeavesTheTurnAboutOneFixedPointToTheDatumPoints)
{
    Square net;
    net.model.code[0] = net.model.code[1] = Code::fixed;
    net.all_distances();
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::by_points);
    EXPECT_EQ(words(datum.open), "turn-z");
    EXPECT_TRUE(datum.open[0].centred);
    EXPECT_NEAR(datum.open[0].centre[0], 0, 1e-10);
    EXPECT_NEAR(datum.open[0].centre[1], 0, 1e-10);
    EXPECT_EQ(datum.motions(0, 0), 0);
}

TEST(Datum, TakesTheOrientationFromAnAzimuth)
{
    Square net;
    net.model.code[0] = net.model.code[1] = Code::fixed;
    net.all_distances();
    net.azimuth(net.b, net.c);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::held);
    EXPECT_EQ(datum.holding[5].of_kind[static_cast<int>(Kind::azimuth)], 1);
    EXPECT_EQ(datum.holding[5].of_kind[static_cast<int>(Kind::plane_distance)], 0);
}

TEST(Datum, CountsWhatHoldsTheTurnAfterOrientationsAreTakenOut)
{
    Square net;
    net.all_directions();
    net.all_distances();
    net.azimuth(net.a, net.b);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(words(datum.open), "shift-x shift-y");
    EXPECT_EQ(datum.holding[5].of_kind[static_cast<int>(Kind::direction)], 0);
    EXPECT_EQ(datum.holding[5].of_kind[static_cast<int>(Kind::azimuth)], 1);
    EXPECT_EQ(datum.holding[6].of_kind[static_cast<int>(Kind::plane_distance)], 6);
    EXPECT_EQ(datum.holding[6].of_kind[static_cast<int>(Kind::direction)], 0);
}

TEST(Datum, AHeldOrientationHoldsTheTurn)
{
    Square net;
    net.all_distances();
    const int s = net.setup(net.a, Code::fixed);
    net.direction(s, net.b);
    EXPECT_EQ(words(find_datum(net.rows()).open), "shift-x shift-y");
}

TEST(Datum, RefusesMotionsThatTheDatumPointsDoNotCarry)
{
    // One datum point holds the shifts; the turn about it stays.
    Square net(Code::free);
    net.model.code[3] = net.model.code[4] = Code::datum;
    net.all_distances();
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::not_carried);
    EXPECT_EQ(words(datum.not_carried), "turn-z");
    ASSERT_TRUE(datum.not_carried[0].centred);
    EXPECT_NEAR(datum.not_carried[0].centre[0], 1100, 1e-9);
    EXPECT_NEAR(datum.not_carried[0].centre[1], 100, 1e-9);
}

TEST(Datum, WithoutDatumPointsCarriesNothing)
{
    Square net(Code::free);
    net.all_distances();
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::not_carried);
    EXPECT_EQ(words(datum.not_carried), "shift-x shift-y turn-z");
}

TEST(Datum, TellsADatumInACornerOfTheNetwork)
{
    Square net(Code::free, 1e5);
    const int near = net.plane_point(0.1, 0);
    net.model.code[0] = net.model.code[1] = Code::datum;
    net.all_distances();
    net.distance(near, net.b);
    net.distance(near, net.c);
    net.distance(near, net.d);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::by_points);
    EXPECT_TRUE(datum.weakly_carried);
    EXPECT_GT(datum.least_hold, 1e-8);
}

TEST(Datum, RefusesTwoLoosePartsWhenOneIsOpen)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 6; i++) net.height(100 + i * i);
    net.model.code[2] = Code::fixed;
    for (int i = 0; i < 3; i++) net.level(i, (i + 1) % 3), net.level(3 + i, 3 + (i + 1) % 3);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::loose);
    EXPECT_EQ(datum.loose_parts, std::vector<int>{1});
    EXPECT_EQ(datum.parts.points[1], (std::vector<int>{3, 4, 5}));
}

TEST(Datum, AcceptsTwoPartsThatAreHeldEach)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 6; i++) net.height(100 + i * i);
    net.model.code[2] = net.model.code[11] = Code::fixed;
    for (int i = 0; i < 3; i++) net.level(i, (i + 1) % 3), net.level(3 + i, 3 + (i + 1) % 3);
    EXPECT_EQ(find_datum(net.rows()).state, DatumState::held);
}

TEST(Datum, AWeightedHeightHoldsTheShift)
{
    SmallNet net(Space::heights);
    for (int i = 0; i < 3; i++) net.height(100 + i * i);
    for (int i = 0; i < 3; i++) net.level(i, (i + 1) % 3);
    net.weighted(5);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::held);
    EXPECT_EQ(datum.holding[2].of_kind[static_cast<int>(Kind::unknown)], 1);
}

TEST(Datum, AnUnknownScaleOfAllDistancesLeavesTheScaleOpen)
{
    Square net;
    const int k = net.constants(Code::fixed, Code::free);
    net.all_directions();
    net.all_distances(k);
    const UnitRows rows = net.rows();
    const Datum datum = find_datum(rows);
    EXPECT_EQ(words(datum.open), "shift-x shift-y turn-z scale");
    EXPECT_LT(largest_answer(rows, datum), 1e-13);
    EXPECT_EQ(dense_defect(rows), 4);
}

TEST(Datum, AnUnknownAdditionLeavesTheScaleHeld)
{
    Square net;
    const int k = net.constants(Code::free, Code::fixed);
    net.all_directions();
    net.all_distances(k);
    EXPECT_EQ(words(find_datum(net.rows()).open), "shift-x shift-y turn-z");
}

TEST(Datum, AWeightedScaleHoldsTheScale)
{
    Square net;
    const int k = net.constants(Code::fixed, Code::free);
    net.all_directions();
    net.all_distances(k);
    net.weighted(net.model.constants[k].first + 1);
    EXPECT_EQ(words(find_datum(net.rows()).open), "shift-x shift-y turn-z");
}

TEST(Datum, AScaleSharedWithAHeldPartHoldsTheOtherInScale)
{
    // Two squares measured with one instrument of unknown scale; the first is held by two fixed points, the other by
    // one fixed point and an azimuth: its scale comes through the instrument.
    SmallNet net(Space::plane);
    for (int i = 0; i < 2; i++) {
        net.plane_point(5000 * i, 0, Code::fixed);
        net.plane_point(5000 * i + 100, 10, i == 0 ? Code::fixed : Code::free);
        net.plane_point(5000 * i + 90, 110, Code::free);
    }
    const int k = net.constants(Code::fixed, Code::free);
    for (int i : {0, 3}) {
        net.distance(i, i + 1, k);
        net.distance(i + 1, i + 2, k);
        net.distance(i + 2, i, k);
    }
    net.azimuth(3, 4);
    EXPECT_EQ(find_datum(net.rows()).state, DatumState::held);
    // Without the fixed points of the first part neither scale is known.
    net.model.code[3] = net.model.code[4] = Code::free;
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::loose);
    EXPECT_EQ(datum.loose_parts, (std::vector<int>{0, 1}));
}

namespace {

// Eight points of a box in space, sides of `size`, a little out of square.
struct Box : SmallNet {
    explicit Box(double size = 100, double grid = 0) : SmallNet(Space::space)
    {
        for (int i = 0; i < 8; i++)
            point(grid + size * ((i & 1) + 0.01 * i), grid + size * ((i >> 1 & 1) - 0.02 * i * i),
                  size * (i >> 2) + 0.013 * i * size);
    }
    void all_distances() { all_distances_among(8); }
    void polar(int from, bool distances, Code tilt = Code::fixed)
    {
        const int s = setup(from, Code::free, tilt);
        for (int i = 0; i < 8; i++) {
            if (i == from) continue;
            direction(s, i);
            vertical(s, i);
            if (distances) distance(from, i);
        }
    }
};

} // namespace

TEST(Datum, OfSpaceDistancesHasSixMotions)
{
    for (double size : {1.0, 1e5})
        for (double grid : {0.0, 5e6}) {
            Box net(size, grid);
            net.all_distances();
            const UnitRows rows = net.rows();
            const Datum datum = find_datum(rows);
            EXPECT_EQ(words(datum.open), "shift-x shift-y shift-z turn-x turn-y turn-z");
            EXPECT_EQ(dense_defect(rows), 6);
        }
}

TEST(Datum, OfLevelledInstrumentsHasNoTilt)
{
    Box net;
    net.polar(0, true);
    net.polar(7, true);
    const UnitRows rows = net.rows();
    EXPECT_EQ(words(find_datum(rows).open), "shift-x shift-y shift-z turn-z");
    EXPECT_EQ(dense_defect(rows), 4);
}

TEST(Datum, OfAnglesInSpaceHasAScale)
{
    Box net;
    net.polar(0, false);
    net.polar(7, false);
    EXPECT_EQ(words(find_datum(net.rows()).open), "shift-x shift-y shift-z turn-z scale");
}

TEST(Datum, TiltsThatAreUnknownLeaveAllTurnsOpen)
{
    Box net;
    net.polar(0, true, Code::free);
    net.polar(7, true, Code::free);
    const UnitRows rows = net.rows();
    const Datum datum = find_datum(rows);
    EXPECT_EQ(words(datum.open), "shift-x shift-y shift-z turn-x turn-y turn-z");
    EXPECT_LT(largest_answer(rows, datum), 1e-12);
    EXPECT_EQ(dense_defect(rows), 6);
}

TEST(Datum, OneTargetThatIsFixedInSpaceLeavesATurn)
{
    Box net;
    for (int u = 9; u < 12; u++) net.model.code[u] = Code::fixed;
    net.polar(0, true);
    net.polar(7, true);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::by_points);
    EXPECT_EQ(words(datum.open), "turn-z");
    for (int k = 0; k < 2; k++) EXPECT_NEAR(datum.open[0].centre[k], net.model.value[9 + k], 1e-9);
}

TEST(Datum, TwoDatumPointsOneAboveTheOtherDoNotHoldTheTurnOfALevelledNetwork)
{
    Box net;
    for (Code &c : net.model.code) c = Code::free;
    for (int p : {0, 4})
        for (int k = 0; k < 3; k++) net.model.code[3 * p + k] = Code::datum;
    net.model.value[12] = net.model.value[0], net.model.value[13] = net.model.value[1];
    net.polar(1, true);
    net.polar(7, true);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::not_carried);
    EXPECT_EQ(words(datum.not_carried), "turn-z");
    for (int k = 0; k < 2; k++) EXPECT_NEAR(datum.not_carried[0].centre[k], net.model.value[k], 1e-9);
}

TEST(Datum, TwoDatumPointsInSpaceLeaveTheTurnAboutTheirLine)
{
    Box net;
    net.all_distances();
    for (Code &c : net.model.code) c = Code::free;
    for (int u = 0; u < 6; u++) net.model.code[u] = Code::datum;
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(datum.state, DatumState::not_carried);
    ASSERT_EQ(words(datum.not_carried), "turn-?");
    double along[3], length = 0, dot = 0;
    for (int k = 0; k < 3; k++) along[k] = net.model.value[3 + k] - net.model.value[k], length += along[k] * along[k];
    for (int k = 0; k < 3; k++) dot += along[k] * datum.not_carried[0].direction[k];
    EXPECT_NEAR(std::fabs(dot) / std::sqrt(length), 1, 1e-12);
}

TEST(Datum, OfBaselinesIsAShift)
{
    Box net;
    for (int i = 0; i < 8; i++) net.baseline(i, (i + 1) % 8);
    const Datum datum = find_datum(net.rows());
    EXPECT_EQ(words(datum.open), "shift-x shift-y shift-z");
    EXPECT_EQ(datum.holding[5].of_kind[static_cast<int>(Kind::baseline)], 8);
}

TEST(Datum, AZeroBaselineHoldsNoTurnByItsFirstCoordinates)
{
    // A point and its copy, observed as one place, with first coordinates a millimetre apart.
    for (double observed : {0.0, 0.001}) {
        Box net;
        net.all_distances();
        const double *x = net.model.value.data();
        SmallNet with_copy(Space::space);
        for (int i = 0; i < 8; i++) with_copy.point(x[3 * i], x[3 * i + 1], x[3 * i + 2]);
        const int copy = with_copy.point(x[0] + 0.001, x[1], x[2]);
        with_copy.all_distances_among(8);
        with_copy.baseline(0, copy);
        with_copy.model.observations.back().value[0] = observed;
        const std::string open = words(find_datum(with_copy.rows()).open);
        if (observed == 0)
            EXPECT_EQ(open, "shift-x shift-y shift-z turn-x turn-y turn-z");
        else
            EXPECT_EQ(open, "shift-x shift-y shift-z turn-x");
    }
}

TEST(Datum, OfTwoPointsAndTheirDistanceHasNoTurnAboutTheirLine)
{
    SmallNet net(Space::space);
    net.point(0, 0, 0);
    net.point(30, 40, 120);
    net.distance(0, 1);
    const UnitRows rows = net.rows();
    EXPECT_EQ(find_datum(rows).open.size(), 5u);
    EXPECT_EQ(dense_defect(rows), 5);
}

TEST(Datum, OfOneSetOfDirectionsIsThatOfThePointsTheySee)
{
    // One station, three targets: the defect of 9 unknowns and 3 rows is 6; four of it are motions.
    Square net;
    net.directions(net.a, {net.b, net.c, net.d});
    const UnitRows rows = net.rows();
    EXPECT_EQ(words(find_datum(rows).open), "shift-x shift-y turn-z scale");
    EXPECT_EQ(dense_defect(rows), 6);
}

TEST(Datum, OnASphereIsThatOfParallelVerticals)
{
    Box net(1000);
    net.model.frame.space = Space::sphere;
    net.polar(0, false);
    net.polar(7, false);
    EXPECT_EQ(words(find_datum(net.rows()).open), "shift-x shift-y shift-z turn-z scale");
}

TEST(Datum, UnknownRefractionLeavesTheSameOpen)
{
    Box net;
    const int k = net.constants(Code::fixed, Code::fixed, Code::free);
    net.polar(0, true);
    net.polar(7, true);
    for (Observation &o : net.model.observations)
        if (o.kind == Kind::vertical_angle) o.constants = k;
    EXPECT_EQ(words(find_datum(net.rows()).open), "shift-x shift-y shift-z turn-z");
}

TEST(Datum, AgreesWithTheDefectOfRandomNetworks)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(-500, 500);
    for (int run = 0; run < 60; run++) {
        const bool space = run % 2;
        SmallNet net(space ? Space::space : Space::plane);
        for (int i = 0; i < 9; i++) net.point(4e6 + place(random), 5e6 + place(random), place(random));
        const int scale = run % 3 == 0 ? net.constants(Code::free, Code::free) : -1;
        for (int i = 0; i < 9; i++) {
            const int s = net.setup(i, Code::free, space && run % 4 == 1 ? Code::free : Code::fixed);
            for (int j = 0; j < 9; j++) {
                if (i == j) continue;
                net.direction(s, j);
                if (space) net.vertical(s, j);
                if (run % 5 != 0) net.distance(i, j, scale);
            }
        }
        for (int u = 0; u < 27; u++)
            if (net.model.estimated(u) && run % 7 == u % 9) net.model.code[u] = Code::fixed;
        if (run % 11 == 0) net.azimuth(0, 5);
        const UnitRows rows = net.rows();
        const Datum datum = find_datum(rows);
        EXPECT_EQ(datum.motions.cols, dense_defect(rows)) << "run " << run;
        EXPECT_LT(largest_answer(rows, datum), 1e-11) << "run " << run;
    }
}

TEST(MinimalDatum, HoldsTheLargestMovementsFirstAndLeavesNothingOpen)
{
    Square net;
    net.all_distances();
    const Datum datum = find_datum(net.rows());
    const std::vector<int> held = minimal_datum(net.model, datum.motions);
    ASSERT_EQ(held.size(), 3u);
    for (int u : held) net.model.code[u] = Code::fixed;
    EXPECT_EQ(dense_defect(net.rows()), 0);
}
