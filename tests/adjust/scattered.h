// A model with every kind of observation at random places, for tests of rows.

#ifndef TESTS_ADJUST_SCATTERED_H
#define TESTS_ADJUST_SCATTERED_H

#include <cmath>
#include <random>

#include "adjust/linear.h"
#include "adjust/model.h"

namespace vornadjust {

struct Random {
    std::mt19937 engine;
    explicit Random(unsigned seed) : engine(seed) {}
    double operator()(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine); }
};

const Code all_free[10] = {Code::free, Code::free, Code::free, Code::free, Code::free,
                           Code::free, Code::free, Code::free, Code::free, Code::free};

// Points on a ring of some tens of metres about (x, y, 0), heights within 10 m.
inline void scatter_points(Model &m, Random &random, int n, double x = 0.0, double y = 0.0)
{
    for (int p = 0; p < n; p++) {
        const double a = 6.283185307 * p / n, r = random(30, 60);
        const double xyz[3] = {x + r * std::cos(a), y + r * std::sin(a), random(-10, 10)};
        m.add_point(xyz, all_free);
    }
}

// Five points; an upright and a tilted set-up on points 0 and 1, a camera looking down from point 2, two moved groups.
inline Model scattered(unsigned seed, const Frame &frame)
{
    Random random(seed);
    Model m;
    m.frame = frame;
    scatter_points(m, random, 5, 20, -35);
    m.value[8] = 80.0; // the camera, above the others
    for (int s = 0; s < 3; s++) {
        const double tilt = s == 0 ? 0.0 : 0.3, angles[3] = {random(-tilt, tilt), random(-tilt, tilt), random(-3, 3)};
        m.add_setup(s, s == 0, angles, all_free);
    }
    const double constants[3] = {random(-0.1, 0.1), random(0.9, 1.1), random(-0.3, 0.3)};
    m.add_constants(constants, all_free);
    const double inner[10] = {
        0.035,           random(-1e-3, 1e-3), random(-1e-3, 1e-3), random(-0.1, 0.1), random(-0.1, 0.1),
        random(-10, 10), random(-1e3, 1e3),   random(-1e5, 1e5),   random(-0.1, 0.1), random(-0.1, 0.1)};
    m.add_camera(inner, all_free, 5e-6, 4e-6, 2000, 1500);
    for (int k = 0; k < 2; k++) {
        const double motion[7] = {random(-2, 2),     random(-2, 2),     random(-2, 2),   random(-0.2, 0.2),
                                  random(-0.2, 0.2), random(-0.2, 0.2), random(0.9, 1.1)};
        m.add_motion(motion, all_free);
    }
    return m;
}

// Observations of every kind, `moved` with ends in moved groups.
inline void observe_everything(Model &m, bool moved)
{
    const auto add = [&](Kind kind, int from, int to, int setup = -1, int constants = -1) {
        Observation o;
        o.kind = kind;
        o.from = from, o.to = to, o.setup = setup, o.constants = constants;
        o.h1 = 1.6, o.h2 = 0.7;
        o.sigma[0] = o.sigma[1] = o.sigma[2] = 0.01;
        if (moved) o.motion_from = 0, o.motion_to = to == 3 ? 1 : to == 4 ? 0 : -1;
        if (kind == Kind::angle) o.third = 4, o.motion_third = moved ? 1 : -1;
        if (kind == Kind::image) o.camera = 0;
        m.observe(o);
    };
    for (int constants = -1; constants <= 0; constants++) {
        add(Kind::slope_distance, 0, 3, -1, constants);
        add(Kind::slope_distance, 1, 4, -1, constants);
        add(Kind::plane_distance, 0, 3, -1, constants);
        add(Kind::level_distance, 1, 4, -1, constants);
        add(Kind::horizontal_distance, 0, 3, -1, constants);
        for (int setup = 0; setup < 2; setup++) add(Kind::vertical_angle, setup, 3, setup, constants);
    }
    for (int setup = 0; setup < 2; setup++) add(Kind::direction, setup, 4, setup);
    add(Kind::angle, 0, 3);
    add(Kind::angle, 1, 3, 1);
    add(Kind::height_difference, 0, 3);
    add(Kind::azimuth, 2, 4);
    add(Kind::bearing, 0, 3);
    add(Kind::scale_bar, 1, 3);
    for (unsigned char axis = 0; axis < 3; axis++) {
        add(Kind::difference, 0, 4);
        m.observations.back().axis = axis;
    }
    add(Kind::baseline, 0, 4);
    add(Kind::image, 2, 3, 2);
    for (int u : {4, 16, 25}) {
        Observation o;
        o.kind = Kind::unknown;
        o.unknown = u;
        o.sigma[0] = 0.01;
        m.observe(o);
    }
}

} // namespace vornadjust

#endif
