// Adjusted points with their precision, where they lie on the earth, pairs of them, rotations of the instruments.

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "adjust/kinds/motions.h"
#include "host/input/names.h"
#include "host/own/collection.h"
#include "host/own/earth.h"
#include "host/own/exports.h"
#include "host/own/item_names.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const double turn = 8.0 * std::atan(1.0);

// Semi-axes of an ellipse or ellipsoid of that confidence by those of the standard one: by chi-square, or by F where
// the variance factor of the adjustment is in them.
double axes_factor(double confidence, int dimension, bool a_priori, int f)
{
    const double freedom = a_priori ? std::numeric_limits<double>::infinity() : f;
    return std::sqrt(dimension * fisher_limit(1.0 - confidence, dimension, freedom));
}

const char *code_word(int code)
{
    static const char *const words[] = {"free", "free", "no_datum", "weighted", "fixed"};
    return code >= 0 && code <= CODE_FIXED ? words[code] : "fixed";
}

// Radius of the circle about the adjusted position that holds the true one with 95 %, by the semi-axes of the standard
// ellipse (W. Leenhouts, On the computation of bi-normal radial error, 1985; to 0.2 %).
double circle_radius(double a, double b)
{
    const double c = a > 0.0 ? b / a : 0.0;
    return a * (1.960790 + c * (0.004071 + c * (0.114276 + c * 0.371625)));
}

EllipsoidResult ellipsoid_of(const va::Covariance &c)
{
    const va::ErrorEllipsoid e = va::error_ellipsoid(c);
    EllipsoidResult r;
    for (int k = 0; k < 3; k++) {
        const double *d = e.direction[k], up = d[2] < 0.0 ? -1.0 : 1.0;
        r.axis[k] = e.axis[k];
        r.bearing[k] = std::atan2(up * d[1], up * d[0]);
        if (r.bearing[k] < 0.0) r.bearing[k] += turn;
        r.elevation[k] = std::atan2(up * d[2], std::hypot(d[0], d[1]));
    }
    return r;
}

} // namespace

std::optional<double> Collection::deviation(int unknown) const
{
    if (!precise || !values.estimated(unknown)) return std::nullopt;
    return adjustment.statistics.deviation[(size_t)unknown];
}

void Collection::precision()
{
    if (!precise) return;
    PrecisionResult p;
    p.a_priori = network.tests.a_priori || planned || !outcome.weights.empty() || adjustment.redundancy <= 0;
    p.sigma = adjustment.statistics.sigma;
    if (network.tests.confidence > 0) {
        p.confidence = network.tests.confidence;
        p.ellipse_factor = axes_factor(*p.confidence, 2, p.a_priori, adjustment.redundancy);
        p.ellipsoid_factor = axes_factor(*p.confidence, 3, p.a_priori, adjustment.redundancy);
    }
    results.precision = p;
}

void Collection::points()
{
    results.points.reserve((size_t)values.n_points);
    for (int i = 0; i < values.n_points; i++) {
        const PointPlace &place = numbers.points[(size_t)i];
        const int *codes = place.station ? network.stations.records[(size_t)place.record].ix
                                         : network.targets.records[(size_t)place.record].ix;
        PointResult p;
        p.name = shown_name(network, point_name(network, place));
        p.station = place.station;
        for (int k = 0; k < 3; k++) {
            const size_t u = 3 * (size_t)i + (size_t)k;
            if (values.code[u] == va::Code::absent) continue;
            p.code[k] = code_word(codes[k]);
            p.approximate[k] = values.start[u] + numbers.origin[k];
            if (outcome.adjusted() && !planned) p.adjusted[k] = values.value[u] + numbers.origin[k];
        }
        point_precision(i, p);
        moves(i, p);
        on_earth(i, p);
        results.points.push_back(std::move(p));
    }
}

void Collection::point_precision(int point, PointResult &p) const
{
    static const int plane[3][2] = {{0, 1}, {0, 2}, {1, 2}}, place[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    for (int k = 0; k < 3; k++) p.deviation[k] = deviation(3 * point + k);
    if (!precise) return;
    const va::Covariance &c = adjustment.statistics.points[(size_t)point];
    for (int e = 0; e < 3; e++) {
        const int i = plane[e][0], j = plane[e][1];
        if (!p.deviation[i] || !p.deviation[j]) continue;
        const va::Ellipse q = va::ellipse(c[place[i][i]], c[place[i][j]], c[place[j][j]]);
        p.ellipse[e] = {q.a, q.b, q.bearing};
    }
    if (p.deviation[0] && p.deviation[1] && p.deviation[2]) p.ellipsoid = ellipsoid_of(c);
    if (p.ellipse[0]) p.uncertainty = circle_radius(p.ellipse[0]->a, p.ellipse[0]->b);
    if (network.p.dim == 1 && p.deviation[2]) p.uncertainty = normal_limit(significance) * *p.deviation[2];
}

// Where the motions of its lump take a point, from the adjusted place.
void Collection::moves(int point, PointResult &p) const
{
    if (!outcome.adjusted() || planned) return;
    const PointPlace &place = numbers.points[(size_t)point];
    const int lump = place.station ? network.stations.records[(size_t)place.record].ilump
                                   : network.targets.records[(size_t)place.record].ilump;
    if (lump == 0) return;
    const double *x = &values.value[3 * (size_t)point];
    for (size_t m = 0; m < values.motions.size(); m++) {
        if (numbers.motions[m].transformation >= 0 || numbers.motions[m].lump != lump) continue;
        const double *u = &values.value[(size_t)values.motions[m].first];
        const va::Vec3<double> at{x[0], x[1], x[2]},
            there = va::moved(at, va::Moved<double>{{u[0], u[1], u[2]}, {u[3], u[4], u[5]}, u[6]});
        p.moves.push_back({numbers.motions[m].epoch, {there.x - at.x, there.y - at.y, there.z - at.z}});
    }
}

// Where the present coordinates of a point lie on the earth and on maps.
void Collection::on_earth(int point, PointResult &p) const
{
    constexpr double degrees = 57.295779513082320877;
    const Reference *reference = outcome.adjusted() ? outcome.reference.get() : nullptr;
    const std::optional<Place3> place = reference ? vornhost::place_of(numbers, *reference, point) : std::nullopt;
    if (!place) return;
    EarthPlace earth;
    earth.latitude = place->at.latitude * degrees;
    earth.longitude = place->at.longitude * degrees;
    const PointPlace &record = numbers.points[(size_t)point];
    if (network.p.dim == 3 || network.heightless.count({record.station, record.record}) == 0) {
        const va::Vec3<double> x =
            va::geocentric(reference->ellipsoid(),
                           va::GeographicPlace<double>{place->at.latitude, place->at.longitude, place->height});
        earth.height = place->height;
        earth.geocentric = {x.x, x.y, x.z};
    }
    p.earth = earth;
    const std::optional<LatLon> map = reference->on_map(place->at);
    const std::optional<GridAxes> axes = reference->axes(place->at);
    if (!map || !axes) return;
    MapPlace m;
    m.latitude = map->latitude * degrees;
    m.longitude = map->longitude * degrees;
    for (int k = 0; k < 2; k++) {
        m.latitude_by[k] = axes->latitude[k] * degrees;
        m.longitude_by[k] = axes->longitude[k] * degrees;
    }
    p.map = m;
}

void Collection::reference_system()
{
    const Crs &crs = network.crs;
    if (!crs.given()) return;
    CrsResult r;
    r.network = crs.network;
    if (outcome.reference) r.name = outcome.reference->name();
    if (!crs.local()) r.heights = crs.ellipsoidal ? "ellipsoidal" : "orthometric";
    r.epoch = crs.epoch;
    results.crs = r;
}

void Collection::orientations()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t s = 0; s < values.setups.size(); s++) {
        const int first = values.setups[s].first;
        if (!values.estimated(first) && !values.estimated(first + 1) &&
            values.code[(size_t)first + 2] == va::Code::absent)
            continue; // an upright instrument whose circle nobody read
        OrientationResult o;
        const SetupPlace &setup = numbers.setups[s];
        o.name = shown_name(network, record_name(network, setup.station));
        if (setup.named >= 0) o.setup = network.setups.records[(size_t)setup.named].word;
        if (setup.set >= 0) o.set = network.set_words[(size_t)setup.set];
        for (int k = 0; k < 3; k++) {
            o.rotation[k] = std::remainder(values.value[(size_t)first + (size_t)k], turn);
            if (estimated(first + k)) o.deviation[k] = deviation(first + k);
        }
        results.orientations.push_back(o);
    }
}

void Collection::pairs()
{
    if (!precise) return;
    static const int plane[3][2] = {{0, 1}, {0, 2}, {1, 2}}, place[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    const std::vector<std::pair<int, int>> wanted = wanted_pairs(network, numbers);
    for (size_t i = 0; i < wanted.size(); i++) {
        const va::Covariance &c = adjustment.statistics.pairs[i];
        PairResult pair;
        pair.from = shown_name(network, point_name(network, numbers.points[(size_t)wanted[i].first]));
        pair.to = shown_name(network, point_name(network, numbers.points[(size_t)wanted[i].second]));
        bool axis[3];
        for (int k = 0; k < 3; k++) {
            axis[k] = values.code[(size_t)k] != va::Code::absent;
            if (axis[k]) pair.deviation[k] = std::sqrt(std::fmax(0.0, c[place[k][k]]));
        }
        for (int e = 0; e < 3; e++) {
            const int a = plane[e][0], b = plane[e][1];
            if (!axis[a] || !axis[b]) continue;
            const va::Ellipse q = va::ellipse(c[place[a][a]], c[place[a][b]], c[place[b][b]]);
            pair.ellipse[e] = EllipseResult{q.a, q.b, q.bearing};
        }
        if (axis[0] && axis[2]) pair.ellipsoid = ellipsoid_of(c);
        if (pair.ellipse[0]) pair.uncertainty = circle_radius(pair.ellipse[0]->a, pair.ellipse[0]->b);
        if (network.p.dim == 1) pair.uncertainty = normal_limit(significance) * *pair.deviation[2];
        results.pairs.push_back(pair);
    }
}

// The worst known of the pairs that observations join.
void Collection::weak_pairs()
{
    for (const va::WeakPair &w : adjustment.statistics.weak_pairs) {
        WeakPairResult pair;
        pair.from = results.points[(size_t)w.from].name;
        pair.to = results.points[(size_t)w.to].name;
        pair.uncertainty = network.p.dim == 1 ? normal_limit(significance) * w.a : circle_radius(w.a, w.b);
        const double *p = &values.value[3 * (size_t)w.from], *q = &values.value[3 * (size_t)w.to];
        pair.distance =
            std::sqrt((q[0] - p[0]) * (q[0] - p[0]) + (q[1] - p[1]) * (q[1] - p[1]) + (q[2] - p[2]) * (q[2] - p[2]));
        results.weak_pairs.push_back(pair);
    }
}

} // namespace vornhost
