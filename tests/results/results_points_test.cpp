// The points of a run in the host's result record: which arrays a dimension fills, the code of
// each coordinate, ellipses, and the places of points that were split by epoch.

#include <gtest/gtest.h>
#include <math.h>

#include <set>
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

// ---- codes -----------------------------------------------------------------------

struct Rule {
    int role, number, code;
};

// Role in the datum and unknown number of a coordinate, and what the host gets; a coordinate
// without unknown number is fixed whatever its role.
const Rule RULES[] = {{DATUM_USED, 0, 1},         {DATUM_UNUSED, 0, 2},    {DATUM_WEIGHTED, 0, 3},
                      {DATUM_FIXED_HEIGHT, 7, 1}, {DATUM_USED, N_NONE, 4}, {DATUM_UNUSED, N_NONE, 4},
                      {DATUM_WEIGHTED, N_NONE, 4}};
const int NRULE = sizeof RULES / sizeof RULES[0];

// Coordinate c of every point under its rule in defdatum and n0, the other two free.
void set_rules(Handed &h, int c)
{
    for (int i = 0; i < V(h.run, npoints); i++)
        for (int k = 0; k < 3; k++) {
            h.at(i).defdatum[k] = k == c ? RULES[i % NRULE].role : DATUM_USED;
            h.at(i).n0[k] = k == c ? RULES[i % NRULE].number : 0;
        }
}

TEST(ResultCodes, InSpaceComeFromRoleAndUnknownOfTheCoordinate)
{
    for (int c = 0; c < 3; c++) {
        Handed h(3, NRULE, NRULE);
        set_rules(h, c);
        ASSERT_EQ(h.hand_back(), 0);
        for (int i = 0; i < 2 * NRULE; i++)
            for (int k = 0; k < 3; k++)
                EXPECT_EQ(codes(h.r())[k][i], k == c ? RULES[i % NRULE].code : 1) << c << " " << i << " " << k;
    }
}

TEST(ResultCodes, OnTheLineComeFromRoleAndUnknownOfTheHeight)
{
    Handed h(1, NRULE, NRULE);
    set_rules(h, 2);
    ASSERT_EQ(h.hand_back(), 0);
    for (int i = 0; i < 2 * NRULE; i++) EXPECT_EQ(h.r().code3[i], RULES[i % NRULE].code) << i;
}

TEST(ResultCodes, OfTheSecondCoordinateInThePlaneComeFromItsUnknown)
{
    Handed h(2, NRULE, NRULE);
    set_rules(h, 1);
    ASSERT_EQ(h.hand_back(), 0);
    for (int i = 0; i < 2 * NRULE; i++) EXPECT_EQ(h.r().code2[i], RULES[i % NRULE].code) << i;
}

// The first coordinate in the plane: its own unknown number plays no part, that of the first
// orientation does.
TEST(ResultCodes, OfTheFirstCoordinateInThePlaneLookAtTheFirstOrientation)
{
    Handed h(2, NRULE, NRULE);
    for (int i = 0; i < 2 * NRULE; i++) {
        h.at(i).defdatum[0] = RULES[i % NRULE].role;
        h.at(i).n1[0] = RULES[i % NRULE].number;
        h.at(i).n0[0] = RULES[i % NRULE].number == N_NONE ? 0 : N_NONE;
    }
    ASSERT_EQ(h.hand_back(), 0);
    for (int i = 0; i < 2 * NRULE; i++) EXPECT_EQ(h.r().code1[i], RULES[i % NRULE].code) << i;
}

TEST(ResultCodes, InThePlaneShowNoFixedFirstCoordinateOfATarget)
{
    Handed h(2, 1, 1); // a station turns about the third axis only, a target has no orientation
    h.fix(1, 0);
    h.fix(1, 1);
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().code1[0], 4);
    EXPECT_EQ(h.r().code2[0], 1);
    EXPECT_EQ(h.r().code1[1], 1);
    EXPECT_EQ(h.r().code2[1], 4);
}

// ---- places in the host ----------------------------------------------------------

TEST(ResultPlaces, PassOverHostPointsThatDoNotTakePart)
{
    for (int dim = 1; dim <= 3; dim++) {
        Handed h(dim, 2, 2);
        set_values(h);
        h.net.stations.insert(h.net.stations.begin(), h.net.stations[0]);
        h.net.stations[0].status = STATUS_OFF;
        h.net.stations[2].status = STATUS_COMPUTE;
        h.net.targets.insert(h.net.targets.begin() + 1, h.net.targets[0]);
        h.net.targets[1].status = 0;
        h.attach();
        ASSERT_EQ(h.hand_back(), 0);
        EXPECT_EQ(hosts(h.r(), 4), (Ints{1, 2, 2 + 0, 2 + 2})); // targets behind the two stations of the run
        const int c = dim == 1 ? 2 : 0;
        for (int i = 0; i < 4; i++) EXPECT_EQ(finals(h.r())[c][i], final_of(i, c));
    }
}

TEST(ResultPlaces, StopAtAStationThatTheRunDoesNotHave)
{
    for (int dim = 1; dim <= 3; dim++) {
        Handed h(dim, 1, 1);
        h.net.station("MORE", 0, 0);
        h.net.targets[0].status = STATUS_OFF; // its place is not for a station
        h.attach();
        EXPECT_EQ(h.hand_back(), -3) << dim;
        EXPECT_EQ(h.net.messages.lines, Lines{SIZE_PROBLEM});
        EXPECT_EQ(h.r().ihost[0], 0); // what was filled stays
    }
}

TEST(ResultPlaces, StopAtATargetThatTheRunDoesNotHave)
{
    for (int dim = 1; dim <= 3; dim++) {
        Handed h(dim, 1, 1);
        h.net.target("MORE", 0, 0);
        h.attach();
        EXPECT_EQ(h.hand_back(), -3) << dim;
        EXPECT_EQ(h.net.messages.lines, Lines{SIZE_PROBLEM});
        EXPECT_EQ(hosts(h.r(), 2), (Ints{0, 1 + 0}));
    }
}

TEST(ResultPlaces, StopInARunThatEndedBeforeItHadPoints)
{
    for (int dim = 1; dim <= 3; dim++)
        for (int nsta = 0; nsta < 2; nsta++) {
            Handed h(dim, nsta, 1);
            free(V(h.run, points));
            V(h.run, points) = nullptr;
            h.net.p.lumpmethod = 9 * nsta;
            EXPECT_EQ(h.hand_back(), -3) << dim;
            EXPECT_EQ(h.net.messages.lines, Lines{SIZE_PROBLEM});
        }
}

// ---- points split by epoch -------------------------------------------------------

// Points with the given names, stations first; the host has each name once.
void split(Handed &h, const std::vector<std::string> &stations, const std::vector<std::string> &targets)
{
    int i = 0;
    for (const auto *names : {&stations, &targets})
        for (const std::string &name : *names) h.name(i++, name);
    h.net.stations.resize(std::set<std::string>(stations.begin(), stations.end()).size());
    h.net.targets.resize(std::set<std::string>(targets.begin(), targets.end()).size());
    h.attach();
    h.net.p.lumpmethod = 9;
    set_values(h);
}

// Which internal point stands at each returned place.
Ints sources(const result &r, int c)
{
    Ints from;
    for (int i = 0; i < r.nstar + r.ntarr; i++) from.push_back((int)(finals(r)[c][i] - c) / 100);
    return from;
}

TEST(SplitPoints, ReachTheHostOnce)
{
    Handed h(3, 4, 4);
    split(h, {"S0", "S0", "S0", "S1"}, {"T0", "T0", "T1", "T2"});
    V(h.run, irun) = 1;
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().nstar, 2);
    EXPECT_EQ(h.r().ntarr, 3);
    EXPECT_EQ(sources(h.r(), 0), (Ints{0, 3, 4, 6, 7}));
    EXPECT_EQ(hosts(h.r(), 5), (Ints{0, 1, 2 + 0, 2 + 1, 2 + 2})); // targets behind the returned stations
    EXPECT_EQ(h.r().rx[1], angle_of(3, 0));
    EXPECT_EQ(h.r().ell23t[3], ellipse_of(6, 2, 2));
}

TEST(SplitPoints, AtTheEndOfTheTargetsReachTheHostOnce)
{
    Handed h(3, 1, 4);
    split(h, {"S0"}, {"T0", "T1", "T1", "T1"});
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().ntarr, 2);
    EXPECT_EQ(sources(h.r(), 0), (Ints{0, 1, 2}));
}

// The walk does not leave the copies of the last station, so the first target is read from its
// second copy and every other one from the place of the target before it.
TEST(SplitPoints, OfTheLastStationShiftTheTargetsByOne)
{
    Handed h(3, 3, 3);
    split(h, {"S0", "S1", "S1"}, {"T0", "T1", "T2"});
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().nstar, 2);
    EXPECT_EQ(h.r().ntarr, 3);
    EXPECT_EQ(sources(h.r(), 0), (Ints{0, 1, 2, 3, 4}));
    EXPECT_EQ(hosts(h.r(), 5), (Ints{0, 1, 2, 3, 4}));
}

TEST(SplitPoints, OfTheLastStationInThreeShiftTheTargetsByOneToo)
{
    Handed h(3, 4, 2); // the third copy bears the name of the point just returned and is passed over
    split(h, {"S0", "S1", "S1", "S1"}, {"T0", "T1"});
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(sources(h.r(), 0), (Ints{0, 1, 2, 4}));
}

// The walk has stayed at the second copy of the last target, which is no place for another one.
TEST(SplitPoints, AtTheEndOfTheTargetsMakeNoRoomForMore)
{
    Handed h(3, 1, 3);
    split(h, {"S0"}, {"T0", "T1", "T1"});
    h.net.target("T2", 0, 0);
    h.attach();
    EXPECT_EQ(h.hand_back(), -3);
    EXPECT_EQ(h.net.messages.lines, Lines{SIZE_PROBLEM});
    EXPECT_EQ(hosts(h.r(), 3), (Ints{0, 1, 2}));
}

TEST(SplitPoints, AreNoneForAStationAndATargetOfOneName)
{
    Handed h(3, 1, 2); // the walk starts anew with the targets
    split(h, {"A"}, {"A", "B"});
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().nstar, 1);
    EXPECT_EQ(h.r().ntarr, 2);
    EXPECT_EQ(sources(h.r(), 0), (Ints{0, 1, 2}));
    EXPECT_EQ(hosts(h.r(), 3), (Ints{0, 1, 2}));
}

TEST(SplitPoints, AreAllReturnedWithAnotherMethod)
{
    Handed h(3, 1, 3);
    split(h, {"S0"}, {"T0", "T0", "T1"});
    h.net.targets.resize(3);
    h.net.targets[2].status = STATUS_ON;
    h.attach();
    h.net.p.lumpmethod = 1;
    ASSERT_EQ(h.hand_back(), 0);
    EXPECT_EQ(h.r().ntarr, 3);
    EXPECT_EQ(sources(h.r(), 0), (Ints{0, 1, 2, 3}));
}

// In dimensions 1 and 2 the same index reads and writes: copies are not passed over, and the
// places of the targets stand behind all internal stations.
TEST(SplitPoints, OutsideSpaceAreReadInTheirOrder)
{
    for (int dim = 1; dim <= 2; dim++) {
        Handed h(dim, 2, 2);
        split(h, {"S0", "S0"}, {"T0", "T1"});
        V(h.run, irun) = 1;
        ASSERT_EQ(h.hand_back(), 0);
        EXPECT_EQ(h.r().nstar, 1);
        EXPECT_EQ(h.r().ntarr, 2);
        EXPECT_EQ(sources(h.r(), dim == 1 ? 2 : 0), (Ints{0, 1, 2}));
        EXPECT_EQ(hosts(h.r(), 3), (Ints{0, 2 + 0, 2 + 1}));
    }
}

// Ellipses are as many as returned points; a place behind them gets none.
TEST(SplitPoints, OutsideSpaceGetNoEllipseBehindTheReturnedPoints)
{
    for (int dim = 1; dim <= 2; dim++) {
        Handed h(dim, 2, 1);
        split(h, {"S0", "S0"}, {"T0"});
        h.net.stations.resize(2);
        h.net.stations[1].status = STATUS_ON; // the host has both: three places, two ellipses
        h.attach();
        V(h.run, irun) = 1;
        ASSERT_EQ(h.hand_back(), 0); // a write behind them would show in the sanitizer
        const double *axis = dim == 1 ? h.r().ell13a : h.r().ell12a;
        EXPECT_EQ(axis[1], ellipse_of(1, 0, dim == 1 ? 1 : 0));
        EXPECT_EQ(hosts(h.r(), 3), (Ints{0, 1, 2}));
    }
}

} // namespace
