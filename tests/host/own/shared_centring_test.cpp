// Errors of centring that the sights of one stand share: unknowns of the adjustment, and beside them the same network
// with the covariance that these errors give its sights.

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "host/own/two_ways.h"

namespace {

const double gon = std::atan(1.0) / 50.0;
constexpr double s_distance = 0.001, s_direction = 0.0005 /* gon */, s_instrument = 0.004, s_target = 0.002;

struct Target {
    const char *name;
    double x, y;
};

const std::array<Target, 4> targets = {{{"A", 60, 10}, {"B", -20, 45}, {"C", -50, -30}, {"D", 25, -70}}};

// A sight from the station at the origin, with its slopes by the instrument and by its target (which is minus that).
struct Sighted {
    int target;
    bool direction;
    double value, slope[2]; // metres or gon
};

std::vector<Sighted> sights(int rounds)
{
    std::vector<Sighted> all;
    for (const bool direction : {false, true})
        for (int round = 0; round < rounds; round++)
            for (int t = 0; t < 4; t++) {
                const double x = targets[(size_t)t].x, y = targets[(size_t)t].y, d = std::hypot(x, y);
                const double error = std::sin(7.0 * t + 3.0 * round + (direction ? 1.0 : 0.0));
                if (direction)
                    all.push_back({t,
                                   true,
                                   std::atan2(y, x) / gon + 130 + 0.003 * error,
                                   {y / (d * d) / gon, -x / (d * d) / gon}});
                else
                    all.push_back({t, false, d + 0.003 * error, {-x / d, -y / d}});
            }
    return all;
}

std::string rows(const std::vector<Sighted> &all, bool direction, const char *covariance)
{
    std::string text = direction ? "directions = '''\nfrom to value" : "distances = '''\nfrom to value";
    text += *covariance ? " covariance\n" : " sigma\n";
    for (const Sighted &s : all)
        if (s.direction == direction)
            text += std::string("P ") + targets[(size_t)s.target].name + " " + std::to_string(s.value) + " " +
                    (*covariance ? covariance : std::to_string(direction ? s_direction : s_distance)) + "\n";
    return text + "'''\n";
}

// With errors of its own, of the instrument, and of a target that both have in common.
double covariance_of(const std::vector<Sighted> &all, size_t i, size_t j)
{
    const Sighted &a = all[i], &b = all[j];
    const double along = a.slope[0] * b.slope[0] + a.slope[1] * b.slope[1];
    const double own = a.direction ? s_direction : s_distance;
    return along * s_instrument * s_instrument + (a.target == b.target ? along * s_target * s_target : 0.0) +
           (i == j ? own * own : 0.0);
}

std::string matrix(const std::vector<Sighted> &all)
{
    std::string text = "[covariances.stand]\nmatrix = '''\n";
    char number[40];
    for (size_t i = 0; i < all.size(); i++) {
        for (size_t j = 0; j < all.size(); j++) {
            std::snprintf(number, sizeof number, "%.17g ", covariance_of(all, i, j));
            text += number;
        }
        text += "\n";
    }
    return text + "'''\n";
}

std::string points()
{
    std::string text = "[tables]\nstations = '''\nname x y\nP 0.001 0.002\n'''\ntargets = '''\nname x y code\n";
    for (const Target &t : targets)
        text += std::string(t.name) + " " + std::to_string(t.x) + " " + std::to_string(t.y) + " fixed\n";
    return text + "'''\n";
}

std::string centred(const char *shared)
{
    return std::string("[run]\ndimension = 2\n[sigma]\ncentring_instrument = 0.004\ncentring_target = 0.002\n") +
           shared;
}

std::string whole(const std::string &head, const char *covariance = "")
{
    const std::vector<Sighted> all = sights(3);
    return head + points() + rows(all, false, covariance) + rows(all, true, covariance);
}

} // namespace

// The shifts are small, so that sights are linear in them to some millionths.
TEST(SharedCentring, IsTheCovarianceThatItGivesTheSights)
{
    const SolvedNetwork shared = solve_text(whole(centred("centring = \"each_stand\"\n")));
    const SolvedNetwork tied = solve_text(whole("[run]\ndimension = 2\n" + matrix(sights(3)), "stand"));
    ASSERT_TRUE(shared.adjusted() && tied.adjusted()) << shared.words() << tied.words();
    EXPECT_EQ(shared.results().degrees_of_freedom, tied.results().degrees_of_freedom);
    EXPECT_NEAR(*shared.results().sigma_aposteriori / *tied.results().sigma_aposteriori, 1.0, 1e-4);
    for (int k = 0; k < 2; k++) {
        EXPECT_NEAR(*shared.point("P").adjusted[k], *tied.point("P").adjusted[k], 1e-6);
        EXPECT_NEAR(*shared.point("P").deviation[k] / *tied.point("P").deviation[k], 1.0, 1e-3);
    }
}

// The instrument is no better centred after three rounds than after one.
TEST(SharedCentring, LeavesAStandAsUncertainAsItsCentring)
{
    const SolvedNetwork shared =
        solve_text(whole(centred("centring = \"each_stand\"\n[tests]\nprecision = \"a_priori\"\n")));
    const SolvedNetwork anew = solve_text(whole(centred("[tests]\nprecision = \"a_priori\"\n")));
    EXPECT_GT(*shared.point("P").deviation[0], s_instrument);
    EXPECT_LT(*anew.point("P").deviation[0], 0.6 * s_instrument);
}

TEST(SharedCentring, ShowsTheShiftsAsResiduals)
{
    const SolvedNetwork shared = solve_text(whole(centred("centring = \"each_stand\"\n")));
    const auto shifts = residuals_of(shared, "centring");
    ASSERT_EQ(shifts.size(), 10u) << shared.report; // x and y of an instrument and four targets
    EXPECT_EQ(shifts[0].from, "P");
    EXPECT_EQ(shifts[0].to, "");
    EXPECT_EQ(shifts[0].component, "x");
    EXPECT_EQ(shifts[2].to, "A");
    EXPECT_DOUBLE_EQ(shifts[2].sigma, s_target);
    EXPECT_TRUE(shared.results().lumps.empty());
    EXPECT_NEAR(residuals_of(shared, "distance")[0].sigma, s_distance, 1e-12);
}

TEST(SharedCentring, NeedsStandardDeviationsAndCoordinatesOfTheNetwork)
{
    EXPECT_EQ(faults_of(whole("[run]\ndimension = 2\n[sigma]\ncentring = \"each_stand\"\n")),
              Lines{"net.inp:4:12: [sigma] centring shares out standard deviations that are not there; write "
                    "centring_instrument or centring_target"});
    const std::string lump =
        "[run]\ndimension = 3\n[sigma]\ncentring = \"each_stand\"\ncentring_target = 0.002\n"
        "[tables]\nstations = '''\nname x y z code\nP 0 0 0 fixed\n'''\ntargets = '''\nname x y z lump\n"
        "A 9 1 0 1\n'''\ndistances = '''\nfrom to value sigma epoch\nP A 9 0.001 1\n'''\n";
    EXPECT_NE(solve_text(lump).words().find("centring of each stand does not go with lumps: write centring = "
                                            "\"each_sight\" in [sigma]"),
              std::string::npos);
}

// A sight of 2 km is raised by k s / (2 R), here 0.13 of 157 microradian; what a row says goes before its instrument.
TEST(Refraction, OfASingleSightIsThatOfItsRow)
{
    const auto height = [](const char *refraction, const char *group) {
        const SolvedNetwork solved =
            solve_text(std::string("[run]\ndimension = 3\n[tables]\ngroups = '''\nname refraction code_refraction "
                                   "s_refraction\nG 0.5 weighted 1e-9\n'''\nstations = '''\nname x y z code group\n"
                                   "A 0 0 0 fixed ") +
                       group +
                       "\n'''\ntargets = '''\nname x y z code_x code_y\nP 2000 0 0 fixed fixed\n'''\n"
                       "vertical_angles = '''\nfrom to value sigma refraction\nA P 100 0.001 " +
                       refraction + "\nA P 100 0.001 " + refraction + "\n'''\n");
        EXPECT_TRUE(solved.adjusted()) << solved.words();
        return *solved.point("P").adjusted[2];
    };
    const double raised = 2000.0 * 2000.0 / (2.0 * 6371000.0);
    EXPECT_NEAR(height("0.13", "-"), -0.13 * raised, 1e-8);
    EXPECT_NEAR(height("-", "-"), 0.0, 1e-8);
    EXPECT_NEAR(height("-", "G"), -0.5 * raised, 1e-6);
    EXPECT_NEAR(height("0.13", "G"), -0.13 * raised, 1e-8);
    EXPECT_NEAR(height("0", "G"), 0.0, 1e-8);
}

TEST(Refraction, OfASingleSightIsRefusedWhereItIsNone)
{
    const std::string file = "[run]\ndimension = 3\n[tables]\nstations = '''\nname x y z code\nA 0 0 0 fixed\n'''\n"
                             "targets = '''\nname x y z code_x code_y\nP 200 0 0 fixed fixed\n'''\n"
                             "vertical_angles = '''\nfrom to value sigma refraction\nA P 100 0.001 13\n'''\n";
    EXPECT_EQ(
        faults_of(file),
        Lines{"net.inp:14:15: \"13\" in column refraction is no coefficient of refraction; write a number between "
              "-10 and 10, like 0.13"});
    EXPECT_EQ(solve_text(with(file, "0.001 13", "0.001 0.13"), vornhost::Solver::Compact).words(),
              "the engine does not take column refraction of table vertical_angles (net.inp:14): choose the solver "
              "sparse\n");
}
