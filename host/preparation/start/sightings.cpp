#include "host/preparation/start/sightings.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using va::Kind;

constexpr double steepest = 0.05; // of a length: what an unknown slope may take from it

long long key(int from, int to) { return ((long long)from << 32) | (unsigned)to; }

class Collector {
public:
    Collector(const va::Model &m, const std::vector<double> &h, const std::vector<char> &out)
        : model(m), height(h), left_out(out), elevations(m, out)
    {
    }

    Sightings collect();

private:
    void add(int i);
    void add_angle(int i, const va::Observation &o);
    void add_length(int i, const va::Observation &o);
    void add_difference(int i, const va::Observation &o);
    void add_ray(int circle, int to, double reading, double sigma, int i);
    double slope(int from, int to) const;
    double plane_length(const va::Observation &o, double slope, double *sigma) const;
    double convergence(const va::Observation &o) const;
    void index();

    const va::Model &model;
    const std::vector<double> &height;
    const std::vector<char> &left_out;
    const Elevations elevations;
    Sightings s;
    std::vector<int> azimuths;
    std::unordered_map<long long, int> differences; // the first of each pair of points
};

void Collector::add_ray(int circle, int to, double reading, double sigma, int i)
{
    const int from = model.observations[(size_t)i].from;
    s.rays.push_back({circle, from, to, reading, sigma, i, slope(from, to)});
}

double Collector::slope(int from, int to) const
{
    const int v = elevations.any() ? elevations.between(from, to) : -1;
    if (v < 0) return NAN;
    const va::Observation &o = model.observations[(size_t)v];
    return o.from == from ? std::tan(o.value[0]) : NAN;
}

// An angle is a circle of its own with two readings.
void Collector::add_angle(int i, const va::Observation &o)
{
    const int circle = s.n_circles();
    s.circle_point.push_back(o.from);
    add_ray(circle, o.to, 0.0, o.sigma[0] * std::sqrt(0.5), i);
    add_ray(circle, o.third, o.value[0], o.sigma[0] * std::sqrt(0.5), i);
}

// Horizontal length of a slope between the marks of its ends.
double Collector::plane_length(const va::Observation &o, double slope, double *sigma) const
{
    const int v = elevations.between(o.from, o.to);
    if (v >= 0) return slope * std::cos(model.observations[(size_t)v].value[0]);
    const double rise = height[(size_t)o.to] + o.h2 - height[(size_t)o.from] - o.h1;
    if (std::isfinite(rise) && std::fabs(rise) < slope) return std::sqrt(slope * slope - rise * rise);
    *sigma = std::hypot(*sigma, steepest * slope);
    return slope;
}

void Collector::add_length(int i, const va::Observation &o)
{
    double length = o.value[0], sigma = standard_deviation(model, o, 0);
    if (o.constants >= 0) {
        const double *c = &model.value[(size_t)model.constants[(size_t)o.constants].first];
        if (c[1] > 0.0) length = (length - c[0]) / c[1];
    }
    const bool flat = o.kind == Kind::plane_distance || o.kind == Kind::horizontal_distance ||
                      (o.kind == Kind::scale_bar && model.frame.space == va::Space::plane);
    if (!flat) length = plane_length(o, length, &sigma);
    if (o.kind == Kind::level_distance) {
        const double h = height[(size_t)o.from];
        if (std::isfinite(h)) length *= model.frame.origin_radius() / (model.frame.radius + h);
    }
    if (length > 0.0) s.lengths.push_back({o.from, o.to, length, sigma, i});
}

// Of the meridians where an azimuth was observed, as far as that is known.
double Collector::convergence(const va::Observation &o) const
{
    const double t = model.frame.azimuth_rotation;
    const double *p = &model.value[3 * (size_t)o.from];
    return std::tan(model.frame.latitude) / model.frame.origin_radius() * (std::cos(t) * p[0] - std::sin(t) * p[1]);
}

// Differences of x and y of the same two points make a vector.
void Collector::add_difference(int i, const va::Observation &o)
{
    if (o.axis > 1) return;
    const auto [at, first] = differences.emplace(key(o.from, o.to), i);
    const va::Observation &other = model.observations[(size_t)at->second];
    if (first || other.axis == o.axis) return;
    const va::Observation &x = o.axis == 0 ? o : other, &y = o.axis == 0 ? other : o;
    const double sigma = std::hypot(standard_deviation(model, x, 0), standard_deviation(model, y, 0));
    s.vectors.push_back({o.from, o.to, x.value[0], y.value[0], sigma, i});
}

void Collector::add(int i)
{
    const va::Observation &o = model.observations[(size_t)i];
    switch (o.kind) {
    case Kind::direction: return add_ray(o.setup, o.to, o.value[0], o.sigma[0], i);
    case Kind::angle: return add_angle(i, o);
    case Kind::azimuth:
    case Kind::bearing: return azimuths.push_back(i);
    case Kind::slope_distance:
    case Kind::plane_distance:
    case Kind::level_distance:
    case Kind::horizontal_distance:
    case Kind::scale_bar: return add_length(i, o);
    case Kind::difference: return add_difference(i, o);
    case Kind::baseline: {
        if (model.frame.space == va::Space::heights) return;
        const double sigma = std::hypot(standard_deviation(model, o, 0), standard_deviation(model, o, 1));
        return s.vectors.push_back({o.from, o.to, o.value[0], o.value[1], sigma, i});
    }
    default: return; // says nothing of the plan
    }
}

void Collector::index()
{
    std::vector<int> circle, from, to, at, azimuth;
    for (const Ray &r : s.rays) {
        azimuth.push_back(r.circle == s.north ? r.from : -1);
        circle.push_back(r.circle);
        from.push_back(r.from);
        to.push_back(r.to);
    }
    s.rays_of.make(s.n_circles(), circle);
    s.rays_to.make(s.n_points, to);
    s.rays_from.make(s.n_points, from);
    s.azimuths_from.make(s.n_points, azimuth);
    for (int c = 0; c < s.north; c++) at.push_back(s.circle_point[(size_t)c]);
    s.circles_at.make(s.n_points, at);
    at.clear();
    for (const Length &l : s.lengths) {
        at.push_back(l.a);
        at.push_back(l.b);
    }
    s.lengths_at.make(s.n_points, at);
    at.clear();
    for (const Vector &v : s.vectors) {
        at.push_back(v.from);
        at.push_back(v.to);
    }
    s.vectors_at.make(s.n_points, at);
}

Sightings Collector::collect()
{
    s.n_points = model.n_points;
    for (const va::Setup &setup : model.setups) s.circle_point.push_back(setup.point);
    for (int i = 0; i < (int)model.observations.size(); i++)
        if (model.observations[(size_t)i].use && !left_out[(size_t)i]) add(i);
    s.north = s.n_circles();
    s.circle_point.push_back(-1);
    for (const int i : azimuths) {
        const va::Observation &o = model.observations[(size_t)i];
        const double turn = o.kind == Kind::bearing ? 0.0 : convergence(o) - model.frame.azimuth_rotation;
        add_ray(s.north, o.to, o.value[0] + turn, o.sigma[0], i);
    }
    index();
    return std::move(s);
}

} // namespace

void Lists::make(int owners, const std::vector<int> &of)
{
    first.assign((size_t)owners + 1, 0);
    for (const int o : of)
        if (o >= 0) first[(size_t)o + 1]++;
    for (size_t i = 1; i < first.size(); i++) first[i] += first[i - 1];
    item.resize((size_t)first.back());
    std::vector<int> next(first.begin(), first.end() - 1);
    for (int i = 0; i < (int)of.size(); i++)
        if (of[(size_t)i] >= 0) item[(size_t)next[(size_t)of[(size_t)i]]++] = i;
}

double standard_deviation(const va::Model &model, const va::Observation &o, int k)
{
    if (o.group < 0) return o.sigma[k];
    const va::Group &g = model.groups[(size_t)o.group];
    const size_t at = (size_t)o.place + (size_t)k;
    return std::sqrt(model.covariance[g.first + at * (size_t)g.size + at]);
}

Elevations::Elevations(const va::Model &model, const std::vector<char> &left_out)
{
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const va::Observation &o = model.observations[(size_t)i];
        if (o.use && o.kind == Kind::vertical_angle && !left_out[(size_t)i]) pairs.emplace_back(key(o.from, o.to), i);
    }
    std::sort(pairs.begin(), pairs.end());
}

int Elevations::between(int from, int to) const
{
    for (const long long k : {key(from, to), key(to, from)}) {
        const auto at = std::lower_bound(pairs.begin(), pairs.end(), std::make_pair(k, 0));
        if (at != pairs.end() && at->first == k) return at->second;
    }
    return -1;
}

Sightings sightings_of(const va::Model &model, const std::vector<double> &height, const std::vector<char> &left_out)
{
    return Collector(model, height, left_out).collect();
}

} // namespace vornhost::start
