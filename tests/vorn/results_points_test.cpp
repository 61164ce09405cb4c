// The points of a run in the host's result record: which arrays a dimension fills, the code of
// each coordinate, ellipses, and the places of points that were split by epoch.

#include <gtest/gtest.h>
#include <math.h>

#include <string>
#include <vector>

#include "support/handed.h"

namespace {

using Lines = std::vector<std::string>;
using Ints = std::vector<int>;
using Arrays = std::vector<const double *>;

const char SIZE_PROBLEM[] = "Size problem in pproject->runresults";

// Every value of every point another one; all of them exact binary fractions.
double final_of(int i, int c) { return 100 * i + c; }
double first_of(int i, int c) { return 100 * i + c + 0.5; }
double sigma_of(int i, int c) { return i + 0.25 * c + 0.125; }
double angle_of(int i, int c) { return -10 * i - c; }
double angle_sigma_of(int i, int c) { return 0.5 * i + 0.0625 * (c + 1); }
double ellipse_of(int i, int row, int plane) { return 1000 * i + 10 * row + plane; }

void set_values(Handed &h)
{
    for (int i = 0; i < V(h.run, npoints); i++) {
        point &p = h.at(i);
        for (int c = 0; c < 3; c++) {
            p.xpt[c] = final_of(i, c);
            p.x0[c] = first_of(i, c);
            p.sxpt[c] = sigma_of(i, c);
            p.xex[c] = angle_of(i, c);
            p.sxex[c] = angle_sigma_of(i, c);
            for (int plane = 0; plane < 3; plane++) p.ell[c][plane] = ellipse_of(i, c, plane);
        }
    }
}

// The arrays of a record by coordinate, by plane, or as they come.
Arrays finals(const result &r) { return {r.xpt, r.ypt, r.zpt}; }
Arrays firsts(const result &r) { return {r.x0, r.y0, r.z0}; }
Arrays sigmas(const result &r) { return {r.sxpt, r.sypt, r.szpt}; }
Arrays angles(const result &r) { return {r.rx, r.ry, r.rz}; }
Arrays angle_sigmas(const result &r) { return {r.srx, r.sry, r.srz}; }
std::vector<const int *> codes(const result &r) { return {r.code1, r.code2, r.code3}; }
std::vector<Arrays> ellipses(const result &r)
{
    return {{r.ell12a, r.ell13a, r.ell23a}, {r.ell12b, r.ell13b, r.ell23b}, {r.ell12t, r.ell13t, r.ell23t}};
}

Ints hosts(const result &r, int n) { return Ints(r.ihost, r.ihost + n); }

// ---- what a dimension fills ------------------------------------------------------

TEST(ResultPoints, HaveTheArraysOfTheirDimension)
{
    for (int dim = 1; dim <= 3; dim++)
        for (int irun = -2; irun <= 1; irun++) {
            Handed h(dim, 1, 1);
            V(h.run, irun) = irun;
            ASSERT_EQ(h.hand_back(), 0);
            const result &r = h.r();
            EXPECT_NE(r.ihost, nullptr);
            for (int c = 0; c < 3; c++) {
                const bool inside = dim == 3 || (dim == 2 ? c < 2 : c == 2);
                EXPECT_EQ(finals(r)[c] != nullptr, inside) << dim << c;
                EXPECT_EQ(firsts(r)[c] != nullptr, inside) << dim << c;
                EXPECT_EQ(codes(r)[c] != nullptr, inside) << dim << c;
                EXPECT_EQ(sigmas(r)[c] != nullptr, dim == 3) << dim << c;
                EXPECT_EQ(angles(r)[c] != nullptr, dim == 3) << dim << c;
                EXPECT_EQ(angle_sigmas(r)[c] != nullptr, dim == 3) << dim << c;
                for (int plane = 0; plane < 3; plane++)
                    EXPECT_EQ(ellipses(r)[c][plane] != nullptr, irun == 1 || irun == -2) << irun;
            }
        }
}

TEST(ResultPoints, InSpaceCarryDeviationsAndStationsTheirOrientation)
{
    Handed h(3, 2, 2);
    set_values(h);
    ASSERT_EQ(h.hand_back(), 0);
    for (int c = 0; c < 3; c++) {
        for (int i = 0; i < 4; i++) {
            EXPECT_EQ(finals(h.r())[c][i], final_of(i, c));
            EXPECT_EQ(firsts(h.r())[c][i], first_of(i, c));
            EXPECT_EQ(sigmas(h.r())[c][i], sigma_of(i, c));
        }
        for (int i = 0; i < 2; i++) {
            EXPECT_EQ(angles(h.r())[c][i], angle_of(i, c));
            EXPECT_EQ(angle_sigmas(h.r())[c][i], angle_sigma_of(i, c));
        }
    }
}

TEST(ResultPoints, InSpaceNeedNoStation)
{
    Handed h(3, 0, 2);
    set_values(h);
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.net.messages.lines, Lines());
    for (int c = 0; c < 3; c++) {
        EXPECT_EQ(angles(h.r())[c], nullptr);
        EXPECT_EQ(angle_sigmas(h.r())[c], nullptr);
        EXPECT_EQ(finals(h.r())[c][1], final_of(1, c));
    }
    EXPECT_EQ(hosts(h.r(), 2), (Ints{0, 1}));
}

TEST(ResultPoints, InThePlaneCarryTwoCoordinates)
{
    Handed h(2, 2, 2);
    set_values(h);
    ASSERT_EQ(h.hand_back(), 0);
    for (int c = 0; c < 2; c++)
        for (int i = 0; i < 4; i++) {
            EXPECT_EQ(finals(h.r())[c][i], final_of(i, c));
            EXPECT_EQ(firsts(h.r())[c][i], first_of(i, c));
        }
}

TEST(ResultPoints, OnTheLineCarryTheHeight)
{
    Handed h(1, 2, 2);
    set_values(h);
    ASSERT_EQ(h.hand_back(), 0);
    for (int i = 0; i < 4; i++) {
        EXPECT_EQ(h.r().zpt[i], final_of(i, 2));
        EXPECT_EQ(h.r().z0[i], first_of(i, 2));
    }
}

// ---- ellipses --------------------------------------------------------------------

TEST(ResultEllipses, InSpaceStandInThreePlanes)
{
    for (int irun : {1, -2}) {
        Handed h(3, 1, 1);
        set_values(h);
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0);
        for (int i = 0; i < 2; i++)
            for (int row = 0; row < 3; row++)
                for (int plane = 0; plane < 3; plane++)
                    EXPECT_EQ(ellipses(h.r())[row][plane][i], ellipse_of(i, row, plane));
    }
}

TEST(ResultEllipses, InThePlaneStandInTheFirst)
{
    for (int irun : {1, -2}) {
        Handed h(2, 1, 1);
        set_values(h);
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0);
        for (int i = 0; i < 2; i++)
            for (int row = 0; row < 3; row++) {
                EXPECT_EQ(ellipses(h.r())[row][0][i], ellipse_of(i, row, 0));
                for (int plane = 1; plane < 3; plane++) EXPECT_EQ(ellipses(h.r())[row][plane][i], 0.0);
            }
    }
}

// The deviation of a height is an upright ellipse of no width in both planes that hold it.
TEST(ResultEllipses, OnTheLineStandUpright)
{
    for (int irun : {1, -2}) {
        Handed h(1, 1, 1);
        set_values(h);
        V(h.run, irun) = irun;
        ASSERT_EQ(h.hand_back(), 0);
        for (int i = 0; i < 2; i++) {
            EXPECT_EQ(h.r().ell13a[i], ellipse_of(i, 0, 1));
            EXPECT_EQ(h.r().ell23a[i], ellipse_of(i, 0, 2));
            EXPECT_DOUBLE_EQ(h.r().ell13t[i], 2.0 * atan(1.0));
            EXPECT_DOUBLE_EQ(h.r().ell23t[i], 2.0 * atan(1.0));
            for (const double *none : {h.r().ell13b, h.r().ell23b, h.r().ell12a, h.r().ell12b, h.r().ell12t})
                EXPECT_EQ(none[i], 0.0);
        }
    }
}

} // namespace
