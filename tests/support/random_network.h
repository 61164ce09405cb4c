// Seeded networks of each dimension with known true coordinates: observations are truth plus
// noise, coordinates of free points truth plus an offset. Angles in gon.

#ifndef TESTS_RANDOM_NETWORK_H
#define TESTS_RANDOM_NETWORK_H

#include <math.h>

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/network.h"

struct RandomNetwork {
    // Dimension 1: heights, without stations; 2: plane, stations with distances and directions; 3: space, with
    // vertical angles as well. fixed: how many points (the last targets) are held.
    RandomNetwork(int dim, int nsta, int ntar, int fixed, unsigned seed, double noise, double offset)
        : net(dim), random(seed), level(noise), away(offset)
    {
        net.p.irun = -1;
        net.p.iangle = ANGLE_GON;
        net.p.radius = 1.0e16; // parallel verticals
        for (int i = 0; i < nsta + ntar; i++) {
            truth.push_back({place(), place(), place(0.2)});
            names.push_back((i < nsta ? "S" : "T") + std::to_string(i));
            names.back().resize(8, ' ');
        }
        for (int i = 0; i < nsta; i++) net.station(names[i].c_str(), near(i, 0), near(i, 1), near(i, 2)).r[2] = 0.0;
        for (int i = nsta; i < nsta + ntar; i++) {
            target_input &t = net.target(names[i].c_str(), near(i, 0), near(i, 1), near(i, 2));
            for (int k = 0; k < 3; k++) {
                if (i < nsta + ntar - fixed) continue;
                t.ix[k] = CODE_FIXED;
                t.x[k] = truth[i][k];
            }
        }
        if (dim == 1) heights(nsta + ntar);
        for (int i = 0; dim > 1 && i < nsta; i++) shots(i, nsta + ntar, dim);
    }

    Network net;
    std::vector<std::array<double, 3>> truth;

private:
    double place(double part = 1.0) { return 100.0 * part * std::uniform_real_distribution<double>(0.0, 1.0)(random); }
    static double gon(double radians)
    {
        const double g = radians * 200.0 / acos(-1.0);
        return g < 0.0 ? g + 400.0 : g;
    }
    double normal(double sigma) { return std::normal_distribution<double>(0.0, sigma)(random); }
    double near(int i, int k) { return truth[i][k] + normal(away); }

    void heights(int n)
    {
        for (int i = 0; i < n; i++)
            for (int step : {1, 2, 3}) {
                const int j = (i + step) % n;
                const double sigma = 0.001 * step;
                net.heightdiff(names[i].c_str(), names[j].c_str(), truth[j][2] - truth[i][2] + level * normal(sigma),
                               sigma);
            }
    }

    // Directions of an instrument whose orientation is known to a few hundred-thousandths.
    void shots(int i, int n, int dim)
    {
        const double orientation = normal(1.0e-5);
        for (int j = 0; j < n; j++) {
            if (j == i) continue;
            const double x = truth[j][0] - truth[i][0], y = truth[j][1] - truth[i][1], z = truth[j][2] - truth[i][2];
            const double flat = sqrt(x * x + y * y), far = dim == 3 ? sqrt(x * x + y * y + z * z) : flat;
            net.distance(names[i].c_str(), names[j].c_str(), far + level * normal(0.002), 0.002);
            net.direction(names[i].c_str(), names[j].c_str(), gon(atan2(y, x) + orientation) + level * normal(0.001),
                          0.001);
            if (dim == 3)
                net.vertical(names[i].c_str(), names[j].c_str(), gon(atan2(z, flat)) + level * normal(0.002), 0.002);
        }
    }

    std::mt19937 random;
    double level, away;
    std::vector<std::string> names;
};

#endif
