#include <math.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/dense.h"
#include "support/rows.h"

namespace {

// Components that rescov gives; absent kinds keep the mark.
const double ABSENT = -77.0;

struct Components {
    double dofc = 0, dist = ABSENT, difh = ABSENT, dir1 = ABSENT, dir2 = ABSENT, az = ABSENT, gps = ABSENT,
           photo = ABSENT, sum = 0;
};

// A network in space with every kind of observation; coordinates of three targets, two
// orientations, a tilt, constants of the first station, a camera.
struct Everything : Rows {
    Everything() : Rows(3), gen(11)
    {
        station("S1", 0, 0, 0, {0.02, -0.03, 0.4});
        station("S2", 100, 20, 5, {0.0, 0.0, -1.1});
        target("A", 40, 70, 12);
        target("B", 90, -50, 8);
        target("C", -30, 60, -4);
        add("F", 60, 30, 60);
        for (int k = 0; k < 3; k++) BareRecords::points[0].n1[k] = n2++;
        BareRecords::points[1].n1[2] = n2++;
        for (int k = 3; k < 6; k++) BareRecords::points[0].n1[k] = n2++;
        camera &c = camerawith("cam", 0.05, 1e-5);
        c.pv = 2e-5;
        c.ipar[0] = n2++;
        for (int s : {0, 1})
            for (int t = 2; t < 6; t++) {
                observe(dist, s, t, length(s, t) + noise(0.003), 0.002).typ = s == 0;
                observe(difh, s, t, BareRecords::points[t].xpt[2] - BareRecords::points[s].xpt[2] + noise(0.003),
                        0.003);
                observe(dir1, s, t, noise(3.0), 1e-4);
                observe(dir2, s, t, noise(0.5), 2e-4);
                observe(az, s, t, noise(3.0), 5e-4);
                observe(u, s, t, noise(100), 1.0);
                observe(v, s, t, noise(100), 1.0);
            }
        for (int t = 2; t < 4; t++) {
            gpsbase &g = baseline(t, t + 1, noise(50), noise(50), noise(9));
            const double w[6] = {4e4, 1e4, 5e4, -5e3, 8e3, 3e4};
            for (int k = 0; k < 6; k++) g.w[k] = w[k];
        }
        wire(2);
        nunk1 = n1;
        nunk2 = n2;
        nunk = n1 + n2;
        sdist = 0.003, sdifh = 0.002, sdir1 = 3e-4, sdir2 = 2e-4, saz = 6e-4, suv = 0.7;
        radius = 6.4e6;
    }
    void station(const char *name, double x, double y, double z, const std::vector<double> &angles)
    {
        point &p = add(name, x, y, z);
        for (int k = 0; k < 3; k++) p.xex[k] = angles[k];
        p.h = z + 0.5;
    }
    void target(const char *name, double x, double y, double z)
    {
        point &p = add(name, x, y, z);
        for (int k = 0; k < 3; k++) p.n0[k] = n1++;
    }
    double noise(double s) { return std::uniform_real_distribution<double>(-s, s)(gen); }
    double length(int i, int j)
    {
        double s = 0;
        for (int k = 0; k < 3; k++) s += pow(BareRecords::points[i].xpt[k] - BareRecords::points[j].xpt[k], 2);
        return sqrt(s);
    }

    // Rows of all kinds as the normal equations take them, and the inverse they give.
    void solve()
    {
        rows.clear();
        S(*this, norm_dist)();
        S(*this, norm_difh)();
        S(*this, norm_dir1)();
        S(*this, norm_dir2)();
        S(*this, norm_az)();
        S(*this, norm_photo)();
        std::vector<long double> normal(nunk * nunk, 0.0L);
        for (const Row &r : rows)
            for (auto &i : r.by_unknown(nunk1))
                for (auto &j : r.by_unknown(nunk1))
                    normal[i.first * nunk + j.first] += (long double)i.second * j.second;
        for (const gpsbase &g : BareRecords::gps)
            for (int k = 0; k < 3; k++)
                for (int l = 0; l < 3; l++)
                    for (int end = 0; end < 4; end++) {
                        const int i = (end / 2 ? g.p2 : g.p1)->n0[k], j = (end % 2 ? g.p2 : g.p1)->n0[l];
                        const long double sign = end / 2 == end % 2 ? 1 : -1;
                        normal[i * nunk + j] += sign * g.w[k > l ? k * (k + 1) / 2 + l : l * (l + 1) / 2 + k];
                    }
        inverse_matrix = dense_inverse(normal, nunk);
        BareRecords::inv.assign(inverse_matrix.begin(), inverse_matrix.end());
        wire_matrices();
    }
    double form(const Row &r)
    {
        long double q = 0;
        for (auto &i : r.by_unknown(nunk1))
            for (auto &j : r.by_unknown(nunk1)) q += inverse_matrix[i.first * nunk + j.first] * i.second * j.second;
        return (double)q;
    }
    Components cov()
    {
        Components c;
        c.sum = S(*this, rescov)(&c.dofc, &c.dist, &c.difh, &c.dir1, &c.dir2, &c.az, &c.gps, &c.photo);
        return c;
    }

    std::mt19937 gen;
    int n1 = 0, n2 = 0;
    std::vector<long double> inverse_matrix;
};

// One free coordinate per point in a 1D or plane network, with an inverse given by hand.
struct Small : Rows {
    explicit Small(int dim_) : Rows(dim_) {}
    void ready(int nunk1_, int nunk2_, const std::vector<double> &q)
    {
        wire(1);
        nunk1 = nunk1_;
        nunk2 = nunk2_;
        nunk = nunk1_ + nunk2_;
        BareRecords::inv = q;
        wire_matrices();
    }
    Components cov()
    {
        Components c;
        c.sum = S(*this, rescov)(&c.dofc, &c.dist, &c.difh, &c.dir1, &c.dir2, &c.az, &c.gps, &c.photo);
        return c;
    }
};

} // namespace

TEST(ResidualCovariance, OfEveryRowIsThatOfTheDenseMatrices)
{
    Everything s;
    s.solve();
    s.cov();
    std::vector<measure> *lists[7] = {&s.dist, &s.difh, &s.dir1, &s.dir2, &s.az, &s.u, &s.v};
    const double apriori[7] = {0.003, 0.002, 3e-4, 2e-4, 6e-4, 0.7, 0.7};
    size_t at = 0;
    for (int k = 0; k < 5; k++)
        for (const measure &m : *lists[k]) {
            const double w = apriori[k] / m.val[1], q = (1.0 - s.form(s.rows[at])) / (w * w);
            // The inverse is rounded once, the form has up to 14 x 14 terms of 1.
            EXPECT_NEAR(q, m.res[1] * m.res[1], 1e-11 / (w * w)) << k;
            EXPECT_NEAR(s.rows[at].b / w, m.res[0], 1e-12 * fabs(s.rows[at].b / w)) << k;
            at++;
        }
    for (size_t i = 0; i < s.u.size(); i++)
        for (int k = 5; k < 7; k++, at++) {
            // The rows of image coordinates hold f / p, their misclosures f.
            const double p = k == 5 ? 1e-5 : 2e-5, w = 0.7;
            const double q = p * p / (w * w) - s.form(s.rows[at]) / (w * w / p / p);
            const measure &m = (*lists[k])[i];
            EXPECT_NEAR(q > 1e-14 ? q : 0.0, m.res[1] * m.res[1], 1e-11 * p * p / (w * w)) << k;
            EXPECT_NEAR(s.rows[at].b / w, m.res[0], 1e-12 * fabs(s.rows[at].b / w)) << k;
        }
    EXPECT_EQ(s.rows.size(), at);
}

TEST(ResidualCovariance, OfABaselineIsThatOfTheDenseMatrices)
{
    Everything s;
    s.solve();
    s.cov();
    for (const gpsbase &g : s.gps) {
        std::vector<long double> w(9);
        for (int k = 0; k < 3; k++)
            for (int l = 0; l < 3; l++) w[3 * k + l] = g.w[k > l ? k * (k + 1) / 2 + l : l * (l + 1) / 2 + k];
        const std::vector<long double> c = dense_inverse(w, 3);
        for (int k = 0; k < 3; k++) {
            long double q = c[3 * k + k];
            const int a = g.p1->n0[k], b = g.p2->n0[k], n = S(s, nunk);
            q -= s.inverse_matrix[a * n + a] + s.inverse_matrix[b * n + b] - 2 * s.inverse_matrix[a * n + b];
            EXPECT_NEAR((double)q, g.nres[k] * g.nres[k], 1e-15);
            EXPECT_DOUBLE_EQ(g.dx[k] - (g.p2->xpt[k] - g.p1->xpt[k]), g.res[k]);
        }
    }
}

TEST(ResidualCovariance, RedundanciesAddUpToTheDegreesOfFreedom)
{
    Everything s;
    s.u.clear();
    s.v.clear();
    S(s, nobsuv) = 0;
    s.cameras[0].ipar[0] = N_NONE;
    S(s, nunk2)--;
    S(s, nunk)--;
    s.solve();
    const Components c = s.cov();
    EXPECT_NEAR(40.0 + 6.0 - S(s, nunk), c.dofc, 1e-9);
    double squares = 0;
    for (const Row &r : s.rows) squares += r.b * r.b;
    for (const gpsbase &g : s.gps) {
        const double *v = g.res, *w = g.w;
        squares += v[0] * v[0] * w[0] + v[1] * v[1] * w[2] + v[2] * v[2] * w[5];
        squares += 2 * (v[0] * v[1] * w[1] + v[0] * v[2] * w[3] + v[1] * v[2] * w[4]);
    }
    EXPECT_NEAR(squares, c.sum, 1e-12 * squares);
    EXPECT_EQ(ABSENT, c.photo);
}

TEST(ResidualCovariance, ComponentIsTheSumOverTheRedundancyOfTheKind)
{
    Everything s;
    s.solve();
    const Components c = s.cov();
    double squares = 0, redundancy = 0;
    for (const measure &m : s.dist) {
        squares += pow(m.res[0] * 0.003 / 0.002, 2);
        redundancy += pow(m.res[1] * 0.003 / 0.002, 2);
    }
    EXPECT_NEAR(squares / redundancy, c.dist, 1e-12 * c.dist);
}

TEST(ResidualCovariance, OfDistancesOnlyLeavesTheOtherComponents)
{
    Small s(2);
    s.add("S", 0, 0);
    s.add("A", 10, 0).n0[0] = 0;
    s.observe(s.dist, 0, 1, 10.5, 0.5);
    s.observe(s.dist, 0, 1, 10.25, 0.5);
    s.ready(1, 0, {0.0});
    const double w = S(s, sdist) / 0.5;
    s.ready(1, 0, {1 / (2 * w * w)}); // of two equal weights
    const Components c = s.cov();
    EXPECT_DOUBLE_EQ(0.5, s.dist[0].res[0]);
    EXPECT_DOUBLE_EQ(sqrt(0.5) / w, s.dist[0].res[1]); // 1 - 1/2 over w squared
    EXPECT_DOUBLE_EQ(1.0, c.dofc);
    EXPECT_DOUBLE_EQ(0.3125 * w * w, c.sum);
    EXPECT_DOUBLE_EQ(c.sum, c.dist);
    for (double v : {c.difh, c.dir1, c.dir2, c.az, c.gps, c.photo}) EXPECT_EQ(ABSENT, v);
}

TEST(ResidualCovariance, OfFixedEndsIsThatOfTheObservation)
{
    Small s(2);
    s.add("S", 0, 0);
    s.add("A", 10, 0);
    s.observe(s.dist, 0, 1, 10.5, 0.25);
    s.ready(0, 0, {0.0});
    const Components c = s.cov();
    EXPECT_DOUBLE_EQ(0.25 / S(s, sdist), s.dist[0].res[1]);
    EXPECT_DOUBLE_EQ(1.0, c.dofc);
}

TEST(ResidualCovariance, WithoutRedundancyGivesThePlainSum)
{
    Small s(2);
    s.add("S", 0, 0);
    s.add("A", 10, 0).n0[0] = 0;
    s.observe(s.dist, 0, 1, 10.5, 0.5);
    s.ready(1, 0, {0.0});
    const double w = S(s, sdist) / 0.5;
    s.ready(1, 0, {1 / (w * w)});
    Components c = s.cov();
    EXPECT_EQ(0.0, c.dofc);
    EXPECT_EQ(0.0, s.dist[0].res[1]);
    EXPECT_DOUBLE_EQ(0.25 * w * w, c.dist);
    s.dist[0].val[0] = 10.0;
    c = s.cov();
    EXPECT_EQ(0.0, c.dist);
}

TEST(ResidualCovariance, OfASmallSigmaIsZeroWithAMessage)
{
    Small s(2);
    s.add("S", 0, 0);
    s.add("A", 10, 0);
    s.observe(s.dist, 0, 1, 10.0, 1.0);
    s.observe(s.dist, 0, 1, 10.0, 0.99e-7);
    s.ready(0, 0, {0.0});
    s.cov();
    EXPECT_EQ("", s.report());
    S(s, idebug) = 1;
    s.cov();
    EXPECT_EQ(0.0, s.dist[1].res[1]);
    EXPECT_EQ("\nProblem with covariance of distance residual 1\n", s.report());
}

TEST(ResidualCovariance, IsNotANumberWithAnAprioriSigmaOfZero)
{
    Small s(2);
    s.add("S", 0, 0);
    s.add("A", 10, 0).n0[0] = 0;
    s.observe(s.dist, 0, 1, 10.0, 1.0);
    s.ready(1, 0, {1.0});
    S(s, sdist) = 0.0;
    s.cov();
    EXPECT_TRUE(isnan(s.dist[0].res[1])); // infinity less nothing over nothing
    EXPECT_EQ(0.0, s.dist[0].res[0]);
}

TEST(ResidualCovariance, NamesEachKindInItsMessage)
{
    Everything s;
    s.solve();
    for (auto *list : {&s.dist, &s.difh, &s.dir1, &s.dir2, &s.az, &s.u, &s.v}) {
        list->erase(list->begin() + 1, list->end());
        (*list)[0].val[1] = 0.0;
    }
    S(s, ndist) = S(s, ndifh) = S(s, ndir1) = S(s, ndir2) = S(s, naz) = S(s, nobsuv) = 1;
    S(s, idebug) = 1;
    s.cov();
    EXPECT_EQ("\nProblem with covariance of distance residual 0\n"
              "\nProblem with covariance of height d. residual 0\n"
              "\nProblem with covariance of horizontal residual 0\n"
              "\nProblem with covariance of vertical residual 0\n"
              "\nProblem with covariance of height d. residual 0\n"
              "\nProblem with covariance of xpix residual 0\n"
              "\nProblem with covariance of ypix residual 0\n",
              s.report());
}

// A distance with a constant whose cofactors are B, -B and 1: coordinates with coordinates give
// exactly 0, while B + 1 loses the 1.
TEST(ResidualCovariance, SumsTheCoordinatesBeforeTheOtherUnknowns)
{
    const double B = 9007199254740992.0; // 2^53
    Small s(2);
    s.add("P", 0, 0);
    s.add("Q", 10, 0);
    s.points[0].n0[0] = 0;
    s.points[1].n0[0] = 1;
    s.points[0].n1[3] = 0;
    s.observe(s.dist, 0, 1, 10.5, 1.0).typ = 1;
    s.ready(2, 1, {B, 0, -1, 0, -B, 0, 0, 0, 0});
    S(s, sdist) = 1.0;
    s.cov();
    EXPECT_EQ(s.dist[0].res[1], 0.0); // 1 - 1, a residual without redundancy
}

TEST(ResidualCovariance, BringsADirectionBackByOneTurn)
{
    const double pi = 4 * atan(1.0);
    Small s(2);
    s.add("S", 0, 0);
    s.add("A", 10, 0);
    for (double v : {3.5, -3.5, 7.0, 3.0}) {
        s.observe(s.dir1, 0, 1, v, 1.0);
        s.observe(s.az, 0, 1, v, 1.0);
    }
    s.ready(0, 0, {0.0});
    S(s, radius) = 6.4e6;
    s.cov();
    const double wanted[4] = {3.5 - 2 * pi, -3.5 + 2 * pi, 7.0 - 2 * pi, 3.0};
    for (int i = 0; i < 4; i++) {
        EXPECT_DOUBLE_EQ(wanted[i], s.dir1[i].res[0]);
        EXPECT_DOUBLE_EQ(wanted[i], s.az[i].res[0]);
    }
}

TEST(ResidualCovariance, ReducesTheObservationOfALevelledInstrument)
{
    Everything s;
    for (point &p : s.points) p.typ = 1;
    for (auto *list : {&s.dist, &s.dir1, &s.dir2})
        for (measure &m : *list) {
            m.h1 = 1.5;
            m.h2 = 0.25;
        }
    S(s, iredux) = 1;
    s.solve(); // the builders reduce in the same way
    s.cov();
    EXPECT_NEAR(s.rows[0].b / 1.5, s.dist[0].res[0], 1e-14);
    EXPECT_NEAR(s.rows[16].b / 3.0, s.dir1[0].res[0], 1e-14);
    EXPECT_NEAR(s.rows[24].b, s.dir2[0].res[0], 1e-14);
}

TEST(ResidualCovariance, PassesOverImagesThatCannotBeComputed)
{
    Small s(3);
    s.add("S", 0, 0, 0);
    s.add("flat", 5, 5, 0);
    s.add("T", 1, 1, 10);
    s.camerawith("cam", 0.05, 1e-5);
    for (int t : {1, 2}) {
        s.observe(s.u, 0, t, 1, 1);
        s.observe(s.v, 0, t, 1, 1);
    }
    s.u.push_back(measure());
    s.v.push_back(measure());
    s.u[0].res[0] = s.v[0].res[1] = 55;
    s.ready(0, 0, {0.0});
    Components c = s.cov();
    EXPECT_EQ(55, s.u[0].res[0]);
    EXPECT_EQ(55, s.v[0].res[1]);
    EXPECT_NEAR(1.0 - 500.0, s.u[1].res[0], 1e-10);
    EXPECT_DOUBLE_EQ(2e-10, c.dofc); // u and v: (pixel size / w)^2 of the row, times w^2
    EXPECT_EQ("image_coor: third local delta too small\n", s.report());
}

TEST(ResidualCovariance, OfABaselineBetweenFixedPointsIsItsCovariance)
{
    Small s(3);
    s.add("A", 0, 0, 0);
    s.add("B", 10, 20, 30);
    gpsbase &g = s.baseline(0, 1, 10.5, 20, 30);
    g.w[0] = 4;
    g.w[2] = 16;
    g.w[5] = 0.25;
    s.ready(0, 0, {0.0});
    const Components c = s.cov();
    EXPECT_DOUBLE_EQ(0.5, s.gps[0].nres[0]);
    EXPECT_DOUBLE_EQ(0.25, s.gps[0].nres[1]);
    EXPECT_DOUBLE_EQ(2.0, s.gps[0].nres[2]);
    EXPECT_DOUBLE_EQ(3.0, c.dofc);
    EXPECT_DOUBLE_EQ(1.0, c.sum);
    EXPECT_DOUBLE_EQ(1.0 / 3, c.gps);
}

// The trace of the cofactors times the weights, with those of the two coordinates estimated.
TEST(ResidualCovariance, OfABaselineToAPointWithAFixedHeightTakesNothingForTheHeight)
{
    Small s(3);
    s.add("A", 0, 0, 0);
    point &b = s.add("B", 10, 20, 30);
    b.n0[0] = 0;
    b.n0[1] = 1;
    gpsbase &g = s.baseline(0, 1, 10, 20, 30);
    const double w[6] = {4, 1, 5, 0.5, 1.5, 6}; // 11, 21, 22, 31, 32, 33
    for (int k = 0; k < 6; k++) g.w[k] = w[k];
    s.ready(2, 0, {0.01, 0.002, 0.002, 0.03});
    EXPECT_NEAR(s.cov().dofc, 3.0 - (0.01 * 4 + 0.03 * 5 + 2 * 0.002 * 1), 1e-12);
}

TEST(ResidualCovariance, OfABaselineWithoutGuardIsNotANumber)
{
    Small s(3);
    s.add("A", 0, 0, 0);
    s.add("B", 10, 20, 30).n0[0] = 0;
    s.baseline(0, 1, 10, 20, 30);
    s.ready(1, 0, {4.0}); // more than the covariance 1 of the observation
    s.cov();
    EXPECT_TRUE(isnan(s.gps[0].nres[0]));
    EXPECT_EQ(1.0, s.gps[0].nres[1]);
}

TEST(Cofactor, IsReadByPosition)
{
    Small s(2);
    s.ready(2, 0, {1, 2, 3, 4});
    EXPECT_EQ(2.0, S(s, Q)(0, 1));
    EXPECT_EQ(3.0, S(s, Q)(1, 0));
    EXPECT_EQ(0.0, S(s, Q)(0, -1));
    EXPECT_EQ(0.0, S(s, Q)(-1, -1));
    EXPECT_EQ(2.0, S(s, Q)(1, -1)); // the end of the row before
}
