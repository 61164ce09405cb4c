#include <math.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/rows.h"

namespace {

enum { STATION = 0, TARGET = 3, ANGLES = 6, INNER = 9, NUNKNOWN = 19 }; // numbers of the unknowns

// One image of one target: 6 coordinates, 3 angles, 10 inner parameters, all unknown.
struct Image : Rows {
    explicit Image(bool distorted) : Rows(3)
    {
        point &s = add("S", 2.0, -1.0, 0.5), &t = add("T", 4.5, 1.25, 11.0);
        const double angles[3] = {0.15, -0.2, 0.7};
        for (int k = 0; k < 3; k++) {
            s.n0[k] = STATION + k;
            t.n0[k] = TARGET + k;
            s.n1[k] = k;
            s.xex[k] = angles[k];
        }
        camera &c = camerawith("cam", 0.05, 8e-6);
        c.pv = 9e-6;
        c.cu = 2000;
        c.cv = 1500;
        c.npar = 10;
        const double par[10] = {0.05, 1e-4, -2e-4, 3e-4, 5e-4, 4.0, -300.0, 2.0e4, 2e-3, -1e-3};
        for (int p = 0; p < 10; p++) {
            if (distorted) c.par[p] = par[p];
            c.ipar[p] = 3 + p;
        }
        observe(u, 0, 1, 2100.0, 0.25);
        observe(v, 0, 1, 1400.0, 0.125);
        ready();
    }
    void ready()
    {
        wire(1);
        suv = 0.5;
        nunk1 = 6;
        nunk2 = 13;
    }
    double *parameter(int k)
    {
        if (k < TARGET) return &points[0].xpt[k];
        if (k < ANGLES) return &points[1].xpt[k - TARGET];
        if (k < INNER) return &points[0].xex[k - ANGLES];
        return &cameras[0].par[k - INNER];
    }
    void computed(double uv[2])
    {
        double d[3], e[3], r1[3][3], r2[3][3], c[6];
        int l1, l2;
        S(*this, setrot)(3, 0, c, c + 1, c + 2, c + 3, c + 4, c + 5);
        ASSERT_EQ(0, S(*this, image_coor)(0, 0, d, e, uv, uv + 1, r1, r2, &l1, &l2));
        EXPECT_EQ(-1, l1);
        EXPECT_EQ(-1, l2);
    }
    // Difference quotient of u (which 0) or v by unknown k.
    double quotient(int which, int k)
    {
        double *x = parameter(k), up[2], down[2];
        const double keep = *x, h = k == INNER + 5 ? 1e-2 : k == INNER + 6 ? 1.0 : k == INNER + 7 ? 100.0 : 1e-6;
        *x = keep + h;
        computed(up);
        *x = keep - h;
        computed(down);
        *x = keep;
        return (up[which] - down[which]) / (2 * h);
    }
    void build()
    {
        S(*this, norm_photo)();
        ASSERT_EQ(2u, rows.size());
    }
};

// Rounding of 2000 pixels over 2e-6 and the third derivatives times 1e-12.
double tolerance(double derivative) { return 2e-6 + 1e-8 * fabs(derivative); }

} // namespace

TEST(ImageCoordinates, AreThePlainProjectionWithoutCorrections)
{
    Rows s(3);
    s.add("S", 1, 2, 3);
    s.add("T", 3, 5, 13);
    camera &c = s.camerawith("cam", 0.05, 1e-5);
    c.cu = 100;
    c.cv = 200;
    s.observe(s.u, 0, 1, 0, 1);
    s.observe(s.v, 0, 1, 0, 1);
    s.wire(1);
    double cs[6], d[3], e[3], u, v, r1[3][3], r2[3][3];
    int l1 = 5, l2 = 5;
    S(s, setrot)(3, 0, cs, cs + 1, cs + 2, cs + 3, cs + 4, cs + 5);
    EXPECT_EQ(0, S(s, image_coor)(0, 0, d, e, &u, &v, r1, r2, &l1, &l2));
    // e = (2, 3, 10): x = -0.01, y = -0.015; 1000 and 1500 pixels.
    EXPECT_NEAR(1100.0, u, 1e-9);
    EXPECT_NEAR(1700.0, v, 1e-9);
    EXPECT_EQ(-1, l1);
    EXPECT_EQ(-1, l2);
    const double wanted[3] = {2, 3, 10};
    for (int k = 0; k < 3; k++) {
        EXPECT_EQ(wanted[k], d[k]);
        EXPECT_DOUBLE_EQ(wanted[k], e[k]);
    }
}

TEST(ImageCoordinates, TakeEachCorrectionAlone)
{
    // x = -0.5, y = -0.25, r2 = 0.3125, pixels of 1: u = 0.5 - dx, v = 0.25 - dy.
    const double r2 = 0.3125,
                 dx[10] = {0, 1, 0, 0.5, -0.25, -0.5 * r2, -0.5 * r2 * r2, -0.5 * r2 * r2 * r2, 0.5 + r2, 0.25};
    const double dy[10] = {0, 0, 1, 0, -0.5, -0.25 * r2, -0.25 * r2 * r2, -0.25 * r2 * r2 * r2, 0.25, 0.125 + r2};
    for (int p = 1; p < 10; p++) {
        Rows s(3);
        s.add("S", 0, 0, 0);
        s.add("T", 2, 1, 4);
        s.camerawith("cam", 1.0, 1.0).par[p] = 0.125;
        s.observe(s.u, 0, 1, 0, 1);
        s.observe(s.v, 0, 1, 0, 1);
        s.wire(1);
        double cs[6], d[3], e[3], u, v, r1[3][3], rr[3][3];
        int l1, l2;
        S(s, setrot)(3, 0, cs, cs + 1, cs + 2, cs + 3, cs + 4, cs + 5);
        ASSERT_EQ(0, S(s, image_coor)(0, 0, d, e, &u, &v, r1, rr, &l1, &l2));
        EXPECT_DOUBLE_EQ(0.5 - 0.125 * dx[p], u) << p;
        EXPECT_DOUBLE_EQ(0.25 - 0.125 * dy[p], v) << p;
    }
}

TEST(ImageCoordinates, MoveALumpedTarget)
{
    Image s(true);
    double shift[1] = {0.5}, zero[3] = {0, 0, 0}, one[1] = {1.0};
    int epoch[1] = {2}, iunk[1] = {13};
    lump l = lump();
    l.id = 1;
    l.nepoch = 2;
    l.iref = 1;
    l.epoch = epoch;
    l.iunk = iunk;
    l.tx = l.ty = l.tz = shift;
    l.rx = l.ry = l.rz = zero;
    l.scale = one;
    double wanted[2], found[2], r[3][3], d[3], e[3], c[6];
    for (double &x : s.points[1].xpt) x += 0.5;
    s.computed(wanted);
    for (double &x : s.points[1].xpt) x -= 0.5;
    s.lumps.push_back(l);
    s.points[1].ilump = 1;
    s.u[0].time = 2;
    s.ready();
    int l1, l2;
    S(s, setrot)(3, 0, c, c + 1, c + 2, c + 3, c + 4, c + 5);
    ASSERT_EQ(0, S(s, image_coor)(0, 0, d, e, found, found + 1, r, r, &l1, &l2));
    EXPECT_EQ(-1, l1);
    EXPECT_EQ(0, l2);
    EXPECT_DOUBLE_EQ(wanted[0], found[0]);
    EXPECT_DOUBLE_EQ(wanted[1], found[1]);
    s.build(); // no lump columns
    EXPECT_EQ(13u, s.rows[0].i2.size() + 1);
}

TEST(ImageRows, AreTheDerivativesWithoutCorrections)
{
    Image s(false);
    s.build();
    for (int which = 0; which < 2; which++) {
        std::map<int, double> c = s.rows[which].by_unknown(6);
        for (int k = 0; k < NUNKNOWN; k++) {
            const double wanted = s.quotient(which, k);
            EXPECT_NEAR(wanted, c[k] / 0.5, tolerance(wanted)) << which << " " << k;
        }
    }
}

TEST(ImageRows, LeaveTheCorrectionsOutOfCoordinatesAnglesAndFocalLength)
{
    Image s(true), plain(false);
    s.build();
    plain.build();
    for (int which = 0; which < 2; which++) {
        std::map<int, double> c = s.rows[which].by_unknown(6), p = plain.rows[which].by_unknown(6);
        for (int k = 0; k <= INNER; k++) {
            EXPECT_DOUBLE_EQ(p[k], c[k]) << which << " " << k;
            const double full = s.quotient(which, k);
            if (fabs(c[k]) > 1.0) {
                EXPECT_GT(fabs(full - c[k] / 0.5), 1e-5 * fabs(full)) << k;
            }
        }
        for (int k = INNER + 1; k < NUNKNOWN; k++) {
            const double full = s.quotient(which, k);
            EXPECT_NEAR(full, c[k] / 0.5, tolerance(full)) << which << " " << k;
        }
    }
}

TEST(ImageRows, HaveNineInnerParametersForUAndEightForV)
{
    Image s(true);
    s.build();
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4, 6, 7, 8, 9, 10, 11, 12}), s.rows[0].i2);
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 5, 7, 8, 9, 10, 11, 12}), s.rows[1].i2);
    EXPECT_EQ((std::vector<int>{0, 3, 1, 4, 2, 5}), s.rows[0].i1);
}

TEST(ImageRows, AreWeightedByTheListAlone)
{
    Image s(true);
    double uv[2];
    s.computed(uv);
    s.build();
    EXPECT_DOUBLE_EQ((2100.0 - uv[0]) * 0.5, s.rows[0].b);
    EXPECT_DOUBLE_EQ((1400.0 - uv[1]) * 0.5, s.rows[1].b);
}

TEST(ImageRows, OfPixelsWithoutSizeAreWhatTheDivisionGives)
{
    Image s(true);
    s.cameras[0].pu = 0.0;
    s.build();
    ASSERT_EQ(2u, s.rows.size());
    EXPECT_FALSE(isfinite(s.rows[0].b));
    EXPECT_FALSE(isfinite(s.rows[0].c1[0]));
    EXPECT_TRUE(isfinite(s.rows[1].b));
}

TEST(ImageRows, OfAFixedStationStillHoldTheTarget)
{
    Image s(true);
    for (int k = 0; k < 3; k++) s.points[0].n0[k] = s.points[0].n1[k] = N_NONE;
    for (int &p : s.cameras[0].ipar) p = N_NONE;
    s.build();
    EXPECT_EQ((std::vector<int>{3, 4, 5}), s.rows[0].i1);
    EXPECT_TRUE(s.rows[0].i2.empty());
}

TEST(ImageRows, UseOnlyTheParametersOfTheCamera)
{
    Image s(true);
    s.cameras[0].npar = 3; // the others have no number
    s.build();
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 4}), s.rows[0].i2);
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3, 5}), s.rows[1].i2);
}

TEST(ImageRows, OfOneStationTakeTheCameraOfTheFirst)
{
    Image s(false);
    s.camerawith("other", 0.1, 1e-5);
    for (int p = 0; p < 2; p++) {
        s.observe(s.u, 0, 1, 2100, 0.25).typ = 1;
        s.observe(s.v, 0, 1, 1400, 0.125).typ = 1;
    }
    s.u[2].p1 = s.v[2].p1 = &s.points[1];
    s.u[2].p2 = s.v[2].p2 = &s.points[0];
    s.ready();
    S(s, norm_photo)();
    ASSERT_EQ(6u, s.rows.size());
    EXPECT_EQ(s.rows[0].c1, s.rows[2].c1);
    EXPECT_EQ(s.rows[0].b, s.rows[2].b);
    EXPECT_NE(s.rows[0].b, s.rows[4].b); // the next station brings its own
}

TEST(ImageRows, EndAtATargetInTheImagePlane)
{
    Image s(false);
    s.add("flat", 3.0, -1.0, 0.5);
    s.observe(s.u, 0, 2, 0, 1);
    s.observe(s.v, 0, 2, 0, 1);
    s.observe(s.u, 0, 1, 0, 1);
    s.observe(s.v, 0, 1, 0, 1);
    for (double &x : s.points[0].xex) x = 0.0;
    s.ready();
    S(s, norm_photo)();
    EXPECT_EQ(2u, s.rows.size());
    EXPECT_EQ("image_coor: third local delta too small\nnorm_photo: Pb in image_coor at obs 1\n", s.report());
}

TEST(ImageRows, EndAtARecordThatWasNotFilled)
{
    Image s(false);
    s.u.push_back(measure());
    s.v.push_back(measure());
    s.ready();
    S(s, norm_photo)();
    EXPECT_EQ(2u, s.rows.size());
    EXPECT_EQ("", s.report());
}

TEST(BaselineRows, HandOverUnknownsAndMisclosures)
{
    Rows s(2);
    s.add("A", 1, 2, 3);
    s.add("B", 11, 22, 33).n0[1] = 4;
    s.points[0].n0[0] = 7;
    s.baseline(0, 1, 10.5, 19.0, 30.25);
    s.baseline(1, 0, -10, -20, -30);
    s.wire(0);
    S(s, sgps) = 7.0; // plays no part
    S(s, norm_gps)();
    ASSERT_EQ(2u, s.bases.size());
    const int iu[6] = {7, -1, -1, -1, 4, -1};
    const double w[3] = {0.5, -1.0, 0.25};
    for (int k = 0; k < 6; k++) {
        EXPECT_EQ(iu[k], s.bases[0].iu[k]);
        EXPECT_EQ(iu[(k + 3) % 6], s.bases[1].iu[k]);
    }
    for (int k = 0; k < 3; k++) {
        EXPECT_DOUBLE_EQ(w[k], s.bases[0].w[k]);
        EXPECT_EQ(0.0, s.bases[1].w[k]);
    }
    EXPECT_EQ(0, s.bases[0].ibase);
    EXPECT_EQ(1, s.bases[1].ibase);
}
