// Simulated networks: true coordinates, observations with errors of their standard deviations, first values that are
// off.

#ifndef TESTS_ADJUST_RANDOM_NETWORKS_H
#define TESTS_ADJUST_RANDOM_NETWORKS_H

#include <cmath>
#include <random>
#include <vector>

#include "adjust/linear.h"
#include "adjust/model.h"

namespace vornadjust {

enum class Hold { fixed, free_all, free_some, weighted };

const Hold every_hold[] = {Hold::fixed, Hold::free_all, Hold::free_some, Hold::weighted};

class Network {
public:
    Model model;
    std::mt19937 engine;

    Network(unsigned seed, const Frame &frame) : engine(seed) { model.frame = frame; }

    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(engine); }
    double normal(double sigma) { return std::normal_distribution<double>(0, sigma)(engine); }
    bool chance(double p) { return uniform(0, 1) < p; }

    // n points within a square of `width` metres; coordinates that the space lacks are absent.
    void points(int n, double width, double height)
    {
        const Space space = model.frame.space;
        const Code across = space == Space::heights ? Code::absent : Code::free;
        const Code codes[3] = {across, across, space == Space::plane ? Code::absent : Code::free};
        for (int p = 0; p < n; p++) {
            const double xyz[3] = {uniform(0, width), uniform(0, width),
                                   space == Space::plane ? 0.0 : uniform(0, height)};
            model.add_point(xyz, codes);
        }
    }

    // One set-up a point, for the first n points.
    void setups(int n, bool levelled = true)
    {
        const Code tilt = levelled ? Code::absent : Code::free, codes[3] = {tilt, tilt, Code::free};
        for (int p = 0; p < n; p++) {
            const double lean = levelled ? 0.0 : 0.1,
                         angles[3] = {uniform(-lean, lean), uniform(-lean, lean), uniform(-3, 3)};
            model.add_setup(p, levelled, angles, codes);
        }
    }

    Observation &observe(Kind kind, int from, int to, double sigma)
    {
        Observation o;
        o.kind = kind;
        o.from = from, o.to = to;
        for (double &s : o.sigma) s = sigma * uniform(0.5, 2);
        if (kind == Kind::direction || kind == Kind::vertical_angle) o.setup = from;
        return model.observations[model.observe(o)];
    }

    // A chain through all points and random further pairs, each handed to `each`.
    template <class Each> void pairs(int more, const Each &each)
    {
        const int n = model.n_points;
        for (int p = 0; p < n; p++) each(p, (p + 1) % n);
        for (int k = 0; k < more; k++) {
            const int p = (int)uniform(0, n - 1e-9), q = (int)uniform(0, n - 1e-9);
            if (p != q) each(p, q);
        }
    }

    // A baseline with a covariance of its own.
    void baseline(int from, int to, double sigma)
    {
        double root[3][3], covariance[9] = {};
        for (auto &row : root)
            for (double &x : row) x = uniform(-sigma, sigma);
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) {
                for (int k = 0; k < 3; k++) covariance[3 * i + j] += root[i][k] * root[j][k];
                if (i == j) covariance[3 * i + j] += sigma * sigma;
            }
        Observation &o = observe(Kind::baseline, from, to, sigma);
        o.group = model.add_group(3, covariance);
    }

    // Held, datum or weighted coordinates of the first points (all of them when all are free).
    void hold(Hold how, int n)
    {
        for (int p = 0; p < (how == Hold::free_all ? model.n_points : n); p++)
            for (int k = 0; k < 3; k++) {
                Code &code = model.code[3 * p + k];
                if (code == Code::absent) continue;
                if (how == Hold::fixed) code = Code::fixed;
                if (how == Hold::free_all || how == Hold::free_some) code = Code::datum;
                if (how != Hold::weighted) continue;
                Observation o;
                o.kind = Kind::unknown;
                o.unknown = 3 * p + k;
                o.sigma[0] = uniform(0.002, 0.02);
                model.observe(o);
            }
    }

    // Observed values with errors, then first values that are off by up to `off` metres and off/1000 radians.
    void simulate(double off)
    {
        for (Observation &o : model.observations) {
            Linear l;
            linearize(model, o, false, &l);
            for (int c = 0; c < components(o.kind, model.frame.space); c++)
                o.value[c] = l.value[c] + normal(o.sigma[c]);
        }
        for (int u = 0; u < model.n_unknowns(); u++)
            if (model.estimated(u))
                model.value[u] += uniform(-off, off) * (model.meaning[u] == Meaning::coordinate ? 1.0 : 1e-3);
        model.start = model.value;
    }
};

inline Frame frame_of(Space space)
{
    Frame f;
    f.space = space;
    return f;
}

inline Network levelling(unsigned seed, Hold how)
{
    Network n(seed, frame_of(Space::heights));
    n.points(12, 1000, 50);
    n.pairs(10, [&](int p, int q) { n.observe(Kind::height_difference, p, q, 0.001); });
    n.hold(how, 2);
    n.simulate(1.0);
    return n;
}

// Directions and distances; without distances the scale is open too.
inline Network plane(unsigned seed, Hold how, bool distances)
{
    Network n(seed, frame_of(Space::plane));
    n.points(7, 500, 0);
    n.setups(7);
    // Angles alone need more of them.
    n.pairs(distances ? 10 : 25, [&](int p, int q) {
        n.observe(Kind::direction, p, q, 2e-5);
        n.observe(Kind::direction, q, p, 2e-5);
        if (distances) n.observe(Kind::plane_distance, p, q, 0.003);
    });
    n.hold(how, 3);
    n.simulate(0.3);
    return n;
}

// Twice the points of plane(): the factor has a tree.
inline Network wide_plane(unsigned seed, Hold how)
{
    Network n(seed, frame_of(Space::plane));
    n.points(14, 1200, 0);
    n.setups(14);
    n.pairs(10, [&](int p, int q) {
        n.observe(Kind::direction, p, q, 2e-5);
        n.observe(Kind::direction, q, p, 2e-5);
        n.observe(Kind::plane_distance, p, q, 0.003);
    });
    n.hold(how, 3);
    n.simulate(0.3);
    return n;
}

// Datum points, but for the first point, whose first `fixed` coordinates are held.
inline Network mixed(Network n, int fixed)
{
    for (int k = 0; k < fixed; k++) n.model.code[k] = Code::fixed;
    return n;
}

inline Network space(unsigned seed, Hold how, const Frame &frame, bool levelled)
{
    Network n(seed, frame);
    n.points(6, 300, 80);
    n.setups(6, levelled);
    n.pairs(8, [&](int p, int q) {
        for (const auto &[from, to] : {std::pair(p, q), std::pair(q, p)}) { // two sights at least for each tilt
            n.observe(Kind::direction, from, to, 2e-5);
            n.observe(Kind::vertical_angle, from, to, 2e-5);
        }
        n.observe(Kind::slope_distance, q, p, 0.002);
    });
    n.hold(how, 3);
    n.simulate(0.1);
    return n;
}

inline Network baselines(unsigned seed, Hold how)
{
    Network n(seed, frame_of(Space::space));
    n.points(9, 20000, 500);
    n.pairs(10, [&](int p, int q) { n.baseline(p, q, 0.01); });
    n.hold(how, 2);
    n.simulate(5.0);
    return n;
}

// Levelled instruments whose additive constant and refraction are unknown too. With sigmas the constants are weighted.
inline Network constants(unsigned seed, Hold how, bool weighted)
{
    Network n(seed, frame_of(Space::space));
    n.points(6, 1500, 300);
    n.setups(6);
    const double values[3] = {0.02, 1.0001, 0.13};
    const Code codes[3] = {Code::free, weighted ? Code::free : Code::fixed, Code::free};
    n.model.add_constants(values, codes);
    n.pairs(8, [&](int p, int q) {
        for (const auto &[from, to] : {std::pair(p, q), std::pair(q, p)}) {
            n.observe(Kind::direction, from, to, 2e-5);
            n.observe(Kind::vertical_angle, from, to, 2e-5).constants = 0;
        }
        n.observe(Kind::slope_distance, q, p, 0.002).constants = 0;
    });
    for (int k = 0; k < 3 && weighted; k++) {
        Observation o;
        o.kind = Kind::unknown;
        o.unknown = n.model.constants[0].first + k;
        o.sigma[0] = k == 0 ? 0.003 : k == 1 ? 2e-5 : 0.05;
        n.model.observe(o);
    }
    n.hold(how, 3);
    n.simulate(0.1);
    return n;
}

// A covariance with correlations everywhere.
inline std::vector<double> full_covariance(Network &n, int size, double sigma)
{
    std::vector<double> root((size_t)size * size), c((size_t)size * size, 0.0);
    for (double &x : root) x = n.uniform(-sigma, sigma) / size;
    for (int i = 0; i < size; i++)
        for (int j = 0; j < size; j++) {
            for (int k = 0; k < size; k++) c[i * size + j] += root[i * size + k] * root[j * size + k];
            if (i == j) c[i * size + j] += 0.3 * sigma * sigma;
        }
    return c;
}

// Sessions of three correlated baselines each, and three points imported with a covariance of their coordinates.
inline Network sessions(unsigned seed)
{
    Network n(seed, frame_of(Space::space));
    n.points(9, 20000, 500);
    int group = -1, place = 9;
    n.pairs(10, [&](int p, int q) {
        if (place == 9) group = n.model.add_group(9, full_covariance(n, 9, 0.01).data()), place = 0;
        Observation &o = n.observe(Kind::baseline, p, q, 0.01);
        o.group = group, o.place = place;
        place += 3;
    });
    const int imported = n.model.add_group(9, full_covariance(n, 9, 0.02).data());
    for (int u = 0; u < 9; u++) {
        Observation o;
        o.kind = Kind::unknown;
        o.unknown = u, o.group = imported, o.place = 8 - u;
        n.model.observe(o);
    }
    n.simulate(5.0);
    return n;
}

// A bundle of images around a field of points, all inner parameters unknown; the camera looks along -z of its axes.
inline Network images(unsigned seed, Hold how)
{
    Network n(seed, frame_of(Space::space));
    const int stations = 5, targets = 12;
    const Code codes[3] = {Code::free, Code::free, Code::free};
    for (int s = 0; s < stations; s++) {
        const double xyz[3] = {n.uniform(0, 10), n.uniform(0, 10), n.uniform(15, 25)};
        n.model.add_point(xyz, codes);
    }
    for (int t = 0; t < targets; t++) {
        const double xyz[3] = {n.uniform(0, 10), n.uniform(0, 10), n.uniform(0, 4)};
        n.model.add_point(xyz, codes);
    }
    for (int s = 0; s < stations; s++) {
        const double angles[3] = {n.uniform(-0.3, 0.3), n.uniform(-0.3, 0.3), 1.3 * s}; // turned about its axis
        n.model.add_setup(s, false, angles, codes);
    }
    const double inner[10] = {0.03, 1e-4, -1e-4, 1e-3, -1e-3, 20, 1e3, 1e5, 0.02, -0.01};
    const Code free[10] = {Code::free, Code::free, Code::free, Code::free, Code::free,
                           Code::free, Code::free, Code::free, Code::free, Code::free};
    n.model.add_camera(inner, free, 5e-6, 5e-6, 2000, 2000);
    for (int s = 0; s < stations; s++)
        for (int t = 0; t < targets; t++) {
            Observation &o = n.observe(Kind::image, s, stations + t, 0.1);
            o.setup = s, o.camera = 0;
        }
    for (int p = stations; p < stations + (how == Hold::free_all ? targets : 6); p++)
        for (int k = 0; k < 3; k++) n.model.code[3 * p + k] = how == Hold::fixed ? Code::fixed : Code::datum;
    n.simulate(0.0);
    for (int u = 0; u < n.model.n_unknowns(); u++) {
        if (!n.model.estimated(u)) continue;
        if (n.model.meaning[u] == Meaning::coordinate) n.model.value[u] += n.uniform(-0.01, 0.01);
        if (n.model.meaning[u] == Meaning::angle) n.model.value[u] += n.uniform(-1e-3, 1e-3);
    }
    n.model.start = n.model.value;
    return n;
}

// Half of the points belong to a group that moves between two epochs; six parameters and the scale are unknown.
inline Network movement(unsigned seed, Hold how)
{
    Network n(seed, frame_of(Space::space));
    n.points(8, 200, 80);
    n.setups(4);
    const double values[7] = {0.3, -0.2, 0.1, 0.01, -0.02, 0.015, 1.0002};
    const Code free[7] = {Code::free, Code::free, Code::free, Code::free, Code::free, Code::free, Code::free};
    n.model.add_motion(values, free);
    for (int epoch = 0; epoch < 2; epoch++)
        for (int from = 0; from < 4; from++) // set-ups on the points that stand
            for (int to = 0; to < 8; to++) {
                if (to == from || n.chance(0.3)) continue;
                for (Kind kind : {Kind::direction, Kind::vertical_angle, Kind::slope_distance}) {
                    Observation &o = n.observe(kind, from, to, kind == Kind::slope_distance ? 0.002 : 2e-5);
                    if (epoch == 1 && to > 3) o.motion_to = 0;
                }
            }
    n.hold(how, 3);
    n.simulate(0.01);
    return n;
}

} // namespace vornadjust

#endif
