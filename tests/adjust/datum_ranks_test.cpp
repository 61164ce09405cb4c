// The search for open motions by ranks that have their own observations alone, against the same search on one machine.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "adjust/datum.h"
#include "random_networks.h"
#include "small_net.h"
#include "thread_ranks.h"

using namespace vornadjust;

namespace {

// Rank of each observation; correlated groups stay together.
using Division = std::vector<int>;

Division by_first_point(const Model &model, int ranks)
{
    Division of;
    std::vector<int> of_group(model.groups.size(), -1);
    for (const Observation &o : model.observations) {
        const int point = o.from >= 0 ? o.from : o.unknown < 3 * model.n_points ? o.unknown / 3 : 0;
        of.push_back(point * ranks / model.n_points);
        if (o.group < 0) continue;
        int &known = of_group[o.group];
        if (known < 0) known = of.back();
        of.back() = known;
    }
    return of;
}

// Set-ups are torn apart.
Division at_random(const Model &model, int ranks, unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<int> of_group(model.groups.size());
    for (int &rank : of_group) rank = (int)(random() % (unsigned)ranks);
    Division of;
    of.reserve(model.observations.size());
    for (const Observation &o : model.observations)
        of.push_back(o.group >= 0 ? of_group[o.group] : (int)(random() % (unsigned)ranks));
    return of;
}

// Observations of one rank, and no trace of the others.
Model own_model(const Model &whole, const Division &of, int rank)
{
    Model own = whole;
    own.observations.clear();
    for (std::size_t i = 0; i < of.size(); i++)
        if (of[i] == rank) own.observations.push_back(whole.observations[i]);
    return own;
}

Datum datum_of(const Model &model, Ranks *ranks)
{
    Equations e = pattern(model);
    fill(model, Derivatives::invariant, &e);
    return find_datum(unit_rows(model, e, ranks));
}

std::vector<Datum> by_ranks(const Model &whole, const Division &of, int count)
{
    std::vector<Datum> found(count);
    on_ranks(count,
             [&](ThreadRanks &ranks) { found[ranks.own()] = datum_of(own_model(whole, of, ranks.own()), &ranks); });
    return found;
}

// Whether the columns of a are those of b but for a rotation, in units of each unknown (a coefficient of distortion is
// of size 1e5).
void expect_turned(const std::vector<double> &unit, const Dense &a, const Dense &b, const Dense &turn)
{
    ASSERT_EQ(a.cols, b.cols);
    const Dense turned = product(b, turn);
    for (int j = 0; j < a.cols; j++)
        for (int u = 0; u < a.rows; u++) EXPECT_NEAR(a(u, j), turned(u, j), 1e-12 * unit[u]) << u;
}

Dense turn_between(const Model &model, const Dense &from, const Dense &to)
{
    Dense turn(from.cols, to.cols);
    for (int i = 0; i < from.cols; i++)
        for (int j = 0; j < to.cols; j++)
            for (int u = 0; u < 3 * model.n_points; u++) turn(i, j) += from(u, i) * to(u, j);
    return turn;
}

void expect_same_names(const std::vector<NamedMotion> &a, const std::vector<NamedMotion> &b, double size)
{
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); i++) {
        EXPECT_EQ(a[i].kind, b[i].kind);
        EXPECT_EQ(a[i].centred, b[i].centred);
        for (int k = 0; k < 3; k++) EXPECT_NEAR(a[i].direction[k], b[i].direction[k], 1e-9);
        for (int k = 0; k < 3; k++) EXPECT_NEAR(a[i].centre[k], b[i].centre[k], 1e-8 * size);
    }
}

void expect_same_holding(const Datum &a, const Datum &b)
{
    for (int m = 0; m < n_motions; m++) {
        EXPECT_EQ(a.holding[m].exists, b.holding[m].exists) << m;
        EXPECT_EQ(a.holding[m].open, b.holding[m].open) << m;
        EXPECT_EQ(a.holding[m].of_kind, b.holding[m].of_kind) << m;
        EXPECT_EQ(a.holding[m].fixed, b.holding[m].fixed) << m;
        EXPECT_EQ(a.holding[m].weighted, b.holding[m].weighted) << m;
    }
}

std::vector<double> units(const Model &model)
{
    Equations e = pattern(model);
    fill(model, Derivatives::invariant, &e);
    std::vector<double> unit = unit_rows(model, e).column_factor;
    for (double &x : unit) x = std::max(x, 1.0);
    return unit;
}

void expect_same(const Model &model, const Datum &found, const Datum &wanted)
{
    ASSERT_EQ(found.state, wanted.state);
    EXPECT_EQ(found.parts.points, wanted.parts.points);
    EXPECT_EQ(found.parts.part_of, wanted.parts.part_of);
    EXPECT_EQ(found.loose_parts, wanted.loose_parts);
    expect_same_names(found.open, wanted.open, wanted.similarity.size);
    expect_same_names(found.not_carried, wanted.not_carried, wanted.similarity.size);
    EXPECT_EQ(found.weakly_carried, wanted.weakly_carried);
    EXPECT_NEAR(found.least_hold, wanted.least_hold, 1e-12);
    expect_same_holding(found, wanted);
    ASSERT_EQ(found.motions.cols, wanted.motions.cols);
    if (wanted.motions.cols == 0) return;
    const Dense turn = turn_between(model, wanted.motions, found.motions);
    expect_turned(units(model), found.motions, wanted.motions, turn);
    expect_turned(units(model), found.conditions, wanted.conditions, turn);
}

void expect_bits(const Datum &a, const Datum &b)
{
    EXPECT_EQ(a.motions.a, b.motions.a);
    EXPECT_EQ(a.conditions.a, b.conditions.a);
    EXPECT_EQ(a.least_hold, b.least_hold);
}

// One to four ranks, by places and at random, find what one machine finds.
void expect_found_by_ranks(const Model &model, const std::string &name, DatumState state)
{
    const Datum wanted = datum_of(model, nullptr);
    EXPECT_EQ(wanted.state, state) << name;
    for (int count = 1; count <= 4; count++)
        for (unsigned seed = 0; seed < (count == 1 ? 1 : 3); seed++) {
            SCOPED_TRACE(name + ", " + std::to_string(count) + " ranks, division " + std::to_string(seed));
            const Division of = seed == 0 ? by_first_point(model, count) : at_random(model, count, seed);
            const std::vector<Datum> found = by_ranks(model, of, count);
            for (const Datum &datum : found) {
                expect_same(model, datum, wanted);
                expect_bits(datum, found[0]);
            }
        }
}

void expect_found_by_ranks(const std::function<Network(Hold)> &make, const std::string &name)
{
    for (const Hold how : every_hold) {
        const bool open = how == Hold::free_all || how == Hold::free_some;
        expect_found_by_ranks(make(how).model, name + ", hold " + std::to_string((int)how),
                              open ? DatumState::by_points : DatumState::held);
    }
}

// Two triangles in the plane, far from one another.
struct TwoTriangles : SmallNet {
    TwoTriangles() : SmallNet(Space::plane)
    {
        for (int i = 0; i < 2; i++) {
            plane_point(5000 * i, 0);
            plane_point(5000 * i + 100, 10);
            plane_point(5000 * i + 90, 110);
        }
    }
    void distances(int constants = -1)
    {
        for (int i : {0, 3})
            distance(i, i + 1, constants), distance(i + 1, i + 2, constants), distance(i + 2, i, constants);
    }
    void fix(std::size_t point) { model.code[3 * point] = model.code[3 * point + 1] = Code::fixed; }
};

} // namespace

TEST(DatumOfRanks, OfPlaneNetworksIsThatOfOneMachine)
{
    for (const unsigned seed : {1u, 2u, 3u})
        for (const bool distances : {true, false})
            expect_found_by_ranks([&](Hold how) { return plane(seed, how, distances); }, "plane");
    expect_found_by_ranks([](Hold how) { return wide_plane(4, how); }, "wide plane");
    expect_found_by_ranks(mixed(plane(5, Hold::free_all, true), 2).model, "a held point", DatumState::by_points);
}

TEST(DatumOfRanks, OfLevellingIsThatOfOneMachine)
{
    for (const unsigned seed : {1u, 2u})
        expect_found_by_ranks([&](Hold how) { return levelling(seed, how); }, "levelling");
}

TEST(DatumOfRanks, OfSpaceNetworksIsThatOfOneMachineWhereSetupsAreTiltedToo)
{
    for (const bool levelled : {true, false})
        expect_found_by_ranks([&](Hold how) { return space(1, how, frame_of(Space::space), levelled); }, "space");
}

TEST(DatumOfRanks, OfCorrelatedGroupsIsThatOfOneMachine)
{
    expect_found_by_ranks([](Hold how) { return baselines(1, how); }, "baselines");
    expect_found_by_ranks(sessions(1).model, "imported coordinates", DatumState::held);
}

TEST(DatumOfRanks, OfUnknownsThatAllRanksSeeIsThatOfOneMachine)
{
    for (const bool weighted : {true, false})
        expect_found_by_ranks([&](Hold how) { return constants(1, how, weighted); }, "constants");
    expect_found_by_ranks([](Hold how) { return movement(1, how); }, "movement");
    expect_found_by_ranks(images(1, Hold::fixed).model, "images", DatumState::held);
    expect_found_by_ranks(images(1, Hold::free_all).model, "images", DatumState::by_points);
}

TEST(DatumOfRanks, NamesLooseParts)
{
    TwoTriangles net;
    net.distances();
    expect_found_by_ranks(net.model, "both loose", DatumState::loose);
    net.fix(0), net.fix(1);
    expect_found_by_ranks(net.model, "one held", DatumState::loose);
    net.fix(4), net.fix(5);
    expect_found_by_ranks(net.model, "both held", DatumState::held);
}

TEST(DatumOfRanks, CarriesAScaleFromOnePartToAnother)
{
    for (const bool held : {true, false}) {
        TwoTriangles net;
        net.distances(net.constants(Code::fixed, Code::free));
        net.azimuth(3, 4);
        net.fix(0), net.fix(3);
        if (held) net.fix(1);
        expect_found_by_ranks(net.model, "one scale", held ? DatumState::held : DatumState::loose);
    }
}

TEST(DatumOfRanks, TellsWhatDatumPointsDoNotCarry)
{
    Network n = plane(2, Hold::free_all, true);
    for (int u = 3; u < 3 * n.model.n_points; u++)
        if (n.model.code[u] == Code::datum) n.model.code[u] = Code::free;
    expect_found_by_ranks(n.model, "one datum point", DatumState::not_carried);
}

TEST(DatumOfRanks, LeavesHingesAcrossTheCutAlone)
{
    // Two triangles that turn about a common point: nothing is open as a whole but for the motions of both.
    SmallNet net(Space::plane);
    for (const auto &[x, y] : {std::pair(0., 0.), {100., 5.}, {40., 90.}, {180., 70.}, {190., -60.}})
        net.plane_point(x, y);
    for (const auto &[i, j] : {std::pair(0, 1), {1, 2}, {2, 0}, {1, 3}, {3, 4}, {4, 1}}) net.distance(i, j);
    expect_found_by_ranks(net.model, "hinge", DatumState::by_points);
    for (int u : {0, 1}) net.model.code[u] = Code::fixed;
    expect_found_by_ranks(net.model, "held hinge", DatumState::by_points);
}

TEST(DatumOfRanks, TakesRanksWithoutObservations)
{
    for (const Hold how : every_hold) {
        const Model model = plane(3, how, true).model;
        const Datum wanted = datum_of(model, nullptr);
        for (const Datum &found : by_ranks(model, Division(model.observations.size(), 2), 4))
            expect_same(model, found, wanted);
    }
}

namespace {

class CountingRanks : public ThreadRanks {
public:
    using ThreadRanks::ThreadRanks;
    void most(double *x, std::size_t count) override
    {
        calls++;
        ThreadRanks::most(x, count);
    }
    int calls = 0;
};

} // namespace

TEST(PartsOfRanks, AreJoinedInFewRoundsHoweverOftenALineIsCut)
{
    const int n = 4000, count = 4;
    std::mt19937 random(1);
    std::vector<int> order(n);
    for (int p = 0; p < n; p++) order[p] = p;
    std::shuffle(order.begin(), order.end(), random);
    SmallNet line(Space::heights); // in two pieces
    for (int p = 0; p < n; p++) line.height(p);
    for (int p = 1; p < n; p++)
        if (p != n / 2) line.level(order[p - 1], order[p]);
    const Parts wanted = find_parts(line.rows());
    ASSERT_EQ(wanted.points.size(), 2u);
    const Division of = at_random(line.model, count, 1);
    Table table(count);
    on_ranks(count, [&](ThreadRanks &thread) {
        CountingRanks ranks(&table, thread.own());
        const Model own = own_model(line.model, of, ranks.own());
        Equations e = pattern(own);
        fill(own, Derivatives::invariant, &e);
        const UnitRows rows = unit_rows(own, e, &ranks);
        ranks.calls = 0;
        const Parts found = find_parts(rows);
        EXPECT_EQ(found.part_of, wanted.part_of);
        EXPECT_EQ(found.points, wanted.points);
        EXPECT_LT(ranks.calls, 2 * std::log2(n));
    });
}
