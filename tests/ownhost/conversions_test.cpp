// The seven operations of the host of these tests, and which of them the engine asks, in which
// mode, wherever an angle comes in or goes out: each operation and mode has a factor of its own.

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <sstream>
#include <string>
#include <vector>

#include "approx/resection.h"
#include "approx/sketch.h"
#include "ownhost/host.h"
#include "support/bare.h"
#include "support/handed.h"
#include "support/simplex_hand.h"
#include "vorn/project.h"
#include "vorn/result.h"

ownhost::Conversions &ownhost::conversions()
{
    static Conversions c;
    return c;
}

double project::rawtoh(int mode, double raw) { return ownhost::conversions().rawtoh[mode] * raw; }
double project::rawtoaz(int mode, double raw) { return ownhost::conversions().rawtoaz[mode] * raw; }
double project::rawtov(int mode, double raw) { return ownhost::conversions().rawtov[mode] * raw; }
double project::htoraw(int mode, double rad) { return ownhost::conversions().htoraw[mode] * rad; }
double project::aztoraw(int mode, double rad) { return ownhost::conversions().aztoraw[mode] * rad; }
double project::vtoraw(int mode, double rad) { return ownhost::conversions().vtoraw[mode] * rad; }

void project::freerun(result *run)
{
    if (!run) return;
    void *const arrays[] = {run->ihost,  run->code1,  run->code2,  run->code3,  run->x0,     run->y0,     run->z0,
                            run->xpt,    run->ypt,    run->zpt,    run->sxpt,   run->sypt,   run->szpt,   run->rx,
                            run->ry,     run->rz,     run->srx,    run->sry,    run->srz,    run->iobs,   run->res,
                            run->sres,   run->iout,   run->inorm,  run->inormb, run->itau,   run->itaub,  run->ell12a,
                            run->ell12b, run->ell12t, run->ell13a, run->ell13b, run->ell13t, run->ell23a, run->ell23b,
                            run->ell23t, run->ilump,  run->iepoch, run->iref,   run->tx,     run->ty,     run->tz,
                            run->lrx,    run->lry,    run->lrz,    run->tscale, run->stx,    run->sty,    run->stz,
                            run->slrx,   run->slry,   run->slrz,   run->stscale};
    for (void *array : arrays) free(array);
    free(run);
    if (run == runresults) runresults = nullptr;
}

namespace {

using ownhost::Converting;
using Numbers = std::vector<double>;

ownhost::Conversions primes()
{
    ownhost::Conversions c;
    const double factors[6][3] = {{41, 2, 3}, {43, 5, 7}, {47, 11, 13}, {2, 3, 5}, {7, 11, 13}, {17, 19, 23}};
    double *const operations[6] = {c.rawtoh, c.rawtoaz, c.rawtov, c.htoraw, c.aztoraw, c.vtoraw};
    for (int i = 0; i < 6; i++)
        for (int mode = 0; mode < 3; mode++) operations[i][mode] = factors[i][mode];
    return c;
}

class Conversions : public testing::Test {
    Converting converting{primes()};
};

// The numbers of the lines that begin with the names of two points.
std::vector<Numbers> rows(const std::string &report, const std::string &from, const std::string &to)
{
    std::vector<Numbers> found;
    std::istringstream lines(report);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string a, b;
        if (!(words >> a >> b) || a != from || b != to) continue;
        found.emplace_back();
        for (double x; words >> x;) found.back().push_back(x);
    }
    return found;
}

void expect_rows(const std::string &report, const std::vector<Numbers> &wanted, double rounding)
{
    const std::vector<Numbers> found = rows(report, "A", "B");
    ASSERT_EQ(found.size(), wanted.size()) << report;
    for (size_t i = 0; i < wanted.size(); i++) {
        ASSERT_EQ(found[i].size(), wanted[i].size()) << report;
        for (size_t k = 0; k < wanted[i].size(); k++) EXPECT_NEAR(found[i][k], wanted[i][k], rounding) << report;
    }
}

TEST_F(Conversions, BringObservedValuesAndDeviationsIn)
{
    Network n(3);
    n.station("A", 0, 0);
    n.target("B", 1, 0);
    n.direction("A", "B", 0.01, 0.001);
    n.azimuth("A", "B", 0.01, 0.001);
    n.vertical("A", "B", 0.01, 0.001);
    vorn run(n.ready());
    ASSERT_EQ((V(run, fill_vorn)()), 0);
    EXPECT_DOUBLE_EQ(V(run, dir1)[0].val[0], 2 * 0.01);
    EXPECT_DOUBLE_EQ(V(run, dir1)[0].val[1], 3 * 0.001);
    EXPECT_DOUBLE_EQ(V(run, az)[0].val[0], 5 * 0.01);
    EXPECT_DOUBLE_EQ(V(run, az)[0].val[1], 7 * 0.001);
    EXPECT_DOUBLE_EQ(V(run, dir2)[0].val[0], 11 * 0.01);
    EXPECT_DOUBLE_EQ(V(run, dir2)[0].val[1], 13 * 0.001);
}

TEST_F(Conversions, ShowTheReadingsOfAResection)
{
    Sketch s(2);
    const int i = s.station("A", 30, 40, 0.3);
    const int t[3] = {s.target("B", 100, 0), s.target("C", 120, 90), s.target("D", 10, 150)};
    for (int k : t) s.sight(i, k);
    s.n.p.idebug = 1;
    s.wire();
    for (int k : t) s.place(k);
    ASSERT_EQ(resec(s.net(), s.tab(), 0, i), 0);
    expect_rows(s.report(), {{3 * (s.bearing(i, t[0]) - 0.3)}}, 5e-6);
}

// Two points in one place; the records that a test lists.
struct Pair : Bare {
    explicit Pair(int d = 3) : Bare(d)
    {
        add("A", 0, 0);
        add("B", 0, 0);
    }
};

TEST_F(Conversions, ShowObservationsInATrace)
{
    Pair pairs;
    pairs.observe(pairs.dir1, 0, 1, 0.1, 0.01);
    pairs.observe(pairs.dir2, 0, 1, 0.2, 0.02);
    pairs.wire(1);
    S(pairs, traceobs)(0);
    expect_rows(pairs.report(), {{3 * 0.1, 19 * 0.2, 2 * 0.01, 17 * 0.02}}, 5e-6);

    Pair lists; // unlike in number: all are shown as horizontal angles
    for (int k : {1, 2}) lists.observe(lists.dir1, 0, 1, 0.1 * k, 0.01 * k);
    lists.observe(lists.dir2, 0, 1, 0.3, 0.03);
    lists.wire(1);
    S(lists, traceobs)(0);
    expect_rows(lists.report(), {{3 * 0.1, 2 * 0.01}, {3 * 0.2, 2 * 0.02}, {3 * 0.3, 2 * 0.03}}, 5e-6);
}

// A residual passes two modes: it is changed by 2, and the result shown by 0.
TEST_F(Conversions, ShowPlainResiduals)
{
    Pair s;
    for (auto *list : {&s.dir1, &s.dir2, &s.az}) s.observe(*list, 0, 1, 0.1, 1.0).res[0] = 0.01;
    s.wire(1);
    S(s, residualtables)();
    expect_rows(s.report(), {{3 * 0.1, 2 * 5 * 0.01}, {19 * 0.1, 17 * 23 * 0.01}, {11 * 0.1, 7 * 13 * 0.01}}, 5e-7);
}

// The residual is compared as 2 leaves it with a deviation that is in radians.
TEST_F(Conversions, ShowAndClassifyTestedResiduals)
{
    Pair s;
    for (auto *list : {&s.dir1, &s.dir2, &s.az}) {
        measure &m = s.observe(*list, 0, 1, 0.1, 1.0);
        m.res[0] = 0.01;
        m.res[1] = list == &s.dir2 ? 0.1 : list == &s.az ? 0.05 : 0.04;
    }
    s.wire(1);
    s.take_histograms();
    S(s, resanalysis)(10.0, 50.0); // the tau test sees a tenth
    expect_rows(
        s.report(),
        {{3 * 0.1, 2 * 5 * 0.01, 2 * 0.04}, {19 * 0.1, 17 * 23 * 0.01, 17 * 0.1}, {11 * 0.1, 7 * 13 * 0.01, 7 * 0.05}},
        5e-7);
    EXPECT_EQ(S(s, hdir1)[6], 1); // 5 * 0.25
    EXPECT_EQ(S(s, hdir2)[7], 1); // 23 * 0.1
    EXPECT_EQ(S(s, haz)[7], 1);   // 13 * 0.2
    EXPECT_EQ(s.dir1[0].iflag, 0);
    EXPECT_EQ(s.dir2[0].iflag, 1000);
    EXPECT_EQ(s.az[0].iflag, 1000);
}

TEST_F(Conversions, ShowTheBearingsOfEllipses)
{
    Pair s(3);
    s.n.pairs.resize(1);
    strcpy(s.n.pairs[0].from, "A       ");
    strcpy(s.n.pairs[0].to, "B       ");
    s.n.ready();
    for (int k = 0; k < 6; k++) s.points[k / 3].n0[k % 3] = k;
    s.inv.assign(36, 0.0);
    for (int k = 0; k < 6; k++) s.inv[7 * k] = k % 3 == 0 ? 4e-6 : 1e-6; // along x: a bearing of pi
    s.wire(0);
    S(s, nunk) = S(s, nunk1) = 6;
    S(s, stddev)(1.0);
    const std::string report = s.report();
    char bearing[40];
    snprintf(bearing, sizeof bearing, "%10.1f\n", 2 * 4 * atan(1.0));
    int shown = 0;
    for (size_t at = report.find(bearing); at != std::string::npos; at = report.find(bearing, at + 1)) shown++;
    EXPECT_EQ(shown, 3) << report; // both points and the pair
}

// Vertical angles go through the conversions of horizontal ones here.
TEST_F(Conversions, ShowResidualsOfLeastAbsoluteValues)
{
    Hand h(3);
    h.add("A", 0, 0, 0);
    h.add("B", 100, 0, 10);
    for (int i : {0, 1}) h.observe(h.dir1, 0, 1, 0.01 * i, 0.001);
    for (int i : {0, 1}) h.observe(h.dir2, 0, 1, 0.01 * i, 0.001);
    simplex &s = h.solver(1);
    ASSERT_EQ(s.prepare(), 0);
    L1(s, nobs) = 4;
    const double v[4] = {0.12, 0.16, 0.14, 0.17}; // the mark stands above 3 * 0.05
    for (int i = 0; i < 4; i++) {
        L1(s, ibase)[i] = 2 * h.nunk1 + i;
        S(s, delta)[i] = v[i];
    }
    L1(s, readout)(4);
    std::vector<Numbers> wanted;
    for (double r : v) wanted.push_back({2 * 5 * r});
    expect_rows(h.report(), wanted, 5e-7);
    for (int i = 0; i < 4; i++) {
        char row[80];
        snprintf(row, sizeof row, "%10.6f %c\n", 2 * 5 * v[i], i % 2 ? '*' : ' ');
        EXPECT_NE(h.report().find(row), std::string::npos) << h.report();
    }
}

TEST_F(Conversions, HandResidualsAndTheirDeviationsToTheHost)
{
    Handed h(3, 1, 1);
    h.observe(0, 0, 1, 1);
    V(h.run, irun) = 1;
    for (measure *list : {V(h.run, dir1), V(h.run, dir2)}) {
        list[0].res[0] = 0.01;
        list[0].res[1] = 0.001;
    }
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_DOUBLE_EQ(h.r().res[0], 2 * 5 * 0.01);
    EXPECT_DOUBLE_EQ(h.r().sres[0], 2 * 0.001);
    EXPECT_DOUBLE_EQ(h.r().res[1], 17 * 23 * 0.01);
    EXPECT_DOUBLE_EQ(h.r().sres[1], 17 * 0.001);
}

} // namespace
