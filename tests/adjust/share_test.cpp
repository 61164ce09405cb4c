// Adjustments that several ranks share, against the same ones alone.

#include "adjust/share.h"

#include <gtest/gtest.h>

#include <atomic>

#include "adjust/adjustment.h"
#include "adjust/degree.h"
#include "adjust/division.h"
#include "adjust/places.h"
#include "adjust/robust.h"
#include "adjust/snoop.h"
#include "random_networks.h"
#include "scattered.h"
#include "small_net.h"
#include "thread_ranks.h"

using namespace vornadjust;

namespace {

Options tight()
{
    Options o;
    o.limits.length = 1e-8;
    o.limits.angle = 1e-11;
    o.suspects.most = 3;
    o.suspects.limit = [](int, int, double) { return 1.0; };
    o.pairs = {{0, 1}, {1, 2}};
    o.joint = {0, 1, 2, 5};
    o.forms = [](const Model &m) { return std::vector<Form>{{{m.n_unknowns() - 1, 1.0}, {2, 0.5}, {0, -1.0}}}; };
    return o;
}

void expect_near_relative(double found, double wanted, double size, const std::string &what)
{
    EXPECT_NEAR(found, wanted, 1e-9 * std::fabs(wanted) + 1e-9 * size) << what;
}

void expect_same_precision(const Statistics &found, const Statistics &wanted)
{
    ASSERT_EQ(found.deviation.size(), wanted.deviation.size());
    for (size_t u = 0; u < wanted.deviation.size(); u++)
        expect_near_relative(found.deviation[u], wanted.deviation[u], 0, "deviation " + std::to_string(u));
    for (const auto list : {&Statistics::points, &Statistics::pairs}) {
        ASSERT_EQ((found.*list).size(), (wanted.*list).size());
        for (size_t i = 0; i < (wanted.*list).size(); i++)
            for (int k = 0; k < 6; k++)
                expect_near_relative((found.*list)[i][k], (wanted.*list)[i][k],
                                     (wanted.*list)[i][0] + (wanted.*list)[i][3] + (wanted.*list)[i][5], "covariance");
    }
    ASSERT_EQ(found.joint.size(), wanted.joint.size());
    for (size_t i = 0; i < wanted.joint.size(); i++)
        expect_near_relative(found.joint[i], wanted.joint[i],
                             wanted.joint[0] + wanted.joint[5] + wanted.joint[10] + wanted.joint[15], "joint");
    for (size_t i = 0; i < wanted.forms.size(); i++) expect_near_relative(found.forms[i], wanted.forms[i], 0, "form");
    for (int k = 0; k < n_kinds; k++) {
        EXPECT_EQ(found.kinds[k].rows, wanted.kinds[k].rows);
        expect_near_relative(found.kinds[k].redundancy, wanted.kinds[k].redundancy, 1.0, "redundancy of kind");
    }
}

void expect_same(const Outcome &found, const Outcome &wanted)
{
    ASSERT_EQ(found.status, wanted.status);
    EXPECT_EQ(found.rows, wanted.rows);
    EXPECT_EQ(found.unknowns, wanted.unknowns);
    EXPECT_EQ(found.open, wanted.open);
    EXPECT_EQ(found.left_out, wanted.left_out);
    EXPECT_EQ(found.iteration.steps, wanted.iteration.steps);
    expect_near_relative(found.variance_factor, wanted.variance_factor, 0, "variance factor");
    expect_same_precision(found.statistics, wanted.statistics);
    EXPECT_EQ(found.tested, wanted.tested);
    EXPECT_EQ(found.seen, wanted.seen);
    ASSERT_EQ(found.statistics.together.size(), wanted.statistics.together.size());
    for (size_t i = 0; i < wanted.statistics.together.size(); i++) {
        const JointStatistics &a = found.statistics.together[i], &b = wanted.statistics.together[i];
        EXPECT_EQ(a.rank, b.rank);
        EXPECT_EQ(a.rows, b.rows);
        EXPECT_EQ(a.first, b.first);
        expect_near_relative(a.squares, b.squares, 10.0, "squares together");
    }
    ASSERT_EQ(found.suspects.size(), wanted.suspects.size());
    for (size_t i = 0; i < wanted.suspects.size(); i++) {
        const Suspect &a = found.suspects[i], &b = wanted.suspects[i];
        if (a.place != b.place) { // equally bad ones may change places
            EXPECT_NEAR(std::fabs(a.normalised), std::fabs(b.normalised), 1e-9);
            continue;
        }
        EXPECT_EQ(a.observation, b.observation);
        expect_near_relative(a.normalised, b.normalised, 10.0, "normalised");
        expect_near_relative(found.suspects[i].shift, wanted.suspects[i].shift, 1e-3, "shift");
        ASSERT_EQ(a.alike.size(), b.alike.size());
        for (size_t k = 0; k < a.alike.size(); k++) {
            EXPECT_NEAR(std::fabs(a.alike[k].correlation), std::fabs(b.alike[k].correlation), 1e-7);
            if (a.alike[k].place == b.alike[k].place) {
                EXPECT_EQ(a.alike[k].observation, b.alike[k].observation);
            }
        }
    }
    ASSERT_EQ(found.statistics.weak_pairs.size(), wanted.statistics.weak_pairs.size());
    for (size_t i = 0; i < wanted.statistics.weak_pairs.size(); i++)
        expect_near_relative(found.statistics.weak_pairs[i].a, wanted.statistics.weak_pairs[i].a, 0, "weak pair");
}

// Together the ranks have each row once, as one machine finds it.
void expect_same_rows(const std::vector<Outcome> &found, const Outcome &wanted)
{
    std::vector<int> row_at((size_t)wanted.rows, -1), taken((size_t)wanted.rows, 0);
    for (int r = 0; r < wanted.equations.rows(); r++)
        if (wanted.place[r] >= 0) row_at[wanted.place[r]] = r;
    for (const Outcome &o : found) {
        ASSERT_EQ(o.statistics.rows.size(), o.place.size());
        for (size_t r = 0; r < o.place.size(); r++) {
            if (o.place[r] < 0) continue;
            ASSERT_LT(o.place[r], wanted.rows);
            taken[o.place[r]]++;
            const int whole = row_at[o.place[r]];
            const RowStatistics &a = o.statistics.rows[r], &b = wanted.statistics.rows[whole];
            EXPECT_EQ(o.equations.observation[r], wanted.equations.observation[whole]);
            EXPECT_EQ(o.equations.component[r], wanted.equations.component[whole]);
            expect_near_relative(a.residual, b.residual, wanted.equations.sigma[whole], "residual");
            expect_near_relative(a.redundancy, b.redundancy, 1.0, "redundancy");
            expect_near_relative(a.effect, b.effect, 1.0, "effect");
            if (b.share() > 1e-3) {
                expect_near_relative(a.normalised, b.normalised, 10.0, "normalised");
            }
        }
    }
    EXPECT_EQ(taken, std::vector<int>((size_t)wanted.rows, 1));
}

void expect_same_values(const Model &found, const Model &first, const Model &alone, const Outcome &wanted)
{
    for (int u = 0; u < alone.n_unknowns(); u++)
        EXPECT_NEAR(found.value[u], alone.value[u], 1e-9 + 1e-7 * wanted.statistics.deviation[u]) << u;
    EXPECT_EQ(found.value, first.value); // bit by bit
}

// Every rank has what one machine finds of unknowns, and its share of what it finds of rows.
void expect_shared(const Model &given, const std::string &name)
{
    SCOPED_TRACE(name);
    Model alone = given;
    const Outcome wanted = adjust(&alone, tight());
    ASSERT_EQ(wanted.status, Status::adjusted);
    for (const int count : {2, 4}) {
        std::vector<Model> model(count, given);
        std::vector<Outcome> outcome(count);
        std::vector<size_t> boundary(count);
        on_ranks(count, [&](ThreadRanks &ranks) {
            Options o = tight();
            o.ranks = &ranks;
            outcome[ranks.own()] = adjust(&model[ranks.own()], o);
            boundary[ranks.own()] = ranks.boundary();
        });
        EXPECT_GT(boundary[0], 0u);
        for (const Outcome &o : outcome) EXPECT_LT(o.statistics.rows.size(), wanted.statistics.rows.size());
        expect_same_rows(outcome, wanted);
        for (int r = 0; r < count; r++) {
            SCOPED_TRACE("rank " + std::to_string(r) + " of " + std::to_string(count));
            expect_same(outcome[r], wanted);
            expect_same_values(model[r], model[0], alone, wanted);
        }
    }
}

// What one rank has where none has all observations.
struct Own {
    Model model;
    OwnObservations observations;
    std::vector<int> whole;                 // [observations] index among all
    std::vector<std::vector<int>> together; // own indexes
    std::vector<int> list;                  // [together] index among those of all
    Outcome outcome;
};

// Observations that can be tested together: those of each group, and the weighted coordinates of each point.
std::vector<std::vector<int>> together_of(const Model &m)
{
    std::vector<std::vector<int>> groups(m.groups.size()), points(m.n_points);
    for (int i = 0; i < (int)m.observations.size(); i++) {
        const Observation &o = m.observations[i];
        if (o.group >= 0)
            groups[o.group].push_back(i);
        else if (o.kind == Kind::unknown && o.unknown < 3 * m.n_points)
            points[o.unknown / 3].push_back(i);
    }
    groups.insert(groups.end(), points.begin(), points.end());
    groups.erase(std::remove_if(groups.begin(), groups.end(), [](const auto &g) { return g.empty(); }), groups.end());
    return groups;
}

// The rank of each observation: points are dealt out among the ranks in turn, but among three or four ranks none to the
// second. Groups go where their first observation goes.
std::vector<int> dealt(const Model &m, int count)
{
    std::vector<int> rank, of_group(m.groups.size(), -1);
    for (const Observation &o : m.observations) {
        const int first = o.from >= 0 ? o.from : o.unknown / 3, parts = count > 2 ? count - 1 : count;
        int own = (7 * first + first / 3) % parts;
        if (count > 2 && own > 0) own++;
        if (o.group >= 0) {
            if (of_group[o.group] < 0) of_group[o.group] = own;
            own = of_group[o.group];
        }
        rank.push_back(own);
    }
    return rank;
}

// Numbers of observations with gaps, so that another one never has its index.
std::int64_t number_of(int observation) { return 3 + 5 * (std::int64_t)observation + observation % 2; }

Own own_of(const Model &given, int rank, int count)
{
    Own own;
    own.model = given;
    own.model.observations.clear(), own.model.groups.clear(), own.model.covariance.clear();
    own.observations.all = number_of((int)given.observations.size());
    const std::vector<int> of = dealt(given, count);
    std::vector<int> group(given.groups.size(), -1), index(of.size(), -1);
    for (int i = 0; i < (int)of.size(); i++) {
        Observation o = given.observations[i];
        if (of[i] != rank) continue;
        if (o.group >= 0) {
            const Group &g = given.groups[o.group];
            if (group[o.group] < 0) group[o.group] = own.model.add_group(g.size, &given.covariance[g.first]);
            o.group = group[o.group];
        }
        index[i] = own.model.observe(o);
        own.whole.push_back(i);
        own.observations.numbers.push_back(number_of(i));
    }
    const std::vector<std::vector<int>> together = together_of(given);
    for (size_t t = 0; t < together.size(); t++) {
        if (of[together[t][0]] != rank) continue;
        own.list.push_back((int)t);
        own.together.emplace_back();
        for (const int o : together[t]) own.together.back().push_back(index[o]);
    }
    return own;
}

std::vector<Own> adjust_apart(const Model &given, int count, const Options &options)
{
    std::vector<Own> all(count);
    on_ranks(count, [&](ThreadRanks &ranks) {
        Own &own = all[ranks.own()];
        own = own_of(given, ranks.own(), count);
        Options o = options;
        o.ranks = &ranks;
        o.own = &own.observations;
        o.together = own.together;
        own.outcome = adjust(&own.model, o);
    });
    return all;
}

// A row's observation among all; -1 where another rank has the row.
int whole_observation(const Own &own, int place, int observation, const Outcome &wanted)
{
    const std::vector<int> &places = own.outcome.place;
    const bool mine = std::find(places.begin(), places.end(), place) != places.end();
    EXPECT_EQ(mine, observation >= 0);
    if (mine) return own.whole[observation];
    const auto row = std::find(wanted.place.begin(), wanted.place.end(), place) - wanted.place.begin();
    return wanted.equations.observation[row];
}

// Outcomes as of ranks that have all observations.
std::vector<Outcome> whole_outcomes(const std::vector<Own> &all, const Outcome &wanted)
{
    std::vector<Outcome> out;
    std::vector<int> left_out;
    std::vector<JointStatistics> together(wanted.statistics.together.size());
    for (const Own &own : all) {
        out.push_back(own.outcome);
        for (int &o : out.back().equations.observation) o = own.whole[o];
        for (const int o : own.outcome.left_out) left_out.push_back(own.whole[o]);
        EXPECT_EQ(own.outcome.statistics.together.size(), own.list.size());
        for (size_t t = 0; t < own.list.size(); t++) together[own.list[t]] = own.outcome.statistics.together[t];
        for (Suspect &s : out.back().suspects) {
            s.observation = whole_observation(own, s.place, s.observation, wanted);
            for (Alike &a : s.alike) a.observation = whole_observation(own, a.place, a.observation, wanted);
        }
    }
    std::sort(left_out.begin(), left_out.end());
    for (Outcome &o : out) o.left_out = left_out, o.statistics.together = together;
    return out;
}

// Ranks with their own observations alone find what one machine finds that has all.
void expect_shared_apart(const Model &given, const std::string &name)
{
    SCOPED_TRACE(name);
    Model alone = given;
    Options options = tight();
    options.weak_pairs = 3;
    options.together = together_of(given);
    const Outcome wanted = adjust(&alone, options);
    ASSERT_EQ(wanted.status, Status::adjusted);
    for (int count = 1; count <= 4; count++) {
        SCOPED_TRACE(std::to_string(count) + " ranks");
        const std::vector<Own> all = adjust_apart(given, count, options);
        for (const Own &own : all) ASSERT_EQ(own.outcome.status, Status::adjusted);
        const std::vector<Outcome> outcome = whole_outcomes(all, wanted);
        expect_same_rows(outcome, wanted);
        for (int r = 0; r < count; r++) {
            SCOPED_TRACE("rank " + std::to_string(r));
            expect_same(outcome[r], wanted);
            expect_same_values(all[r].model, all[0].model, alone, wanted);
        }
    }
}

// The status that all ranks with their own observations alone end with; they leave the values as they were.
Status status_apart(const Model &given, int count, const Options &options = {})
{
    const std::vector<Own> all = adjust_apart(given, count, options);
    for (const Own &own : all) {
        EXPECT_EQ(own.outcome.status, all[0].outcome.status);
        EXPECT_EQ(own.model.value, given.value);
    }
    return all[0].outcome.status;
}

std::string name(const char *what, Hold how, unsigned seed)
{
    return std::string(what) + ", hold " + std::to_string((int)how) + ", seed " + std::to_string(seed);
}

// Statuses that the first rank ends with, and whether the others were left.
Status shared_status(const Model &given, int count)
{
    Status status = Status::adjusted;
    std::atomic<int> ended{0};
    on_ranks(count, [&](ThreadRanks &ranks) {
        Model m = given;
        Options o;
        o.ranks = &ranks;
        const Outcome outcome = adjust(&m, o);
        ended++;
        status = outcome.status;
    });
    EXPECT_EQ(ended, 1);
    return status;
}

// A plane network, two of whose observations have no derivative: to where they stand.
Network with_two_nowhere()
{
    Network n = plane(5, Hold::fixed, true);
    Observation nowhere = n.model.observations[3];
    nowhere.to = nowhere.from;
    for (const size_t at : {(size_t)2, n.model.observations.size() / 2})
        n.model.observations.insert(n.model.observations.begin() + (std::ptrdiff_t)at, nowhere);
    return n;
}

// Networks of each sort, given to what is expected of them.
using Expect = void (*)(const Model &, const std::string &);

void of_plane_networks(Expect expect)
{
    for (const Hold how : every_hold)
        for (const bool distances : {true, false}) expect(plane(1, how, distances).model, name("plane", how, 1));
}

void of_levelling(Expect expect)
{
    for (const Hold how : every_hold) expect(levelling(2, how).model, name("levelling", how, 2));
}

void of_space_networks(Expect expect)
{
    for (const Hold how : every_hold)
        for (const bool levelled : {true, false})
            expect(space(1, how, frame_of(Space::space), levelled).model, name("space", how, 1));
}

void of_groups(Expect expect)
{
    for (const Hold how : every_hold) expect(baselines(1, how).model, name("baselines", how, 1));
    expect(sessions(1).model, "sessions");
}

} // namespace

TEST(Share, OfPlaneNetworksIsTheWhole) { of_plane_networks(expect_shared); }

TEST(Share, OfLevellingIsTheWhole) { of_levelling(expect_shared); }

TEST(Share, OfSpaceNetworksIsTheWhole) { of_space_networks(expect_shared); }

TEST(Share, OfCorrelatedGroupsIsTheWhole) { of_groups(expect_shared); }

TEST(Share, OfUnknownsThatEveryPartSeesIsTheWhole)
{
    expect_shared(constants(1, Hold::fixed, true).model, "constants");
    expect_shared(images(1, Hold::fixed).model, "images");
    expect_shared(movement(1, Hold::fixed).model, "movement");
}

TEST(Share, KnowsWhereItsRowsStandBehindThoseWithoutDerivative)
{
    const Network n = with_two_nowhere();
    Model alone = n.model;
    ASSERT_EQ(adjust(&alone, tight()).left_out.size(), 2u);
    expect_shared(n.model, "two without derivative");
}

TEST(Share, WeighsObservationsAsOneMachineDoes)
{
    Network n = plane(3, Hold::fixed, true);
    n.model.observations[7].value[0] += 40 * n.model.observations[7].sigma[0];
    for (const Estimator e : {Estimator::huber, Estimator::least_absolute}) {
        Model alone = n.model;
        const Robust wanted = adjust_robustly(&alone, tight(), e);
        ASSERT_EQ(wanted.outcome.status, Status::adjusted);
        EXPECT_LT(wanted.weight[7], 0.1);
        on_ranks(3, [&](ThreadRanks &ranks) {
            Model m = n.model;
            Options o = tight();
            o.ranks = &ranks;
            const Robust found = adjust_robustly(&m, o, e);
            ASSERT_EQ(found.weight.size(), wanted.weight.size());
            for (size_t i = 0; i < wanted.weight.size(); i++)
                EXPECT_NEAR(found.weight[i], wanted.weight[i], 1e-3 * wanted.weight[i]) << i; // where the rounds end
        });
    }
}

TEST(Share, IsRepeatable)
{
    const Model given = plane(4, Hold::free_all, true).model;
    std::vector<double> first;
    for (int trial = 0; trial < 2; trial++) {
        std::vector<double> value;
        on_ranks(3, [&](ThreadRanks &ranks) {
            Model m = given;
            Options o = tight();
            o.ranks = &ranks;
            const Outcome outcome = adjust(&m, o);
            if (ranks.own() == 0) value = outcome.statistics.deviation;
        });
        if (trial == 0) first = value;
        EXPECT_EQ(value, first);
    }
}

TEST(Share, LeavesWhatCannotBeAdjustedToTheFirstRank)
{
    const Model held = plane(1, Hold::fixed, true).model;
    SmallNet hanging(Space::plane); // the last point is seen by one distance
    for (const double x : {0.0, 10.0, 20.0, 30.0}) hanging.plane_point(x, x * x / 7, x < 25 ? Code::fixed : Code::free);
    hanging.all_distances_among(3), hanging.distance(0, 3);
    EXPECT_EQ(shared_status(hanging.model, 2), Status::undetermined);

    SmallNet loose(Space::heights);
    for (const double z : {1.0, 2.0, 3.0, 4.0}) loose.height(z, Code::free);
    loose.level(0, 1), loose.level(2, 3);
    EXPECT_EQ(shared_status(loose.model, 2), Status::no_datum);

    Model none = held;
    for (Observation &o : none.observations) o.use = false;
    EXPECT_EQ(shared_status(none, 3), Status::no_observations);

    Model bad = baselines(1, Hold::fixed).model;
    std::fill(bad.covariance.begin() + 9, bad.covariance.begin() + 18, 1.0);
    EXPECT_EQ(shared_status(bad, 2), Status::bad_covariance);
}

TEST(Share, LeavesOutTheSameObservationsOneByOne)
{
    Network n = plane(3, Hold::fixed, true);
    n.model.observations[7].value[0] += 40 * n.model.observations[7].sigma[0];
    std::vector<int> unit(n.model.observations.size());
    for (size_t i = 0; i < unit.size(); i++) unit[i] = (int)i;
    Options o;
    o.suspects.most = 3;
    o.suspects.limit = [](int, int, double) { return 4.0; };
    Model alone = n.model;
    const Snooped wanted = snoop(&alone, o, unit);
    ASSERT_EQ(wanted.left_out, std::vector<int>{7});
    on_ranks(3, [&](ThreadRanks &ranks) {
        Model m = n.model;
        Options own = o;
        own.ranks = &ranks;
        EXPECT_EQ(snoop(&m, own, unit).left_out, wanted.left_out);
    });
}

TEST(OwnObservations, OfPlaneNetworksAreAdjustedAsTheWhole) { of_plane_networks(expect_shared_apart); }

TEST(OwnObservations, OfLevellingAreAdjustedAsTheWhole) { of_levelling(expect_shared_apart); }

TEST(OwnObservations, OfSpaceNetworksAreAdjustedAsTheWhole) { of_space_networks(expect_shared_apart); }

TEST(OwnObservations, OnASphereAreAdjustedAsTheWhole)
{
    Frame earth = frame_of(Space::sphere);
    earth.radius = 6371000, earth.height = 400;
    for (const Hold how : {Hold::fixed, Hold::free_all})
        expect_shared_apart(space(12, how, earth, true).model, name("sphere", how, 12));
}

TEST(OwnObservations, InGroupsAreAdjustedAsTheWhole) { of_groups(expect_shared_apart); }

TEST(OwnObservations, WithConstantsAreAdjustedAsTheWhole)
{
    for (const Hold how : every_hold) expect_shared_apart(constants(1, how, true).model, name("constants", how, 1));
    expect_shared_apart(movement(1, Hold::fixed).model, "movement");
}

TEST(OwnObservations, WithoutDerivativeAreLeftOutWhereTheyAre)
{
    Network n = with_two_nowhere();
    n.model.observations[9].use = false;
    expect_shared_apart(n.model, "two without derivative, one unused");
}

TEST(OwnObservations, ThatCannotBeAdjustedEndOnAllRanksAlike)
{
    const Model held = plane(1, Hold::fixed, true).model;
    SmallNet hanging(Space::plane); // the last point is seen by one distance
    for (const double x : {0.0, 10.0, 20.0, 30.0}) hanging.plane_point(x, x * x / 7, x < 25 ? Code::fixed : Code::free);
    hanging.all_distances_among(3), hanging.distance(0, 3);
    SmallNet loose(Space::heights);
    for (const double z : {1.0, 2.0, 3.0, 4.0}) loose.height(z, Code::free);
    loose.level(0, 1), loose.level(2, 3);
    Model none = held;
    for (Observation &o : none.observations) o.use = false;
    Model bad = baselines(1, Hold::fixed).model;
    std::fill(bad.covariance.begin() + 9, bad.covariance.begin() + 18, 1.0);
    Model unseen = held; // the last point by no row at all
    for (Observation &o : unseen.observations) o.use = o.from + 1 < unseen.n_points && o.to + 1 < unseen.n_points;
    Options few, planning;
    few.limits.steps = 1;
    planning.iterate = false;
    for (int count = 2; count <= 4; count++) {
        SCOPED_TRACE(std::to_string(count) + " ranks");
        EXPECT_EQ(status_apart(hanging.model, count), Status::no_convergence);
        EXPECT_EQ(status_apart(hanging.model, count, planning), Status::singular);
        EXPECT_EQ(status_apart(loose.model, count), Status::no_datum);
        EXPECT_EQ(status_apart(none, count), Status::no_observations);
        EXPECT_EQ(status_apart(bad, count), Status::bad_covariance);
        EXPECT_EQ(status_apart(unseen, count), Status::undetermined);
        EXPECT_EQ(status_apart(held, count, few), Status::no_convergence);
    }
}

TEST(OwnObservations, OfAnotherNetworkAreNoticed)
{
    const Model given = levelling(1, Hold::fixed).model;
    std::atomic<int> noticed{0};
    on_ranks(2, [&](ThreadRanks &ranks) {
        Own own = own_of(given, ranks.own(), 2);
        if (ranks.own() == 1) own.model.code[8] = Code::fixed;
        Options o;
        o.ranks = &ranks;
        o.own = &own.observations;
        EXPECT_THROW(adjust(&own.model, o), std::runtime_error);
        noticed++;
    });
    EXPECT_EQ(noticed, 2);
}

// Numbers with gaps, some of them longer than what the ranks tell each other at a time.
TEST(Places, CountTheUsableRowsWithSmallerNumbers)
{
    struct Row {
        std::int64_t number;
        int rank, component, place;
    };
    const int count = 3;
    std::mt19937 engine(7);
    std::vector<Row> rows;
    std::int64_t number = 0;
    int usable = 0;
    for (int o = 0; o < 3000; o++) {
        number += o % 1000 == 999 ? 20'000'000 : 1 + (std::int64_t)(engine() % 40);
        const int rank = (int)(engine() % count), components = 1 + (int)(engine() % 3);
        const bool stands = engine() % 5 > 0;
        for (int c = 0; c < components; c++) rows.push_back({number, rank, c, stands ? usable++ : -1});
    }
    on_ranks(count, [&](ThreadRanks &ranks) {
        Share share;
        share.ranks = &ranks;
        Equations e;
        OwnObservations own;
        own.all = number + 1;
        std::vector<int> wanted;
        for (const Row &r : rows) {
            if (r.rank != ranks.own()) continue;
            if (r.component == 0) own.numbers.push_back(r.number);
            e.observation.push_back((int)own.numbers.size() - 1);
            e.component.push_back((unsigned char)r.component);
            e.usable.push_back(r.place >= 0);
            e.misclosure.push_back(0.0);
            wanted.push_back(r.place);
        }
        EXPECT_EQ(find_places(share, e, own), wanted);
    });
}

TEST(Division, KeepsGroupsAndStationsTogether)
{
    for (const Model &m : {sessions(1).model, plane(2, Hold::fixed, true).model, baselines(2, Hold::fixed).model}) {
        const std::vector<int> part = divide(m, 3);
        ASSERT_EQ(part.size(), m.observations.size());
        std::vector<int> of_group(m.groups.size(), -1), of_station(m.n_points, -1), rows(3, 0);
        for (size_t i = 0; i < part.size(); i++) {
            const Observation &o = m.observations[i];
            rows[part[i]]++;
            int &known = o.group >= 0 ? of_group[o.group] : o.from >= 0 ? of_station[o.from] : rows[0];
            if (&known == &rows[0]) continue;
            if (known < 0) known = part[i];
            EXPECT_EQ(part[i], known);
        }
        EXPECT_EQ(divide(m, 3), part);
    }
}

TEST(Division, CutsALongLineInTwo)
{
    if (!has_library_dissection()) GTEST_SKIP() << "without METIS points are cut as they stand";
    SmallNet line(Space::heights);
    for (int p = 0; p < 200; p++) line.height(p);
    for (int p = 1; p < 200; p++) line.level((37 * p) % 200, (37 * (p - 1)) % 200); // neighbours by another numbering
    const std::vector<int> part = divide(line.model, 2);
    int changes = 0, first = 0;
    for (size_t i = 1; i < part.size(); i++) changes += part[i] != part[i - 1];
    for (const int p : part) first += p == 0;
    EXPECT_LE(changes, 2);
    EXPECT_NEAR(first, 100, 10);
}
