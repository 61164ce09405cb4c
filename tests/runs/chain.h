// Networks that hang together in points, each measured on its own, and the same adjusted at
// once. Observations and first coordinates are the same in both; the first network is held by
// fixed points, each later one by the points that it imports. Networks of heights share a fixed
// point as well: a height network without one is free, whatever it imports.

#ifndef TESTS_CHAIN_H
#define TESTS_CHAIN_H

#include <math.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/access.h"
#include "support/network.h"

enum class Way { Jordan, Compact };

// Final coordinates of a point and what says how good they are: the standard deviation of the
// height, the semi-axes of the ellipse in the plane, the standard deviations in space; metres.
struct Found {
    double x[3];
    std::vector<double> s;
};

class Chain {
public:
    static const int WHOLE = -1;

    // noise: errors of the observations in units of their standard deviation.
    Chain(int dimension, double noise, unsigned seed) : dim(dimension), random(seed), level(noise)
    {
        // name, place, networks in which the point stands (bits), network in which an instrument stands on it
        spots = {
            {"A", {0, 0, 0}, dim == 1 ? 7 : 1, -1},
            {"B", {90, 10, 5}, 1, -1},
            {"H", {20, 80, -4}, 1, -1},
            {"P", {50, 40, 2}, 1, 0},
            {"C", {110, 60, 8}, 3, 1},
            {"D", {80, 110, 3}, 3, 0},
            {"E", {140, 100, 12}, 3, -1},
            {"F", {160, 70, 6}, 2, 1},
            {"G", {170, 130, 9}, 6, -1},
            {"I", {130, 150, 1}, 6, 2},
            {"J", {190, 100, 4}, 6, -1},
            {"K", {200, 160, 7}, 4, 2},
            {"L", {220, 120, 0}, 4, -1},
        };
        for (Spot &s : spots) {
            s.name.resize(8, ' ');
            for (int k = 0; k < 3; k++) s.first[k] = s.fixed() ? s.truth[k] : micrometres(s.truth[k] + normal(0.005));
        }
        for (int part = 0; part < 3; part++) measure(part);
    }

    // Network number part, from 0, or all of them at once.
    std::unique_ptr<Network> network(int part) const
    {
        auto net = std::make_unique<Network>(dim);
        net->p.radius = 1.0e16; // parallel verticals
        net->p.convergence = 1.0e-9;
        for (const bool stations : {true, false})
            for (const Spot &s : spots)
                if (s.in(part) && stations == (dim > 1 && s.instrument_in(part))) add(*net, s, part, stations);
        for (const Shot &o : shots)
            if (part == WHOLE || o.part == part) add(*net, o);
        return net;
    }

    // Runs the network under a name; what stands in points goes into found.
    int run(Network &net, Way way, const std::string &name, const std::string &import = {})
    {
        name.copy(net.p.filename, sizeof net.p.filename - 1);
        import.copy(net.p.confile, sizeof net.p.confile - 1);
        vorn run(net.ready());
        int code = run.vornstart();
        if (code != 0) return 100 * code;
        code = way == Way::Jordan ? run.vornjordan() : run.vornL2();
        found.clear();
        for (int i = 0; i < V(run, npoints); i++) {
            const point &p = V(run, points)[i];
            Found &f = found[p.name];
            for (int k = 0; k < 3; k++) f.x[k] = p.xpt[k] + V(run, trans)[k];
            if (dim == 1) f.s = {p.ell[0][1]};
            if (dim == 2) f.s = {p.ell[0][0], p.ell[1][0]};
            if (dim == 3) f.s = {p.sxpt[0], p.sxpt[1], p.sxpt[2]};
        }
        return code;
    }

    std::map<std::string, Found> found;
    const int dim;

private:
    struct Spot {
        std::string name;
        double truth[3];
        int networks;   // bits
        int instrument; // network in which an instrument stands here, or -1
        double first[3] = {0, 0, 0};

        bool fixed() const { return (networks & 1) != 0 && instrument < 0 && networks != 3; }
        bool in(int part) const { return part == WHOLE || (networks >> part & 1) != 0; }
        bool instrument_in(int part) const { return part == WHOLE ? instrument >= 0 : instrument == part; }
        // exported to the next network, imported from the one before
        int connection(int part) const
        {
            if (part == WHOLE || fixed()) return 0;
            return in(part + 1) ? 1 : part > 0 && in(part - 1) ? 2 : 0;
        }
    };
    struct Shot {
        int part, kind;
        std::string from, to;
        double value, sigma;
    };

    static double micrometres(double x) { return round(x * 1e6) / 1e6; }
    double normal(double sigma) { return std::normal_distribution<double>(0.0, sigma)(random); }
    void shot(int part, int kind, const Spot &a, const Spot &b, double value, double sigma)
    {
        shots.push_back({part, kind, a.name, b.name, value + level * normal(sigma), sigma});
    }

    void measure(int part)
    {
        for (const Spot &a : spots)
            for (const Spot &b : spots) {
                if (!a.in(part) || !b.in(part) || &a == &b || (a.fixed() && b.fixed())) continue;
                if (dim == 1 && &a < &b) shot(part, KIND_HEIGHT_DIFFERENCE, a, b, b.truth[2] - a.truth[2], sigma());
                if (dim > 1 && a.instrument == part) sight(part, a, b);
            }
    }

    double sigma() { return 0.001 * std::uniform_real_distribution<double>(0.5, 2)(random); }

    void sight(int part, const Spot &a, const Spot &b)
    {
        const double x = b.truth[0] - a.truth[0], y = b.truth[1] - a.truth[1], z = b.truth[2] - a.truth[2];
        const double flat = hypot(x, y), bearing = atan2(y, x);
        shot(part, KIND_DISTANCE, a, b, dim == 3 ? hypot(flat, z) : flat, sigma());
        shot(part, KIND_DIRECTION, a, b, bearing < 0.0 ? bearing + 2 * acos(-1.0) : bearing, sigma() / 50);
        if (dim == 3) shot(part, KIND_VERTICAL, a, b, atan2(z, flat), sigma() / 50);
    }

    template <class Record> void mark(Record &record, const Spot &s, int part) const
    {
        for (int k = 0; k < 3; k++)
            if (s.fixed()) record.ix[k] = CODE_FIXED;
        record.iconn = s.connection(part);
    }
    void add(Network &net, const Spot &s, int part, bool station) const
    {
        const char *name = s.name.c_str();
        if (station)
            mark(net.station(name, s.first[0], s.first[1], s.first[2]), s, part);
        else
            mark(net.target(name, s.first[0], s.first[1], s.first[2]), s, part);
    }
    static void add(Network &net, const Shot &o)
    {
        const char *a = o.from.c_str(), *b = o.to.c_str();
        if (o.kind == KIND_HEIGHT_DIFFERENCE) net.heightdiff(a, b, o.value, o.sigma);
        if (o.kind == KIND_DISTANCE) net.distance(a, b, o.value, o.sigma);
        if (o.kind == KIND_DIRECTION) net.direction(a, b, o.value, o.sigma);
        if (o.kind == KIND_VERTICAL) net.vertical(a, b, o.value, o.sigma);
    }

    std::mt19937 random;
    double level;
    std::vector<Spot> spots;
    std::vector<Shot> shots;
};

#endif
