#include "host/preparation/sketch.h"

#include <cmath>

namespace vornhost {

namespace {

const double pi = 4.0 * std::atan(1.0);
constexpr double least_sine = 0.1; // of the angle between two rays that place a point: 6 degrees

long long key(int from, int to) { return ((long long)from << 32) | to; }

} // namespace

template <class Record> void Sketch::add_points(const List<Record> &list, bool stations)
{
    for (const Record &r : list.records) {
        if (r.status <= 0 || !index.emplace(r.name, (int)points.size()).second) continue;
        points.emplace_back();
        points.back().station = stations;
    }
}

int Sketch::find(const char *name) const
{
    const auto at = index.find(name);
    return at == index.end() ? -1 : at->second;
}

// Both ends of an observation in use.
bool Sketch::ends(const measure_input &m, int *from, int *to) const
{
    *from = find(m.from);
    *to = find(m.to);
    return m.typ > 0 && *from >= 0 && *to >= 0 && *from != *to;
}

Sketch::Sketch(const Model &model)
{
    add_points(model.stations, true);
    add_points(model.targets, false);
    const double unit = metres_per_unit(model.p);
    const auto take = [&](const auto &list) {
        for (const auto &r : list.records) {
            if (r.status <= 0) continue;
            SketchPoint &p = points[(size_t)find(r.name)];
            for (int k = 0; k < 3; k++) p.x[k] = unit * r.x[k];
            p.placed = r.status != STATUS_COMPUTE;
            p.levelled = p.placed || is_held(r.ix[2]);
        }
    };
    take(model.stations);
    take(model.targets);
    take_orientations(model);
    add_observations(model);
    if (model.p.dim == 3) add_steps(model);
    add_lengths(model);
    add_vectors(model);
}

// Orientations that the file gives.
void Sketch::take_orientations(const Model &model)
{
    for (size_t i = 0; i < model.stations.size(); i++) {
        const station_input &s = model.stations.records[i];
        if (s.status <= 0 || !model.station_notes[i].orientation_given) continue;
        SketchPoint &p = points[(size_t)find(s.name)];
        p.turn = -s.r[2];
        p.oriented = true;
    }
}

void Sketch::add_observations(const Model &model)
{
    project p = model.p; // its operations change nothing but are not const
    rays.resize(points.size());
    int from = 0, to = 0;
    for (const measure_input &m : model.directions.records) {
        const double reading = p.rawtoh(1, m.val);
        if (!ends(m, &from, &to) || !points[(size_t)from].station || reading >= 2.0 * pi) continue;
        rays[(size_t)to].push_back((int)shots.size());
        shots.push_back({from, to, reading});
    }
}

void Sketch::add_steps(const Model &model)
{
    project p = model.p;
    const double unit = metres_per_unit(p);
    int from = 0, to = 0;
    for (const measure_input &m : model.heightdiffs.records)
        if (ends(m, &from, &to)) steps.push_back({from, to, unit * m.val, 0.0});
    for (const measure_input &m : model.verticals.records) {
        const double elevation = p.rawtov(1, m.val);
        if (!ends(m, &from, &to) || elevation >= pi) continue;
        elevations[key(from, to)] = elevation;
        elevations.emplace(key(to, from), -elevation);
        steps.push_back({from, to, m.h1 - m.h2, std::tan(elevation)});
    }
}

// Horizontal distances; a slope without a vertical angle is taken as level.
void Sketch::add_lengths(const Model &model)
{
    const double unit = metres_per_unit(model.p);
    int from = 0, to = 0;
    measured.resize(points.size());
    for (const measure_input &m : model.distances.records) {
        if (!ends(m, &from, &to)) continue;
        const auto slope = elevations.find(key(from, to));
        const double level = unit * m.val * (slope == elevations.end() ? 1.0 : std::cos(slope->second));
        if (!lengths.emplace(key(from, to), level).second) continue;
        lengths.emplace(key(to, from), level);
        measured[(size_t)from].push_back(to);
        measured[(size_t)to].push_back(from);
    }
}

void Sketch::add_vectors(const Model &model)
{
    for (const gps_input &g : model.baselines.records) {
        const int from = find(g.from), to = find(g.to);
        if (g.status <= 0 || model.p.igps == 0 || from < 0 || to < 0) continue;
        vectors.push_back({from, to, {g.dx[0], g.dx[1]}});
        steps.push_back({from, to, g.dx[2], 0.0});
    }
}

double Sketch::elevation(int from, int to) const
{
    const auto at = elevations.find(key(from, to));
    return at == elevations.end() ? 0.0 : at->second;
}

double Sketch::bearing(int from, int to) const
{
    const SketchPoint &a = points[(size_t)from], &b = points[(size_t)to];
    return std::atan2(b.x[1] - a.x[1], b.x[0] - a.x[0]);
}

// Circular mean of bearing less reading over the placed points that a placed station sights.
bool Sketch::orient()
{
    std::vector<double> sine(points.size()), cosine(points.size());
    std::vector<bool> open(points.size());
    for (const Shot &s : shots) {
        const SketchPoint &from = points[(size_t)s.from];
        if (from.oriented || !from.placed || !points[(size_t)s.to].placed) continue;
        const double turn = bearing(s.from, s.to) - s.reading;
        sine[(size_t)s.from] += std::sin(turn);
        cosine[(size_t)s.from] += std::cos(turn);
        open[(size_t)s.from] = true;
    }
    bool changed = false;
    for (size_t i = 0; i < points.size(); i++) {
        if (!open[i]) continue;
        points[i].turn = std::atan2(sine[i], cosine[i]);
        points[i].oriented = changed = true;
    }
    return changed;
}

bool Sketch::place_by_distance()
{
    bool changed = false;
    for (const Shot &s : shots) {
        const SketchPoint &from = points[(size_t)s.from];
        SketchPoint &to = points[(size_t)s.to];
        const auto length = lengths.find(key(s.from, s.to));
        if (to.placed || !from.placed || !from.oriented || length == lengths.end()) continue;
        to.x[0] = from.x[0] + length->second * std::cos(s.reading + from.turn);
        to.x[1] = from.x[1] + length->second * std::sin(s.reading + from.turn);
        to.placed = changed = true;
    }
    return changed;
}

bool Sketch::place_by_vectors()
{
    bool changed = false;
    for (const Vector &v : vectors) {
        const bool forward = points[(size_t)v.from].placed;
        const SketchPoint &known = points[(size_t)(forward ? v.from : v.to)];
        SketchPoint &to = points[(size_t)(forward ? v.to : v.from)];
        if (!known.placed || to.placed) continue;
        for (int c = 0; c < 2; c++) to.x[c] = known.x[c] + (forward ? v.d[c] : -v.d[c]);
        to.placed = changed = true;
    }
    return changed;
}

// Where two rays meet in front of both stations, and the sine of their angle.
bool Sketch::meet(const Shot &a, const Shot &b, double x[2], double *sine) const
{
    const SketchPoint &p = points[(size_t)a.from], &q = points[(size_t)b.from];
    const double u = a.reading + p.turn, v = b.reading + q.turn;
    const double dx = q.x[0] - p.x[0], dy = q.x[1] - p.x[1];
    *sine = std::sin(v - u);
    const double s = (dx * std::sin(v) - dy * std::cos(v)) / *sine, t = (dx * std::sin(u) - dy * std::cos(u)) / *sine;
    x[0] = p.x[0] + s * std::cos(u);
    x[1] = p.x[1] + s * std::sin(u);
    return std::fabs(*sine) > least_sine && s > 0.0 && t > 0.0;
}

// Each point by the first ray and the one that crosses it best.
bool Sketch::place_by_rays()
{
    bool changed = false;
    for (size_t i = 0; i < points.size(); i++) {
        if (points[i].placed) continue;
        const Shot *first = nullptr;
        double best = 0.0, x[2], sine;
        for (const int k : rays[i]) {
            const Shot &s = shots[(size_t)k];
            if (!points[(size_t)s.from].placed || !points[(size_t)s.from].oriented) continue;
            if (!first) first = &s;
            if (first->from == s.from || !meet(*first, s, x, &sine) || std::fabs(sine) <= best) continue;
            best = std::fabs(sine);
            points[i].x[0] = x[0];
            points[i].x[1] = x[1];
            points[i].placed = changed = true;
        }
    }
    return changed;
}

// Least squares over the differences of the circles around three or more placed points, which
// are linear: 2 (x_k - x_0) x = x_k^2 - x_0^2 - l_k^2 + l_0^2. Refused when these points stand
// within a tenth of their extent from a line.
bool Sketch::trilaterate(size_t i)
{
    const SketchPoint *origin = nullptr;
    double l0 = 0.0, a11 = 0.0, a12 = 0.0, a22 = 0.0, b1 = 0.0, b2 = 0.0;
    for (const int k : measured[i]) {
        const SketchPoint &p = points[(size_t)k];
        if (!p.placed) continue;
        const double length = lengths.at(key((int)i, k));
        if (!origin) {
            origin = &p;
            l0 = length;
            continue;
        }
        const double dx = p.x[0] - origin->x[0], dy = p.x[1] - origin->x[1];
        const double right = 0.5 * (dx * dx + dy * dy + l0 * l0 - length * length);
        a11 += dx * dx;
        a12 += dx * dy;
        a22 += dy * dy;
        b1 += dx * right;
        b2 += dy * right;
    }
    const double det = a11 * a22 - a12 * a12;
    const double size = a11 + a22;
    if (!(det > least_sine * least_sine * size * size)) return false;
    points[i].x[0] = origin->x[0] + (b1 * a22 - b2 * a12) / det;
    points[i].x[1] = origin->x[1] + (b2 * a11 - b1 * a12) / det;
    points[i].placed = true;
    return true;
}

bool Sketch::place_by_lengths()
{
    bool changed = false;
    for (size_t i = 0; i < points.size(); i++)
        if (!points[i].placed && measured[i].size() > 2) changed |= trilaterate(i);
    return changed;
}

void Sketch::carry()
{
    bool changed = true;
    while (changed) {
        changed = orient();
        changed |= place_by_distance();
        changed |= place_by_vectors();
        if (!changed) changed = place_by_rays();
        if (!changed) changed = place_by_lengths();
    }
}

// One height from the other end of a step, of which one height is known.
void Sketch::climb(const Step &step)
{
    SketchPoint &a = points[(size_t)step.from], &b = points[(size_t)step.to];
    const double height = step.offset + step.rise * std::hypot(b.x[0] - a.x[0], b.x[1] - a.x[1]);
    if (a.levelled)
        b.x[2] = a.x[2] + height;
    else
        a.x[2] = b.x[2] - height;
    a.levelled = b.levelled = true;
}

void Sketch::carry_heights()
{
    for (bool changed = true; changed;) {
        changed = false;
        for (const Step &s : steps) {
            if (points[(size_t)s.from].levelled == points[(size_t)s.to].levelled) continue;
            climb(s);
            changed = true;
        }
    }
    double sum = 0.0;
    int n = 0;
    for (const SketchPoint &p : points) {
        if (!p.levelled) continue;
        sum += p.x[2];
        n++;
    }
    for (SketchPoint &p : points)
        if (!p.levelled) p.x[2] = n > 0 ? sum / n : 0.0;
}

int Sketch::best_centre() const
{
    std::vector<int> count(points.size());
    int best = -1;
    for (const Shot &s : shots)
        if (lengths.count(key(s.from, s.to))) count[(size_t)s.from]++;
    for (size_t i = 0; i < points.size(); i++)
        if (count[i] > (best < 0 ? 0 : count[(size_t)best])) best = (int)i;
    return best;
}

} // namespace vornhost
