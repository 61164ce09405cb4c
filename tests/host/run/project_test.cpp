#include "vorn/project.h"

#include <gtest/gtest.h>

#include <math.h>
#include <stdlib.h>

#include "vorn/result.h"

namespace {

const double pi = 4.0 * atan(1.0);

// The sentinels are exact.
const double no_direction = 2.0 * pi, no_vertical = pi;

project of_unit(int unit, int zenith = 0)
{
    project p = project();
    p.iangle = unit;
    p.izenith = zenith;
    return p;
}

struct Unit {
    int unit;
    double full;    // circle
    double raw;     // 100 degrees 30 minutes 36 seconds
    double seconds; // 5 seconds of arc
};

const double sample = 100.51 * pi / 180.0, five_seconds = 5.0 / 3600.0 * pi / 180.0;

const Unit units[] = {{ANGLE_GON, 400.0, 100.51 / 0.9, 5.0 / 3240.0},
                      {ANGLE_DEGREE, 360.0, 100.51, 5.0 / 3600.0},
                      {ANGLE_PACKED, 360.0, 100.3036, 0.0005},
                      {ANGLE_RADIAN, 2.0 * pi, sample, five_seconds}};

} // namespace

// 1e-14: the raw value itself is rounded to about 1e-16 of its size, a packed one to 1e-14 of a degree.
TEST(RawToH, ReadsValuesAndDeviationsOfEveryUnit)
{
    for (const Unit &u : units) {
        project p = of_unit(u.unit);
        EXPECT_NEAR(p.rawtoh(1, u.raw), sample, 1e-14) << u.unit;
        EXPECT_NEAR(p.rawtoaz(1, u.raw), sample, 1e-14) << u.unit;
        EXPECT_NEAR(p.rawtov(1, u.seconds), five_seconds, 1e-14) << u.unit;
        EXPECT_NEAR(p.rawtoh(2, u.seconds), five_seconds, 1e-14) << u.unit;
        EXPECT_NEAR(p.rawtoaz(2, u.seconds), five_seconds, 1e-14) << u.unit;
        EXPECT_NEAR(p.rawtov(2, u.seconds), five_seconds, 1e-14) << u.unit;
    }
}

TEST(RawToH, ReducesValuesIntoOneCircle)
{
    for (const Unit &u : units) {
        project p = of_unit(u.unit);
        EXPECT_EQ(p.rawtoh(1, u.full), 0.0) << u.unit;
        EXPECT_EQ(p.rawtoh(1, 2.0 * u.full), 0.0) << u.unit;
        EXPECT_EQ(p.rawtoaz(1, -u.full), 0.0) << u.unit;
        EXPECT_EQ(p.rawtoh(1, -1e-18), 0.0) << u.unit;
        EXPECT_NEAR(p.rawtoh(1, -u.raw), 2.0 * pi - sample, 1e-14) << u.unit;
        if (u.unit == ANGLE_PACKED) continue;
        EXPECT_NEAR(p.rawtoh(1, u.raw + u.full), sample, 1e-14) << u.unit;
    }
    EXPECT_NEAR(of_unit(ANGLE_PACKED).rawtoh(1, 460.3036), sample, 1e-14);
}

// No readable angle may look like the sentinel.
TEST(RawToH, StaysBelowTheFullCircle)
{
    for (const Unit &u : units) {
        project p = of_unit(u.unit);
        const double below = u.unit == ANGLE_PACKED ? 359.595999 : nextafter(u.full, 0.0);
        EXPECT_LT(p.rawtoh(1, below), 2.0 * pi) << u.unit;
        EXPECT_GE(p.rawtoh(1, below), 0.0) << u.unit;
    }
}

TEST(RawToH, TellsThatAValueIsNotReadable)
{
    for (const Unit &u : units) {
        project p = of_unit(u.unit);
        for (const double raw : {(double)NAN, (double)INFINITY, -(double)INFINITY}) {
            EXPECT_EQ(p.rawtoh(1, raw), no_direction) << u.unit;
            EXPECT_EQ(p.rawtoaz(1, raw), no_direction) << u.unit;
            EXPECT_EQ(p.rawtov(1, raw), no_vertical) << u.unit;
        }
    }
    project p = of_unit(ANGLE_PACKED, 1);
    for (const double raw : {12.6, 12.5960, -12.0075}) {
        EXPECT_EQ(p.rawtoh(1, raw), no_direction) << raw;
        EXPECT_EQ(p.rawtoaz(1, raw), no_direction) << raw;
        EXPECT_EQ(p.rawtov(1, raw), no_vertical) << raw;
    }
}

TEST(RawToV, TurnsZenithAnglesIntoElevations)
{
    project p = of_unit(ANGLE_GON, 1);
    EXPECT_NEAR(p.rawtov(1, 95.0), pi / 40.0, 1e-15);
    EXPECT_NEAR(p.rawtov(1, 100.0), 0.0, 1e-15);
    EXPECT_NEAR(p.rawtov(1, 0.0), pi / 2.0, 1e-15);
    EXPECT_NEAR(p.rawtov(1, 200.0), -pi / 2.0, 1e-15);
    EXPECT_NEAR(p.rawtov(2, 95.0), 95.0 * pi / 200.0, 1e-15);
}

TEST(RawToV, FoldsReadingsOfTheSecondFace)
{
    project zenith = of_unit(ANGLE_GON, 1), elevation = of_unit(ANGLE_GON, 0);
    EXPECT_NEAR(zenith.rawtov(1, 305.0), pi / 40.0, 1e-14);
    EXPECT_NEAR(zenith.rawtov(1, 300.0), 0.0, 1e-14);
    EXPECT_NEAR(elevation.rawtov(1, 195.0), pi / 40.0, 1e-14);
    EXPECT_NEAR(elevation.rawtov(1, 205.0), -pi / 40.0, 1e-14);
    EXPECT_NEAR(elevation.rawtov(1, 395.0), -pi / 40.0, 1e-14);
    EXPECT_NEAR(elevation.rawtov(1, 200.0), 0.0, 1e-14);
}

TEST(HToRaw, GivesValuesAndDifferencesInEveryUnit)
{
    for (const Unit &u : units) {
        project p = of_unit(u.unit);
        EXPECT_NEAR(p.htoraw(1, sample), u.raw, 1e-11) << u.unit;
        EXPECT_NEAR(p.htoraw(1, sample - 4.0 * pi), u.raw, 1e-11) << u.unit;
        EXPECT_NEAR(p.aztoraw(1, sample), u.raw, 1e-11) << u.unit;
        EXPECT_EQ(p.htoraw(1, 2.0 * pi), 0.0) << u.unit;
        EXPECT_NEAR(p.htoraw(0, -five_seconds), -u.seconds, 1e-14) << u.unit;
        EXPECT_NEAR(p.aztoraw(0, five_seconds), u.seconds, 1e-14) << u.unit;
        EXPECT_NEAR(p.vtoraw(0, -five_seconds), -u.seconds, 1e-14) << u.unit;
    }
}

TEST(HToRaw, LeavesAResidualAsItIsInModeTwo)
{
    for (const Unit &u : units) {
        project p = of_unit(u.unit, 1);
        EXPECT_EQ(p.htoraw(2, -0.123), -0.123);
        EXPECT_EQ(p.aztoraw(2, -0.123), -0.123);
        EXPECT_EQ(p.vtoraw(2, -0.123), -0.123);
    }
}

TEST(HToRaw, NeverWritesSixtyMinutesOrSeconds)
{
    project p = of_unit(ANGLE_PACKED);
    const double degree = pi / 180.0, second = degree / 3600.0;
    EXPECT_NEAR(p.htoraw(1, 30.5 * degree - 1e-6 * second), 30.3, 1e-12);
    EXPECT_NEAR(p.htoraw(1, 31.0 * degree - 1e-6 * second), 31.0, 1e-12);
    EXPECT_EQ(p.htoraw(1, 360.0 * degree - 1e-6 * second), 0.0);
    EXPECT_NEAR(p.htoraw(0, -60.0 * second + 1e-6 * second), -0.01, 1e-12);
    for (int i = 0; i < 3600; i++) {
        const double raw = p.htoraw(1, (12.0 + i / 3600.0) * degree);
        ASSERT_NEAR(raw, 12.0 + (i / 60) / 100.0 + (i % 60) / 10000.0, 1e-11) << i;
    }
}

TEST(VToRaw, GivesZenithAnglesBack)
{
    for (const int zenith : {0, 1}) {
        project p = of_unit(ANGLE_GON, zenith);
        EXPECT_NEAR(p.vtoraw(1, pi / 40.0), zenith ? 95.0 : 5.0, 1e-12);
        EXPECT_NEAR(p.vtoraw(1, -pi / 40.0), zenith ? 105.0 : -5.0, 1e-12);
    }
    EXPECT_NEAR(of_unit(ANGLE_PACKED).vtoraw(1, -5.51 * pi / 180.0), -5.3036, 1e-12);
    EXPECT_NEAR(of_unit(ANGLE_PACKED, 1).vtoraw(1, -5.51 * pi / 180.0), 95.3036, 1e-12);
}

TEST(Freerun, ReleasesTheRecordAndEveryArray)
{
    project p = project();
    p.runresults = (result *)calloc(1, sizeof(result));
    result *r = p.runresults;
    for (int **array : {&r->ihost, &r->code1, &r->code2, &r->code3, &r->iobs, &r->iout, &r->inorm, &r->inormb, &r->itau,
                        &r->itaub, &r->ilump, &r->iepoch, &r->iref})
        *array = (int *)calloc(1, sizeof(int));
    for (double **array :
         {&r->x0,     &r->y0,     &r->z0,     &r->xpt,    &r->ypt,    &r->zpt,    &r->sxpt,   &r->sypt,
          &r->szpt,   &r->rx,     &r->ry,     &r->rz,     &r->srx,    &r->sry,    &r->srz,    &r->res,
          &r->sres,   &r->ell12a, &r->ell12b, &r->ell12t, &r->ell13a, &r->ell13b, &r->ell13t, &r->ell23a,
          &r->ell23b, &r->ell23t, &r->tx,     &r->ty,     &r->tz,     &r->lrx,    &r->lry,    &r->lrz,
          &r->tscale, &r->stx,    &r->sty,    &r->stz,    &r->slrx,   &r->slry,   &r->slrz,   &r->stscale})
        *array = (double *)calloc(1, sizeof(double));
    p.freerun(r); // the leak check of the sanitizer sees what is left
    EXPECT_EQ(p.runresults, nullptr);
}

TEST(Freerun, TakesARecordWithoutArraysAndNone)
{
    project p = project();
    p.freerun((result *)calloc(1, sizeof(result)));
    p.freerun(nullptr);
    EXPECT_EQ(p.runresults, nullptr);
}
