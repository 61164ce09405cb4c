// The two least-squares solvers on the same networks: equal results to rounding, and every
// difference that a user can see.

#include <gtest/gtest.h>
#include <math.h>
#include <string.h>

#include <random>

#include "solvers/leastsquares.h"
#include "support/network.h"

namespace {

enum Datum { FREE, FREE_PARTLY, FIXED, WEIGHTED, MIXED_CODES };

struct Recipe {
    int dim;
    Datum datum;
    int ndatum; // expected
    bool distances = true, directions = true, verticals = false, heights = false, azimuths = false, baselines = false;
    unsigned seed = 1;
};

std::string name(int p) { return "P" + std::to_string(p); }

// Ten points, four of them stations, with truth, errors of observation and rough coordinates.
class Drawn {
public:
    explicit Drawn(const Recipe &r) : network(r.dim), recipe(r), random(r.seed)
    {
        for (int p = 0; p < 10; p++)
            for (int c = 0; c < 3; c++) truth[p][c] = uniform(-200.0, 200.0) * (c == 2 ? 0.3 : 1.0);
        for (int p = 0; p < 10; p++) place(p);
        for (int p = 0; p < 4; p++)
            for (int q = 0; q < 10; q++)
                if (p != q) observe(p, q);
        network.p.irun = 1;
        network.p.iearth = r.dim == 3 && r.heights ? 1 : 0;
        network.p.convergence = 1e-9;
    }

    Network network;

private:
    // Above the sphere through the origin, which height differences in space refer to.
    double height(int p)
    {
        const double *x = truth[p];
        return recipe.dim == 1 ? x[2] : x[2] + (x[0] * x[0] + x[1] * x[1]) / (2.0 * (network.p.radius + x[2]));
    }

    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(random); }

    int code(int p)
    {
        switch (recipe.datum) {
        case FREE: return CODE_FREE;
        case FREE_PARTLY: return p % 3 == 0 ? CODE_NO_DATUM : CODE_FREE;
        case FIXED: return p == 1 || p == 5 || p == 8 ? CODE_FIXED : CODE_FREE;
        case WEIGHTED: return p < 8 ? CODE_WEIGHTED : CODE_FREE;
        case MIXED_CODES: return p == 1 || p == 5 || p == 8 ? CODE_FIXED : 1 + p % 3;
        }
        return CODE_FREE;
    }

    void place(int p)
    {
        double x[3];
        for (int c = 0; c < 3; c++) x[c] = truth[p][c] + (code(p) == CODE_FIXED ? 0.0 : uniform(-0.02, 0.02));
        int *ix;
        double *sx;
        if (p < 4 && recipe.dim > 1) {
            station_input &s = network.station(name(p).c_str(), x[0], x[1], x[2]);
            ix = s.ix, sx = s.sx;
            if (recipe.dim == 3 && !recipe.verticals) s.ir[0] = s.ir[1] = CODE_FIXED;
        } else {
            target_input &t = network.target(name(p).c_str(), x[0], x[1], x[2]);
            ix = t.ix, sx = t.sx;
        }
        for (int c = 0; c < 3; c++) {
            ix[c] = code(p);
            sx[c] = 0.005;
        }
    }

    void observe(int p, int q)
    {
        const std::string from = name(p), to = name(q);
        double d[3];
        for (int c = 0; c < 3; c++) d[c] = recipe.dim == 2 && c == 2 ? 0.0 : truth[q][c] - truth[p][c];
        const double plane = hypot(d[0], d[1]), bearing = atan2(d[1], d[0]);
        if (recipe.dim == 1 || recipe.heights)
            network.heightdiff(from.c_str(), to.c_str(), height(q) - height(p) + uniform(-2e-3, 2e-3), 0.002);
        if (recipe.dim == 1) return;
        if (recipe.distances)
            network.distance(from.c_str(), to.c_str(), hypot(plane, d[2]) + uniform(-3e-3, 3e-3), 0.003);
        if (recipe.directions) network.direction(from.c_str(), to.c_str(), bearing + uniform(-1e-5, 1e-5), 1e-5);
        if (recipe.verticals)
            network.vertical(from.c_str(), to.c_str(), atan2(d[2], plane) + uniform(-1e-5, 1e-5), 1.5e-5);
        if (recipe.azimuths && q % 3 == 0)
            network.azimuth(from.c_str(), to.c_str(), bearing + uniform(-2e-5, 2e-5), 2e-5);
        if (recipe.baselines && q % 4 == 1) {
            gps_input g = gps_input();
            g.status = 1;
            snprintf(g.from, sizeof g.from, "%s", from.c_str());
            snprintf(g.to, sizeof g.to, "%s", to.c_str());
            for (int c = 0; c < 3; c++) g.dx[c] = d[c] + uniform(-4e-3, 4e-3);
            const double cov[6] = {1.6e-5, 4e-6, -2e-6, 1.2e-5, 3e-6, 2.5e-5};
            memcpy(g.cov, cov, sizeof cov);
            network.baselines.push_back(g);
        }
    }

    Recipe recipe;
    std::mt19937 random;
    double truth[10][3];
};

// All that an adjustment leaves: coordinates, constants, residuals and their cofactors, standard
// deviations, ellipses, sums of the statistics.
struct Outcome {
    Vector x, v, sx, q;
    tempresult sums = tempresult();
    int ndatum = 0;
};

void append(Vector &to, const double *from, int n) { to.insert(to.end(), from, from + n); }

void collect(vorn &run, Outcome *o)
{
    for (int i = 0; i < V(run, npoints); i++) {
        const point &p = V(run, points)[i];
        append(o->x, p.xpt, 3);
        append(o->x, p.xex, 6);
        append(o->sx, p.sxpt, 3);
        append(o->sx, p.sxex, 6);
        append(o->sx, p.ell[0], 9);
    }
    const struct {
        const measure *list;
        int n;
    } lists[] = {{V(run, dist), V(run, ndist)},
                 {V(run, difh), V(run, ndifh)},
                 {V(run, dir1), V(run, ndir1)},
                 {V(run, dir2), V(run, ndir2)},
                 {V(run, az), V(run, naz)}};
    for (const auto &l : lists)
        for (int i = 0; i < l.n; i++) append(o->v, l.list[i].res, 2);
    for (int i = 0; i < V(run, ngps); i++) {
        append(o->v, V(run, gps)[i].res, 3);
        append(o->v, V(run, gps)[i].nres, 3);
    }
    o->sums = *V(run, temp_res);
}

template <class Solver> void iterate_by_hand(vorn &run, Outcome *o)
{
    const solverinput &in = state(run);
    Solver s(in);
    ASSERT_EQ(s.prepare(), 0);
    for (int k = 0; k < 6; k++) {
        s.zeronormal();
        S(s, normal)();
        ASSERT_EQ(s.resolution(), 0);
        S(s, applydelta)(k);
    }
    ASSERT_EQ(s.inverse(), 0);
    const int n = S(s, nunk), plain = n - S(s, ndatum); // multipliers of heights are scaled
    for (int i = 0; i < plain; i++)
        for (int j = 0; j < plain; j++) o->q.push_back(S(s, inv)[(size_t)i * n + j]);
    s.finish();
}

template <class Solver> Outcome adjusted(const Recipe &r, int (vorn::*entry)())
{
    Outcome o;
    Drawn d(r), e(r);
    vorn run(d.network.ready());
    EXPECT_EQ(run.vornstart(), 0) << d.network.report();
    o.ndatum = V(run, ndatum);
    EXPECT_EQ((run.*entry)(), 0) << d.network.report() << ::testing::PrintToString(d.network.messages.lines);
    if (::testing::Test::HasFailure()) return o;
    collect(run, &o);
    vorn other(e.network.ready());
    EXPECT_EQ(other.vornstart(), 0);
    iterate_by_hand<Solver>(other, &o);
    return o;
}

void expect_equal(const Vector &a, const Vector &b, double tolerance, const char *what)
{
    ASSERT_EQ(a.size(), b.size());
    double largest = 0.0;
    for (double v : a) largest = fmax(largest, fabs(v));
    for (size_t k = 0; k < a.size(); k++) ASSERT_NEAR(a[k], b[k], tolerance * fmin(1.0, largest)) << what << " " << k;
}

// Rounding of a full inverse grows with the condition of the matrix, about 1e4 here for lengths
// of 100 m and weights of 1e5: some 1e-9 of the largest element.
void expect_agreement(const Recipe &r)
{
    SCOPED_TRACE("dimension " + std::to_string(r.dim) + ", datum " + std::to_string(r.datum) + ", ndatum " +
                 std::to_string(r.ndatum) + ", seed " + std::to_string(r.seed));
    const Outcome a = adjusted<compact>(r, &vorn::vornL2), b = adjusted<jordan>(r, &vorn::vornjordan);
    if (::testing::Test::HasFailure()) return;
    EXPECT_EQ(a.ndatum, r.ndatum);
    expect_equal(a.x, b.x, 1e-8, "coordinate");
    expect_equal(a.v, b.v, 1e-8, "residual");
    expect_equal(a.sx, b.sx, 1e-7, "standard deviation");
    expect_equal(a.q, b.q, 1e-8, "cofactor");
    EXPECT_NEAR(a.sums.sigpost, b.sums.sigpost, 1e-9);
    EXPECT_EQ(a.sums.dof, b.sums.dof);
    EXPECT_GT(a.sums.sigpost, 0.1);
    EXPECT_LT(a.sums.sigpost, 3.0);
}

Recipe plane(Datum datum, int ndatum)
{
    Recipe r = {2, datum, ndatum};
    return r;
}

Recipe space(Datum datum, int ndatum, bool distances, bool heights, bool azimuths)
{
    Recipe r = {3, datum, ndatum};
    r.distances = distances;
    r.heights = heights;
    r.azimuths = azimuths;
    r.verticals = true;
    return r;
}

} // namespace

TEST(CompactAndJordan, AgreeOnHeights)
{
    for (unsigned seed : {1u, 2u})
        for (Datum datum : {FREE, FREE_PARTLY, FIXED, MIXED_CODES}) {
            Recipe r = {1, datum, datum <= FREE_PARTLY ? 1 : 0};
            r.seed = seed;
            expect_agreement(r);
        }
}

TEST(CompactAndJordan, AgreeInThePlane)
{
    for (unsigned seed : {1u, 2u})
        for (Datum datum : {FREE, FREE_PARTLY, FIXED, WEIGHTED, MIXED_CODES})
            for (bool distances : {true, false})
                for (bool azimuths : {false, true}) {
                    Recipe r = plane(datum, datum > FREE_PARTLY ? 0 : distances ? 3 : 4);
                    r.distances = distances;
                    r.azimuths = azimuths;
                    r.seed = seed;
                    expect_agreement(r);
                }
}

TEST(CompactAndJordan, AgreeInSpaceWithEveryNumberOfDatumRows)
{
    for (unsigned seed : {1u, 2u})
        for (Datum datum : {FREE, FREE_PARTLY}) {
            Recipe list[] = {space(datum, 3, true, true, true), space(datum, 4, true, true, false),
                             space(datum, 5, false, true, false), space(datum, 6, true, false, false),
                             space(datum, 7, false, false, false)};
            for (Recipe &r : list) {
                if (datum == FREE_PARTLY && r.ndatum > 5) continue; // the rows differ, see below
                r.seed = seed;
                expect_agreement(r);
            }
        }
}

TEST(CompactAndJordan, AgreeInSpaceWithFixedAndWeightedPoints)
{
    for (unsigned seed : {1u, 2u})
        for (Datum datum : {FIXED, WEIGHTED, MIXED_CODES})
            for (bool baselines : {false, true}) {
                Recipe r = space(datum, 0, true, false, false);
                r.baselines = baselines;
                r.seed = seed;
                expect_agreement(r);
            }
}

// ---- differences ----

// With some coordinates left out of the datum the rows of the tilts differ, and with them the
// place of the network, but nothing that the observations determine.
TEST(CompactDiffersFromJordan, InThePlaceOfAFreeNetworkInSpaceWithPointsOutsideTheDatum)
{
    for (int ndatum : {6, 7}) {
        const Recipe r = space(FREE_PARTLY, ndatum, ndatum == 6, false, false);
        const Outcome a = adjusted<compact>(r, &vorn::vornL2), b = adjusted<jordan>(r, &vorn::vornjordan);
        ASSERT_FALSE(::testing::Test::HasFailure());
        expect_equal(a.v, b.v, 1e-8, "residual");
        EXPECT_NEAR(a.sums.sigpost, b.sums.sigpost, 1e-9);
        double largest = 0.0;
        for (size_t k = 0; k < a.x.size(); k++) largest = fmax(largest, fabs(a.x[k] - b.x[k]));
        EXPECT_GT(largest, 1e-6);
        EXPECT_LT(largest, 0.1);
    }
}

namespace {

// The same records under both solvers.
template <template <class> class Records> struct Both {
    template <class... Arguments> explicit Both(Arguments... as) : c(as...), j(as...) {}

    void prepare(int nsta, int ndatum)
    {
        EXPECT_EQ(c.solver(nsta, ndatum).prepare(), 0);
        EXPECT_EQ(j.solver(nsta, ndatum).prepare(), 0);
    }
    template <class Build> void build(Build fill, int nsta, int ndatum)
    {
        fill(c);
        fill(j);
        prepare(nsta, ndatum);
    }
    void zero()
    {
        c.s->zeronormal();
        j.s->zeronormal();
    }
    void normal()
    {
        zero();
        S(*c.s, normal)();
        S(*j.s, normal)();
    }
    // Adds w to the first n diagonal elements.
    void hold(int n, double w)
    {
        for (int k = 0; k < n; k++) {
            *C(*c.s, element)(k, k) += w;
            J(*j.s, norm)[(size_t)k * (S(*j.s, nunk) + 1)] += w;
        }
    }
    void resolve()
    {
        ASSERT_EQ(c.s->resolution(), 0);
        ASSERT_EQ(j.s->resolution(), 0);
    }

    Records<compact> c;
    Records<jordan> j;
};

typedef Both<Solved> Pair;

// Three points; the flags of the first are given.
struct Three {
    int flags[3];
    template <class Records> void operator()(Records &r) const
    {
        r.add("A", 10, 20, 30);
        r.add("B", -5, 7, 1);
        r.add("C", 4, -9, 2);
        for (int c = 0; c < 3; c++) r.points[0].defdatum[c] = flags[c];
    }
};

} // namespace

TEST(CompactDiffersFromJordan, InTheHeadOfTheReport)
{
    Pair p(2);
    p.build([](auto &) {}, 0, 0);
    p.c.s->banner();
    p.j.s->banner();
    EXPECT_EQ(p.c.report(), "\n\nCompact storage solution\nVersion 0.0\n");
    EXPECT_EQ(p.j.report(), "\n\nGauss Jordan solution\nVersion 0.0\n");
}

TEST(CompactDiffersFromJordan, InTheKindAtTheEndOfATracedDistance)
{
    Pair p(2);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            r.observe(r.dist, 0, 1, 10.5, 0.01).typ = 1;
            r.n.p.idebug = 1;
        },
        2, 0);
    std::string withkind = p.j.report();
    withkind.insert(withkind.find("0.01000\n") + 7, "    1");
    EXPECT_EQ(p.c.report(), withkind);
}

TEST(CompactDiffersFromJordan, InAnEmptyLineWithoutTraceBetweenListsOfAnglesThatAreNotParallel)
{
    Pair p(3);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            r.observe(r.dir1, 0, 1, 1.0, 0.01);
        },
        2, 0);
    EXPECT_EQ(p.c.report(), "\n");
    EXPECT_EQ(p.j.report(), "");
}

TEST(CompactDiffersFromJordan, InTheScaleOfTheDatumRowOfHeights)
{
    Pair p(1);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            r.observe(r.difh, 0, 1, 1.0, 0.002);
        },
        0, 1);
    p.zero();
    EXPECT_DOUBLE_EQ(at(*p.c.s, 3, 0), 500.0);
    EXPECT_EQ(at(*p.j.s, 3, 0), 1.0);
}

TEST(CompactDiffersFromJordan, InTheFlagsOfTheTurnInThePlane)
{
    Pair p(2);
    p.build(Three{{DATUM_USED, DATUM_UNUSED, DATUM_USED}}, 0, 3);
    p.zero();
    const double dx = 10 - S(*p.c.s, centre)[0], dy = 20 - S(*p.c.s, centre)[1];
    EXPECT_EQ(at(*p.c.s, 8, 0), -dy); // the flag of x, whose column it is
    EXPECT_EQ(at(*p.c.s, 8, 1), 0.0);
    EXPECT_EQ(at(*p.j.s, 8, 0), 0.0); // the flag of y, whose difference it is
    EXPECT_EQ(at(*p.j.s, 8, 1), dx);
}

TEST(CompactDiffersFromJordan, InTheFlagOfTheSecondTilt)
{
    for (int ndatum : {6, 7}) {
        Pair p(3);
        p.build(Three{{DATUM_USED, DATUM_USED, DATUM_UNUSED}}, 0, ndatum);
        p.zero();
        EXPECT_EQ(at(*p.c.s, 13, 0), 0.0);
        EXPECT_EQ(at(*p.j.s, 13, 0), 30 - S(*p.j.s, centre)[2]);
        // with all flags the rows are equal
        Pair q(3);
        q.build(Three{{DATUM_USED, DATUM_USED, DATUM_USED}}, 0, ndatum);
        q.zero();
        for (int r = 9; r < 9 + ndatum; r++)
            for (int col = 0; col < 9; col++) EXPECT_EQ(at(*q.c.s, r, col), at(*q.j.s, r, col));
    }
}

TEST(CompactDiffersFromJordan, InTheRowsOfAMixedDatum)
{
    Pair p(3);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            r.n.p.imixed = 0;
        },
        0, 3);
    p.zero();
    EXPECT_EQ(at(*p.c.s, 9, 0), 0.0); // turns
    EXPECT_EQ(at(*p.c.s, 9, 1), S(*p.c.s, centre)[2] - 30);
    EXPECT_EQ(at(*p.j.s, 9, 0), 1.0); // shifts
    EXPECT_EQ(at(*p.j.s, 9, 1), 0.0);
}

TEST(CompactDiffersFromJordan, InTheDetectionOfASingularMatrix)
{
    Pair p(1);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            r.observe(r.difh, 0, 1, 1.0, 1.0);
            r.observe(r.difh, 1, 2, 1.0, 1.0);
        },
        0, 0);
    p.normal();
    EXPECT_EQ(p.c.s->resolution(), -2);
    EXPECT_EQ(p.j.s->resolution(), 0);
    EXPECT_NE(p.c.report(), "");
    EXPECT_EQ(p.j.report(), "");
}

TEST(CompactDiffersFromJordan, InTheCoordinatesThatTheInverseBelongsTo)
{
    Pair p(2);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            for (int q = 0; q < 3; q++) r.observe(r.dist, q, (q + 1) % 3, 20.0, 0.01);
        },
        3, 3);
    p.normal();
    ASSERT_NO_FATAL_FAILURE(p.resolve());
    EXPECT_EQ(S(*p.c.s, inv), nullptr); // on demand
    const std::vector<double> before(S(*p.j.s, inv), S(*p.j.s, inv) + 81);
    p.c.points[0].xpt[0] += 5.0;
    p.j.points[0].xpt[0] += 5.0;
    ASSERT_EQ(p.c.s->inverse(), 0);
    ASSERT_EQ(p.j.s->inverse(), 0);
    EXPECT_EQ(std::vector<double>(S(*p.j.s, inv), S(*p.j.s, inv) + 81), before);
    p.j.s->zeronormal();
    S(*p.j.s, normal)();
    ASSERT_EQ(p.j.s->resolution(), 0); // at the new place both agree
    for (int k = 0; k < 81; k++) EXPECT_NEAR(S(*p.c.s, inv)[k], S(*p.j.s, inv)[k], 1e-10); // weights of 1e4
    EXPECT_GT(fabs(S(*p.c.s, inv)[0] - before[0]), 1e-7);
}

TEST(CompactDiffersFromJordan, InTheTraceOfTheSystem)
{
    Pair p(1);
    p.build(
        [](auto &r) {
            Three{{1, 1, 1}}(r);
            r.observe(r.difh, 1, 2, 1.0, 1.0);
        },
        0, 0);
    p.normal();
    p.c.s->debugnormal();
    p.j.s->debugnormal();
    const std::string c = p.c.report(), j = p.j.report();
    EXPECT_EQ(c.find("\nNormal matrix line by line\ntype 1\n"), 0u);
    EXPECT_EQ(j.find("type 1\n"), 0u);
    // the square of the weight 1.25
    EXPECT_NE(c.find("\n2              -1.562500000000\n3               1.562500000000\n"), std::string::npos);
    EXPECT_NE(j.find("\n4              -1.562500000000\n5               1.562500000000\n"), std::string::npos);
    EXPECT_NE(c.find("\nRHS to check \n"), std::string::npos);
    EXPECT_NE(j.find("\nRHS to check\n"), std::string::npos);
    EXPECT_EQ(c.substr(c.find("first RHS")), j.substr(j.find("first RHS"))); // the same values
}

// ---- one matrix ----

namespace {

// Two stations, eight targets of which four move with a lump in two epochs, and a camera;
// observations of every kind between random points, so that anything may couple with anything.
template <class Solver> class Everything : public Solved<Solver> {
public:
    Everything(unsigned seed, bool fixedstations) : Solved<Solver>(3), random(seed)
    {
        for (int p = 0; p < 10; p++) {
            point &q = this->add("A", uniform(-100, 100), uniform(-100, 100), uniform(-40, 40));
            if (fixedstations && p < 2)
                for (int &number : q.n0) number = N_NONE;
            if (p >= 6) q.ilump = 1;
        }
        if (fixedstations) {
            this->nunk1 = 0;
            for (point &p : this->points)
                for (int &number : p.n0)
                    if (number != N_NONE) number = this->nunk1++;
        }
        for (int p = 0; p < 2; p++)
            for (int &number : this->points[p].n1) number = this->nunk2++;
        addcamera();
        addlump();
        for (int k = 0; k < 6; k++) observations();
        this->points[5].defdatum[2] = DATUM_FIXED_HEIGHT;
        this->nfixh = 1;
        this->n.p.radius = 6371000.0;
    }

private:
    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(random); }
    int target() { return 2 + (int)(random() % 8); }
    int time() { return 1 + (int)(random() % 3); }

    void addcamera()
    {
        camera c = camera();
        c.pu = c.pv = 0.01;
        c.npar = 10;
        c.par[0] = 0.05;
        for (int &number : c.ipar) number = this->nunk2++;
        this->cameras.push_back(c);
    }

    void addlump()
    {
        for (int j = 0; j < 2; j++) iunk[j] = this->nunk2 + 7 * j;
        this->nunk2 += 14;
        lump l = lump();
        l.id = 1;
        l.nepoch = 3;
        l.iref = 1;
        l.iunk = iunk;
        l.epoch = epoch;
        l.tx = moved[0], l.ty = moved[1], l.tz = moved[2], l.rx = moved[3], l.ry = moved[4], l.rz = moved[5];
        l.scale = moved[6];
        this->lumps.push_back(l);
    }

    void observations()
    {
        const int from = (int)(random() % 2), t = target();
        this->observe(this->dist, from, t, 50.0, 0.5).typ = (int)(random() % 2);
        this->dist.back().time = time();
        this->observe(this->dir1, from, target(), 1.0, 0.1).time = time();
        this->observe(this->dir2, 1 - from, target(), 0.1, 0.1).time = time();
        this->observe(this->difh, 0, t, 1.0, 1.0);
        this->observe(this->az, target(), 1, 1.0, 0.1);
        this->baseline(from, target(), 10, 20, 5);
        const int q = target(), when = time();
        this->observe(this->u, 1, q, 0.001, 1.0).time = when;
        this->observe(BareRecords::v, 1, q, 0.001, 1.0).time = when;
    }

    std::mt19937 random;
    int iunk[2], epoch[2] = {2, 3};
    double moved[7][2] = {{1.5, -2.0}, {2.5, 4.0}, {-3.5, 1.0}, {0.03, -0.02}, {-0.04, 0.01}, {0.9, 0.5}, {1.02, 0.97}};
};

} // namespace

TEST(CompactAndJordan, HoldTheSameMatrixOfObservationsOfEveryKind)
{
    for (unsigned seed = 1; seed <= 20; seed++)
        for (bool fixedstations : {false, true})
            for (int ndatum : {0, 6}) {
                Both<Everything> p(seed, fixedstations);
                p.prepare(2, ndatum);
                p.normal();
                const int n = S(*p.c.s, nunk);
                ASSERT_EQ(n, S(*p.j.s, nunk));
                for (int r = 0; r < n - ndatum; r++) { // datum rows have flags of their own
                    ASSERT_EQ(S(*p.c.s, delta)[r], S(*p.j.s, rhs)[r]) << seed << " " << r;
                    for (int col = 0; col <= r; col++)
                        ASSERT_EQ(at(*p.c.s, r, col), at(*p.j.s, r, col)) << seed << " " << r << " " << col;
                }
            }
}

TEST(CompactAndJordan, SolveTheSameWithTheLastLumpExchanged)
{
    for (unsigned seed = 1; seed <= 20; seed++)
        for (bool fixedstations : {false, true})
            for (int ndatum : {0, 6}) {
                Both<Everything> p(seed, fixedstations);
                p.c.points[5].defdatum[2] = p.j.points[5].defdatum[2] = DATUM_USED; // its weight leaves no digits
                p.c.nfixh = p.j.nfixh = 0;
                p.prepare(2, ndatum);
                p.normal();
                const int n = S(*p.c.s, nunk);
                p.hold(n - ndatum, 10.0); // what the observations leave open
                ASSERT_NO_FATAL_FAILURE(p.resolve());
                double largest = 0.0;
                for (int k = 0; k < n; k++) largest = fmax(largest, fabs(S(*p.j.s, delta)[k]));
                for (int k = 0; k < n; k++)
                    ASSERT_NEAR(S(*p.c.s, delta)[k], S(*p.j.s, delta)[k], 1e-5 * largest)
                        << seed << " " << k; // condition about 1e10
            }
}

// The row of the orientation holds no coordinate, and yet the exchange moves what couples it with
// the lump among the coordinates.
TEST(CompactAndJordan, SolveTheSameWithAnOrientationThatOnlyTheLumpReaches)
{
    int iunk[1] = {1}, epoch[1] = {2};
    double zero[1] = {0.0}, one[1] = {1.0};
    Pair p(3);
    auto build = [&](auto &r) {
        Three{{1, 1, 1}}(r);
        r.add("S", 0, 0, 0);
        r.add("T", 30, 40, 5).ilump = 1;
        for (int k = 3; k < 5; k++)
            for (int &number : r.points[k].n0) number = N_NONE;
        r.nunk1 = 9;
        r.points[3].n1[2] = 0;
        r.nunk2 = 8;
        lump l = lump();
        l.id = 1;
        l.nepoch = 2;
        l.iref = 1;
        l.iunk = iunk;
        l.epoch = epoch;
        l.tx = l.ty = l.tz = l.rx = l.ry = l.rz = zero;
        l.scale = one;
        r.lumps.push_back(l);
        r.observe(r.dir1, 3, 4, 0.95, 0.01).time = 2;
        r.observe(r.dist, 0, 1, 40.0, 0.1);
    };
    p.build(build, 5, 0);
    p.normal();
    p.hold(17, 1.0);
    EXPECT_NE(at(*p.j.s, 10, 9), 0.0);
    ASSERT_NO_FATAL_FAILURE(p.resolve());
    for (int k = 0; k < 17; k++) EXPECT_NEAR(S(*p.c.s, delta)[k], S(*p.j.s, delta)[k], 1e-10) << k;
}
