#include "adjust/linear.h"

#include <gtest/gtest.h>

#include "scattered.h"

using namespace vornadjust;

namespace {

Frame sphere(double radius, bool mixed)
{
    Frame f;
    f.space = Space::sphere;
    f.mixed = mixed;
    f.radius = radius;
    f.height = 30.0;
    f.latitude = 0.8;
    f.azimuth_rotation = 0.3;
    return f;
}

Frame parallel_verticals()
{
    Frame f = sphere(5000, false);
    f.space = Space::space;
    return f;
}

Frame plane(bool mixed)
{
    Frame f = sphere(5000, mixed);
    f.space = Space::plane;
    return f;
}

double value(const Model &m, const Observation &o, int component)
{
    Linear linear;
    linearize(m, o, false, &linear);
    return linear.value[component];
}

// Difference quotient of fourth order with step h; angles do not come near half a turn here.
double quotient(Model m, const Observation &o, int component, int unknown, double h)
{
    const double x = m.value[unknown];
    const auto at = [&](double step) {
        m.value[unknown] = x + step;
        return value(m, o, component);
    };
    return (8.0 * (at(h) - at(-h)) - (at(2 * h) - at(-2 * h))) / (12.0 * h);
}

double step(const Model &m, int unknown)
{
    if (m.meaning[unknown] == Meaning::coordinate) return 1e-2;
    return m.meaning[unknown] == Meaning::camera ? 1e-4 * (1e-3 + std::fabs(m.value[unknown])) : 1e-3;
}

void expect_quotients(const Model &m)
{
    int seen[most_unknowns];
    for (size_t i = 0; i < m.observations.size(); i++) {
        const Observation &o = m.observations[i];
        Linear linear;
        linearize(m, o, false, &linear);
        ASSERT_TRUE(linear.usable);
        double alone[3]; // without derivatives
        EXPECT_TRUE(compute(m, o, alone));
        const int n = seen_unknowns(m, o, seen);
        for (int c = 0; c < components(o.kind, m.frame.space); c++) {
            EXPECT_EQ(alone[c], linear.value[c]);
            for (int k = 0; k < n; k++) {
                double sum = 0.0; // of the places of an unknown that two ends share
                for (int l = 0; l < n; l++) sum += seen[l] == seen[k] ? linear.slope[c][l] : 0.0;
                const double q = quotient(m, o, c, seen[k], step(m, seen[k]));
                // rounding of the value over the step, and the fifth derivative at some tens of metres
                EXPECT_NEAR(sum, q, 1e-8 + 1e-8 * std::fabs(q))
                    << "observation " << i << " component " << c << " unknown " << seen[k];
            }
        }
    }
}

} // namespace

TEST(Linear, HasTheDerivativesOfItsValuesOnEveryKindOfEarth)
{
    for (const Frame &frame :
         {parallel_verticals(), sphere(5000, false), sphere(5000, true), plane(false), plane(true)})
        for (bool moved : {false, true})
            for (unsigned seed = 1; seed <= 5; seed++) {
                Model m = scattered(seed, frame);
                observe_everything(m, moved);
                expect_quotients(m);
            }
}

TEST(Linear, OfAnUprightInstrumentIsThatOfOneWithTiltsOfZero)
{
    Model m = scattered(8, sphere(5000, false));
    observe_everything(m, false);
    const Model tilts = m; // set-up 0 has tilts of 0, free to move
    m.code[m.setups[0].first] = m.code[m.setups[0].first + 1] = Code::absent;
    int seen[most_unknowns];
    for (const Observation &o : m.observations) {
        if (o.setup != 0) continue;
        Linear a, b;
        linearize(m, o, false, &a);
        linearize(tilts, o, false, &b);
        EXPECT_NEAR(a.value[0], b.value[0], 1e-15);
        for (int k = seen_unknowns(m, o, seen) - 1; k >= 0; k--)
            if (m.code[seen[k]] != Code::absent) {
                EXPECT_NEAR(a.slope[0][k], b.slope[0][k], 1e-15);
            }
    }
}

TEST(Linear, SeesNoUnknownThatItsValueIgnoresAndIgnoresNoneThatItDependsOn)
{
    for (const Frame &frame : {parallel_verticals(), sphere(5000, false), sphere(5000, true)}) {
        Model m = scattered(3, frame);
        observe_everything(m, true);
        for (const Observation &o : m.observations) {
            int seen[most_unknowns];
            const int n = seen_unknowns(m, o, seen);
            for (int u = 0; u < m.n_unknowns(); u++) {
                if (std::find(seen, seen + n, u) != seen + n) continue;
                for (int c = 0; c < components(o.kind, m.frame.space); c++) EXPECT_EQ(quotient(m, o, c, u, 1e-2), 0.0);
            }
        }
    }
}

// ---- invariances: rows times a motion of all points ----

namespace {

// Change of the value of a row when unknown u moves by motion[u].
double along(const Model &m, const Observation &o, int component, const std::vector<double> &motion)
{
    Linear linear;
    linearize(m, o, true, &linear);
    int seen[most_unknowns];
    const int n = seen_unknowns(m, o, seen);
    double sum = 0.0;
    for (int k = 0; k < n; k++) sum += linear.slope[component][k] * motion[seen[k]];
    return sum;
}

// Moves of the coordinates: shift along an axis (0 to 2), turn about x3 (3), scale (4).
std::vector<double> motion(const Model &m, int which)
{
    std::vector<double> v(m.value.size(), 0.0);
    for (int p = 0; p < m.n_points; p++) {
        const double *x = &m.value[3 * p];
        if (which < 3) v[3 * p + which] = 1.0;
        if (which == 3) v[3 * p] = -x[1], v[3 * p + 1] = x[0];
        for (int k = 0; k < 3 && which == 4; k++) v[3 * p + k] = x[k];
    }
    if (which == 3) v[m.setups[0].first + 2] = -1.0; // the circle of the upright instrument turns back
    return v;
}

bool unmoved(Kind kind, int which)
{
    if (kind == Kind::azimuth || kind == Kind::baseline || kind == Kind::difference) return which < 3;
    if (kind == Kind::bearing) return which < 3 || which == 4;
    if (kind == Kind::direction || kind == Kind::vertical_angle || kind == Kind::angle) return true;
    return which < 4;
}

} // namespace

TEST(Linear, InvariantRowsDoNotSeeShiftsTurnAndScaleThatOnlyCurvatureWouldHold)
{
    for (const Frame &frame : {parallel_verticals(), sphere(50000, false), sphere(50000, true)}) {
        Model m = scattered(7, frame);
        observe_everything(m, false);
        for (Observation &o : m.observations) {
            o.h1 = o.h2 = 0.0;
            const bool upright = o.setup <= 0 && o.kind != Kind::image && o.kind != Kind::unknown;
            if (!upright || o.kind == Kind::level_distance) continue;
            for (int which = 0; which < 5; which++)
                for (int c = 0; c < components(o.kind, m.frame.space) && unmoved(o.kind, which); c++)
                    EXPECT_NEAR(along(m, o, c, motion(m, which)), 0.0, 1e-13) << (int)o.kind << " " << which;
        }
    }
}

TEST(Linear, InvariantRowsKeepTheValueOfTheCurvedEarth)
{
    for (bool mixed : {false, true}) {
        Model m = scattered(9, sphere(5000, mixed));
        observe_everything(m, true);
        for (const Observation &o : m.observations) {
            Linear exact, invariant;
            linearize(m, o, false, &exact);
            linearize(m, o, true, &invariant);
            for (int c = 0; c < components(o.kind, m.frame.space); c++) EXPECT_EQ(exact.value[c], invariant.value[c]);
        }
    }
}

TEST(Linear, AVeryLargeSphereIsParallelVerticals)
{
    Model flat = scattered(11, parallel_verticals()), large = scattered(11, sphere(1e15, false));
    flat.frame.radius = 1e15;
    observe_everything(flat, true);
    observe_everything(large, true);
    int seen[most_unknowns];
    for (size_t i = 0; i < flat.observations.size(); i++) {
        Linear a, b;
        linearize(flat, flat.observations[i], false, &a);
        linearize(large, large.observations[i], false, &b);
        for (int c = 0; c < components(flat.observations[i].kind, flat.frame.space); c++) {
            const double size = std::fmax(1.0, std::fabs(a.value[c]));
            EXPECT_NEAR(a.value[c], b.value[c], 2e-13 * size) << i;
        }
        EXPECT_LE(seen_unknowns(flat, flat.observations[i], seen), seen_unknowns(large, large.observations[i], seen));
    }
}

// ---- sights without a derivative ----

TEST(Linear, NamesSightsWithoutADerivative)
{
    Model m = scattered(5, parallel_verticals());
    observe_everything(m, false);
    for (int k = 0; k < 2; k++) m.value[9 + k] = m.value[k]; // point 3 above point 0
    Linear linear;
    for (const Observation &o : m.observations) {
        if (o.kind == Kind::unknown || o.from != 0 || o.to != 3) continue;
        linearize(m, o, false, &linear);
        const bool horizontal = o.kind == Kind::plane_distance || o.kind == Kind::horizontal_distance ||
                                o.kind == Kind::angle || o.kind == Kind::vertical_angle || o.kind == Kind::bearing;
        EXPECT_EQ(linear.usable, !horizontal) << (int)o.kind;
    }
    m.value[11] = m.value[2] + 0.9; // target at the height of the instrument: 1.6 = 0.9 + 0.7
    linearize(m, m.observations[0], false, &linear);
    EXPECT_FALSE(linear.usable);
    m.value[11] += 2e-6;
    linearize(m, m.observations[0], false, &linear);
    EXPECT_TRUE(linear.usable);
}
