// Simulated networks with known truth, as numbers of the own adjustment, for first values: every kind of network that
// surveyors start without approximate coordinates. Metres and radians.

#ifndef TESTS_START_SIMULATED_H
#define TESTS_START_SIMULATED_H

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "adjust/linear.h"
#include "host/preparation/start/start.h"

namespace simulated {

namespace va = vornadjust;
using va::Code;
using va::Kind;
using vornhost::start::Known;

constexpr double pi = 3.14159265358979323846;
constexpr double gon = pi / 200.0;

struct Network {
    va::Model model; // values are the truth until they are taken away
    vornhost::start::Given given;
    std::vector<double> truth;
    std::vector<int> wrong; // observations with a gross error
};

// Builds a network around a truth; observations get their values at the end.
class Maker {
public:
    explicit Maker(unsigned seed) : random(seed) {}

    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(random); }
    int whole(int a, int b) { return std::uniform_int_distribution<int>(a, b)(random); }
    double noise() { return normal(random); }

    void space(va::Space s)
    {
        net.model.frame.space = s;
        plane = s == va::Space::plane;
        level = s == va::Space::heights;
    }

    int point(double x, double y, double z, bool fixed)
    {
        const Code c = fixed ? Code::fixed : Code::datum;
        const double v[3] = {x, y, z};
        const Code plan = level ? Code::absent : c;
        const Code codes[3] = {plan, plan, plane ? Code::absent : c};
        const int p = net.model.add_point(v, codes);
        for (int k = 0; k < 3; k++)
            net.given.coordinate.push_back(fixed || codes[k] == Code::absent ? Known::given : Known::wanted);
        return p;
    }

    // After all points.
    int setup(int p, bool tilted = false, double tilt = 0.0)
    {
        const double v[3] = {tilted ? uniform(-tilt, tilt) : 0.0, tilted ? uniform(-tilt, tilt) : 0.0,
                             uniform(-pi, pi)};
        const Code held = plane ? Code::absent : Code::fixed, t = tilted ? Code::free : held;
        const Code codes[3] = {t, t, Code::free};
        net.given.setup.push_back(0);
        return net.model.add_setup(p, !tilted && !plane, v, codes);
    }

    int observe(Kind kind, int from, int to, double sigma, int setup = -1, int third = -1)
    {
        va::Observation o;
        o.kind = kind;
        o.from = from, o.to = to, o.third = third;
        o.setup = setup;
        for (double &s : o.sigma) s = sigma;
        if (kind == Kind::baseline) {
            const double q = sigma * sigma, covariance[9] = {q, 0, 0, 0, q, 0, 0, 0, q};
            o.group = net.model.add_group(3, covariance);
        }
        return net.model.observe(o);
    }

    double distance(int a, int b) const
    {
        const double *x = &net.model.value[3 * (size_t)a], *y = &net.model.value[3 * (size_t)b];
        return std::hypot(x[0] - y[0], x[1] - y[1], x[2] - y[2]);
    }

    // Direction, distance and in space vertical angle.
    void polar(int setup, int to)
    {
        const int from = net.model.setups[(size_t)setup].point;
        direction(setup, to);
        observe(plane ? Kind::plane_distance : Kind::slope_distance, from, to, 0.002);
        if (!plane) observe(Kind::vertical_angle, from, to, 0.0006 * gon + 0.0002 / distance(from, to), setup);
    }

    void direction(int setup, int to)
    {
        const int from = net.model.setups[(size_t)setup].point;
        observe(Kind::direction, from, to, 0.0005 * gon + 0.0002 / distance(from, to), setup);
    }

    // Gives the observations their values, some of them wrong ones, and takes the unknown values away.
    Network finish(int gross)
    {
        net.truth = net.model.value;
        for (va::Observation &o : net.model.observations) {
            va::Linear l;
            va::linearize(net.model, o, false, &l);
            for (int c = 0; c < va::components(o.kind, net.model.frame.space); c++)
                o.value[c] = l.value[c] + o.sigma[c] * noise();
        }
        for (int i = 0; i < gross; i++) spoil();
        for (int p = 0; p < 3 * net.model.n_points; p++)
            if (net.given.coordinate[(size_t)p] == Known::wanted)
                net.model.value[(size_t)p] = net.model.start[(size_t)p] = 0.0;
        for (const va::Setup &s : net.model.setups)
            for (int k = 0; k < 3; k++)
                net.model.value[(size_t)(s.first + k)] = net.model.start[(size_t)(s.first + k)] = 0.0;
        return std::move(net);
    }

    std::mt19937 random;
    Network net;

private:
    void spoil()
    {
        const int i = whole(0, (int)net.model.observations.size() - 1);
        va::Observation &o = net.model.observations[(size_t)i];
        const bool angle = o.kind == Kind::direction || o.kind == Kind::angle || o.kind == Kind::vertical_angle ||
                           o.kind == Kind::azimuth;
        const double sign = whole(0, 1) ? 1.0 : -1.0;
        o.value[0] += sign * (angle ? uniform(0.5, 10.0) * gon : uniform(0.5, 10.0));
        if (!angle)
            o.value[0] =
                std::fabs(o.value[0]) *
                (o.kind == Kind::height_difference || o.kind == Kind::baseline ? std::copysign(1.0, o.value[0]) : 1.0);
        net.wrong.push_back(i);
    }

    std::normal_distribution<double> normal;
    bool plane = true, level = false;
};

} // namespace simulated

#endif
