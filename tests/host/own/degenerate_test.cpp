// Points that all their sights leave open: stations on the circle through their targets, targets on the line through
// the stations that see them. Directions are computed from the true places.

#include <cmath>
#include <cstdio>

#include "host/own/own_run.h"

namespace {

constexpr double pi = 3.14159265358979323846;

struct Xy {
    double x, y;
};

Xy on_circle(double gon, double radius)
{
    return {radius * std::cos(gon * pi / 200), radius * std::sin(gon * pi / 200)};
}

std::string direction(const char *from, Xy a, const std::string &to, Xy b, double zero)
{
    char line[100];
    const double bearing = std::atan2(b.y - a.y, b.x - a.x) * 200 / pi - zero;
    std::snprintf(line, sizeof line, "%s %s %.4f 0.001\n", from, to.c_str(), std::fmod(bearing + 800, 400));
    return line;
}

// P sights targets on a circle of 100 m; it stands at this radius.
std::string resection(const std::vector<double> &targets, double radius, const std::string &coordinates)
{
    std::string points, directions;
    const Xy p = on_circle(250, radius);
    for (size_t i = 0; i < targets.size(); i++) {
        const Xy t = on_circle(targets[i], 100);
        const std::string name = "K" + std::to_string(i);
        char line[100];
        std::snprintf(line, sizeof line, "%s %.4f %.4f fixed\n", name.c_str(), t.x, t.y);
        points += line;
        directions += direction("P", p, name, t, 33);
    }
    return "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nP " + coordinates +
           " free\n'''\ntargets = '''\nname x y code\n" + points + "'''\ndirections = '''\nfrom to value sigma\n" +
           directions + "'''\n";
}

const std::string circle = "lies on the circle through K0, K2 and K";
const std::string remedy = "observe a distance, or a direction to or from a point that does not lie on it";

} // namespace

TEST(Degenerate, StationOnTheCircleOfItsTargetsIsNamed)
{
    for (const std::vector<double> &targets : {std::vector<double>{0, 70, 150}, {0, 70, 150, 100}}) {
        const SolvedNetwork solved = solve_text(resection(targets, 100, "- -"));
        EXPECT_FALSE(solved.adjusted());
        EXPECT_NE(solved.words().find(circle), std::string::npos) << solved.words();
        EXPECT_NE(solved.words().find(remedy), std::string::npos) << solved.words();
    }
}

// Errors of these readings put the place where the arcs meet into the target C.
TEST(Degenerate, StationIsNotPutIntoATargetOnTheCircle)
{
    const SolvedNetwork solved = solve_text(
        "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nP - - free\n'''\ntargets = '''\nname x y code\n"
        "A 490.0333 99.3347 fixed\nB -208.0734 454.6487 fixed\nC -326.8218 -378.4012 fixed\n'''\ndirections = '''\n"
        "from to value sigma\nP A 27.69192 0.001\nP B 84.98533 0.001\nP C 148.64731 0.001\n'''\n");
    EXPECT_FALSE(solved.adjusted());
    EXPECT_NE(solved.words().find("lies on the circle through A, C and B"), std::string::npos) << solved.words();
}

// Approximate coordinates start the adjustment, which has no end on the circle.
TEST(Degenerate, StationOnTheCircleIsNamedWhereItHasCoordinates)
{
    for (const std::vector<double> &targets : {std::vector<double>{0, 70, 150}, {0, 70, 150, 100}}) {
        const SolvedNetwork solved = solve_text(resection(targets, 100, "-70.7 -70.7"));
        EXPECT_FALSE(solved.adjusted());
        EXPECT_NE(solved.words().find(circle), std::string::npos) << solved.words();
        EXPECT_NE(solved.words().find(remedy), std::string::npos) << solved.words();
    }
}

TEST(Degenerate, StationBesideTheCircleIsAdjusted)
{
    for (const double radius : {95.0, 105.0, 60.0, 140.0}) {
        const SolvedNetwork solved = solve_text(resection({0, 70, 150, 100}, radius, "- -"));
        ASSERT_TRUE(solved.adjusted()) << solved.words();
        EXPECT_NEAR(*solved.point("P").adjusted[0], on_circle(250, radius).x, 0.1);
        EXPECT_NEAR(*solved.point("P").adjusted[1], on_circle(250, radius).y, 0.1);
    }
}

TEST(Degenerate, TargetOnTheLineOfItsStationsIsNamed)
{
    const Xy a = {0, 0}, b = {100, 0}, k = {0, 100};
    for (const double x : {-50.0, 60.0, 300.0}) {
        const Xy p = {x, 0};
        const SolvedNetwork solved = solve_text(
            "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\nB 100 0 fixed\n'''\n"
            "targets = '''\nname x y code\nK 0 100 fixed\nP - - free\n'''\ndirections = '''\nfrom to value sigma\n" +
            direction("A", a, "K", k, 12) + direction("A", a, "P", p, 12) + direction("B", b, "K", k, 5) +
            direction("B", b, "P", p, 5) + "'''\n");
        EXPECT_FALSE(solved.adjusted());
        EXPECT_NE(solved.words().find("it lies on the line through A and B"), std::string::npos) << solved.words();
    }
}
