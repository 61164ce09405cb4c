// A small plane network, observed with errors.

#ifndef TESTS_HOST_EPOCHS_FIELD_H
#define TESTS_HOST_EPOCHS_FIELD_H

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "host/own/own_run.h"

struct Place {
    const char *name;
    double x, y;
};

// Four pillars and three points, metres.
inline const std::vector<Place> truth = {{"P1", 0, 0},   {"P2", 180, -40}, {"P3", 240, 150}, {"P4", 30, 190},
                                         {"D1", 80, 40}, {"D2", 110, 60},  {"D3", 140, 80}};

inline std::string number(double x)
{
    char text[40];
    snprintf(text, sizeof text, "%.9f", x);
    return text;
}

// Distances (0.6 mm) and directions (0.4 mgon) from the pillars to all points, with errors.
class Field {
public:
    explicit Field(unsigned seed) : engine(seed) {}

    std::string rows[2]; // distances, directions

    // `words` stand behind each row.
    void observe(const std::vector<Place> &places, const std::string &words = "", bool distances = true)
    {
        const double gon = 200.0 / M_PI;
        for (size_t s = 0; s < 4; s++) {
            const double turn = std::uniform_real_distribution<double>(0, 400)(engine);
            for (size_t q = 0; q < places.size(); q++) {
                if (q == s) continue;
                const double dx = places[q].x - places[s].x, dy = places[q].y - places[s].y;
                const std::string ends = std::string(places[s].name) + " " + places[q].name + " ";
                const double distance = std::hypot(dx, dy) + normal(0.0006),
                             direction = std::atan2(dy, dx) * gon - turn + normal(0.0004);
                if (distances) rows[0] += ends + number(distance) + words + "\n";
                rows[1] += ends + number(std::fmod(direction + 800, 400)) + words + "\n";
            }
        }
    }

    double normal(double sigma) { return std::normal_distribution<double>(0, sigma)(engine); }

    std::string text(const std::string &code = "free", double off = 0, const std::string &heading = "",
                     const std::string &run = "") const
    {
        std::string all = "[run]\ndimension = 2\n" + run +
                          "[sigma]\ndistances = 0.0006\ndirections = 0.0004\n[tables]\nstations = '''\nname x y code\n";
        for (size_t p = 0; p < truth.size(); p++) {
            if (p == 4) all += "'''\ntargets = '''\nname x y\n";
            all += truth[p].name + (" " + number(truth[p].x + off)) + " " + number(truth[p].y - off * (p % 2)) + " " +
                   (p < 2   ? code
                    : p < 4 ? "free"
                            : "") +
                   "\n";
        }
        if (!rows[0].empty()) all += "'''\ndistances = '''\nfrom to value" + heading + "\n" + rows[0];
        return all + "'''\ndirections = '''\nfrom to value" + heading + "\n" + rows[1] + "'''\n";
    }

private:
    std::mt19937 engine;
};

inline std::vector<Place> moved(const std::string &name, double dx, double dy)
{
    std::vector<Place> places = truth;
    for (Place &p : places)
        if (p.name == name) p.x += dx, p.y += dy;
    return places;
}

// v'Pv of a network file.
inline double squares(const std::string &text)
{
    const SolvedNetwork solved = solve_text(text);
    EXPECT_TRUE(solved.adjusted()) << solved.words();
    return solved.results().variance_test->squares;
}

#endif
