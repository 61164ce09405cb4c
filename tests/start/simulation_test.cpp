// How often networks of every kind start: started right (the adjustment ends where it ends from the truth, or the gross
// errors are named), not started, wrong. VORN_SIMULATIONS is the number of networks of each kind and number of gross
// errors.

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>

#include "adjust/adjustment.h"
#include "start/simulated.h"

namespace {

using namespace simulated;
using std::vector;

// Stations on a disturbed grid of 100 m that see their neighbours; four fixed corners that do not see each other.
Network far_control(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(4, 7), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(100.0 * (i % side) + m.uniform(-25, 25), 100.0 * (i / side) + m.uniform(-25, 25), 0, false);
    const double far = 100.0 * (side - 1) + 80.0;
    for (const auto &[x, y] : {std::pair{-80.0, -80.0}, {far, -80.0}, {far, far}, {-80.0, far}})
        m.point(x + m.uniform(-20, 20), y + m.uniform(-20, 20), 0, true);
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < n + 4; j++)
            if (i != j && m.distance(i, j) < 150.0) m.polar(s, j);
    }
    return m.finish(gross);
}

// A wide grid of stations that see their neighbours, fixed in three corners: what is carried from one of them has gone
// far where it meets another.
Network wide(unsigned seed, int side, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int n = side * side;
    for (int i = 0; i < n; i++) {
        const bool fixed = i == 0 || i == 1 || i == side || i == n - 1;
        m.point(100.0 * (i % side) + m.uniform(-20, 20), 100.0 * (i / side) + m.uniform(-20, 20), 0, fixed);
    }
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i), x = i % side;
        if (x > 0) m.polar(s, i - 1);
        if (x + 1 < side) m.polar(s, i + 1);
        if (i >= side) m.polar(s, i - side);
        if (i + side < n) m.polar(s, i + side);
    }
    return m.finish(gross);
}

// A traverse from A to B without any orientation.
Network traverse(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int n = m.whole(4, 12);
    for (int i = 0; i < n; i++) m.point(80.0 * i + m.uniform(-20, 20), m.uniform(-60, 60), 0, i == 0 || i == n - 1);
    for (int i = 1; i < n - 1; i++) {
        const int s = m.setup(i);
        m.polar(s, i - 1);
        m.polar(s, i + 1);
    }
    return m.finish(gross);
}

// Two traverses between the same known points, tied to each other in the middle: rings.
Network rings(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int n = m.whole(4, 8);
    const int a = m.point(0, 0, 0, true), b = m.point(100.0 * (n + 1), 0, 0, true);
    vector<vector<int>> line(3);
    for (int k = 0; k < 3; k++)
        for (int i = 1; i <= n; i++)
            line[(size_t)k].push_back(
                m.point(100.0 * i + m.uniform(-20, 20), 120.0 * (k - 1) + m.uniform(-20, 20), 0, false));
    vector<std::pair<int, int>> sights;
    for (const auto &l : line) {
        sights.emplace_back(a, l.front());
        sights.emplace_back(l.back(), b);
        for (int i = 1; i < n; i++) sights.emplace_back(l[(size_t)i - 1], l[(size_t)i]);
    }
    for (int k = 1; k < 3; k++)
        for (int i = 1; i < n; i += 2) sights.emplace_back(line[(size_t)k - 1][(size_t)i], line[(size_t)k][(size_t)i]);
    for (int p = 2; p < m.net.model.n_points; p++) {
        const int s = m.setup(p);
        for (const auto &[i, j] : sights)
            if (i == p || j == p) m.polar(s, i == p ? j : i);
    }
    return m.finish(gross);
}

Network hall(unsigned seed, int gross, bool fixed, bool tilted)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int n = m.whole(3, 8), targets = m.whole(20, 40);
    for (int i = 0; i < n; i++) m.point(m.uniform(5, 55), m.uniform(5, 25), m.uniform(1, 2), false);
    for (int i = 0; i < targets; i++) {
        const int wall = m.whole(0, 3);
        const double along = m.uniform(0, 1), x = wall == 0 ? 0 : wall == 1 ? 60 : 60 * along;
        const double y = wall == 2 ? 0 : wall == 3 ? 30 : 30 * along;
        m.point(x, y, m.uniform(0, 8), fixed && i < 4);
    }
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i, tilted, 0.3);
        for (int t = n; t < n + targets; t++)
            if (m.uniform(0, 1) < 0.7) m.polar(s, t);
    }
    return m.finish(gross);
}

Network hall_fixed(unsigned seed, int gross) { return hall(seed, gross, true, false); }
Network hall_free(unsigned seed, int gross) { return hall(seed, gross, false, false); }
Network hall_tilted(unsigned seed, int gross) { return hall(seed, gross, true, true); }

// Stations that see known points and each other's new targets, directions only.
Network resections(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int known = m.whole(5, 8), n = m.whole(4, 10), targets = m.whole(5, 15);
    for (int i = 0; i < known; i++) {
        const double t = 2 * pi * (i + m.uniform(-0.2, 0.2)) / known, r = m.uniform(400, 700);
        m.point(r * std::cos(t), r * std::sin(t), 0, true);
    }
    for (int i = 0; i < n + targets; i++) m.point(m.uniform(-250, 250), m.uniform(-250, 250), 0, false);
    for (int i = known; i < known + n; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < known; j++) m.direction(s, j);
        for (int j = known + n; j < known + n + targets; j++) m.direction(s, j);
    }
    return m.finish(gross);
}

// Distances between neighbours only.
Network trilateration(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(4, 6), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(100.0 * (i % side) + m.uniform(-20, 20), 100.0 * (i / side) + m.uniform(-20, 20), 0,
                i == 0 || i == side - 1 || i == n - 1);
    for (int i = 0; i < n; i++)
        for (int j = i + 1; j < n; j++)
            if (m.distance(i, j) < 230.0) m.observe(Kind::plane_distance, i, j, 0.002);
    return m.finish(gross);
}

// Directions between neighbours, one distance, one azimuth, one known point.
Network triangulation(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(3, 6), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(1000.0 * (i % side) + m.uniform(-200, 200), 1000.0 * (i / side) + m.uniform(-200, 200), 0, i == 0);
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < n; j++)
            if (i != j && m.distance(i, j) < 1700.0) m.direction(s, j);
    }
    m.observe(Kind::azimuth, 0, 1, 0.0005 * gon);
    m.observe(Kind::plane_distance, n - 2, n - 1, 0.005);
    return m.finish(gross);
}

// Angles of a braced grid instead of directions, with some distances.
Network angles(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(3, 5), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(100.0 * (i % side) + m.uniform(-20, 20), 100.0 * (i / side) + m.uniform(-20, 20), 0,
                i == 0 || i == n - 1);
    for (int i = 0; i < n; i++) {
        int last = -1;
        for (int j = 0; j < n; j++) {
            if (i == j || m.distance(i, j) > 170.0) continue;
            if (last >= 0) m.observe(Kind::angle, i, last, 0.001 * gon, -1, j);
            if (j > i) m.observe(Kind::plane_distance, i, j, 0.003);
            last = j;
        }
    }
    return m.finish(gross);
}

// Levelling loops and trigonometric heights over a polar network in space.
Network heights(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int side = m.whole(3, 5), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(200.0 * (i % side) + m.uniform(-40, 40), 200.0 * (i / side) + m.uniform(-40, 40), m.uniform(0, 60),
                i == 0 || i == n - 1);
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < n; j++) {
            if (i == j || m.distance(i, j) > 300.0) continue;
            m.polar(s, j);
            if (j > i) m.observe(Kind::height_difference, i, j, 0.001);
        }
    }
    return m.finish(gross);
}

// Levelling alone.
Network levelling(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::heights);
    const int n = m.whole(8, 30);
    for (int i = 0; i < n; i++) {
        m.point(0, 0, m.uniform(0, 100), i == 0);
    }
    for (int i = 0; i < n; i++)
        for (const int step : {1, 3}) m.observe(Kind::height_difference, i, (i + step) % n, 0.001);
    return m.finish(gross);
}

// Baselines between some points, total stations among all.
Network gnss(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int base = m.whole(4, 6), n = m.whole(8, 16);
    for (int i = 0; i < base; i++)
        m.point(1000 * std::cos(2 * pi * i / base) + m.uniform(-100, 100),
                1000 * std::sin(2 * pi * i / base) + m.uniform(-100, 100), m.uniform(0, 100), i == 0);
    for (int i = 0; i < n; i++) m.point(m.uniform(-600, 600), m.uniform(-600, 600), m.uniform(0, 100), false);
    for (int i = 0; i < base; i++)
        for (int j = i + 1; j < base; j++) m.observe(Kind::baseline, i, j, 0.005);
    for (int i = 0; i < base + n; i += 2) {
        const int s = m.setup(i);
        for (int j = 0; j < base + n; j++)
            if (i != j && m.distance(i, j) < 1000.0) m.polar(s, j);
    }
    return m.finish(gross);
}

// One pillar, reference points, targets.
Network pillar(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int references = m.whole(4, 6), targets = m.whole(10, 30);
    m.point(m.uniform(-20, 20), m.uniform(-20, 20), m.uniform(0, 5), false);
    for (int i = 0; i < references; i++) {
        const double t = 2 * pi * (i + m.uniform(-0.3, 0.3)) / references, r = m.uniform(100, 300);
        m.point(r * std::cos(t), r * std::sin(t), m.uniform(-10, 30), true);
    }
    for (int i = 0; i < targets; i++) m.point(m.uniform(50, 200), m.uniform(-80, 80), m.uniform(-10, 40), false);
    const int s = m.setup(0);
    for (int j = 1; j < 1 + references + targets; j++) m.polar(s, j);
    return m.finish(gross);
}

// Points in the plane with the distances between them, nothing given.
Network free_distances(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(3, 5), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(300.0 * (i % side) + m.uniform(-80, 80), 300.0 * (i / side) + m.uniform(-80, 80), 0, false);
    for (int i = 0; i < n; i++)
        for (int j = i + 1; j < n; j++)
            if (m.distance(i, j) < 700.0) m.observe(Kind::plane_distance, i, j, 0.002);
    return m.finish(gross);
}

// Azimuths and distances from one known point, no circle that has to be oriented.
Network azimuths(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(3, 5), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(200.0 * (i % side) + m.uniform(-50, 50), 200.0 * (i / side) + m.uniform(-50, 50), 0, i == n / 2);
    for (int i = 0; i < n; i++)
        for (int j = i + 1; j < n; j++) {
            if (m.distance(i, j) > 300.0) continue;
            m.observe(Kind::azimuth, i, j, 0.005 * gon);
            m.observe(Kind::plane_distance, i, j, 0.005);
        }
    return m.finish(gross);
}

// Theodolites in a hall: directions and vertical angles, four fixed targets or a scale bar.
Network theodolites(unsigned seed, int gross, bool fixed, bool see_each_other = true)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int n = m.whole(3, 5), targets = m.whole(12, 25);
    for (int i = 0; i < n; i++) m.point(m.uniform(2, 28), m.uniform(2, 18), m.uniform(1, 2), false);
    for (int i = 0; i < targets; i++) m.point(m.uniform(8, 22), m.uniform(6, 14), m.uniform(0, 5), fixed && i < 4);
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i);
        for (int t = 0; t < n + targets; t++) {
            if (t == i || (t < n && !see_each_other)) continue;
            m.direction(s, t);
            m.observe(Kind::vertical_angle, i, t, 0.001 * gon, s);
        }
    }
    if (!fixed) m.observe(Kind::scale_bar, n, n + 1, 0.0002);
    return m.finish(gross);
}

Network theodolites_fixed(unsigned seed, int gross) { return theodolites(seed, gross, true); }
Network theodolites_free(unsigned seed, int gross) { return theodolites(seed, gross, false); }
Network theodolites_apart(unsigned seed, int gross) { return theodolites(seed, gross, false, false); }

// Slope distances alone from known stations at different heights to targets.
Network multilateration(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int known = m.whole(5, 7), n = m.whole(6, 20);
    for (int i = 0; i < known; i++) {
        const double t = 2 * pi * i / known + m.uniform(-0.2, 0.2);
        m.point(60 * std::cos(t), 60 * std::sin(t), i % 2 ? m.uniform(0, 10) : m.uniform(30, 50), true);
    }
    for (int i = 0; i < n; i++) m.point(m.uniform(-40, 40), m.uniform(-40, 40), m.uniform(0, 40), false);
    for (int i = 0; i < known; i++)
        for (int j = known; j < known + n; j++) m.observe(Kind::slope_distance, i, j, 0.001);
    return m.finish(gross);
}

// Slope distances between new points of a hall, nothing given.
Network free_slopes(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int n = m.whole(8, 14);
    for (int i = 0; i < n; i++) m.point(m.uniform(-40, 40), m.uniform(-40, 40), m.uniform(0, 30), false);
    for (int i = 0; i < n; i++)
        for (int j = i + 1; j < n; j++) m.observe(Kind::slope_distance, i, j, 0.001);
    return m.finish(gross);
}

// Slope distances and vertical angles without horizontal circles, over known and new points of different heights.
Network zeniths(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::space);
    const int side = 4, n = side * side;
    for (int i = 0; i < n; i++)
        m.point(200.0 * (i % side) + m.uniform(-50, 50), 200.0 * (i / side) + m.uniform(-50, 50), m.uniform(0, 60),
                i == 0 || i == side - 1 || i == n - 1);
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < n; j++) {
            if (i == j || m.distance(i, j) > 460.0) continue;
            m.observe(Kind::slope_distance, i, j, 0.003);
            m.observe(Kind::vertical_angle, i, j, 0.001 * gon, s);
        }
    }
    return m.finish(gross);
}

// Control that was observed with its coordinates, not fixed, under a polar network.
Network observed_control(unsigned seed, int gross)
{
    Maker m(seed);
    m.space(va::Space::plane);
    const int side = m.whole(3, 5), n = side * side;
    for (int i = 0; i < n; i++)
        m.point(5000 + 100.0 * (i % side) + m.uniform(-25, 25), 9000 + 100.0 * (i / side) + m.uniform(-25, 25), 0,
                false);
    for (int i = 0; i < n; i++) {
        const int s = m.setup(i);
        for (int j = 0; j < n; j++)
            if (i != j && m.distance(i, j) < 160.0) m.polar(s, j);
    }
    for (const int p : {0, side - 1, n - side, n - 1})
        for (int k = 0; k < 2; k++) {
            va::Observation o;
            o.kind = Kind::unknown;
            o.unknown = 3 * p + k;
            o.sigma[0] = 0.01;
            m.net.model.code[(size_t)o.unknown] = Code::free;
            m.net.model.observe(o);
        }
    return m.finish(gross);
}

double squares(const va::Outcome &o) { return o.iteration.squares; }

// Whether two adjusted models are the same network; free ones may lie elsewhere.
bool same(const Network &n, const va::Model &a, const va::Outcome &oa, const va::Model &b, const va::Outcome &ob)
{
    if (std::fabs(squares(oa) - squares(ob)) > 1e-3 * (1.0 + squares(ob))) return false;
    int held = 0;
    for (int p = 0; p < a.n_points; p++) held += n.given.plan(p);
    if (held < 2 && n.model.frame.space != va::Space::heights) return true;
    for (int u = 0; u < 3 * a.n_points; u++)
        if (std::fabs(a.value[(size_t)u] - b.value[(size_t)u]) > 0.01) return false;
    return true;
}

va::Outcome adjusted(va::Model *model)
{
    va::Options options;
    options.statistics = false;
    return va::adjust(model, options);
}

struct NetworkKind {
    const char *name;
    Network (*make)(unsigned seed, int gross);
};

const NetworkKind kinds[] = {{"plane, far control", far_control},
                             {"traverse", traverse},
                             {"rings of traverses", rings},
                             {"hall", hall_fixed},
                             {"hall, tilted", hall_tilted},
                             {"free hall", hall_free},
                             {"resections only", resections},
                             {"trilateration", trilateration},
                             {"triangulation", triangulation},
                             {"angles, distances", angles},
                             {"trigonometric heights", heights},
                             {"levelling", levelling},
                             {"GNSS, terrestrial", gnss},
                             {"pillar", pillar},
                             {"free distances", free_distances},
                             {"azimuths, distances", azimuths},
                             {"theodolites", theodolites_fixed},
                             {"free theodolites", theodolites_free},
                             {"multilateration", multilateration},
                             {"zenith angles", zeniths},
                             {"observed control", observed_control},
                             {"theodolites apart", theodolites_apart},
                             {"free slopes", free_slopes}};

enum class Verdict { right, named, wrong, not_started, hopeless };

// Starts a network and compares its adjustment with that from the truth. hopeless: it cannot be adjusted from the
// truth either.
Verdict judge(Network n, std::string *told)
{
    va::Model truth = n.model;
    truth.value = n.truth;
    const va::Outcome reference = adjusted(&truth);
    if (reference.status != va::Status::adjusted && told)
        *told += " status of the truth " + std::to_string((int)reference.status);
    if (reference.status != va::Status::adjusted) return Verdict::hopeless;
    const vornhost::start::Start start = vornhost::start::find_start(&n.model, n.given);
    const auto is_named = [&](int wrong) {
        return std::any_of(start.misfits.begin(), start.misfits.end(),
                           [&](const vornhost::start::Misfit &m) { return m.observation == wrong; });
    };
    if (told) {
        for (const auto &m : start.misfits) *told += " misfit " + std::to_string(m.observation);
        for (const int i : n.wrong) *told += " gross " + std::to_string(i);
        *told += " missing " + std::to_string(start.missing.size()) + " doubts " + std::to_string(start.doubts.size());
    }
    EXPECT_TRUE(start.displaced.empty() && !start.mirrored && start.given_scale == 1.0) << "given coordinates blamed";
    if (!start.found()) return Verdict::not_started;
    va::Model from_start = n.model;
    const va::Outcome outcome = adjusted(&from_start);
    if (outcome.status == va::Status::adjusted && same(n, from_start, outcome, truth, reference)) return Verdict::right;
    if (!n.wrong.empty() && std::all_of(n.wrong.begin(), n.wrong.end(), is_named)) return Verdict::named;
    if (told)
        *told += " status " + std::to_string((int)outcome.status) + " squares " + std::to_string(squares(outcome)) +
                 " true " + std::to_string(squares(reference));
    return Verdict::wrong;
}

int count_of_networks()
{
    const char *n = getenv("VORN_SIMULATIONS");
    return n ? atoi(n) : 1;
}

// Other networks than the usual ones.
unsigned first_seed()
{
    const char *seed = getenv("VORN_SEED");
    return seed ? (unsigned)atoi(seed) : 0;
}

const char *only()
{
    const char *kind = getenv("VORN_SIMULATED");
    return kind ? kind : "";
}

} // namespace

TEST(SimulatedNetworks, Start)
{
    const int n = count_of_networks();
    printf("| network | gross errors | right | wrong | not started |\n|---|---|---|---|---|\n");
    int k = -1;
    for (const NetworkKind &kind : kinds) {
        k++;
        if (*only() && std::string(kind.name) != only()) continue;
        for (const int gross : {0, 1, 3}) {
            int counts[5] = {};
            for (int i = 0; i < n; i++) {
                std::string told;
                const Verdict v = judge(kind.make(first_seed() + (unsigned)(1000 * k + i), gross), &told);
                counts[(int)v]++;
                if (*only() && (v == Verdict::wrong || v == Verdict::not_started || v == Verdict::hopeless))
                    printf("seed %u: %s%s\n", first_seed() + (unsigned)(1000 * k + i),
                           v == Verdict::wrong ? "wrong" : "not started", told.c_str());
            }
            printf("| %s | %d | %d + %d | %d | %d |  hopeless %d\n", kind.name, gross, counts[0], counts[1], counts[2],
                   counts[3], counts[4]);
            fflush(stdout);
            EXPECT_EQ(counts[(int)Verdict::wrong], 0) << kind.name;
            if (gross == 0) {
                EXPECT_EQ(counts[(int)Verdict::not_started], 0) << kind.name;
            }
            if (gross == 1) {
                EXPECT_LE(counts[(int)Verdict::not_started], 0.05 * n) << kind.name;
            }
        }
    }
}

TEST(SimulatedNetworks, StartWhereTheyAreWide)
{
    for (unsigned seed = 1; seed < 3; seed++) {
        std::string told;
        EXPECT_EQ(judge(wide(seed, 30, 0), &told), Verdict::right) << seed << told;
    }
}

// A traverse that is oriented at its first point and known at its last: what is carried is tens of metres off there,
// and no observation is wrong.
TEST(SimulatedNetworks, StartLongTraversesWithoutBlamingTheirEnds)
{
    Maker m(1);
    m.space(va::Space::plane);
    const int n = 5000;
    for (int i = 0; i < n; i++)
        m.point(80.0 * i + m.uniform(-20, 20), m.uniform(-60, 60) + 300 * std::sin(i / 50.0), 0, i < 2 || i == n - 1);
    for (int i = 1; i < n - 1; i++) {
        const int s = m.setup(i);
        m.polar(s, i - 1);
        m.polar(s, i + 1);
    }
    Network net = m.finish(0);
    const vornhost::start::Start start = vornhost::start::find_start(&net.model, net.given);
    EXPECT_TRUE(start.found());
    EXPECT_TRUE(start.misfits.empty());
    EXPECT_EQ(adjusted(&net.model).status, va::Status::adjusted);
}

// So many observations that the values are not adjusted before the adjustment: what is named is wrong, and the corner
// that everything was carried to is not.
TEST(SimulatedNetworks, StartWhereTheyAreLarge)
{
    Network net = wide(5, 115, 6);
    const vornhost::start::Start start = vornhost::start::find_start(&net.model, net.given);
    ASSERT_TRUE(start.found());
    EXPECT_GE(start.misfits.size(), 3u);
    for (const vornhost::start::Misfit &m : start.misfits)
        EXPECT_EQ(std::count(net.wrong.begin(), net.wrong.end(), m.observation), 1) << m.observation;
    for (const int i : net.wrong) net.model.observations[(size_t)i].use = false;
    EXPECT_EQ(adjusted(&net.model).status, va::Status::adjusted);
    for (size_t u = 0; u < net.truth.size(); u++)
        if (net.model.meaning[u] == va::Meaning::coordinate) ASSERT_NEAR(net.model.value[u], net.truth[u], 0.1);
}

// Files that give every observation the standard deviation 1 mean weights by it, in whatever unit.
TEST(SimulatedNetworks, StartWithWeightsInsteadOfStandardDeviations)
{
    const vector<Network (*)(unsigned, int)> some = {far_control, resections, traverse, hall_fixed};
    for (size_t k = 0; k < some.size(); k++) {
        Network n = some[k](60 + (unsigned)k, 0);
        for (va::Observation &o : n.model.observations)
            for (double &sigma : o.sigma) sigma *= 2000.0;
        std::string told;
        EXPECT_EQ(judge(n, &told), Verdict::right) << k << told;
    }
}
