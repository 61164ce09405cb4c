// Comparisons of epochs through whole network files: joint adjustments, simulations with known motion, refusals.

#include "host/epochs/compare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <random>

#include "host/epochs/compare_report.h"
#include "host/epochs/field.h"
#include "host/results/test_limits.h"

using namespace vornhost;

namespace {

std::string epoch(unsigned seed, const std::vector<Place> &places, const std::string &run = "")
{
    Field field(seed);
    field.observe(places);
    return field.text("free", 0, "", run);
}

Comparison compared(const std::vector<std::string> &texts, const CompareOptions &options = {})
{
    std::vector<Model> models;
    for (const std::string &text : texts) {
        models.push_back(model_of(text));
        models.back().path = "epoch" + std::to_string(models.size()) + ".inp";
    }
    return compare(models, options);
}

const PointComparison &point(const Comparison &c, const std::string &name)
{
    for (const PointComparison &p : c.points)
        if (p.name == name) return p;
    ADD_FAILURE() << "no point " << name;
    static const PointComparison none;
    return none;
}

std::string words(const Comparison &c)
{
    std::string all;
    for (const std::string &w : c.words) all += w + "\n";
    return all;
}

} // namespace

// One network with the observations of both epochs, each with its own orientations: each point has one place.
TEST(Compare, TestsTheGrowthOfTheSquaresInAJointAdjustment)
{
    Field a(1), b(2), both(1);
    a.observe(truth);
    b.observe(moved("D2", 0.002, 0.001));
    for (int k = 0; k < 2; k++) {
        std::string later = b.rows[k];
        for (size_t at = later.find('\n'); at != std::string::npos; at = later.find('\n', at + 3))
            later.insert(at, " b");
        std::string early = a.rows[k];
        for (size_t at = early.find('\n'); at != std::string::npos; at = early.find('\n', at + 3))
            early.insert(at, " a");
        both.rows[k] = early + later;
    }
    const double growth = squares(both.text("free", 0, " setup")) - squares(a.text()) - squares(b.text());
    const Comparison c = compared({a.text(), b.text()});
    ASSERT_TRUE(c.made()) << words(c);
    EXPECT_EQ(c.open, 3);
    EXPECT_EQ(c.congruence.h, 14 - 3);
    // Motions of millimetres in a network of 100 m: what is not linear is a hundred thousandth.
    EXPECT_NEAR(c.congruence.value * c.congruence.h * c.factor.value, growth, 1e-3 * growth);
}

TEST(Compare, FindsTheMotionThatWasThere)
{
    const Comparison c = compared({epoch(3, truth), epoch(4, moved("D2", 0.006, -0.004))});
    ASSERT_TRUE(c.made()) << words(c);
    EXPECT_FALSE(c.congruence.passed());
    ASSERT_EQ(c.departures.size(), 1u);
    EXPECT_EQ(c.departures[0].point, "D2");
    EXPECT_TRUE(c.stable.passed());
    const Shift &s = point(c, "D2").shifts[0];
    EXPECT_NEAR(*s.by[0], 0.006, 4 * *s.deviation[0]);
    EXPECT_NEAR(*s.by[1], -0.004, 4 * *s.deviation[1]);
    EXPECT_LT(*s.deviation[0], 0.001);
    EXPECT_FALSE(s.test.passed());
    EXPECT_TRUE(point(c, "P1").stable);
    EXPECT_FALSE(point(c, "D2").stable);
}

// Held points, frames and first coordinates of the second file differ; what was observed is the same.
TEST(Compare, DoesNotDependOnWhatTheFilesHold)
{
    Field a(5), b(6);
    a.observe(truth);
    b.observe(moved("D3", 0.003, 0.001));
    const Comparison free = compared({a.text(), b.text()}), held = compared({a.text("fixed"), b.text("fixed")}),
                     shifted = compared({a.text(), b.text("no_datum", 0.5)});
    for (const Comparison *c : {&held, &shifted}) {
        ASSERT_TRUE(c->made()) << words(*c);
        EXPECT_NEAR(c->congruence.value, free.congruence.value, 1e-4 * free.congruence.value);
        for (const PointComparison &p : free.points)
            for (int k = 0; k < 2; k++) {
                EXPECT_NEAR(*p.shifts[0].by[k], *point(*c, p.name).shifts[0].by[k], 1e-7);
                EXPECT_NEAR(*p.shifts[0].deviation[k], *point(*c, p.name).shifts[0].deviation[k], 1e-7);
            }
    }
}

// Directions alone leave the scale open: it is taken out of both epochs.
TEST(Compare, TakesOutTheMotionsThatOneEpochLeavesOpen)
{
    Field a(7), b(8);
    a.observe(truth);
    std::vector<Place> larger = truth;
    for (Place &p : larger) p.x *= 1.0001, p.y *= 1.0001; // 24 mm at the far end
    b.observe(larger, "", false);
    const Comparison c = compared({a.text(), b.text()});
    ASSERT_TRUE(c.made()) << words(c);
    EXPECT_EQ(c.open, 4);
    EXPECT_TRUE(c.congruence.passed()) << c.congruence.value;
    Field seen(8);
    seen.observe(larger);
    EXPECT_FALSE(compared({a.text(), seen.text()}).congruence.passed());
}

// Held points are not compared, and the motion is that against them.
TEST(Compare, KeepsHeldCoordinatesWhereItIsAsked)
{
    Field a(9), b(10);
    a.observe(truth);
    b.observe(moved("D2", 0.01, 0));
    CompareOptions options;
    options.epochs.held = true;
    const Comparison c = compared({a.text("fixed"), b.text("fixed")}, options);
    ASSERT_TRUE(c.made()) << words(c);
    EXPECT_EQ(c.open, 0);
    EXPECT_EQ(c.points.size(), 5u);
    ASSERT_EQ(c.departures.size(), 1u);
    EXPECT_EQ(c.departures[0].point, "D2");
    EXPECT_EQ(c.congruence.h, 10);
    EXPECT_EQ(words(compared({a.text("fixed"), b.text("fixed", 0.5)}, options)),
              "points that epoch2.inp holds at other coordinates than epoch1.inp: P1, P2\n"
              "hold them at the same coordinates, or leave out --held\n");
}

TEST(Compare, GivesVelocitiesOfThreeEpochs)
{
    const double rate = 0.010; // metres a year
    std::vector<std::string> texts;
    const char *const dates[] = {"2026-01-01", "2026-07-02 12:00", "2027-01-01", "2028-01-01"};
    const double years[] = {0, 182.5 / 365.25, 365 / 365.25, 730 / 365.25};
    for (unsigned e = 0; e < 4; e++)
        texts.push_back(epoch(20 + e, moved("D1", rate * years[e], 0), "date = \"" + std::string(dates[e]) + "\"\n"));
    const Comparison c = compared(texts);
    ASSERT_TRUE(c.made()) << words(c);
    EXPECT_EQ(c.congruence.h, 3 * 11);
    const Velocity &v = *point(c, "D1").velocity;
    EXPECT_NEAR(*v.by[0], rate, 4 * *v.deviation[0]);
    EXPECT_NEAR(*v.by[1], 0, 4 * *v.deviation[1]);
    EXPECT_LT(*v.deviation[0], 0.0006);
    EXPECT_FALSE(v.moving.passed());
    EXPECT_TRUE(v.steady.passed());
    EXPECT_EQ(v.steady.h, 4);
    EXPECT_TRUE(point(c, "P1").velocity->moving.passed());
}

// Without motion a test at 20 % rejects 20 % of 400: 80, with a standard deviation of 8.
TEST(Compare, RejectsAsOftenAsTheLevelSays)
{
    std::mt19937 engine(99);
    std::normal_distribution<double> error(0, 0.001);
    const auto levelling = [&] {
        std::string text = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z\nA 0\nB 1\nC 2\nD 3\n'''\n"
                           "height_differences = '''\nfrom to value sigma\n";
        const char names[] = "ABCD";
        for (int i = 0; i < 4; i++)
            for (int j = i + 1; j < 4; j++)
                text += std::string(1, names[i]) + " " + names[j] + " " + number(j - i + error(engine)) + " 0.001\n";
        return text + "'''\n";
    };
    CompareOptions options;
    options.level = 0.2;
    int alarms = 0, point_alarms = 0;
    for (int run = 0; run < 400; run++) {
        const Comparison c = compared({levelling(), levelling()}, options);
        ASSERT_TRUE(c.made()) << words(c);
        alarms += !c.congruence.passed();
        if (c.congruence.passed()) continue;
        point_alarms += (int)c.departures.size();
    }
    EXPECT_NEAR(alarms, 80, 4 * 8);
    EXPECT_GE(point_alarms, alarms);
}

TEST(Compare, RefusesWhatCannotBeCompared)
{
    const std::string a = epoch(30, truth), b = epoch(31, truth);
    std::string heights = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z\nA 0\nB 1\n'''\n"
                          "height_differences = '''\nfrom to value sigma\nA B 1 0.001\n'''\n";
    EXPECT_EQ(words(compared({a, heights})), "epoch1.inp has dimension 2, epoch2.inp 1\n"
                                             "compare epochs of the same dimension\n");
    CompareOptions options;
    options.epochs.points = {"P1", "Q9"};
    EXPECT_EQ(words(compared({a, b}, options)), "points to compare that not all epochs have in use: Q9\n"
                                                "name points that stand in every file\n");
    options.epochs.points = {"P1"};
    EXPECT_EQ(words(compared({a, b}, options)),
              "the epochs share 1 points with 2 coordinates, and leave 2 motions open: nothing is left to compare\n"
              "compare more points, or observe what fixes the networks to one another\n");
    options.epochs.points.clear();
    options.epochs.dates = {"2026-05-01", "2026-04-01"};
    EXPECT_EQ(words(compared({a, b}, options)),
              "epoch2.inp: its date 2026-04-01 is not behind 2026-05-01 of epoch1.inp\n"
              "name the files in the order of time\n");
    options.epochs.dates = {"2026-05-01"};
    EXPECT_EQ(words(compared({a, b}, options)), "1 dates for 2 epochs\ngive one date for each file\n");
    options.epochs.dates = {"2026-05-01", "2026-02-30"};
    EXPECT_EQ(words(compared({a, b}, options)), "\"2026-02-30\" is not a date\nwrite it like 2026-05-01\n");
}

// 1501 points of a levelled line in three epochs.
TEST(Compare, SaysWhereItsMatricesWouldBeTooLarge)
{
    std::string text = "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z\n";
    for (int i = 0; i <= 1500; i++) text += "N" + std::to_string(i) + " 0\n";
    text += "'''\nheight_differences = '''\nfrom to value sigma\n";
    for (int i = 0; i < 1500; i++) text += "N" + std::to_string(i) + " N" + std::to_string(i + 1) + " 0 0.001\n";
    text += "'''\n";
    EXPECT_EQ(words(compared({text, text, text})),
              "1501 points in 3 epochs are 3002 differences of coordinates; at most 3000 can be compared at once, as "
              "their matrices are full\nname the points to compare with --points; all observations still take part\n");
    CompareOptions options;
    options.epochs.points = {"N0", "N700", "N1500"};
    const Comparison c = compared({text, text, text}, options);
    ASSERT_TRUE(c.made()) << words(c);
    EXPECT_EQ(c.points.size(), 3u);
    EXPECT_TRUE(c.congruence.passed());
}

TEST(Compare, NamesTheEpochThatCannotBeAdjusted)
{
    const std::string a = epoch(40, truth);
    std::string loose = a;
    loose.insert(loose.find("'''\ndistances"), "Q 10 10\n");
    const Comparison c = compared({a, loose});
    EXPECT_FALSE(c.made());
    EXPECT_FALSE(c.bad_input);
    EXPECT_EQ(c.words[0].rfind("epoch2.inp (its held coordinates are free in a comparison): ", 0), 0u) << words(c);
}

TEST(CompareReport, NamesThePointsThatMoved)
{
    const Comparison c = compared({epoch(3, truth), epoch(4, moved("D2", 0.006, -0.004))});
    const std::string report = compare_report(c, "today");
    EXPECT_NE(report.find("\n1 of 7 points moved at a level of 5.0 %: D2\n"), std::string::npos) << report;
    const Comparison still = compared({epoch(3, truth), epoch(4, truth)});
    EXPECT_NE(compare_report(still, "today").find("At a level of 5.0 % no point moved against the others."),
              std::string::npos);
}

// Textbook quantiles: F 0.95 of 8 and 24 is 2.36, chi-square 0.95 of 10 is 18.307.
namespace {

// What stands in a page between its marks of data.
nlohmann::json data_of(const std::string &page)
{
    const std::string mark = "id=\"results\">";
    const size_t at = page.find(mark) + mark.size();
    return nlohmann::json::parse(page.substr(at, page.find("</script>", at) - at));
}

} // namespace

TEST(ComparePage, HoldsTheShiftsOfTheComparison)
{
    const Comparison c = compared({epoch(1, truth), epoch(2, moved("D2", 0.01, 0.004))});
    const nlohmann::json data = data_of(compare_html(c, "0.1", "2026-05-01 12:00 UTC")), &points = data["points"];
    ASSERT_EQ(points["name"].size(), c.points.size());
    EXPECT_EQ(data["verdict"][0], compare_verdict(c));
    for (size_t i = 0; i < c.points.size(); i++) {
        const PointComparison &p = c.points[i];
        EXPECT_EQ(points["name"][i], p.name);
        EXPECT_EQ(points["role"][i], p.name == "D2" ? "moved" : "stable");
        for (const Place &t : truth)
            if (t.name == p.name) {
                EXPECT_NEAR(points["adjusted"][0][i].get<double>(), t.x, 0.01) << p.name;
            }
        const nlohmann::json &move = points["moves"][i][0];
        EXPECT_EQ(move["by"][1], *p.shifts[0].by[1]);
        EXPECT_TRUE(move["by"][2].is_null());
        EXPECT_EQ(move["ellipse"]["a"], p.shifts[0].ellipse->a);
        EXPECT_EQ(move["test"]["passed"], p.shifts[0].test.passed());
    }
}

// Every pillar sees all points but itself.
TEST(ComparePage, KnowsBetweenWhichPointsWasObserved)
{
    const Comparison c = compared({epoch(1, truth), epoch(2, truth)});
    EXPECT_EQ(c.sights.size(), 4u * 3 / 2 + 4u * 3);
    for (const auto &[a, b] : c.sights) {
        EXPECT_LT(a, b);
        EXPECT_TRUE(c.points[(size_t)a].name[0] == 'P' || c.points[(size_t)b].name[0] == 'P');
    }
}

TEST(FisherTest, HasThePublishedLimits)
{
    EXPECT_NEAR(fisher_limit(0.05, 8, 24), 2.36, 0.005);
    EXPECT_NEAR(fisher_limit(0.05, 10, INFINITY), 1.8307, 1e-4);
    const FisherTest t = fisher_test(18.307, 10, {1, INFINITY}, 0.05);
    EXPECT_NEAR(t.p, 0.05, 1e-5);
    EXPECT_FALSE(fisher_test(3, 0, {1, 5}, 0.05).made());
    EXPECT_EQ(fisher_test(1e-9, 2, {0, 5}, 0.05).p, 0.0); // exact observations, and a motion
    EXPECT_TRUE(fisher_test(0, 2, {0, 5}, 0.05).passed());
}

// The whole road of a group: stretched by 30 ppm along x and turned, of which free epochs tell the stretch alone.
TEST(Compare, TellsTheStrainOfAGroup)
{
    std::vector<Place> places = truth;
    for (Place &p : places) {
        const double x = p.x, y = p.y;
        p.x = x + 30e-6 * x - 1e-4 * y;
        p.y = y + 1e-4 * x;
    }
    CompareOptions options;
    options.groups = {{"P1", "P2", "P3", "P4", "D1"}, {"D1", "D2", "D3"}};
    const Comparison c = compared({epoch(8, truth), epoch(9, places)}, options);
    ASSERT_TRUE(c.made()) << words(c);
    ASSERT_EQ(c.strains.size(), 2u);
    const Strain &s = c.strains[0].epochs[0];
    ASSERT_TRUE(s.made());
    EXPECT_LT(s.elements[0].deviation, 5e-6);
    EXPECT_NEAR(s.elements[0].value, 30e-6, 4 * s.elements[0].deviation);
    EXPECT_NEAR(s.elements[1].value, 0.0, 4 * s.elements[1].deviation);
    EXPECT_NEAR(s.elements[2].value, 0.0, 4 * s.elements[2].deviation);
    EXPECT_TRUE(s.mean.has_value());
    EXPECT_FALSE(s.turns[0]); // directions and distances leave the turn open
    EXPECT_FALSE(s.strained.passed());
    EXPECT_TRUE(s.homogeneous.passed());
    const std::string report = compare_report(c, ""), json = compare_json(c, "");
    EXPECT_NE(report.find("Strain of P1, P2, P3, P4, D1 from epoch1.inp to epoch2.inp"), std::string::npos);
    EXPECT_NE(json.find("\"strains\""), std::string::npos);
    const nlohmann::json shown = data_of(compare_html(c, "0.1", "today"))["comparison"]["strains"][0];
    EXPECT_EQ(shown["points"][4], "D1");
    EXPECT_EQ(shown["epochs"][0]["values"][1]["name"], "exx");
    EXPECT_EQ(shown["epochs"][0]["values"][1]["value"], s.elements[0].value);
    EXPECT_EQ(shown["epochs"][0]["strained"]["p"], s.strained.p);
    CompareOptions unknown;
    unknown.groups = {{"P1", "P2", "X"}};
    const Comparison refused = compared({epoch(8, truth), epoch(9, places)}, unknown);
    EXPECT_EQ(words(refused).find("the strain of a group needs shifts in x and y of point X"), 0u);
    EXPECT_TRUE(refused.bad_input);
}

// Whatever comes back, the points that are stable in the end are those that pass together, as a comparison of them
// alone says; and all that stayed out would fail with them.
TEST(Compare, TriesPointsAgainWithTheOthers)
{
    int again = 0;
    for (unsigned seed = 1; seed <= 12; seed++) {
        std::vector<Place> places = truth;
        for (const size_t p : {3, 4, 5}) places[p].x += 0.0015, places[p].y -= 0.001;
        const std::vector<std::string> texts = {epoch(2 * seed, truth), epoch(2 * seed + 1, places)};
        const Comparison c = compared(texts);
        ASSERT_TRUE(c.made()) << words(c);
        again += (int)c.taken_again.size();
        if (!c.stable_found || c.departures.empty()) continue;
        CompareOptions options;
        for (const PointComparison &p : c.points)
            if (p.stable) options.epochs.points.push_back(p.name);
        EXPECT_EQ(options.epochs.points.size(), c.points.size() - c.departures.size() + c.taken_again.size());
        const Comparison alone = compared(texts, options);
        EXPECT_TRUE(c.stable.passed());
        EXPECT_NEAR(alone.congruence.value, c.stable.value, 1e-3 * c.stable.value + 1e-6) << seed;
        EXPECT_EQ(alone.congruence.h, c.stable.h);
    }
    RecordProperty("taken_again", again);
}
