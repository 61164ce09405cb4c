// Random networks that have to start in a given way, with their true positions.
//
// Stations and targets lie at random in a square whose side grows with their number, targets
// four times as many as stations. A station sights the targets that are nearest to it, and by
// the way of the start other stations. What holds the network is given, nothing else.
// Observations carry noise of the size of good instruments.

#ifndef TESTS_RANDOM_NETWORK_H
#define TESTS_RANDOM_NETWORK_H

#include <math.h>
#include <stdint.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "support/network.h"

enum class Start {
    Polar,       // one station held with its orientation; all measure distances
    Resection,   // the four targets in the middle held
    Collimation, // two targets far apart held; stations sight each other
    Guess        // the same without sights between stations, in space
};

class RandomNetwork {
public:
    using Place = std::array<double, 3>;

    // sights: targets that a station sights.
    RandomNetwork(int dim, Start its_start, int its_sights, uint64_t seed)
        : n(dim), start(its_start), sights(its_sights), state(seed)
    {
        n.p.sdist = n.p.sdir1 = n.p.sdir2 = 1.0; // every observation weighs by its own deviation alone
        nsta = 3 + (int)(38 * uniform());        // 3 to 40
        side = 100.0 * sqrt((double)nsta);
        for (int i = 0; i < 5 * nsta; i++) place();
        hold();
        for (int i = 0; i < nsta; i++) turns.push_back(6.28 * uniform());
        for (int i = 0; i < nsta; i++) observe(i);
    }

    // Writes true coordinates and orientations, or zeros, for what is not held.
    void set_values(bool true_values)
    {
        for (int i = 0; i < 5 * nsta; i++) {
            double *x = i < nsta ? n.stations[i].x : n.targets[i - nsta].x;
            const int *code = i < nsta ? n.stations[i].ix : n.targets[i - nsta].ix;
            for (int k = 0; k < n.p.dim; k++) x[k] = true_values || code[k] == CODE_FIXED ? places[i][k] : 0.0;
        }
        for (int i = 0; i < nsta; i++)
            n.stations[i].r[2] = true_values || n.stations[i].ir[2] == CODE_FIXED ? -turns[i] : 0.0;
    }

    Network n;
    int nsta = 0;
    std::vector<Place> places;

private:
    // SplitMix64 (Steele, Lea, Flood 2014); in (0, 1).
    double uniform()
    {
        uint64_t z = state += 0x9e3779b97f4a7c15ULL;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        z ^= z >> 31;
        return ((double)(z >> 11) + 0.5) / 9007199254740992.0;
    }

    // In (-1, 1), of standard deviation 0.41.
    double noise() { return uniform() + uniform() - 1.0; }

    void place()
    {
        const int i = (int)places.size();
        const double high = i < nsta ? 2.0 : 30.0; // tripods on the ground, targets on walls
        const Place x = {side * uniform(), side * uniform(), n.p.dim == 3 ? high * uniform() : 0.0};
        places.push_back(x);
        const std::string name = (i < nsta ? "S" : "T") + std::to_string(i < nsta ? i : i - nsta);
        if (i >= nsta) {
            n.target(name.c_str(), 0, 0);
            return;
        }
        station_input &s = n.station(name.c_str(), 0, 0);
        s.typ = 1;
        s.ir[0] = s.ir[1] = CODE_FIXED; // levelled instruments
    }

    static void hold_point(int *code, int dim)
    {
        for (int k = 0; k < dim; k++) code[k] = CODE_FIXED;
    }

    double level(const Place &a, const Place &b) const { return hypot(a[0] - b[0], a[1] - b[1]); }

    // The points from first to end, the nearest to a place first.
    std::vector<int> nearest(const Place &from, int first, int end) const
    {
        std::vector<int> order;
        for (int i = first; i < end; i++) order.push_back(i);
        std::sort(order.begin(), order.end(),
                  [&](int a, int b) { return level(from, places[a]) < level(from, places[b]); });
        return order;
    }
    std::vector<int> nearest_targets(const Place &from) const { return nearest(from, nsta, 5 * nsta); }

    void hold()
    {
        const std::vector<int> order = nearest_targets({0.5 * side, 0.5 * side, 0.0});
        const int nheld = start == Start::Resection ? 4 : start == Start::Polar ? 0 : 2;
        for (int k = 0; k < nheld; k++) {
            const int near = nheld == 2 && k == 1 ? order.back() : order[k];
            hold_point(n.targets[near - nsta].ix, n.p.dim);
        }
        if (start != Start::Polar) return;
        hold_point(n.stations[0].ix, n.p.dim);
        n.stations[0].ir[2] = CODE_FIXED;
    }

    const char *name(int i) const { return i < nsta ? n.stations[i].name : n.targets[i - nsta].name; }

    void sight(int from, int to, bool with_distance)
    {
        const Place &a = places[from], &b = places[to];
        const double flat = level(a, b), dz = b[2] - a[2];
        const double bearing = atan2(b[1] - a[1], b[0] - a[0]) - turns[from];
        n.direction(name(from), name(to), remainder(bearing + 2e-5 * noise(), 8.0 * atan(1.0)), 1e-5);
        if (n.p.dim == 3) n.vertical(name(from), name(to), atan2(dz, flat) + 2e-5 * noise(), 1e-5);
        if (with_distance) n.distance(name(from), name(to), hypot(flat, dz) + 0.004 * noise(), 0.002);
    }

    // The targets nearest to the station, and those that have it among their nearest three.
    bool sees(int from, int target, const std::vector<int> &order) const
    {
        for (int k = 0; k < sights && k < (int)order.size(); k++)
            if (order[k] == target) return true;
        const std::vector<int> stations = nearest(places[target], 0, nsta);
        return std::find(stations.begin(), stations.begin() + 3, from) != stations.begin() + 3;
    }

    // Distances to all targets with a polar start, to a third of them with a resection.
    void observe(int from)
    {
        const std::vector<int> order = nearest_targets(places[from]);
        for (int t : order)
            if (sees(from, t, order))
                sight(from, t, start == Start::Polar || (start == Start::Resection && uniform() < 0.33));
        if (start != Start::Collimation) return;
        const std::vector<int> stations = nearest(places[from], 0, nsta);
        for (int k = 1; k <= 2; k++) sight(from, stations[k], false); // the nearest is itself
    }

    Start start;
    int sights;
    uint64_t state;
    double side = 0;
    std::vector<double> turns;
};

#endif
