// A simulated wall whose points move as a whole between epochs, with exact observations.
//
// Metres and radians. Three fixed pillars S1, S2, S3 and the fixed marks R1, R2 stand still; the
// points of a lump stand at  X' = scale R X + T  of its motion to an epoch, and where they are
// at an epoch without a motion. Directions count from x towards y and start at the orientation
// of their pillar, vertical angles are elevations. Observations have no errors, so that an
// adjustment gives back the wall and its motions to the printed digits.

#ifndef TESTS_HOST_MOVING_WALL_H
#define TESTS_HOST_MOVING_WALL_H

#include <math.h>
#include <stdio.h>

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

struct Motion {
    double translation[3], rotation[3], scale;
};

class MovingWall {
public:
    using Place = std::array<double, 3>;
    struct Point {
        std::string name;
        Place x;
        int lump;
        std::string code = "free", status = "used";
    };

    MovingWall()
    {
        points = {{"R1", {-60, 50, 4}, 0, "fixed"}, {"R2", {61, 75, 7}, 0, "fixed"}, {"A", {-11, 0.3, 0.6}, 1},
                  {"B", {-6, 0.5, 3.4}, 1},         {"C", {-2, 0.4, 0.5}, 1},        {"D", {3, 0.7, 3.6}, 1},
                  {"E", {8, 0.2, 0.4}, 1}};
    }

    // ---- what is observed ----

    void direction(const std::string &from, const std::string &to, int epoch, const std::string &use = "yes")
    {
        const Place d = line(from, to, epoch);
        row("directions", from, to, atan2(d[1], d[0]) + orientation(from), epoch, use);
    }
    void vertical(const std::string &from, const std::string &to, int epoch, const std::string &use = "yes")
    {
        const Place d = line(from, to, epoch);
        row("vertical_angles", from, to, atan2(d[2], hypot(d[0], d[1])), epoch, use);
    }
    void distance(const std::string &from, const std::string &to, int epoch, const std::string &use = "yes")
    {
        const Place d = line(from, to, epoch);
        row("distances", from, to, sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]), epoch, use);
    }
    void height_difference(const std::string &from, const std::string &to, int epoch)
    {
        row("height_differences", from, to, line(from, to, epoch)[2], epoch, "yes");
    }
    void azimuth(const std::string &from, const std::string &to, int epoch)
    {
        const Place d = line(from, to, epoch);
        row("azimuths", from, to, atan2(d[1], d[0]), epoch, "yes");
    }
    void sight(const std::string &from, const std::string &to, int epoch)
    {
        direction(from, to, epoch);
        vertical(from, to, epoch);
        distance(from, to, epoch);
    }
    // From every pillar to the marks, and to these points at an epoch.
    void sight_all(const std::vector<std::string> &names, int epoch)
    {
        for (const char *pillar : {"S1", "S2", "S3"})
            for (const std::string &name : names) sight(pillar, name, epoch);
    }
    void sight_marks()
    {
        for (const char *pillar : {"S1", "S2", "S3"})
            for (const char *mark : {"R1", "R2"}) sight(pillar, mark, 0);
    }

    // ---- the truth ----

    Place place(const std::string &name, int epoch) const
    {
        for (const auto &[pillar, x] : pillars)
            if (pillar == name) return x;
        for (const Point &p : points) {
            if (p.name != name) continue;
            const auto motion = motions.find({p.lump, epoch});
            return motion == motions.end() ? p.x : moved(motion->second, p.x);
        }
        return {};
    }

    std::string text(int method) const
    {
        std::string all = "[run]\ndimension = 3\n[units]\nangle = \"radian\"\nvertical = \"elevation\"\n[lumps]\n"
                          "method = " +
                          std::to_string(method) + "\n" + settings + "[tables]\nstations = '''\nname x y z code lump\n";
        for (const auto &[name, x] : pillars) all += name + coordinates(x) + " fixed 0\n";
        all += more_stations + "'''\ntargets = '''\nname x y z code lump status" + more_columns + "\n";
        for (const Point &p : points)
            all += p.name + coordinates(p.x) + " " + p.code + " " + std::to_string(p.lump) + " " + p.status +
                   (more_columns.empty() ? "" : " " + more_cells) + "\n";
        all += "'''\n";
        if (!definitions.empty()) all += "lumps = '''\n" + definitions + "'''\n";
        for (const auto &[kind, rows] : tables)
            all += kind + " = '''\nfrom to value sigma epoch use\n" + rows + "'''\n";
        return all + more_tables;
    }

    std::map<std::string, Place> pillars = {{"S1", {-22, 30, 1.5}}, {"S2", {3, 38, 6.2}}, {"S3", {24, 29, 0.4}}};
    std::map<std::pair<int, int>, Motion> motions; // by lump and epoch
    std::vector<Point> points;
    std::map<std::string, std::string> tables; // rows by name of the table
    std::string settings, definitions, more_stations, more_tables;
    std::string more_columns, more_cells; // of the targets, all alike

private:
    static Place moved(const Motion &m, const Place &x)
    {
        const double *r = m.rotation;
        const double ca = cos(r[0]), sa = sin(r[0]), cb = cos(r[1]), sb = sin(r[1]), cc = cos(r[2]), sc = sin(r[2]);
        const double turn[3][3] = {{cb * cc, cb * sc, -sb},
                                   {sa * sb * cc - ca * sc, ca * cc + sa * sb * sc, sa * cb},
                                   {sa * sc + ca * sb * cc, ca * sb * sc - sa * cc, ca * cb}};
        Place y;
        for (size_t k = 0; k < 3; k++)
            y[k] = m.scale * (turn[k][0] * x[0] + turn[k][1] * x[1] + turn[k][2] * x[2]) + m.translation[k];
        return y;
    }
    Place line(const std::string &from, const std::string &to, int epoch) const
    {
        const Place p = place(from, epoch), q = place(to, epoch);
        return {q[0] - p[0], q[1] - p[1], q[2] - p[2]};
    }
    static double orientation(const std::string &pillar) { return 0.1 * pillar.back(); }
    static std::string coordinates(const Place &x)
    {
        char cells[100];
        snprintf(cells, sizeof cells, " %.6f %.6f %.6f", x[0], x[1], x[2]);
        return cells;
    }
    void row(const std::string &kind, const std::string &from, const std::string &to, double value, int epoch,
             const std::string &use)
    {
        char cells[100];
        snprintf(cells, sizeof cells, " %.12f 0.001 %d ", value, epoch);
        tables[kind] += from + " " + to + cells + use + "\n";
    }
};

#endif
