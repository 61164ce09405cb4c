// Simulated monitoring network: groups of targets that move between epochs, sighted from
// fixed pillars around them.

#ifndef TESTS_MOVING_WALL_H
#define TESTS_MOVING_WALL_H

#include <math.h>

#include <random>
#include <string>
#include <vector>

#include "support/network.h"

// Y = scale R(rx, ry, rz) X + t, with the rotation of a lump.
struct Motion {
    double t[3] = {0, 0, 0}, r[3] = {0, 0, 0}, scale = 1.0;

    // R is R1(rx) R2(ry) R3(rz), each turning the axes by its angle.
    void apply(const double x[3], double y[3]) const
    {
        const double ca = cos(r[0]), sa = sin(r[0]), cb = cos(r[1]), sb = sin(r[1]), cc = cos(r[2]), sc = sin(r[2]);
        const double u[3] = {cc * x[0] + sc * x[1], -sc * x[0] + cc * x[1], x[2]};
        const double v[3] = {cb * u[0] - sb * u[2], u[1], sb * u[0] + cb * u[2]};
        const double w[3] = {v[0], ca * v[1] + sa * v[2], -sa * v[1] + ca * v[2]};
        for (int k = 0; k < 3; k++) y[k] = scale * w[k] + t[k];
    }

    double value(int k) const { return k < 3 ? t[k] : k < 6 ? r[k - 3] : scale; }
};

struct Group {
    int id;
    std::vector<std::vector<double>> points; // at the reference epoch
    std::vector<Motion> motions;             // by epoch, from 1; that of the reference is not looked at
};

const double SIGMA_ANGLE = 5.0e-6, SIGMA_LENGTH = 0.0005; // radians, metres

// Motion of a group to an epoch: some centimetres, milliradians, tens of ppm. Without turning
// and growing when so asked.
inline Motion motion_of(int group, int epoch, bool turns = true, bool grows = true)
{
    Motion m;
    const double e = epoch - 1, g = group;
    m.t[0] = 0.031 * e + 0.012 * g;
    m.t[1] = -0.017 * e * g;
    m.t[2] = 0.008 * e - 0.005 * g;
    if (turns) {
        m.r[0] = 0.0011 * e * g;
        m.r[1] = -0.0023 * e;
        m.r[2] = 0.0037 * e + 0.0005 * g;
    }
    if (grows) m.scale = 1.0 + 40.0e-6 * e - 11.0e-6 * g;
    return m;
}

// A group of n points spread over a block around its centre.
inline Group group_of(int id, int n, double x, double y, double z)
{
    Group g;
    g.id = id;
    for (int i = 0; i < n; i++)
        g.points.push_back({x + 6.0 * cos(2.1 * i), y + 4.0 * sin(1.3 * i + 0.4), z + 1.5 * (i % 4)});
    return g;
}

inline std::vector<Group> groups_of(int ngroup, int nepoch, int npoint = 7, bool turns = true, bool grows = true)
{
    std::vector<Group> groups;
    for (int g = 1; g <= ngroup; g++) {
        groups.push_back(group_of(10 * g, npoint, 25.0 * g, 8.0, 3.0 * g));
        for (int e = 1; e <= nepoch; e++) groups.back().motions.push_back(motion_of(g, e, turns, grows));
    }
    return groups;
}

class MovingWall {
public:
    // noise 0 gives perfect observations, 1 errors of the given standard deviations.
    MovingWall(const std::vector<Group> &groups, int nepoch, int reference, double noise, unsigned seed = 1)
        : net(3), random(seed), noise_(noise)
    {
        net.p.lumpmethod = 1;
        net.p.irun = 1;
        const double pillars[5][3] = {{0, 0, 0}, {60, -5, 1}, {85, 30, 2}, {30, 45, 4}, {-10, 25, 3}};
        for (int i = 0; i < 5; i++) pillar("P" + std::to_string(i), pillars[i]);
        for (size_t g = 0; g < groups.size(); g++)
            for (size_t i = 0; i < groups[g].points.size(); i++) point(groups[g], (int)g, (int)i, nepoch, reference);
    }

    Network net;

private:
    void pillar(const std::string &name, const double x[3])
    {
        station_input &s = net.station(name.c_str(), x[0], x[1], x[2]);
        s.typ = 1; // measures distances, so that it can give first coordinates
        for (int k = 0; k < 3; k++) s.ix[k] = CODE_FIXED;
        s.ir[0] = s.ir[1] = CODE_FIXED;
    }

    void point(const Group &g, int number, int i, int nepoch, int reference)
    {
        const std::string name = std::string(1, (char)('A' + number)) + std::to_string(i);
        const double *x = g.points[(size_t)i].data();
        // first values some centimetres off
        net.target(name.c_str(), x[0] + 0.02, x[1] - 0.03, x[2] + 0.01).ilump = g.id;
        for (int e = 1; e <= nepoch; e++) {
            double y[3] = {x[0], x[1], x[2]};
            if (e != reference) g.motions[(size_t)e - 1].apply(x, y);
            for (size_t p = 0; p < net.stations.size(); p++) observe(p, name.c_str(), y, e);
        }
    }

    void observe(size_t p, const char *name, const double y[3], int epoch)
    {
        const std::string from = net.stations[p].name;
        const double *x = net.stations[p].x, d[3] = {y[0] - x[0], y[1] - x[1], y[2] - x[2]};
        const double length = sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        double direction = atan2(d[1], d[0]) + error() * SIGMA_ANGLE;
        if (direction < 0) direction += 8 * atan(1.0);
        const double vertical = asin(d[2] / length) + error() * SIGMA_ANGLE;
        net.direction(from.c_str(), name, direction, SIGMA_ANGLE).time = epoch;
        net.vertical(from.c_str(), name, vertical, SIGMA_ANGLE).time = epoch;
        net.distance(from.c_str(), name, length + error() * SIGMA_LENGTH, SIGMA_LENGTH).time = epoch;
    }

    // Standard normal (Box and Muller), the same on every machine.
    double error()
    {
        if (noise_ == 0.0) return 0.0;
        const double u = (random() + 1.0) / 4294967297.0, v = random() / 4294967296.0;
        return noise_ * sqrt(-2.0 * log(u)) * cos(8 * atan(1.0) * v);
    }

    std::mt19937 random;
    double noise_;
};

#endif
