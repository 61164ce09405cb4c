#include "host/preparation/closures/graphs.h"

#include <cmath>
#include <unordered_map>

namespace vornhost::closures {

namespace {

namespace va = vornadjust;
using va::Kind;

const double half_turn = 4.0 * std::atan(1.0);

bool moves(const va::Observation &o) { return o.motion_from >= 0 || o.motion_to >= 0 || o.motion_third >= 0; }

Leg observed(const va::Observation &o, int i, double value)
{
    Leg leg;
    leg.value[0] = value;
    leg.observation[0] = i;
    leg.station = o.from;
    return leg;
}

// Heights add up along the verticals; the third coordinate is one where these are parallel or it is a height.
bool third_is_height(const va::Frame &frame) { return !frame.curved() || frame.mixed || frame.ellipsoidal(); }

void add_level(const va::Model &model, int i, LegGraph *graph)
{
    const va::Observation &o = model.observations[(size_t)i];
    const bool third = third_is_height(model.frame), heights = model.frame.space == va::Space::heights;
    if (o.kind == Kind::height_difference)
        graph->add(o.from, o.to, observed(o, i, o.value[0] + o.h1 - o.h2));
    else if ((o.kind == Kind::difference && o.axis == 2 && third) || (o.kind == Kind::baseline && heights))
        graph->add(o.from, o.to, observed(o, i, o.value[0]));
    else if (o.kind == Kind::unknown && o.unknown < 3 * model.n_points && o.unknown % 3 == 2 && third)
        graph->add(graph->known, o.unknown / 3, observed(o, i, o.value[0]));
}

long long sight_key(const va::Observation &o) { return ((long long)o.from << 32) | (unsigned)o.to; }

// Distances that go with vertical angles: between the same points, and in a slope from the same heights above them.
class Lengths {
public:
    explicit Lengths(const va::Model &m) : model(m)
    {
        for (int i = 0; i < (int)m.observations.size(); i++) {
            const va::Observation &o = m.observations[(size_t)i];
            const bool length = o.kind == Kind::slope_distance || o.kind == Kind::horizontal_distance;
            if (length && o.use && !moves(o) && o.constants < 0) by_sight.emplace(sight_key(o), i);
        }
    }

    int of(const va::Observation &vertical) const
    {
        const auto [begin, end] = by_sight.equal_range(sight_key(vertical));
        for (auto at = begin; at != end; ++at) {
            const va::Observation &o = model.observations[(size_t)at->second];
            if (o.kind == Kind::horizontal_distance || (o.h1 == vertical.h1 && o.h2 == vertical.h2)) return at->second;
        }
        return -1;
    }

private:
    const va::Model &model;
    std::unordered_multimap<long long, int> by_sight;
};

// The coefficient of refraction of a sight; none where it is unknown.
double refraction_of(const va::Model &model, const va::Observation &o)
{
    return o.constants < 0 ? o.refraction : model.value[(size_t)model.constants[(size_t)o.constants].first + 2];
}

bool leans(const va::Model &model, int point)
{
    return !model.deflection_at.empty() && model.deflection_at[(size_t)point] >= 0;
}

// By how much a sight is steeper above the horizon of a vertical that leans towards north (xi) and east (eta):
// xi cos(azimuth) + eta sin(azimuth).
double steeper_by(const va::Model &model, const va::Observation &o)
{
    if (!leans(model, o.from)) return 0.0;
    const size_t xi = (size_t)model.deflections[(size_t)model.deflection_at[(size_t)o.from]].first;
    const double *p = &model.value[3 * (size_t)o.from], *q = &model.value[3 * (size_t)o.to];
    const double azimuth = std::atan2(q[1] - p[1], q[0] - p[0]) + model.sites[(size_t)o.from].convergence;
    return model.value[xi] * std::cos(azimuth) + model.value[xi + 1] * std::sin(azimuth);
}

// A vertical whose lean is an unknown makes no closure.
bool is_vertical_known(const va::Model &model, int point)
{
    if (!leans(model, point)) return true;
    const int xi = model.deflections[(size_t)model.deflection_at[(size_t)point]].first;
    return !model.estimated(xi) && !model.estimated(xi + 1);
}

// What heights above the geoid lack of those above the ellipsoid, from one point to the other.
double undulation_between(const va::Model &model, const va::Observation &o)
{
    if (!model.frame.ellipsoidal()) return 0.0;
    return model.sites[(size_t)o.to].undulation - model.sites[(size_t)o.from].undulation;
}

// By the elevation e above the horizon of the ellipsoid over a slope s or a horizontal length d: s sin e or d tan e,
// the heights of instrument and target, what curvature and refraction make of the sight, and the rise of the geoid.
Leg trigonometric(const va::Model &model, int length, int vertical)
{
    const va::Observation &l = model.observations[(size_t)length], &v = model.observations[(size_t)vertical];
    const double e = v.value[0] - steeper_by(model, v), c = std::cos(e), t = std::tan(e);
    const bool slope = l.kind == Kind::slope_distance;
    const double d = slope ? l.value[0] * c : l.value[0];
    const double curvature = (model.frame.curved() ? 1.0 : 0.0) - refraction_of(model, v);
    Leg leg = observed(
        v, length, d * t + v.h1 - v.h2 + curvature * d * d / (2.0 * model.frame.radius) - undulation_between(model, v));
    leg.second = vertical;
    leg.by[0] = slope ? std::sin(e) : t;
    leg.by[1] = slope ? d : d / (c * c);
    return leg;
}

// A baseline, or the difference of the first coordinate with those of the others, which follow it.
void add_vector(const va::Model &model, int i, LegGraph *graph)
{
    const va::Observation &o = model.observations[(size_t)i];
    Leg leg;
    for (int k = 0; k < graph->n; k++) {
        const bool apart = o.kind == Kind::difference;
        const size_t at = (size_t)i + (apart ? (size_t)k : 0);
        if (at >= model.observations.size()) return;
        const va::Observation &c = model.observations[at];
        if (!c.use || c.kind != o.kind || c.from != o.from || c.to != o.to || (apart && c.axis != k)) return;
        leg.value[k] = c.value[apart ? 0 : k];
        leg.observation[k] = (int)at;
        leg.component[k] = apart ? 0 : k;
    }
    graph->add(o.from, o.to, leg);
}

class Angles {
public:
    Angles(const va::Model &m, const start::Sightings &sights)
        : model(m), s(sights), planar(m.frame.space == va::Space::plane || !m.frame.curved())
    {
    }

    AngleGraph make();

private:
    int line(int from, int to, double *turned);
    void add_direction(int i);
    void add_angle(int i);
    void add_azimuth(const start::Ray &ray);
    void add_known_lines();

    const va::Model &model;
    const start::Sightings &s;
    const bool planar;
    AngleGraph a;
    std::unordered_map<long long, int> nodes;
};

// Node of a line, and what its bearing as seen from `from` differs from that of the node.
int Angles::line(int from, int to, double *turned)
{
    const bool swapped = planar && from > to;
    *turned = swapped ? half_turn : 0.0;
    if (swapped) std::swap(from, to);
    const auto [at, added] = nodes.emplace(((long long)from << 32) | (unsigned)to, a.graph.nodes);
    if (added) {
        a.graph.nodes++;
        a.lines.emplace_back(from, to);
    }
    return at->second;
}

void Angles::add_direction(int i)
{
    const va::Observation &o = model.observations[(size_t)i];
    if (!is_upright(model, o.setup)) return;
    double turned;
    const int to = line(o.from, o.to, &turned);
    a.graph.add(o.setup, to, observed(o, i, o.value[0] + turned));
}

void Angles::add_angle(int i)
{
    const va::Observation &o = model.observations[(size_t)i];
    if (o.setup >= 0) return;
    double left, right;
    const int from = line(o.from, o.to, &left), to = line(o.from, o.third, &right);
    a.graph.add(from, to, observed(o, i, o.value[0] + right - left));
}

void Angles::add_azimuth(const start::Ray &ray)
{
    const va::Observation &o = model.observations[(size_t)ray.observation];
    if (ray.circle != s.north || moves(o) || !planar) return;
    double turned;
    const int to = line(o.from, o.to, &turned);
    Leg leg = observed(o, ray.observation, ray.reading + turned);
    leg.station = -1;
    a.graph.add(a.graph.known, to, leg);
}

void Angles::add_known_lines()
{
    for (size_t l = 0; l < a.lines.size() && planar; l++) {
        const auto [from, to] = a.lines[l];
        if (!is_fixed(model, from, 0, 1) || !is_fixed(model, to, 0, 1)) continue;
        const double *p = &model.value[3 * (size_t)from], *q = &model.value[3 * (size_t)to];
        Leg leg;
        leg.value[0] = std::atan2(q[1] - p[1], q[0] - p[0]);
        if (std::hypot(q[0] - p[0], q[1] - p[1]) > 0.0) a.graph.add(a.graph.known, a.circles + (int)l, leg);
    }
}

AngleGraph Angles::make()
{
    a.circles = (int)model.setups.size() + 1;
    a.graph.known = a.circles - 1;
    a.graph.nodes = a.circles;
    a.graph.circular = true;
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const va::Observation &o = model.observations[(size_t)i];
        if (!o.use || moves(o)) continue;
        if (o.kind == Kind::direction) add_direction(i);
        if (o.kind == Kind::angle) add_angle(i);
    }
    for (const start::Ray &ray : s.rays) add_azimuth(ray);
    add_known_lines();
    return std::move(a);
}

} // namespace

bool is_upright(const va::Model &model, int setup)
{
    const va::Setup &s = model.setups[(size_t)setup];
    for (int u = s.first; u < s.first + 2; u++)
        if (model.estimated(u) || model.value[(size_t)u] != 0.0) return false;
    return s.levelled || !model.frame.curved() || model.frame.space == va::Space::plane;
}

bool is_fixed(const va::Model &model, int point, int first_axis, int last_axis)
{
    for (int k = first_axis; k <= last_axis; k++)
        if (model.code[3 * (size_t)point + (size_t)k] != va::Code::fixed) return false;
    return true;
}

LegGraph level_graph(const va::Model &model)
{
    LegGraph graph;
    graph.known = model.n_points;
    graph.nodes = model.n_points + 1;
    if (model.frame.space == va::Space::plane) return graph;
    for (int i = 0; i < (int)model.observations.size(); i++)
        if (model.observations[(size_t)i].use && !moves(model.observations[(size_t)i])) add_level(model, i, &graph);
    for (int p = 0; p < model.n_points && third_is_height(model.frame); p++) {
        Leg leg;
        leg.value[0] = model.value[3 * (size_t)p + 2];
        if (is_fixed(model, p, 2, 2)) graph.add(graph.known, p, leg);
    }
    return graph;
}

LegGraph height_graph(const va::Model &model, const LegGraph &levels)
{
    LegGraph graph;
    const va::Space space = model.frame.space;
    if (space == va::Space::heights || space == va::Space::plane || !third_is_height(model.frame)) return graph;
    const Lengths lengths(model);
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const va::Observation &o = model.observations[(size_t)i];
        if (o.kind != Kind::vertical_angle || !o.use || moves(o) || !is_upright(model, o.setup)) continue;
        if (!is_vertical_known(model, o.from)) continue;
        const bool open = o.constants >= 0 && model.estimated(model.constants[(size_t)o.constants].first + 2);
        const int length = open ? -1 : lengths.of(o);
        if (length < 0) continue;
        if (graph.legs.empty()) graph = levels;
        graph.add(o.from, o.to, trigonometric(model, length, i));
    }
    return graph;
}

LegGraph baseline_graph(const va::Model &model)
{
    LegGraph graph;
    graph.known = model.n_points;
    graph.nodes = model.n_points + 1;
    if (model.frame.space == va::Space::heights) return graph;
    graph.n = model.frame.space == va::Space::plane ? 2 : 3;
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const va::Observation &o = model.observations[(size_t)i];
        const bool first = o.kind == Kind::difference && o.axis == 0 && !model.frame.curved();
        if (o.use && !moves(o) && (o.kind == Kind::baseline || first)) add_vector(model, i, &graph);
    }
    for (int p = 0; p < model.n_points; p++) {
        if (!is_fixed(model, p, 0, graph.n - 1)) continue;
        const double *c = &model.value[3 * (size_t)p];
        const va::Vec3<double> at{c[0], c[1], c[2]}, x = model.frame.ellipsoidal()
                                                             ? va::position(model.frame, model.sites[(size_t)p], at)
                                                             : va::position(model.frame, at);
        Leg leg;
        leg.value[0] = x.x;
        leg.value[1] = x.y;
        leg.value[2] = x.z;
        graph.add(graph.known, p, leg);
    }
    return graph;
}

AngleGraph angle_graph(const va::Model &model, const start::Sightings &sightings)
{
    return Angles(model, sightings).make();
}

} // namespace vornhost::closures
