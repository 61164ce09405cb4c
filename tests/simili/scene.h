// A similarity transformation in a folder of its own: two lists, result, report.

#ifndef TESTS_SIMILI_SCENE_H
#define TESTS_SIMILI_SCENE_H

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "simili/simili.h"
#include "support/access.h"
#include "support/faults.h"
#include "support/workfolder.h"

using namespace vornengine;

using Vec3 = std::array<double, 3>;
using Mat3 = std::array<Vec3, 3>;

inline simpoint named(const std::string &name, Vec3 x, Vec3 sx = {0.001, 0.001, 0.001})
{
    simpoint p;
    std::memset(&p, 0, sizeof p);
    std::memcpy(p.name, name.data(), std::min(name.size(), sizeof p.name));
    for (int k = 0; k < 3; k++) p.x[k] = x[k], p.sx[k] = sx[k];
    return p;
}

inline Mat3 product(const Mat3 &a, const Mat3 &b)
{
    Mat3 c{};
    for (int i = 0; i < 3; i++)
        for (int j = 0; j < 3; j++)
            for (int k = 0; k < 3; k++) c[i][j] += a[i][k] * b[k][j];
    return c;
}

inline Vec3 apply(const Mat3 &r, const Vec3 &x)
{
    Vec3 y{};
    for (int i = 0; i < 3; i++)
        for (int k = 0; k < 3; k++) y[i] += r[i][k] * x[k];
    return y;
}

// The rotation of three angles as a product of turns about the axes, last angle first.
inline Mat3 rotation(double a, double b, double c)
{
    const Mat3 rx{{{1, 0, 0}, {0, std::cos(a), std::sin(a)}, {0, -std::sin(a), std::cos(a)}}};
    const Mat3 ry{{{std::cos(b), 0, -std::sin(b)}, {0, 1, 0}, {std::sin(b), 0, std::cos(b)}}};
    const Mat3 rz{{{std::cos(c), std::sin(c), 0}, {-std::sin(c), std::cos(c), 0}, {0, 0, 1}}};
    return product(rx, product(ry, rz));
}

// t + s R x
inline Vec3 moved(const Vec3 &x, const Vec3 &t, const Mat3 &r, double s)
{
    const Vec3 u = apply(r, x);
    return {t[0] + s * u[0], t[1] + s * u[1], t[2] + s * u[2]};
}

class Scene : public ::testing::Test {
protected:
    ~Scene() override { fail_allocation(0); }

    // n points of the first list within 10 m, and their places after the transformation with
    // random errors of the given size.
    void points(int n, const Vec3 &t, const Mat3 &r, double s, double error = 0.0, unsigned seed = 1)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> place(-10, 10);
        std::normal_distribution<double> e(0, 1);
        ref.clear();
        end.clear();
        for (int i = 0; i < n; i++) {
            const Vec3 x{place(random), place(random), place(random)};
            Vec3 y = moved(x, t, r, s);
            for (double &v : y) v += error * e(random);
            ref.push_back(named("P" + std::to_string(i), x));
            end.push_back(named("P" + std::to_string(i), y));
        }
    }

    simili &make(int rotate) { return *(run = build(rotate)); }
    simili &make(int rotate, double held)
    {
        run = std::make_unique<simili>((int)ref.size(), ref.data(), (int)end.size(), end.data(), res, rotate, held);
        return *run;
    }
    std::unique_ptr<simili> build(int rotate)
    {
        return std::make_unique<simili>((int)ref.size(), ref.data(), (int)end.size(), end.data(), res, rotate);
    }

    // Text of the report so far.
    std::string report()
    {
        if (run && SIM(*run, out)) fflush(SIM(*run, out));
        std::ifstream f("simili.out");
        return (std::stringstream() << f.rdbuf()).str();
    }

    WorkFolder folder; // left behind the run, which writes there
    std::vector<simpoint> ref, end;
    double res[7] = {-1, -2, -3, -4, -5, -6, -7};
    std::unique_ptr<simili> run;
};

#endif
