// Kinds of observations on the ellipsoid: values against vectors in space, derivatives against difference quotients.

#include "adjust/ellipsoid.h"

#include <algorithm>

#include "adjust/linear.h"
#include "earth/truth.h"

namespace va = vornadjust;
using truth::degree;

namespace {

// A model of three points with sites in a plane that is turned against north and has no scale.
struct Built {
    va::Model model;
    std::vector<truth::Point> points;
};

va::Site site_at(const va::Ellipsoid &e, const truth::Point &p, double turn, double undulation)
{
    const double s = std::sin(p.latitude), m = va::meridian_radius(e, s),
                 n = va::prime_vertical_radius(e, s) * std::cos(p.latitude);
    va::Site site;
    site.latitude = p.latitude;
    site.longitude = p.longitude;
    site.latitude_by[0] = std::cos(turn) / m;
    site.latitude_by[1] = -std::sin(turn) / m;
    site.longitude_by[0] = std::sin(turn) / n;
    site.longitude_by[1] = std::cos(turn) / n;
    site.undulation = undulation;
    site.convergence = turn;
    return site;
}

Built built()
{
    Built b;
    b.points = {{"A", 50.0 * degree, 9.0 * degree, 400.0},
                {"B", 50.2 * degree, 9.5 * degree, 900.0},
                {"C", 49.9 * degree, 9.1 * degree, 300.0}};
    va::Model &m = b.model;
    m.frame.space = va::Space::ellipsoid;
    const double plan[3][2] = {{0, 0}, {22500, 35600}, {-11000, 7300}};
    const va::Code codes[3] = {va::Code::free, va::Code::free, va::Code::free};
    for (size_t k = 0; k < 3; k++) {
        const double undulation = 45.0 + (double)k, turn = 0.01 * (double)(k + 1),
                     xyz[3] = {plan[k][0], plan[k][1], b.points[k].height - undulation};
        m.add_point(xyz, codes);
        m.sites.push_back(site_at(m.frame.ellipsoid, b.points[k], turn, undulation));
        std::copy(plan[k], plan[k] + 2, m.sites[k].at);
    }
    const truth::Vector c = truth::geocentric(m.frame.ellipsoid, b.points[0]);
    m.frame.centre = {c.x, c.y, c.z};
    const double angles[3] = {0.0, 0.0, 0.3}, neutral[3] = {0.0, 1.0, 0.13};
    const va::Code upright[3] = {va::Code::absent, va::Code::absent, va::Code::free};
    m.add_setup(0, true, angles, upright);
    m.add_constants(neutral, codes);
    return b;
}

va::Observation observation(va::Kind kind)
{
    va::Observation o;
    o.kind = kind;
    o.from = 0;
    o.to = 1;
    if (kind == va::Kind::angle) o.third = 2;
    o.h1 = 1.6;
    o.h2 = 2.3;
    if (kind == va::Kind::direction || kind == va::Kind::vertical_angle) o.setup = 0;
    return o;
}

double value(const Built &b, const va::Observation &o, int component = 0)
{
    va::Linear linear;
    va::linearize(b.model, o, false, &linear);
    EXPECT_TRUE(linear.usable);
    return linear.value[component];
}

const va::Kind kinds[] = {va::Kind::slope_distance, va::Kind::horizontal_distance,
                          va::Kind::scale_bar,      va::Kind::height_difference,
                          va::Kind::direction,      va::Kind::angle,
                          va::Kind::vertical_angle, va::Kind::azimuth,
                          va::Kind::bearing,        va::Kind::baseline};

// The same with verticals that lean by up to 40" at A and B, and a transformation about the geocentre.
Built leaning()
{
    Built b = built();
    const va::Code codes[7] = {va::Code::free, va::Code::free, va::Code::free, va::Code::free,
                               va::Code::free, va::Code::free, va::Code::free};
    const double at_a[2] = {1.9e-4, -1.1e-4}, at_b[2] = {-0.8e-4, 1.5e-4},
                 motion[7] = {0.3, -0.2, 0.5, 2e-5, -1e-5, 3e-5, 1.00002};
    b.points[0].xi = at_a[0];
    b.points[0].eta = at_a[1];
    b.points[1].xi = at_b[0];
    b.points[1].eta = at_b[1];
    b.model.add_deflection(0, at_a, codes);
    b.model.add_deflection(1, at_b, codes);
    b.model.add_motion(motion, codes);
    b.model.motions[0].origin = b.model.frame.centre;
    return b;
}

// Each derivative against a difference quotient.
void expect_quotients(Built &b, const va::Observation &o)
{
    va::Linear linear, up, down;
    int seen[va::most_unknowns];
    const int n = va::seen_unknowns(b.model, o, seen);
    va::linearize(b.model, o, false, &linear);
    for (int k = 0; k < n; k++) {
        if (b.model.code[(size_t)seen[k]] == va::Code::absent) continue; // upright: no derivative by its tilts
        double &x = b.model.value[(size_t)seen[k]];
        const double at = x, step = seen[k] < 9 ? 1.0 : 1e-4;
        x = at + step;
        va::linearize(b.model, o, false, &up);
        x = at - step;
        va::linearize(b.model, o, false, &down);
        x = at;
        for (int c = 0; c < va::components(o.kind, va::Space::ellipsoid); c++) {
            const double quotient = (up.value[c] - down.value[c]) / (2.0 * step);
            double sum = 0; // of the places of an unknown that two ends share
            for (int l = 0; l < n; l++) sum += seen[l] == seen[k] ? linear.slope[c][l] : 0.0;
            // Values of 40 km carry 1e-11 m, over steps of a metre; third derivatives are below 1e-12. Geocentric
            // positions, which transformations turn, carry 1e-9 m over steps of 1e-4.
            EXPECT_NEAR(sum, quotient,
                        1e-8 * std::fmax(1.0, std::fabs(quotient)) *
                            (o.motion_from >= 0 ? 1000
                             : step < 1         ? 100
                                                : 1))
                << "kind " << (int)o.kind << " unknown " << seen[k];
        }
    }
}

} // namespace

TEST(Ellipsoid, TurnsGeocentricCoordinatesBack)
{
    const va::Ellipsoid e;
    for (const double b : {-1.5, -0.3, 0.0, 0.8, 1.55})
        for (const double h : {-5000.0, 0.0, 9000.0, 400000.0}) {
            const truth::Point p{"P", b, -2.1, h};
            const truth::Vector x = truth::geocentric(e, p);
            const auto g = va::geographic(e, va::Vec3<double>{x.x, x.y, x.z});
            EXPECT_NEAR(g.latitude, b, 1e-15 * 5);
            EXPECT_NEAR(g.longitude, -2.1, 1e-15 * 5);
            EXPECT_NEAR(g.height, h, 1e-8);
        }
}

TEST(EllipsoidKinds, SeeWhatVectorsInSpaceSay)
{
    const Built b = built();
    const va::Ellipsoid &e = b.model.frame.ellipsoid;
    const truth::Sight s = truth::sight(e, b.points[0], b.points[1], 1.6, 2.3),
                       marks = truth::sight(e, b.points[0], b.points[1]),
                       third = truth::sight(e, b.points[0], b.points[2], 1.6, 2.3);
    EXPECT_NEAR(value(b, observation(va::Kind::slope_distance)), s.length, 1e-8);
    EXPECT_NEAR(value(b, observation(va::Kind::scale_bar)), marks.length, 1e-8);
    EXPECT_NEAR(value(b, observation(va::Kind::horizontal_distance)), marks.length * std::cos(marks.elevation), 1e-8);
    EXPECT_NEAR(value(b, observation(va::Kind::vertical_angle)), s.elevation, 1e-13);
    EXPECT_NEAR(value(b, observation(va::Kind::azimuth)), s.azimuth, 1e-13);
    EXPECT_NEAR(value(b, observation(va::Kind::direction)), s.azimuth - 0.01 + 0.3, 1e-13);
    EXPECT_NEAR(std::remainder(value(b, observation(va::Kind::angle)) - (third.azimuth - s.azimuth), 2 * truth::pi),
                0.0, 1e-13);
    // Heights are those of the file: above the geoid.
    EXPECT_NEAR(value(b, observation(va::Kind::height_difference)), (900.0 - 46.0) - (400.0 - 45.0) + 2.3 - 1.6, 1e-9);
    for (int k = 0; k < 3; k++) EXPECT_NEAR(value(b, observation(va::Kind::baseline), k), (&marks.vector.x)[k], 1e-8);
}

TEST(EllipsoidKinds, HaveTheDerivativesOfTheirValues)
{
    for (const va::Kind kind : kinds) {
        Built b = built();
        va::Observation o = observation(kind);
        if (kind == va::Kind::vertical_angle || kind == va::Kind::slope_distance) o.constants = 0;
        expect_quotients(b, o);
    }
}

TEST(EllipsoidKinds, HaveTheDerivativesOfTheirValuesByDeflectionsAndTransformations)
{
    for (const bool tilted : {false, true}) {
        Built b = leaning();
        if (tilted) {
            const int first = b.model.setups[0].first;
            b.model.value[(size_t)first] = 2e-3;
            b.model.code[(size_t)first] = b.model.code[(size_t)first + 1] = va::Code::free;
        }
        for (const va::Kind kind : kinds) {
            va::Observation o = observation(kind);
            if (kind == va::Kind::vertical_angle || kind == va::Kind::slope_distance) o.constants = 0;
            expect_quotients(b, o);
        }
        for (const va::Kind kind : {va::Kind::baseline, va::Kind::position}) {
            va::Observation o = observation(kind);
            if (kind == va::Kind::position) o.to = -1;
            expect_quotients(b, o);
            o.motion_from = 0;
            if (o.to >= 0) o.motion_to = 0;
            expect_quotients(b, o);
        }
    }
}

TEST(EllipsoidKinds, CountFromTheVerticalThatLeans)
{
    const Built b = leaning();
    const va::Ellipsoid &e = b.model.frame.ellipsoid;
    const truth::Sight seen = truth::sight(e, b.points[0], b.points[1], 1.6, 2.3),
                       marks = truth::sight(e, b.points[0], b.points[1]);
    EXPECT_NEAR(value(b, observation(va::Kind::slope_distance)), seen.length, 1e-8);
    EXPECT_NEAR(value(b, observation(va::Kind::vertical_angle)), seen.elevation, 1e-13);
    EXPECT_NEAR(value(b, observation(va::Kind::azimuth)), seen.azimuth, 1e-13);
    EXPECT_NEAR(value(b, observation(va::Kind::direction)), seen.azimuth - 0.01 + 0.3, 1e-13);
    EXPECT_NEAR(value(b, observation(va::Kind::horizontal_distance)), marks.length * std::cos(marks.elevation), 1e-8);
    // Laplace: azimuths change by what the deflection turns the horizon (first order, 1e-7 rad here).
    const double azimuth = value(built(), observation(va::Kind::azimuth)), latitude = b.points[0].latitude;
    EXPECT_NEAR(seen.azimuth - azimuth,
                -1.1e-4 * std::tan(latitude) +
                    (1.9e-4 * std::sin(azimuth) + 1.1e-4 * std::cos(azimuth)) * std::tan(seen.elevation),
                1e-7);
}

// Published parameters count rotations and scale from the geocentre.
TEST(EllipsoidKinds, TransformPointsAndVectorsAboutTheGeocentre)
{
    const Built b = leaning();
    const va::Ellipsoid &e = b.model.frame.ellipsoid;
    const double *m = &b.model.value[(size_t)b.model.motions[0].first];
    const auto there = [&](const truth::Point &p) { // small angles: second orders are 6400 km times 1e-9
        const truth::Vector x = truth::geocentric(e, p);
        const double s = m[6] - 1.0;
        return truth::Vector{x.x + m[0] + s * x.x + m[5] * x.y - m[4] * x.z,
                             x.y + m[1] + s * x.y - m[5] * x.x + m[3] * x.z,
                             x.z + m[2] + s * x.z + m[4] * x.x - m[3] * x.y};
    };
    const truth::Vector p = there(b.points[0]), q = there(b.points[1]);
    va::Observation o = observation(va::Kind::position), v = observation(va::Kind::baseline);
    o.to = -1;
    o.motion_from = v.motion_from = v.motion_to = 0;
    for (int k = 0; k < 3; k++) {
        EXPECT_NEAR(value(b, o, k) + (&b.model.frame.centre.x)[k], (&p.x)[k], 0.01);
        EXPECT_NEAR(value(b, v, k), (&q.x)[k] - (&p.x)[k], 1e-4);
    }
}

// Where motions are open, a shift of all grid coordinates and heights changes no derivative row.
TEST(EllipsoidKinds, LeaveShiftsOpenWithParallelVerticals)
{
    const Built b = built();
    for (const va::Kind kind : kinds) {
        va::Linear linear;
        int seen[va::most_unknowns];
        const va::Observation o = observation(kind);
        const int n = va::seen_unknowns(b.model, o, seen);
        va::linearize(b.model, o, true, &linear);
        for (int axis = 0; axis < 3; axis++)
            for (int c = 0; c < va::components(kind, va::Space::ellipsoid); c++) {
                double sum = 0;
                for (int k = 0; k < n; k++)
                    if (seen[k] < 9 && seen[k] % 3 == axis) sum += linear.slope[c][k];
                EXPECT_NEAR(sum, 0.0, 1e-15) << (int)kind << " " << axis;
            }
    }
}

// Radian derivatives of the whole sight: of the two ways, exact and with parallel verticals, the rows agree to what the
// earth curves over the sight.
TEST(EllipsoidKinds, HaveRowsLikeThoseOfTheGrid)
{
    const Built b = built();
    for (const va::Kind kind : kinds) {
        va::Linear exact, flat;
        int seen[va::most_unknowns];
        const va::Observation o = observation(kind);
        const int n = va::seen_unknowns(b.model, o, seen);
        va::linearize(b.model, o, false, &exact);
        va::linearize(b.model, o, true, &flat);
        for (int c = 0; c < va::components(kind, va::Space::ellipsoid); c++)
            for (int k = 0; k < n; k++)
                if (seen[k] < 9) {
                    EXPECT_NEAR(exact.slope[c][k], flat.slope[c][k], 0.05) << (int)kind << " " << seen[k];
                }
    }
}
