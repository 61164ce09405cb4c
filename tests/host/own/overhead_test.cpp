// Sights straight up at the first coordinates: they have no direction there, and get one as soon as a point moves.

#include <cmath>
#include <random>
#include <sstream>

#include "host/own/own_run.h"

using namespace vornhost;

namespace {

const double gon = std::acos(-1.0) / 200.0;

struct Xyz {
    double x, y, z;
};

// Two stations and four fixed targets; T is nearly straight above the first station. `at` is what the file gives of T.
std::string plumb(const Xyz &truth, const Xyz &at, unsigned seed)
{
    const std::vector<std::pair<std::string, Xyz>> points = {
        {"S", {0, 0, 0}},     {"R", {30, 5, 1}},   {"A", {50, 0, 2}}, {"B", {0, 60, -1}},
        {"C", {-45, -20, 3}}, {"D", {10, -55, 0}}, {"T", truth}};
    std::mt19937 random(seed);
    std::normal_distribution<double> error;
    std::ostringstream stations, targets, directions, verticals, distances;
    for (std::ostringstream *s : {&stations, &targets, &directions, &verticals, &distances}) s->precision(12);
    for (size_t i = 0; i < points.size(); i++) {
        const Xyz &p = i == 6 ? at : points[i].second;
        (i < 2 ? stations : targets) << points[i].first << " " << p.x << " " << p.y << " " << p.z
                                     << (i < 2 || i == 6 ? " free\n" : " fixed\n");
    }
    for (size_t i = 0; i < 2; i++)
        for (size_t j = 1; j < points.size(); j++) {
            if (i == j || j == 1) continue;
            const Xyz &p = points[i].second, &q = points[j].second;
            const double dx = q.x - p.x, dy = q.y - p.y, dz = q.z - p.z, flat = std::hypot(dx, dy);
            const std::string head = points[i].first + " " + points[j].first + " ";
            const double reading = (std::atan2(dy, dx) - 0.3 * (double)i) / gon + 0.001 * error(random);
            directions << head << std::fmod(reading + 800.0, 400.0) << " 0.001\n";
            verticals << head << std::fabs(std::atan2(flat, dz) / gon + 0.001 * error(random)) << " 0.001\n";
            distances << head << std::hypot(flat, dz) + 0.002 * error(random) << " 0.002\n";
        }
    return "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\n" + stations.str() +
           "'''\ntargets = '''\nname x y z code\n" + targets.str() + "'''\ndirections = '''\nfrom to value sigma\n" +
           directions.str() + "'''\nvertical_angles = '''\nfrom to value sigma\n" + verticals.str() +
           "'''\ndistances = '''\nfrom to value sigma\n" + distances.str() + "'''\n";
}

} // namespace

TEST(SightsStraightUp, AreKeptWhereTheyGetADirection)
{
    for (const double off : {0.0005, 0.003, 0.3})
        for (unsigned seed = 1; seed < 6; seed++) {
            const Xyz truth = {off, 0.7 * off, 10.001};
            const SolvedNetwork up = solve_text(plumb(truth, {0, 0, 10}, seed)),
                                beside = solve_text(plumb(truth, truth, seed));
            ASSERT_TRUE(up.adjusted()) << off << " " << seed << ": " << up.words();
            ASSERT_TRUE(beside.adjusted()) << off << " " << seed << ": " << beside.words();
            EXPECT_EQ(up.results().degrees_of_freedom, beside.results().degrees_of_freedom);
            EXPECT_NEAR(*up.results().sigma_aposteriori, *beside.results().sigma_aposteriori, 1e-5);
            for (int k = 0; k < 3; k++) EXPECT_NEAR(*up.point("T").adjusted[k], *beside.point("T").adjusted[k], 1e-6);
        }
}
