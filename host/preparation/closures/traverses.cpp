#include "host/preparation/closures/traverses.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/preparation/closures/graphs.h"

namespace vornhost::closures {

namespace {

namespace va = vornadjust;
using va::Kind;

const double half_turn = 4.0 * std::atan(1.0);

long long key(int from, int to) { return ((long long)from << 32) | (unsigned)to; }

// A side: the weighted mean of the lengths that were measured between two stations.
struct Side {
    double length = 0, weight = 0;
    std::vector<int> lengths; // of the sightings
};

// An angle at a point from one of its rays to another.
struct Corner {
    const start::Ray *in = nullptr, *out = nullptr; // in: none of an azimuth
    double value = 0;                               // of the outgoing bearing less that of the incoming ray
};

class Traverses {
public:
    Traverses(const va::Model &m, const start::Sightings &all)
        : model(m), s(all), elevations(m, std::vector<char>(m.observations.size(), 0))
    {
    }

    Closures run();

private:
    struct Sight {
        long long ends;
        int ray;
        bool operator<(const Sight &o) const { return ends != o.ends ? ends < o.ends : ray < o.ray; }
    };
    struct Way {
        std::vector<int> points, sides; // a side behind each point but the last
        bool known = false;             // between fixed points
    };

    struct Xy {
        double x, y;
    };
    struct Course {
        std::vector<Xy> at; // the points, from the first one
        double length = 0;
        std::vector<Part> parts; // by x and y of the end
    };

    void sort_rays();
    void add_sides();
    bool is_free_of_motion(int observation) const;
    bool has_free_constants(int observation) const;
    std::pair<std::vector<Sight>::const_iterator, std::vector<Sight>::const_iterator> rays(int from, int to) const;
    std::optional<Corner> corner(int at, int back, int ahead) const;
    std::optional<Corner> orientation(int at, int ahead, double *bearing) const;
    Way way_of(Loop loop) const;
    bool turn_to_a_start(Way *way, std::optional<Corner> *start, double *bearing) const;
    void add_side_parts(const Side &side, double ux, double uy, std::vector<Part> *parts) const;
    std::vector<Corner> corners_of(const Way &way, const std::optional<Corner> &start) const;
    Course walk(const Way &way, const std::vector<Corner> &corners, double bearing) const;
    void add_corner_parts(const Corner &corner, const Xy &at, const Xy &end, std::vector<Part> *parts) const;
    Sum sum_of(const Way &way, bool oriented, Course *course) const;
    void close(const Loop &loop, Closures *closures) const;

    const va::Model &model;
    const start::Sightings &s;
    const start::Elevations elevations;
    std::vector<Sight> sights;      // sorted
    std::vector<size_t> first_from; // [points + 1] of them
    std::vector<Link> links;
    std::vector<Side> sides; // [links]
    int known = -1;
};

bool Traverses::is_free_of_motion(int observation) const
{
    const va::Observation &o = model.observations[(size_t)observation];
    return o.motion_from < 0 && o.motion_to < 0 && o.motion_third < 0;
}

// Lengths of which an additive constant or a scale is wanted are not known yet.
bool Traverses::has_free_constants(int observation) const
{
    const int c = model.observations[(size_t)observation].constants;
    if (c < 0) return false;
    const int first = model.constants[(size_t)c].first;
    return model.estimated(first) || model.estimated(first + 1);
}

// Horizontal directions and angles.
void Traverses::sort_rays()
{
    for (size_t i = 0; i < s.rays.size(); i++) {
        const start::Ray &r = s.rays[i];
        const va::Observation &o = model.observations[(size_t)r.observation];
        const bool flat = o.kind == Kind::direction ? is_upright(model, o.setup) : o.setup < 0;
        if (flat && is_free_of_motion(r.observation)) sights.push_back({key(r.from, r.to), (int)i});
    }
    std::sort(sights.begin(), sights.end());
    first_from.assign((size_t)model.n_points + 1, 0);
    for (const Sight &sight : sights) first_from[(size_t)(sight.ends >> 32) + 1]++;
    for (size_t p = 1; p < first_from.size(); p++) first_from[p] += first_from[p - 1];
}

// Between points at which circles stand or that are fixed.
void Traverses::add_sides()
{
    std::vector<char> is_station((size_t)model.n_points, 0);
    for (const Sight &sight : sights) is_station[(size_t)(sight.ends >> 32)] = 1;
    for (int p = 0; p < model.n_points; p++)
        if (is_fixed(model, p, 0, 1)) is_station[(size_t)p] = 1;
    std::vector<std::pair<long long, int>> lengths;
    for (size_t i = 0; i < s.lengths.size(); i++) {
        const start::Length &l = s.lengths[i];
        const bool rough =
            l.sigma > 2.0 * start::standard_deviation(model, model.observations[(size_t)l.observation], 0);
        if (rough || has_free_constants(l.observation) || !is_station[(size_t)l.a] || !is_station[(size_t)l.b] ||
            !is_free_of_motion(l.observation))
            continue;
        lengths.emplace_back(key(std::min(l.a, l.b), std::max(l.a, l.b)), (int)i);
    }
    std::sort(lengths.begin(), lengths.end());
    for (size_t i = 0; i < lengths.size(); i++) {
        if (i == 0 || lengths[i].first != lengths[i - 1].first) {
            links.push_back({(int)(lengths[i].first >> 32), (int)(lengths[i].first & 0xffffffff)});
            sides.emplace_back();
        }
        const start::Length &l = s.lengths[(size_t)lengths[i].second];
        Side &side = sides.back();
        const double weight = 1.0 / (l.sigma * l.sigma);
        side.length += weight / (side.weight + weight) * (l.value - side.length);
        side.weight += weight;
        side.lengths.push_back(lengths[i].second);
    }
    known = model.n_points;
    for (int p = 0; p < model.n_points; p++) {
        if (!is_fixed(model, p, 0, 1)) continue;
        links.push_back({known, p});
        sides.emplace_back();
    }
}

std::pair<std::vector<Traverses::Sight>::const_iterator, std::vector<Traverses::Sight>::const_iterator>
Traverses::rays(int from, int to) const
{
    const long long ends = key(from, to);
    const auto begin = sights.begin();
    return std::equal_range(begin + (std::ptrdiff_t)first_from[(size_t)from],
                            begin + (std::ptrdiff_t)first_from[(size_t)from + 1], Sight{ends, 0},
                            [](const Sight &a, const Sight &b) { return a.ends < b.ends; });
}

// From a circle that sights both neighbours.
std::optional<Corner> Traverses::corner(int at, int back, int ahead) const
{
    const auto [in, in_end] = rays(at, back);
    const auto [out, out_end] = rays(at, ahead);
    for (auto i = in; i != in_end; ++i)
        for (auto o = out; o != out_end; ++o) {
            const start::Ray &a = s.rays[(size_t)i->ray], &b = s.rays[(size_t)o->ray];
            if (a.circle == b.circle) return Corner{&a, &b, b.reading - a.reading};
        }
    return std::nullopt;
}

// Bearing of the first side at a fixed point, by another fixed point that the same circle sights, or by an azimuth.
std::optional<Corner> Traverses::orientation(int at, int ahead, double *bearing) const
{
    const auto [out, out_end] = rays(at, ahead);
    const double *p = &model.value[3 * (size_t)at];
    for (auto o = out; o != out_end; ++o) {
        const start::Ray &b = s.rays[(size_t)o->ray];
        if (b.circle == s.north) {
            *bearing = b.reading;
            return Corner{nullptr, &b, b.reading};
        }
        for (const int *r = s.rays_of.begin(b.circle); r != s.rays_of.end(b.circle); ++r) {
            const start::Ray &a = s.rays[(size_t)*r];
            if (a.to == ahead || !is_fixed(model, a.to, 0, 1)) continue;
            const double *q = &model.value[3 * (size_t)a.to];
            *bearing = std::atan2(q[1] - p[1], q[0] - p[0]) + b.reading - a.reading;
            return Corner{&a, &b, b.reading - a.reading};
        }
    }
    return std::nullopt;
}

Traverses::Way Traverses::way_of(Loop loop) const
{
    begin_at(links, known, &loop);
    Way way;
    for (const Step &step : loop) {
        const int node = begin_of(links, step);
        way.known |= node == known;
        if (node == known) continue;
        way.points.push_back(node);
        way.sides.push_back(step.link);
    }
    if (way.known)
        way.sides.pop_back(); // back to what is known
    else
        way.points.push_back(way.points.front());
    return way;
}

// Turns a ring so that it begins where no angle is needed, a line so that it begins with an orientation if it can.
bool Traverses::turn_to_a_start(Way *way, std::optional<Corner> *start, double *bearing) const
{
    const auto reverse = [&] {
        std::reverse(way->points.begin(), way->points.end());
        std::reverse(way->sides.begin(), way->sides.end());
    };
    if (way->known) {
        *start = orientation(way->points[0], way->points[1], bearing);
        if (*start) return true;
        reverse();
        *start = orientation(way->points[0], way->points[1], bearing);
        return true;
    }
    const size_t n = way->sides.size();
    if (n < 3) return false;
    for (size_t i = 0; i < n; i++) {
        const int at = way->points[i], back = way->points[(i + n - 1) % n], ahead = way->points[i + 1];
        if (corner(at, back, ahead)) continue;
        way->points.pop_back();
        std::rotate(way->points.begin(), way->points.begin() + (std::ptrdiff_t)i, way->points.end());
        std::rotate(way->sides.begin(), way->sides.begin() + (std::ptrdiff_t)i, way->sides.end());
        way->points.push_back(way->points.front());
        break;
    }
    return true;
}

// Of a side with this direction.
void Traverses::add_side_parts(const Side &side, double ux, double uy, std::vector<Part> *parts) const
{
    for (const int i : side.lengths) {
        const start::Length &l = s.lengths[(size_t)i];
        const va::Observation &o = model.observations[(size_t)l.observation];
        const double share = 1.0 / (l.sigma * l.sigma * side.weight);
        const bool slope = o.kind == Kind::slope_distance || o.kind == Kind::level_distance;
        const int v = slope ? elevations.between(o.from, o.to) : -1;
        const double elevation = v < 0 ? 0.0 : model.observations[(size_t)v].value[0];
        const double flat = l.value / o.value[0]; // horizontal by measured length
        parts->push_back({l.observation, 0, {share * flat * ux, share * flat * uy, 0}});
        const double down = -share * l.value * std::tan(elevation);
        if (v >= 0) parts->push_back({v, 0, {down * ux, down * uy, 0}});
    }
}

// The angles of a way; an empty list where one is missing. The first is that of the orientation.
std::vector<Corner> Traverses::corners_of(const Way &way, const std::optional<Corner> &start) const
{
    std::vector<Corner> corners(way.sides.size());
    if (start) corners[0] = *start;
    for (size_t i = 1; i < corners.size(); i++) {
        const std::optional<Corner> c = corner(way.points[i], way.points[i - 1], way.points[i + 1]);
        if (!c) return {};
        corners[i] = *c;
    }
    return corners;
}

// Walks along the sides, the first of which has this bearing.
Traverses::Course Traverses::walk(const Way &way, const std::vector<Corner> &corners, double bearing) const
{
    Course course;
    course.at.push_back({0.0, 0.0});
    for (size_t i = 0; i < way.sides.size(); i++) {
        const Side &side = sides[(size_t)way.sides[i]];
        if (i > 0) bearing += half_turn + corners[i].value;
        const double ux = std::cos(bearing), uy = std::sin(bearing);
        course.at.push_back({course.at[i].x + side.length * ux, course.at[i].y + side.length * uy});
        course.length += side.length;
        add_side_parts(side, ux, uy, &course.parts);
    }
    for (size_t i = 0; i < corners.size(); i++)
        add_corner_parts(corners[i], course.at[i], course.at.back(), &course.parts);
    return course;
}

// A ray at a corner turns all that follows about it.
void Traverses::add_corner_parts(const Corner &corner, const Xy &at, const Xy &end, std::vector<Part> *parts) const
{
    const double x = -(end.y - at.y), y = end.x - at.x;
    for (const auto &[ray, sign] : {std::pair{corner.in, -1.0}, {corner.out, 1.0}}) {
        if (!ray) continue;
        const bool angle = model.observations[(size_t)ray->observation].kind == Kind::angle;
        if (angle && ray->reading == 0.0) continue; // its other ray carries the whole angle
        parts->push_back({ray->observation, 0, {sign * x, sign * y, 0}});
    }
}

// What the end of a course is off by; without an orientation its distance from the beginning.
Sum Traverses::sum_of(const Way &way, bool oriented, Course *course) const
{
    const double *a = &model.value[3 * (size_t)way.points.front()], *b = &model.value[3 * (size_t)way.points.back()];
    const double dx = b[0] - a[0], dy = b[1] - a[1];
    const Xy &end = course->at.back();
    Sum sum;
    sum.n = way.known && !oriented ? 1 : 2;
    if (sum.n == 2) {
        sum.w[0] = end.x - (way.known ? dx : 0.0);
        sum.w[1] = end.y - (way.known ? dy : 0.0);
        return sum;
    }
    const double length = std::hypot(end.x, end.y);
    for (Part &p : course->parts) p.by[0] = (end.x * p.by[0] + end.y * p.by[1]) / length;
    sum.w[0] = length - std::hypot(dx, dy);
    return sum;
}

void Traverses::close(const Loop &loop, Closures *closures) const
{
    Way way = way_of(loop);
    double bearing = 0.0;
    std::optional<Corner> start;
    if (way.sides.empty() || !turn_to_a_start(&way, &start, &bearing)) return;
    const std::vector<Corner> corners = corners_of(way, start);
    if (corners.empty()) return;
    Course course = walk(way, corners, bearing);
    Sum sum = sum_of(way, start.has_value(), &course);
    Closure closure;
    add_covariances(model, &course.parts, &sum);
    if (!judge(sum, &closure.misclosure, &closure.limit)) return;
    closures->count(closure.ratio());
    if (!closures->wants(closure.ratio())) return;
    for (const Part &p : walk(way, corners, bearing).parts) closure.observations.push_back(p.observation);
    closure.points = std::move(way.points);
    closure.length = course.length;
    closure.components = sum.n;
    std::copy(sum.w, sum.w + sum.n, closure.off);
    closures->list(std::move(closure));
}

Closures Traverses::run()
{
    Closures closures;
    closures.kind = ClosureKind::traverse;
    sort_rays();
    add_sides();
    closures.missed = find_loops(model.n_points + 1, links, known, [&](const Loop &loop) { close(loop, &closures); });
    return closures;
}

} // namespace

Closures traverse_closures(const va::Model &model, const start::Sightings &sightings)
{
    return Traverses(model, sightings).run();
}

} // namespace vornhost::closures
