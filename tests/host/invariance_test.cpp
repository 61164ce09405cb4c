// What must not change the result of an adjustment: shifting and turning the network, and
// the order of its points and observations.

#include <gtest/gtest.h>

#include <math.h>
#include <stdio.h>

#include <algorithm>
#include <map>
#include <random>

#include "host/adjusted.h"

using namespace vornhost;

namespace {

const double pi = 4.0 * atan(1.0);

struct Place {
    double x, y, z;
};

// A turn about the third axis, then a shift.
struct Motion {
    double turn = 0, dx = 0, dy = 0, dz = 0;
    Place operator()(const Place &p) const
    {
        return {cos(turn) * p.x - sin(turn) * p.y + dx, sin(turn) * p.x + cos(turn) * p.y + dy, p.z + dz};
    }
};

// A network of three stations and four targets around (500, 500, 50), all observed from all
// stations with fixed errors; points 3 and 4 are known unless the network is free.
class Seven {
public:
    Seven(int dimension, bool is_free) : dim(dimension), free(is_free)
    {
        for (int i = 0; i < 7; i++) order.push_back(i);
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 7; j++)
                if (i != j) rows.push_back({i, j});
    }

    void shuffle(unsigned seed)
    {
        std::mt19937 random(seed);
        std::shuffle(order.begin(), order.end(), random);
        std::shuffle(rows.begin(), rows.end(), random);
    }

    std::string text(const Motion &motion) const
    {
        std::string t = "[run]\ndimension = " + std::to_string(dim) + "\n[units]\nangle = \"radian\"\n[tables]\n";
        if (dim != 1) t += "stations = '''\nname x y z code\n" + points(motion, true) + "'''\n";
        t += "targets = '''\nname x y z code\n" + points(motion, false) + (dim == 1 ? points(motion, true) : "") +
             "'''\n";
        if (dim == 1) return t + table("height_differences", "0.001");
        t += table("distances", "0.002") + table("directions", "0.00001");
        return dim == 3 ? t + table("vertical_angles", "0.00002") : t;
    }

private:
    static Place place(int i)
    {
        return {500.0 + 300.0 * cos(0.9 * i) + 10.0 * i, 500.0 + 280.0 * sin(0.9 * i), 50.0 + 15.0 * sin(2.0 * i)};
    }
    bool known(int i) const { return !free && (i == 3 || i == 4); }

    std::string points(const Motion &motion, bool stations) const
    {
        std::string t;
        for (const int i : order) {
            if (stations != (i < 3)) continue;
            Place p = place(i);
            if (!known(i)) p = {p.x + 0.05 * cos(7.0 * i), p.y + 0.05 * sin(5.0 * i), p.z + 0.05 * cos(3.0 * i)};
            p = motion(p);
            t += line("P%d %.17g %.17g %.17g %s\n", i, p.x, p.y, p.z, known(i) ? "fixed" : "free");
        }
        return t;
    }

    // Errors follow from the two ends alone, so that the order does not change them.
    std::string table(const std::string &kind, const char *sigma) const
    {
        std::string t = kind + " = '''\nfrom to value sigma\n";
        for (const auto &[i, j] : rows) {
            const Place a = place(i), b = place(j);
            const double error = cos(11.0 * i + 3.0 * j), dx = b.x - a.x, dy = b.y - a.y, dz = b.z - a.z;
            const double flat = hypot(dx, dy);
            double value = dz + 0.001 * error;
            if (kind == "distances") value = (dim == 3 ? hypot(flat, dz) : flat) + 0.002 * error;
            if (kind == "directions") value = fmod(atan2(dy, dx) + 0.7 * i + 1.0e-5 * error + 4.0 * pi, 2.0 * pi);
            if (kind == "vertical_angles") value = pi / 2.0 - atan2(dz, flat) + 2.0e-5 * error;
            t += line("P%d P%d %.17g %s\n", i, j, value, sigma);
        }
        return t + "'''\n";
    }

    template <class... Values> static std::string line(const char *format, Values... values)
    {
        char text[200];
        snprintf(text, sizeof text, format, values...);
        return text;
    }

    int dim;
    bool free;
    std::vector<int> order;
    std::vector<std::pair<int, int>> rows;
};

Results adjusted(const std::string &text, Solver solver)
{
    Model model = model_of(text);
    model.solver = solver;
    return adjusted_results(model);
}

std::map<std::string, PointResult> by_name(const Results &results)
{
    std::map<std::string, PointResult> points;
    for (const PointResult &p : results.points) points[p.name] = p;
    return points;
}

std::map<std::string, double> residuals(const Results &results)
{
    std::map<std::string, double> all;
    for (const ResidualResult &r : results.residuals) all[r.kind + " " + r.from + " " + r.to] = r.residual;
    return all;
}

void expect_same_residuals(const Results &a, const Results &b)
{
    const auto first = residuals(a), second = residuals(b);
    ASSERT_EQ(first.size(), second.size());
    for (const auto &[name, v] : first) EXPECT_NEAR(v, second.at(name), 1e-8) << name;
    EXPECT_NEAR(a.sigma_aposteriori.value_or(0.0), b.sigma_aposteriori.value_or(1.0), 1e-6);
}

class Invariance : public testing::TestWithParam<std::tuple<int, bool, Solver>> {
protected:
    int dim() const { return std::get<0>(GetParam()); }
    Seven network() const { return Seven(dim(), std::get<1>(GetParam())); }
    Results results(const Seven &n, const Motion &motion) const
    {
        return adjusted(n.text(motion), std::get<2>(GetParam()));
    }
};

} // namespace

// Coordinates move with the network, ellipses turn with it, residuals stay. Tolerances: the
// iterations end at 1e-6 m and the steps shrink a thousandfold.
TEST_P(Invariance, UnderShiftAndTurn)
{
    Motion motion;
    if (dim() != 1) motion.turn = 0.8, motion.dx = 20000.0, motion.dy = -13000.0;
    if (dim() != 2) motion.dz = 321.0;
    const Results start = results(network(), Motion()), moved = results(network(), motion);
    auto before = by_name(start), after = by_name(moved);
    ASSERT_EQ(before.size(), 7u);
    for (auto &[name, p] : before) {
        const Place expected =
            motion({p.adjusted[0].value_or(0.0), p.adjusted[1].value_or(0.0), p.adjusted[2].value_or(0.0)});
        const double x[3] = {expected.x, expected.y, expected.z};
        for (int c = 0; c < 3; c++) {
            if (!p.adjusted[c]) continue;
            EXPECT_NEAR(after[name].adjusted[c].value_or(NAN), x[c], 2e-8) << name << " " << c;
        }
        if (dim() == 1 || !p.ellipse[0]) continue;
        const EllipseResult &e = *p.ellipse[0], &f = *after[name].ellipse[0];
        EXPECT_NEAR(f.a, e.a, 1e-9) << name;
        EXPECT_NEAR(f.b, e.b, 1e-9) << name;
        EXPECT_NEAR(sin(f.bearing - e.bearing - motion.turn), 0.0, 1e-4) << name;
    }
    expect_same_residuals(start, moved);
}

TEST_P(Invariance, UnderTheOrderOfPointsAndObservations)
{
    const Results start = results(network(), Motion());
    auto before = by_name(start);
    for (unsigned seed = 1; seed <= 3; seed++) {
        Seven shuffled = network();
        shuffled.shuffle(seed);
        const Results other = results(shuffled, Motion());
        auto after = by_name(other);
        for (auto &[name, p] : before)
            for (int c = 0; c < 3; c++) {
                if (!p.adjusted[c]) continue;
                EXPECT_NEAR(after[name].adjusted[c].value_or(NAN), *p.adjusted[c], 1e-9) << name << " " << c;
                EXPECT_NEAR(after[name].deviation[c].value_or(0.0), p.deviation[c].value_or(0.0), 1e-9) << name;
            }
        expect_same_residuals(start, other);
    }
}

INSTANTIATE_TEST_SUITE_P(Networks, Invariance,
                         testing::Combine(testing::Values(1, 2, 3), testing::Bool(),
                                          testing::Values(Solver::Compact, Solver::Jordan)),
                         [](const testing::TestParamInfo<std::tuple<int, bool, Solver>> &p) {
                             return std::to_string(std::get<0>(p.param)) +
                                    (std::get<1>(p.param) ? "D_free_" : "D_fixed_") +
                                    (std::get<2>(p.param) == Solver::Jordan ? "jordan" : "compact");
                         });
