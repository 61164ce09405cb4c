// Rows of the own adjustment against those of the engine, which were written apart: equal where the rules agree.
// docs/rules-to-know.md names the others: curvature in derivatives and in reduced directions, refraction, distortions
// of images, movements of lumps in image rows.

#include <gtest/gtest.h>

#include "adjust/linear.h"
#include "scattered.h"
#include "support/rows.h"

using namespace vornadjust;
using namespace vornengine;

namespace {

// The points and instruments of a scattered model as the engine keeps them; stations are points 0 to 2.
void copy_points(const Model &m, Rows &s)
{
    const char *const names[] = {"S0", "S1", "S2", "T3", "T4"};
    for (int p = 0; p < m.n_points; p++) {
        const double *x = &m.value[3 * p];
        s.add(names[p], x[0], x[1], x[2]);
    }
    for (size_t i = 0; i < m.setups.size(); i++) {
        auto &station = s.points[m.setups[i].point];
        for (int k = 0; k < 3; k++) station.xex[k] = m.value[m.setups[i].first + k];
        station.xex[3] = m.value[m.constants[0].first];
        station.xex[4] = m.value[m.constants[0].first + 1];
        station.typ = m.setups[i].levelled;
    }
}

// The unknown of the model with a number of the engine: coordinates by point, then six parameters a station.
int unknown_of(const Model &m, int n1, int number)
{
    if (number < n1) return number;
    const int station = (number - n1) / 6, k = (number - n1) % 6;
    if (k < 3) return m.setups[station].first + k;
    return k == 5 ? -1 : m.constants[0].first + k - 3;
}

void expect_same_row(const Model &m, const Observation &o, int component, const Row &row, int n1)
{
    Linear linear;
    linearize(m, o, false, &linear);
    int seen[most_unknowns];
    const int n = seen_unknowns(m, o, seen);
    std::map<int, double> wanted, found;
    for (const auto &[number, c] : row.by_unknown(n1))
        if (unknown_of(m, n1, number) >= 0 && c != 0.0) wanted[unknown_of(m, n1, number)] += c * o.sigma[component];
    for (int k = 0; k < n; k++)
        if (linear.slope[component][k] != 0.0) found[seen[k]] += linear.slope[component][k];
    for (const auto &[u, c] : wanted) EXPECT_NEAR(found[u], c, 1e-12 * (1 + std::fabs(c))) << "unknown " << u;
    for (const auto &[u, c] : found) EXPECT_NEAR(wanted[u], c, 1e-12 * (1 + std::fabs(c))) << "unknown " << u;
    const double w = std::remainder(o.value[component] - linear.value[component], 2 * std::acos(-1.0));
    const double theirs = std::remainder(row.b * o.sigma[component], 2 * std::acos(-1.0));
    EXPECT_NEAR(w, theirs, 1e-12 * (1 + std::fabs(o.value[component])));
}

Observation sight(Kind kind, int from, int to, double value)
{
    Observation o;
    o.kind = kind;
    o.from = from, o.to = to;
    o.value[0] = value;
    o.sigma[0] = o.sigma[1] = o.sigma[2] = 0.5;
    if (kind == Kind::direction || kind == Kind::vertical_angle || kind == Kind::image) o.setup = from;
    return o;
}

// Sights from the stations to all points, in the model and among the records.
void observe_all(Model &m, Rows &s, Kind kind, std::vector<measure> &list, double h1, double h2)
{
    for (int p = 0; p < 3; p++)
        for (int q = 0; q < 5; q++) {
            if (p == q) continue;
            Observation o = sight(kind, p, q, 0.3 * p - 0.2 * q);
            o.h1 = h1, o.h2 = h2;
            auto &record = s.observe(list, p, q, o.value[0], 0.5);
            record.h1 = h1, record.h2 = h2;
            m.observe(o);
        }
}

void expect_same_rows(const Model &m, const Rows &s)
{
    ASSERT_EQ(m.observations.size(), s.rows.size());
    for (size_t i = 0; i < s.rows.size(); i++) expect_same_row(m, m.observations[i], 0, s.rows[i], 3 * m.n_points);
}

Model plain(unsigned seed, Space space)
{
    Frame f;
    f.space = space;
    return scattered(seed, f);
}

} // namespace

TEST(Witness, DistancesWithConstantsInSpaceAndInThePlane)
{
    for (int dim : {2, 3})
        for (bool constants : {false, true})
            for (unsigned seed = 1; seed <= 3; seed++) {
                Model m = plain(seed, dim == 2 ? Space::plane : Space::space);
                Rows s(dim);
                copy_points(m, s);
                observe_all(m, s, dim == 2 ? Kind::plane_distance : Kind::slope_distance, s.dist, 0, 0);
                for (auto &record : s.dist) record.typ = constants;
                for (Observation &o : m.observations) o.constants = constants ? 0 : -1;
                s.number_all(3);
                S(s, norm_dist)();
                expect_same_rows(m, s);
            }
}

TEST(Witness, SlopeDistancesReducedToTheMarks)
{
    Model m = plain(4, Space::space);
    Rows s(3);
    copy_points(m, s);
    observe_all(m, s, Kind::slope_distance, s.dist, 1.6, 0.3);
    S(s, iredux) = 1;
    s.number_all(3);
    S(s, radius) = 1e15;
    S(s, norm_dist)();
    // the derivatives of the engine are those of the line between the marks; the misclosures agree
    ASSERT_EQ(s.rows.size(), m.observations.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        Linear linear;
        linearize(m, m.observations[i], false, &linear);
        EXPECT_NEAR(m.observations[i].value[0] - linear.value[0], s.rows[i].b * 0.5, 1e-12 * 100);
    }
}

TEST(Witness, HeightDifferencesBetweenInstrumentsAndTargets)
{
    Model m = plain(5, Space::space);
    Rows s(1);
    copy_points(m, s);
    observe_all(m, s, Kind::height_difference, s.difh, 1.6, 0.3);
    s.number_all(3);
    S(s, norm_difh)();
    expect_same_rows(m, s);
}

TEST(Witness, DirectionsAndVerticalAnglesOfTiltedInstruments)
{
    for (unsigned seed = 1; seed <= 3; seed++)
        for (Kind kind : {Kind::direction, Kind::vertical_angle}) {
            Model m = plain(seed, Space::space);
            for (auto &setup : m.setups) setup.levelled = false;
            Rows s(3);
            copy_points(m, s);
            observe_all(m, s, kind, kind == Kind::direction ? s.dir1 : s.dir2, 0, 0);
            s.number_all(3);
            if (kind == Kind::direction) S(s, norm_dir1)();
            if (kind == Kind::vertical_angle) S(s, norm_dir2)();
            expect_same_rows(m, s);
        }
}

TEST(Witness, DirectionsOnAVeryLargeSphereWithHeights)
{
    Model m = plain(6, Space::space);
    for (auto &setup : m.setups)
        for (int k = 0; k < 2; k++) m.value[setup.first + k] = 0.0;
    for (auto &setup : m.setups) setup.levelled = true;
    Rows s(3);
    copy_points(m, s);
    observe_all(m, s, Kind::direction, s.dir1, 1.6, 0.3);
    s.number_all(3);
    S(s, radius) = 1e15;
    S(s, norm_dir1)();
    // heights do not turn a direction on parallel verticals; the derivatives by tilts count them here alone
    ASSERT_EQ(s.rows.size(), m.observations.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        Observation o = m.observations[i];
        Linear raised, marks;
        linearize(m, o, false, &raised);
        o.h1 = o.h2 = 0.0;
        linearize(m, o, false, &marks);
        EXPECT_NEAR(raised.value[0], marks.value[0], 1e-15);
        expect_same_row(m, o, 0, s.rows[i], 3 * m.n_points);
    }
}

TEST(Witness, VerticalAnglesOnASphereWithHeights)
{
    Frame f;
    f.space = Space::sphere;
    f.radius = 6371000, f.height = 450;
    Model m = scattered(7, f);
    for (auto &setup : m.setups)
        for (int k = 0; k < 2; k++) m.value[setup.first + k] = 0.0;
    for (auto &setup : m.setups) setup.levelled = true;
    for (int p = 0; p < 5; p++) m.value[3 * p] += 8000; // curvature shows
    Rows s(3);
    copy_points(m, s);
    observe_all(m, s, Kind::vertical_angle, s.dir2, 1.6, 0.3);
    s.number_all(3);
    S(s, radius) = 6371000, S(s, horigin) = 450;
    S(s, norm_dir2)();
    ASSERT_EQ(s.rows.size(), m.observations.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        Linear linear;
        linearize(m, m.observations[i], false, &linear);
        EXPECT_NEAR(m.observations[i].value[0] - linear.value[0], s.rows[i].b * 0.5, 1e-12);
    }
}

TEST(Witness, AzimuthsInATurnedFrameWithConvergence)
{
    Model m = plain(8, Space::space);
    m.frame.radius = 6371000;
    m.frame.latitude = 0.8;
    m.frame.azimuth_rotation = 0.4;
    Rows s(3);
    copy_points(m, s);
    observe_all(m, s, Kind::azimuth, s.az, 0, 0);
    s.n.p.azrot = 0.4;
    s.number_all(3);
    S(s, radius) = 1e15;
    S(s, latitude) = std::atan(std::tan(0.8) / 6371000 * 1e15); // its convergence divides by its own radius
    S(s, norm_az)();
    ASSERT_EQ(s.rows.size(), m.observations.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        Model flat = m;
        flat.frame.latitude = 0.0; // the convergence has no part in the engine's derivatives
        Observation o = m.observations[i];
        Linear with, without;
        linearize(m, o, false, &with);
        linearize(flat, o, false, &without);
        const double two_pi = 2 * std::acos(-1.0);
        EXPECT_NEAR(std::remainder(o.value[0] - with.value[0] - s.rows[i].b * 0.5, two_pi), 0, 1e-11);
        Row row = s.rows[i];
        row.b += (with.value[0] - without.value[0]) / 0.5;
        expect_same_row(flat, o, 0, row, 3 * m.n_points);
    }
}

TEST(Witness, Baselines)
{
    Model m = plain(9, Space::space);
    Rows s(3);
    copy_points(m, s);
    s.baseline(0, 3, 1, 2, 3);
    s.number_all(3);
    S(s, norm_gps)();
    Observation o = sight(Kind::baseline, 0, 3, 1);
    o.value[1] = 2, o.value[2] = 3;
    Linear linear;
    linearize(m, o, false, &linear);
    ASSERT_EQ(s.bases.size(), 1u);
    for (int k = 0; k < 3; k++) {
        EXPECT_NEAR(o.value[k] - linear.value[k], s.bases[0].w[k], 1e-13);
        for (int j = 0; j < 6; j++) EXPECT_EQ(linear.slope[k][j], j == k ? -1.0 : j == k + 3 ? 1.0 : 0.0);
    }
}

TEST(Witness, ImagesWithoutDistortion)
{
    Model m = plain(10, Space::space);
    for (int k = 3; k < 10; k++) m.value[m.cameras[0].first + k] = 0.0;
    for (auto &setup : m.setups) setup.levelled = false;
    Rows s(3);
    copy_points(m, s);
    auto &camera = s.camerawith("CAM", m.value[m.cameras[0].first], 5e-6);
    camera.pv = 4e-6, camera.cu = 2000, camera.cv = 1500;
    camera.par[1] = m.value[m.cameras[0].first + 1], camera.par[2] = m.value[m.cameras[0].first + 2];
    for (int p = 0; p < 2; p++)
        for (int q = 3; q < 5; q++) {
            Observation o = sight(Kind::image, p, q, 700);
            o.camera = 0;
            o.value[1] = 800;
            o.sigma[0] = o.sigma[1] = 1;
            m.observe(o);
            s.observe(s.u, p, q, 700, 1);
            s.observe(s.v, p, q, 800, 1);
        }
    s.number_all(3);
    S(s, norm_photo)();
    ASSERT_EQ(s.rows.size(), 2 * m.observations.size());
    for (size_t i = 0; i < s.rows.size(); i++) {
        const Observation &o = m.observations[i / 2];
        const int c = (int)i % 2;
        Linear linear;
        linearize(m, o, false, &linear);
        int seen[most_unknowns];
        seen_unknowns(m, o, seen);
        std::map<int, double> wanted;
        for (const auto &[number, a] : s.rows[i].by_unknown(3 * m.n_points)) wanted[unknown_of(m, 15, number)] += a;
        for (int k = 0; k < 9; k++)
            EXPECT_NEAR(linear.slope[c][k], wanted[seen[k]], 1e-12 * 1e4) << k; // pixels a radian
        EXPECT_NEAR(o.value[c] - linear.value[c], s.rows[i].b, 1e-12 * 1e4);
    }
}
