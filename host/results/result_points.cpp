// Points and orientations of a run, turned back from the working frame of the engine into
// the coordinates of the user.
//
// The engine's coordinates lack the translation of the origin, and with mixed coordinates
// the third is that of the plane tangent at the origin instead of a height.

#include <cmath>

#include "host/input/names.h"
#include "host/results/result_parts.h"

namespace vornhost {

namespace {

enum { EARTH_CARTESIAN = 1, EARTH_MIXED = 2 };

// Height h above the sphere of a point z above the tangent plane:
//   h = z + horigin + (x^2 + y^2) / (2 (radius + h)),
// which each step satisfies better by the factor (x^2 + y^2) / (2 radius^2).
double height_above_sphere(const project &p, const double x[3])
{
    const double q = 0.5 * (x[0] * x[0] + x[1] * x[1]), level = x[2] + p.horigin;
    double h = level;
    for (int i = 0; i < 100; i++) {
        const double next = level + q / (p.radius + h);
        if (next == h) break;
        h = next;
    }
    return h;
}

void to_user(const project &p, double x[3])
{
    if (p.iearth == EARTH_CARTESIAN)
        for (int c = 0; c < 3; c++) x[c] += p.trans[c];
    if (p.iearth != EARTH_MIXED) return;
    if (p.dim == 3) x[2] = height_above_sphere(p, x) + p.trans[2];
    for (int c = 0; c < 2; c++) x[c] += p.trans[c];
}

bool in_dimension(int dim, int c) { return dim == 1 ? c == 2 : c < dim; }

const char *code_word(int code)
{
    static const char *const words[] = {"free", "free", "no_datum", "weighted", "fixed"};
    return code >= 0 && code <= CODE_FIXED ? words[code] : "";
}

// What the host knows of a returned point.
struct HostPoint {
    std::string name;
    const int *code;
    bool station;
};

HostPoint host_station(const ResultSource &from, int j)
{
    const station_input &s = from.model.p.stations[j];
    const auto &roles = from.outcome.prepared.stations;
    return {full_name(from.model, s.name), s.ix, (size_t)j >= roles.size() || roles[(size_t)j].station};
}

HostPoint host_target(const ResultSource &from, int j)
{
    const target_input &t = from.model.p.targets[j];
    const auto &roles = from.outcome.prepared.targets;
    return {full_name(from.model, t.name), t.ix, (size_t)j < roles.size() && roles[(size_t)j].station};
}

void fill_coordinates(const ResultSource &from, size_t i, PointResult &point)
{
    const result &r = from.run;
    const double *start[3] = {r.x0, r.y0, r.z0}, *end[3] = {r.xpt, r.ypt, r.zpt};
    double x0[3], x[3];
    for (int c = 0; c < 3; c++) {
        x0[c] = element(start[c], i).value_or(0.0);
        x[c] = element(end[c], i).value_or(0.0);
    }
    to_user(from.model.p, x0);
    to_user(from.model.p, x);
    for (int c = 0; c < 3; c++) {
        if (!in_dimension(r.dim, c) || !start[c] || !end[c]) continue;
        point.approximate[c] = x0[c];
        if (from.coordinates()) point.adjusted[c] = x[c];
    }
}

EllipseResult ellipse(const double *a, const double *b, const double *t, size_t i)
{
    return {element(a, i).value_or(0.0), element(b, i).value_or(0.0), bearing(element(t, i).value_or(0.0))};
}

// Standard deviation of the first coordinate of a plane whose second is held. The engine may
// have made the ellipse of the block (v, w; w, 0), of which only the larger eigenvalue a^2
// shows: v = a^2 (1 - tan^2 t).
double deviation_beside_held(const EllipseResult &e)
{
    const double tangent = std::tan(e.bearing);
    const double part = 1.0 - tangent * tangent;
    return e.a * std::sqrt(part < 0.0 ? 0.0 : part); // what is not a number stays so
}

void deviations_in_plane(const EllipseResult &e, PointResult &point)
{
    const bool y_held = point.code[1] == "fixed";
    point.deviation[0] = deviation(y_held ? deviation_beside_held(e) : deviation_first(e));
    point.deviation[1] = deviation(deviation_second(e));
}

void fill_precision(const ResultSource &from, size_t i, PointResult &point)
{
    const result &r = from.run;
    static const int plane[3][2] = {{0, 1}, {0, 2}, {1, 2}};
    const EllipseResult e[3] = {ellipse(r.ell12a, r.ell12b, r.ell12t, i), ellipse(r.ell13a, r.ell13b, r.ell13t, i),
                                ellipse(r.ell23a, r.ell23b, r.ell23t, i)};
    const double *deviations[3] = {r.sxpt, r.sypt, r.szpt};

    if (r.dim == 1) point.deviation[2] = deviation(e[1].a);
    if (r.dim == 2) deviations_in_plane(e[0], point);
    if (r.dim == 3)
        for (int c = 0; c < 3; c++) point.deviation[c] = deviation(element(deviations[c], i).value_or(0.0));
    for (int c = 0; c < 3; c++)
        if (point.code[c] == "fixed") point.deviation[c].reset();
    for (int k = 0; k < 3; k++)
        if (r.dim > 1 && point.deviation[plane[k][0]] && point.deviation[plane[k][1]]) point.ellipse[k] = e[k];
}

PointResult make_point(const ResultSource &from, const HostPoint &host, size_t i)
{
    PointResult point;
    point.name = host.name;
    point.station = host.station;
    for (int c = 0; c < 3; c++)
        if (in_dimension(from.run.dim, c)) point.code[c] = code_word(host.code[c]);
    fill_coordinates(from, i, point);
    if (from.precision() && from.run.ell12a) fill_precision(from, i, point);
    return point;
}

bool any_deviation(const Results &results)
{
    for (const PointResult &p : results.points)
        for (const auto &s : p.deviation)
            if (s) return true;
    return false;
}

// Whether conditions of the datum hold the network, as in one without a fixed coordinate.
bool held_by_conditions(const ResultSource &from, const Results &results)
{
    if (from.model.p.imixed >= 0) return true;
    for (const PointResult &p : results.points)
        for (const std::string &code : p.code)
            if (code == "fixed") return false;
    return true;
}

// A coordinate that was an unknown has a cofactor above zero, unless conditions alone determine
// it, such as the height of the only point of the datum. The engine gives a standard deviation
// of 0 where the cofactor is negative or not a number; in the plane it has then not made the
// ellipse either, whose bearing is never 0, while axes below 1e-7 m are 0 as well.
void spoil_missing(const result &r, bool determined, size_t i, PointResult &point)
{
    const double bearing = r.dim == 2 ? element(r.ell12t, i).value_or(0.0) : 0.0;
    if (std::fabs(bearing) > 0.0) return;
    for (int c = 0; c < 3; c++) {
        const bool unknown = !point.code[c].empty() && point.code[c] != "fixed";
        if (unknown && !point.deviation[c] && !(determined && point.code[c] == "free"))
            point.deviation[c] = std::nan("");
    }
}

// Does nothing in a run whose factor of all standard deviations is zero.
void spoil_missing(const ResultSource &from, Results &results)
{
    if (!from.precision() || !from.run.ell12a) return;
    const bool any = any_deviation(results), determined = any && held_by_conditions(from, results);
    if (!any && !from.propagation() && results.sigma_aposteriori.value_or(0.0) == 0.0) return;
    for (size_t i = 0; i < results.points.size(); i++) spoil_missing(from.run, determined, i, results.points[i]);
}

} // namespace

// The n-th selected point of a host list is the n-th that was returned.
void collect_points(const ResultSource &from, Results &results)
{
    const project &p = from.model.p;
    const result &r = from.run;
    int i = 0;
    for (int j = 0; j < p.nstations && i < r.nstar; j++)
        if (p.stations[j].status > 0) results.points.push_back(make_point(from, host_station(from, j), (size_t)i++));
    i = r.nstar;
    for (int j = 0; j < p.ntargets && i < r.nstar + r.ntarr; j++)
        if (p.targets[j].status > 0) results.points.push_back(make_point(from, host_target(from, j), (size_t)i++));
    spoil_missing(from, results);
}

// Only runs in space return orientations.
void collect_orientations(const ResultSource &from, Results &results)
{
    const project &p = from.model.p;
    const result &r = from.run;
    const double *angle[3] = {r.rx, r.ry, r.rz}, *s[3] = {r.srx, r.sry, r.srz};
    if (!from.coordinates() || !angle[0] || !angle[1] || !angle[2]) return;
    size_t i = 0;
    for (int j = 0; j < p.nstations && i < (size_t)r.nstar; j++) {
        if (p.stations[j].status <= 0) continue;
        OrientationResult orientation;
        orientation.name = full_name(from.model, p.stations[j].name);
        for (int c = 0; c < 3; c++) {
            orientation.rotation[c] = angle[c][i];
            if (from.statistics() && s[c]) orientation.deviation[c] = deviation(s[c][i]);
        }
        results.orientations.push_back(orientation);
        i++;
    }
}

} // namespace vornhost
