#include <errno.h>
#include <gtest/gtest.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "runs/moving_wall.h"
#include "vorn/sidefiles.h"
#include "support/access.h"
#include "support/faults.h"
#include "support/workfolder.h"

using namespace vornengine;

namespace {

using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

// "simili.out" goes into the working directory.
class UseSimili : public testing::Test {
    WorkFolder folder;
};

// A network split by epoch as a run leaves it: targets in lumps, each with a copy for every
// epoch at which station "S" sighted it. The copies stand where the motion of their epoch
// takes the point; an epoch without motion shows the points themselves.
class Split {
public:
    explicit Split(Ints epochs_) : net(3), epochs(std::move(epochs_))
    {
        net.p.lumpmethod = 9;
        net.station("S", 0, 0);
        add(nullptr, "S", 0, 0, 0);
    }

    void target(const std::string &name, int lump, double x, double y, double z, const Ints &seen)
    {
        net.target(name.c_str(), x, y, z).ilump = lump;
        for (const int epoch : epochs)
            for (const int e : seen)
                if (e == epoch) {
                    const auto m = motions.find(epoch);
                    add(m == motions.end() ? nullptr : &m->second, name, x, y, z);
                }
        sightings.push_back({name, seen});
    }

    // Points A, B, C, ... of a lump on a bent grid, seen at all epochs.
    void lump_of(int lump, const std::string &names)
    {
        for (size_t i = 0; i < names.size(); i++) {
            const double *x = grid(i);
            target(std::string(1, names[i]), lump, x[0] + lump, x[1], x[2], epochs);
        }
    }

    static const double *grid(size_t i)
    {
        static const double x[][3] = {{10, 2, 1}, {14, 3, 0}, {12, 9, 2}, {17, 8, 5}, {11, 5, 7}, {16, 1, 4}};
        return x[i % 6];
    }

    vorn &load()
    {
        for (const int epoch : epochs)
            for (const auto &s : sightings)
                for (const int e : s.epochs)
                    if (e == epoch) net.direction("S", s.name.c_str(), 0.5, 0.1).time = epoch;
        run = std::make_unique<vorn>(net.ready());
        V(*run, points) = (point *)calloc(points.size(), sizeof(point));
        for (size_t i = 0; i < points.size(); i++) at((int)i) = points[i];
        V(*run, npoints) = (int)points.size();
        V(*run, nsta) = 1;
        V(*run, ntar) = (int)points.size() - 1;
        V(*run, dir1) = (measure *)calloc(net.directions.size() + 1, sizeof(measure));
        for (const measure_input &host : net.directions) {
            measure &m = V(*run, dir1)[V(*run, ndir1)++];
            m.p1 = &at(0);
            m.p2 = find(host.to);
            m.time = host.time;
        }
        return *run;
    }

    // Works the lumps out; the destructor of the run would do it once more.
    int use(int mode = 1)
    {
        load();
        return use_again(mode);
    }
    int use_again(int mode)
    {
        const int result = (V(*run, usesimili)(mode));
        net.p.lumpmethod = 1;
        return result;
    }

    point &at(int i) { return V(*run, points)[i]; }
    point *find(const std::string &name, int copy = 0)
    {
        for (int i = 0; i < V(*run, npoints); i++)
            if (name == at(i).name && copy-- == 0) return &at(i);
        return nullptr;
    }
    const lump &record(int b) { return V(*run, lumps)[b]; }
    int nlump() { return V(*run, nlump); }
    const Lines &lines() { return net.messages.lines; }

    // The points of a report line that begins with a text.
    Lines report_lines(const std::string &begin)
    {
        Lines found;
        const std::string text = net.report();
        for (size_t at = 0; at < text.size();) {
            const size_t end = text.find('\n', at);
            if (text.compare(at, begin.size(), begin) == 0) found.push_back(text.substr(at, end - at));
            at = end + 1;
        }
        return found;
    }

    Network net;
    std::map<int, Motion> motions;
    std::unique_ptr<vorn> run;

private:
    void add(const Motion *m, const std::string &name, double x, double y, double z)
    {
        point p = point();
        strcpy(p.name, name.c_str());
        const double from[3] = {x, y, z};
        memcpy(p.xpt, from, sizeof from);
        if (m) m->apply(from, p.xpt);
        points.push_back(p);
    }

    struct Sighting {
        std::string name;
        Ints epochs;
    };
    Ints epochs;
    std::vector<point> points;
    std::vector<Sighting> sightings;
};

Motion some_motion(double f = 1.0)
{
    Motion m;
    const double t[3] = {0.25, -1.5, 0.75}, r[3] = {0.02, -0.03, 0.05};
    for (int k = 0; k < 3; k++) {
        m.t[k] = f * t[k];
        m.r[k] = f * r[k];
    }
    m.scale = 1.0 + 0.002 * f;
    return m;
}

double value(const lump &l, int e, int k)
{
    const double *const fields[] = {l.tx, l.ty, l.tz, l.rx, l.ry, l.rz, l.scale};
    return fields[k][e];
}

// ---- the two operations on one motion ----

TEST_F(UseSimili, BuildsTheRotationOfAMotion)
{
    Split s({1, 2});
    s.lump_of(1, "ABC");
    s.load();
    V(*s.run, lumps) = (lump *)calloc(1, sizeof(lump));
    V(*s.run, nlump) = 1;
    lump &l = V(*s.run, lumps)[0];
    l.nepoch = 3;
    double **const fields[] = {&l.tx, &l.ty, &l.tz, &l.rx, &l.ry, &l.rz, &l.scale};
    l.epoch = (int *)calloc(2, sizeof(int));
    const Motion m = some_motion(7.0);
    for (int k = 0; k < 7; k++) {
        *fields[k] = (double *)calloc(2, sizeof(double));
        (*fields[k])[1] = m.value(k);
    }
    double r[3][3];
    (V(*s.run, backtrans)(0, 1, r));
    Motion turn = m;
    turn.scale = 1.0;
    for (double &t : turn.t) t = 0.0;
    for (int c = 0; c < 3; c++) {
        const double unit[3] = {c == 0 ? 1.0 : 0.0, c == 1 ? 1.0 : 0.0, c == 2 ? 1.0 : 0.0};
        double column[3];
        turn.apply(unit, column);
        for (int k = 0; k < 3; k++) EXPECT_NEAR(r[k][c], column[k], 1e-15);
    }

    const double x[3] = {3.0, -4.0, 5.0};
    m.apply(x, s.at(2).xpt);
    (V(*s.run, backsol)(0, 1, r, 2));
    for (int k = 0; k < 3; k++) EXPECT_NEAR(s.at(2).xpt[k], x[k], 1e-14);
    l.scale[1] = 0.0; // what a host may hold it at
    (V(*s.run, backsol)(0, 1, r, 2));
    for (int k = 0; k < 3; k++) EXPECT_FALSE(std::isfinite(s.at(2).xpt[k]));
    s.net.p.lumpmethod = 1;
}

// ---- motions ----

TEST_F(UseSimili, FindsTheMotionOfALumpBetweenTwoEpochs)
{
    Split s({5, 7});
    s.motions[7] = some_motion();
    s.lump_of(3, "ABCD");
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.lines(), Lines());
    ASSERT_EQ(s.nlump(), 1);
    EXPECT_EQ(s.record(0).id, 3);
    EXPECT_EQ(s.record(0).kind, 0);
    EXPECT_EQ(s.record(0).nepoch, 2);
    EXPECT_EQ(s.record(0).iref, 5);
    EXPECT_EQ(s.record(0).epoch[0], 7);
    for (int k = 0; k < 7; k++) EXPECT_NEAR(value(s.record(0), 0, k), some_motion().value(k), 1e-9) << k;
}

TEST_F(UseSimili, GivesEveryPointOneCoordinate)
{
    Split s({5, 7});
    s.motions[7] = some_motion();
    s.lump_of(3, "ABCD");
    ASSERT_EQ(s.use(), 0);
    for (size_t i = 0; i < 4; i++) {
        const std::string name(1, (char)('A' + i));
        for (int k = 0; k < 3; k++) {
            EXPECT_NEAR(s.find(name, 0)->xpt[k], Split::grid(i)[k] + (k == 0 ? 3 : 0), 1e-9);
            EXPECT_EQ(s.find(name, 0)->xpt[k], s.find(name, 1)->xpt[k]);
        }
    }
}

TEST_F(UseSimili, LeavesThePointsWhereTheyAreInAnotherMode)
{
    for (const int mode : {0, 2}) {
        Split s({5, 7});
        s.motions[7] = some_motion();
        s.lump_of(3, "ABCD");
        ASSERT_EQ(s.use(mode), 0);
        EXPECT_NEAR(value(s.record(0), 0, 0), some_motion().t[0], 1e-9);
        double moved[3];
        const double x[3] = {Split::grid(1)[0] + 3, Split::grid(1)[1], Split::grid(1)[2]};
        some_motion().apply(x, moved);
        for (int k = 0; k < 3; k++) {
            EXPECT_EQ(s.find("B", 0)->xpt[k], x[k]);
            EXPECT_EQ(s.find("B", 1)->xpt[k], moved[k]);
        }
    }
}

TEST_F(UseSimili, FindsTheMotionsOfTwoLumpsOverFiveEpochs)
{
    Split s({1, 2, 3, 4, 5});
    for (int epoch = 2; epoch <= 5; epoch++) s.motions[epoch] = some_motion(epoch);
    s.lump_of(8, "ABCD");
    s.lump_of(4, "EFGHI");
    ASSERT_EQ(s.use(), 0);
    ASSERT_EQ(s.nlump(), 2);
    EXPECT_EQ(s.record(0).id, 8);
    EXPECT_EQ(s.record(1).id, 4);
    for (int b = 0; b < 2; b++) {
        ASSERT_EQ(s.record(b).nepoch, 5);
        for (int e = 0; e < 4; e++) {
            EXPECT_EQ(s.record(b).epoch[e], e + 2);
            for (int k = 0; k < 7; k++) EXPECT_NEAR(value(s.record(b), e, k), some_motion(e + 2).value(k), 1e-8);
        }
    }
}

TEST_F(UseSimili, AveragesTheCopiesOfAPoint)
{
    Split s({1, 2});
    s.lump_of(1, "ABCDEF");
    s.load();
    // a shift of 0.02 in x that one point does not follow: it shows half of the misfit
    for (const char *name : {"A", "B", "C", "D", "E", "F"}) s.find(name, 1)->xpt[0] += 0.02;
    ASSERT_EQ(s.use_again(1), 0);
    const double *a = s.find("A", 0)->xpt, *b = s.find("A", 1)->xpt;
    for (int k = 0; k < 3; k++) EXPECT_EQ(a[k], b[k]);
    EXPECT_NEAR(a[0], 11.0, 1e-9); // back by 0.02, and the mean of two equal values
    Split t({1, 2});
    t.lump_of(1, "ABCDEF");
    t.load();
    t.find("C", 1)->xpt[2] += 0.006;
    const double before = t.find("C", 0)->xpt[2];
    ASSERT_EQ(t.use_again(1), 0);
    EXPECT_GT(t.find("C", 0)->xpt[2], before + 0.0005); // the mean takes part of the misfit
    EXPECT_LT(t.find("C", 0)->xpt[2], before + 0.003);
}

// ---- which epochs ----

TEST_F(UseSimili, LeavesAnEpochOfTwoCopiesAlone)
{
    Split s({1, 2, 3});
    s.motions[2] = s.motions[3] = some_motion();
    for (const char *name : {"A", "B", "C", "D"}) {
        const double *x = Split::grid((size_t)(*name - 'A'));
        s.target(name, 1, x[0], x[1], x[2], *name < 'C' ? Ints{1, 2, 3} : Ints{1, 3});
    }
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.record(0).nepoch, 2);
    EXPECT_EQ(s.record(0).epoch[0], 3);
    double moved[3];
    some_motion().apply(Split::grid(0), moved);
    for (int k = 0; k < 3; k++) {
        EXPECT_EQ(s.find("A", 1)->xpt[k], moved[k]); // at epoch 2 as adjusted
        EXPECT_NEAR(s.find("A", 0)->xpt[k], Split::grid(0)[k], 1e-9);
        EXPECT_NEAR(s.find("A", 2)->xpt[k], Split::grid(0)[k], 1e-9);
    }
}

TEST_F(UseSimili, TakesTheLastOfTheBestEpochsWhenTheFirstIsUnusable)
{
    Split s({1, 2, 3, 4});
    s.target("A", 1, 10, 2, 1, {1, 2, 3, 4});
    s.target("B", 1, 14, 3, 0, {1, 2, 3, 4});
    s.target("C", 1, 12, 9, 2, {2, 3, 4});
    s.target("D", 1, 17, 8, 5, {2, 3});
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.record(0).iref, 3);
    EXPECT_EQ(s.record(0).nepoch, 3);
    EXPECT_EQ(s.record(0).epoch[0], 2);
    EXPECT_EQ(s.record(0).epoch[1], 4);
}

TEST_F(UseSimili, TakesTheFirstEpochEvenWhenOthersShowMore)
{
    Split s({6, 2});
    s.target("A", 1, 10, 2, 1, {6, 2});
    s.target("B", 1, 14, 3, 0, {6, 2});
    s.target("C", 1, 12, 9, 2, {6, 2});
    s.target("D", 1, 17, 8, 5, {2});
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.record(0).iref, 6);
}

// A definition of lump 1.
struct Definition {
    Definition(int kind, int iref, Ints epochs_ = {}, int code = CODE_FREE, double scale = 1.0)
        : epochs(std::move(epochs_)), codes(epochs.size(), code), scales(epochs.size(), scale)
    {
        d.id = 1;
        d.kind = kind;
        d.iref = iref;
        d.n = (int)epochs.size();
        d.epoch = epochs.data();
        d.code = codes.data();
        d.scale = scales.data();
    }
    Definition(const Definition &) = delete;
    lump_definition d = lump_definition();
    Ints epochs, codes;
    std::vector<double> scales;
};

TEST_F(UseSimili, TakesTheReferenceOfTheDefinitionWhenItIsUsable)
{
    for (const int iref : {3, 4, 9, 0, -2}) {
        Split s({1, 2, 3, 4});
        for (const char *name : {"A", "B", "C"}) {
            const double *x = Split::grid((size_t)(*name - 'A'));
            s.target(name, 1, x[0], x[1], x[2], *name == 'C' ? Ints{1, 2, 3} : Ints{1, 2, 3, 4});
        }
        Definition d(0, iref);
        s.net.lumpdefs.push_back(d.d);
        ASSERT_EQ(s.use(), 0);
        EXPECT_EQ(s.record(0).iref, iref == 3 ? 3 : 1) << iref;
        EXPECT_EQ(s.record(0).epoch[0], iref == 3 ? 1 : 2);
    }
}

// ---- which parameters ----

TEST_F(UseSimili, EstimatesNoRotationOfKindOne)
{
    Split s({1, 2});
    s.motions[2] = some_motion();
    for (double &r : s.motions[2].r) r = 0.0;
    s.lump_of(1, "ABCD");
    Definition d(1, 0);
    s.net.lumpdefs.push_back(d.d);
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.record(0).kind, 1);
    for (int k = 3; k < 6; k++) EXPECT_EQ(value(s.record(0), 0, k), 0.0);
    for (int k = 0; k < 7; k++) EXPECT_NEAR(value(s.record(0), 0, k), s.motions[2].value(k), 1e-9);
    for (int k = 0; k < 3; k++) EXPECT_NEAR(s.find("D", 1)->xpt[k], Split::grid(3)[k] + (k == 0 ? 1 : 0), 1e-9);
}

TEST_F(UseSimili, HoldsTheScaleOfKindTwoWhateverTheReferenceOfTheDefinition)
{
    Split s({1, 2, 3});
    s.motions[2] = some_motion();
    s.motions[3] = some_motion(2.0);
    s.lump_of(1, "ABCD");
    Definition d(2, 77, {2, 3}, CODE_FIXED, 1.5);
    s.net.lumpdefs.push_back(d.d);
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.record(0).kind, 2);
    EXPECT_EQ(s.record(0).scale[0], 1.0);
    EXPECT_EQ(s.record(0).scale[1], 1.0);
}

TEST_F(UseSimili, HoldsAScaleThatTheDefinitionFixesForTheReference)
{
    struct {
        int kind, iref, code;
        double scale;
        bool held;
    } const cases[] = {
        {0, 1, CODE_FIXED, 1.01, true}, {5, 1, CODE_FIXED, 1.01, true}, {0, 9, CODE_FIXED, 1.01, false},
        {0, 1, CODE_FREE, 1.01, false}, {0, 1, CODE_FIXED, 0.0, false}, {0, 0, CODE_FIXED, 1.01, false},
    };
    for (const auto &c : cases) {
        Split s({1, 2, 3});
        s.motions[2] = some_motion();
        s.motions[3] = some_motion(2.0);
        s.lump_of(1, "ABCD");
        Definition d(c.kind, c.iref, {3}, c.code, c.scale);
        s.net.lumpdefs.push_back(d.d);
        ASSERT_EQ(s.use(), 0);
        EXPECT_EQ(s.record(0).epoch[1], 3);
        EXPECT_EQ(s.record(0).kind, c.kind);
        EXPECT_NEAR(s.record(0).scale[0], 1.002, 1e-9);
        EXPECT_NEAR(s.record(0).scale[1], c.held ? 1.01 : 1.004, c.held ? 0.0 : 1e-9);
    }
}

TEST_F(UseSimili, LetsTheReferenceGrowFromEpochToEpoch)
{
    Split s({1, 2, 3});
    s.motions[2] = some_motion();
    s.motions[3] = some_motion(2.0);
    s.net.p.idebug = 1;
    const Ints all = {1, 2, 3};
    s.target("A", 1, 10, 2, 1, all);
    s.target("B", 1, 14, 3, 0, {1, 2});
    s.target("C", 1, 12, 9, 2, {1, 2});
    s.target("D", 1, 17, 8, 5, {2, 3}); // comes in with epoch 2, and carries epoch 3
    s.target("E", 1, 11, 5, 7, {2, 3});
    ASSERT_EQ(s.use(), 0);
    ASSERT_EQ(s.record(0).nepoch, 3);
    for (int e = 0; e < 2; e++)
        for (int k = 0; k < 7; k++) EXPECT_NEAR(value(s.record(0), e, k), some_motion(e + 1).value(k), 1e-8);
    for (int copy = 0; copy < 2; copy++) EXPECT_NEAR(s.find("D", copy)->xpt[0], 17.0, 1e-9);
    const std::string report = s.net.report();
    EXPECT_NE(report.find("One additional point at reference epoch\n"
                          "D       17.000000       8.000000       5.000000\n"
                          "One additional point at reference epoch\n"
                          "E       11.000000       5.000000       7.000000\n"),
              std::string::npos)
        << report;
    EXPECT_EQ(s.report_lines("epoch 2"), (Lines{"epoch 2 (5) versus 1 (3)"}));
    EXPECT_EQ(s.report_lines("epoch 3"), (Lines{"epoch 3 (3) versus 1 (5)"}));
}

// ---- the report ----

std::string formatted(const char *format, double a, double b, double c)
{
    char text[200];
    snprintf(text, sizeof text, format, a, b, c);
    return text;
}

// Copies some millimetres off, so that no misfit is a rounding error with a sign of its own.
void disturb(Split &s)
{
    for (int i = 1; i < V(*s.run, npoints); i++)
        for (int k = 0; k < 3; k++) s.at(i).xpt[k] += 0.002 * sin(1.7 * i + 2.9 * k);
}

TEST_F(UseSimili, ReportsMisfitsAndMotions)
{
    Split s({5, 7});
    s.motions[7] = some_motion();
    s.lump_of(3, "ABCD");
    s.load();
    disturb(s);
    std::vector<point> before(&s.at(0), &s.at(0) + V(*s.run, npoints));
    ASSERT_EQ(s.use_again(1), 0);
    const lump &l = s.record(0);
    Motion m;
    for (int k = 0; k < 3; k++) {
        m.t[k] = value(l, 0, k);
        m.r[k] = value(l, 0, 3 + k);
    }
    m.scale = l.scale[0];
    std::string wanted = "\nBetween epochs 7 and 5\n";
    for (int i = 0; i < 4; i++) {
        double z[3];
        const double *y = before[(size_t)(2 + 2 * i)].xpt;
        m.apply(before[(size_t)(1 + 2 * i)].xpt, z);
        wanted += std::string(1, (char)('A' + i));
        wanted += formatted("  %20.6lf%16.6lf%16.6lf\n", y[0] - z[0], y[1] - z[1], y[2] - z[2]);
    }
    wanted += "\nLump 3 observed at 2 epochs is made of:\n     A\n     B\n     C\n     D\n\nEpoch 7 versus 5\n";
    wanted += formatted("translation%19.6lf%16.6lf%16.6lf\n", m.t[0], m.t[1], m.t[2]);
    wanted += formatted("rotation     %17.6lf %15.6lf %15.6lf\n", m.r[0], m.r[1], m.r[2]);
    wanted += formatted("scale        %17.6lf\n", m.scale, 0, 0);
    EXPECT_EQ(s.net.report(), wanted);
}

TEST_F(UseSimili, TracesItsStepsOnRequest)
{
    Split s({5, 7});
    s.net.p.idebug = 1;
    s.lump_of(3, "ABC");
    s.load();
    s.find("B", 1)->xpt[1] = 3.25; // at epoch 7
    ASSERT_EQ(s.use_again(1), 0);
    const std::string report = s.net.report(), wanted = "\nlump 3 has 3 points\n"
                                                        "A     1    2  \n"
                                                        "B     3    4  \n"
                                                        "C     5    6  \n"
                                                        "at reference epoch\n"
                                                        "A       13.000000       2.000000       1.000000\n"
                                                        "B       17.000000       3.000000       0.000000\n"
                                                        "C       15.000000       9.000000       2.000000\n"
                                                        "\n"
                                                        "epoch 7 (3) versus 5 (3)\n"
                                                        "A       13.000000       2.000000       1.000000\n"
                                                        "B       17.000000       3.250000       0.000000\n"
                                                        "C       15.000000       9.000000       2.000000\n"
                                                        "usesimili: startsimili returns 0\n"
                                                        "usesimili: runsimili returns 0\n"
                                                        "Between epochs 7 and 5\n";
    EXPECT_EQ(report.substr(0, wanted.size()), wanted);
}

// ---- what cannot be compared ----

TEST_F(UseSimili, GoesOnWithTheNextLumpAfterAFailure)
{
    Split s({1, 2});
    s.lump_of(1, "ABC");
    s.lump_of(2, "DEF");
    s.load();
    V(*s.run, dir1)[0].time = 0; // the copies of A and its sightings disagree
    ASSERT_EQ(s.use_again(1), 0);
    EXPECT_EQ(s.lines(), (Lines{"usesimili: pb with ntot"}));
    ASSERT_EQ(s.nlump(), 2);
    EXPECT_EQ(s.record(0).id, 1);
    EXPECT_EQ(s.record(0).nepoch, 2); // its record as it stood
    EXPECT_EQ(s.record(0).epoch[0], 0);
    EXPECT_EQ(s.record(0).scale[0], 0.0);
    EXPECT_EQ(s.record(1).epoch[0], 2);
    EXPECT_NEAR(s.record(1).scale[0], 1.0, 1e-9);
}

TEST_F(UseSimili, PassesOverAnEpochWithFewerThanThreePointsOfTheReference)
{
    Split s({1, 2, 3});
    s.net.p.idebug = 1;
    for (const char *name : {"A", "B", "C"}) {
        const double *x = Split::grid((size_t)(*name - 'A'));
        s.target(name, 1, x[0], x[1], x[2], *name == 'C' ? Ints{1, 3} : Ints{1, 2, 3});
    }
    s.target("D", 1, 17, 8, 5, {2});
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.report_lines("usesimili: "),
              (Lines{"usesimili: startsimili returns 3", "usesimili: startsimili returns 0",
                     "usesimili: runsimili returns 0"}));
    ASSERT_EQ(s.record(0).nepoch, 2);
    EXPECT_EQ(s.record(0).epoch[0], 3);
    EXPECT_EQ(s.find("D")->xpt[0], 17.0);
    EXPECT_TRUE(s.lines().empty());
}

// The copies of an epoch whose comparison fails are not moved, but they are copies of the point.
TEST_F(UseSimili, AveragesTheCopiesOfAnEpochThatCouldNotBeComparedAsWell)
{
    Split s({1, 2, 3});
    s.motions[2].t[0] = 0.3;
    for (const char *name : {"A", "B", "C"}) {
        const double *x = Split::grid((size_t)(*name - 'A'));
        s.target(name, 1, x[0], x[1], x[2], *name == 'C' ? Ints{1, 3} : Ints{1, 2, 3});
    }
    s.target("D", 1, 17, 8, 5, {2}); // epoch 2 shows three points, but only two of the reference
    ASSERT_EQ(s.use(), 0);
    ASSERT_EQ(s.record(0).nepoch, 2);
    for (const char *name : {"A", "B"})
        for (int copy = 0; copy < 3; copy++)
            EXPECT_NEAR(s.find(name, copy)->xpt[0], Split::grid((size_t)(*name - 'A'))[0] + 0.3 / 3, 1e-6);
    EXPECT_NEAR(s.find("C")->xpt[0], Split::grid(2)[0], 1e-6);
    EXPECT_NEAR(s.find("D")->xpt[0], 17.3, 1e-9);
}

TEST_F(UseSimili, ReportsALumpWithoutUsableEpoch)
{
    Split s({1, 2});
    s.target("A", 1, 10, 2, 1, {1, 2});
    s.target("B", 1, 14, 3, 0, {1, 2});
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.lines(), (Lines{"usesimili: pb loading pref"}));
    EXPECT_EQ(s.net.report(), "\n\nLump 1 observed at 1 epochs is made of:\n     A\n     B\n");
    EXPECT_EQ(s.record(0).nepoch, 1);
    EXPECT_EQ(s.record(0).iref, 2); // the last of equal counts
    EXPECT_EQ(s.find("A", 1)->xpt[0], 10.0);
}

// The motion is there when the disk is full, and it is not when the file cannot be opened.
TEST_F(UseSimili, EntersWhyItsReportIsLost)
{
    for (const int wanted : {0, ENOSPC, EISDIR}) {
        std::filesystem::remove("simili.out");
        if (wanted == ENOSPC) std::filesystem::create_symlink("/dev/full", "simili.out");
        if (wanted == EISDIR) std::filesystem::create_directory("simili.out");
        Split s({5, 7});
        s.motions[7] = some_motion();
        s.lump_of(3, "ABCD");
        s.load();
        side_files files = side_files();
        side_files::watch(*s.run, &files);
        ASSERT_EQ(s.use_again(1), 0);
        EXPECT_EQ(files.similarities, wanted);
        EXPECT_EQ(files.rejects, 0);
        EXPECT_EQ(files.cofactors, 0);
        ASSERT_EQ(s.nlump(), 1);
        EXPECT_EQ(s.record(0).nepoch, wanted == EISDIR ? 1 : 2);
    }
}

TEST_F(UseSimili, KnowsNoLumpsOfAStoppedRun)
{
    Network n(3);
    n.p.lumpmethod = 9;
    n.station("S", 0, 0).ilump = 3;
    n.direction("S", "T", 1, 1).time = 2;
    vorn run(n.ready());
    V(run, npoints) = 7; // counted, but there are no points
    V(run, ndir1) = 5;
    EXPECT_EQ((V(run, usesimili)(1)), 0);
    ASSERT_EQ(V(run, nlump), 1);
    EXPECT_EQ(V(run, lumps)[0].nepoch, 1);
    EXPECT_EQ(n.messages.lines, (Lines{"usesimili: Could not load tab"}));
    V(run, npoints) = V(run, ndir1) = 0;
}

// The second direction cannot be read; the one behind it has no points.
TEST_F(UseSimili, KnowsTheDirectionsOfARunThatStoppedAmongThem)
{
    Network n(3);
    n.p.lumpmethod = 9;
    n.station("S", 0, 0, 0);
    for (const char *name : {"A", "B", "C"}) {
        n.target(name, 10, 20, 1).ilump = 3;
        n.direction("S", name, name[0] == 'B' ? (double)NAN : 0.5, 1).time = 2;
    }
    vorn run(n.ready());
    EXPECT_EQ(run.vornstart(), -1);
    ASSERT_NE(V(run, dir1), nullptr);
    EXPECT_NE(V(run, dir1)[1].p1, nullptr);
    EXPECT_EQ(V(run, dir1)[2].p1, nullptr);
    EXPECT_EQ((V(run, usesimili)(1)), 0);
    EXPECT_EQ(V(run, nlump), 1);
}

TEST_F(UseSimili, HasNoLumpsWithoutAny)
{
    Split s({1, 2});
    ASSERT_EQ(s.use(), 0);
    EXPECT_EQ(s.nlump(), 0);
    EXPECT_EQ(s.net.report(), "");
    EXPECT_TRUE(s.lines().empty());
}

TEST_F(UseSimili, CanBeUsedTwice)
{
    Split s({5, 7});
    s.motions[7] = some_motion();
    s.lump_of(3, "ABCD");
    ASSERT_EQ(s.use(), 0);
    ASSERT_EQ(s.use_again(1), 0); // the earlier records are released: a leak would show in the sanitizer
    ASSERT_EQ(s.nlump(), 1);
    EXPECT_NEAR(s.record(0).tx[0], 0.0, 1e-9); // the copies agree already
    EXPECT_NEAR(s.record(0).scale[0], 1.0, 1e-9);
}

// ---- memory ----

// Every allocation in turn: what the comparison returns, the line to the user, the line of the
// trace, and the motions that are found of two lumps at two epochs each.
TEST_F(UseSimili, EndsByADocumentedRoadWithoutMemory)
{
    struct Step {
        int count, code;
        const char *line, *trace;
        int motions;
    };
    const Step tables[] = {{6 + 3 * 4, -1, "usesimili: Could not allocate itimetable", "", 0},
                           {2 * 2, 0, "", "", 4}, // indexes, made up for by a search
                           {1, -2, "usesimili: Could not allocate tab", "", 0},
                           {1 + 2 * 9, -3, "usesimili: Could not allocate lumps", "", 0}};
    const Step epoch[] = {{3, 0, "usesimili: pb pend", "usesimili: pb pend", 3},
                          {1, 0, "", "usesimili: startsimili returns 2", 3},
                          {2, 0, "", "usesimili: runsimili returns 1", 3},
                          {4, 0, "", "usesimili: runsimili returns 2", 3}};
    std::vector<Step> steps(tables, tables + 4);
    for (int lump = 0; lump < 2; lump++) {
        steps.push_back({3, 0, "usesimili: pb with pref", "", 2});
        for (int e = 0; e < 2; e++) steps.insert(steps.end(), epoch, epoch + 4);
    }
    steps.push_back({1, 0, "", "", 4}); // one more than there are
    int n = 0;
    for (const Step &step : steps)
        for (int i = 0; i < step.count; i++) {
            Split s({1, 2, 3});
            s.net.p.idebug = 1;
            s.lump_of(1, "ABCD");
            s.lump_of(2, "EFGH");
            s.load();
            fail_allocation(++n);
            EXPECT_EQ(s.use_again(1), step.code) << n;
            EXPECT_EQ(allocations() >= n, &step != &steps.back()) << n;
            fail_allocation(0);
            EXPECT_EQ(s.lines(), step.line[0] ? Lines{step.line} : Lines()) << n;
            EXPECT_EQ(s.nlump(), step.code == 0 ? 2 : 0) << n;
            if (step.code == -1 || step.code == -2) {
                EXPECT_EQ(s.net.report(), "") << n;
            }
            if (step.code == -3) {
                EXPECT_EQ(s.net.report(), "usesimili: Could not allocate lumps\n") << n;
            }
            if (step.trace[0]) {
                EXPECT_EQ(s.report_lines(step.trace), (Lines{step.trace})) << n;
            }
            if (step.code == 0) {
                EXPECT_EQ(s.record(0).nepoch + s.record(1).nepoch, 2 + step.motions) << n;
            }
        }
}

} // namespace
