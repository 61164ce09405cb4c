#include "host/preparation/start/joining.h"

#include <algorithm>
#include <cmath>

namespace vornhost::start {

namespace {

constexpr size_t most_common = 40; // points of which pairs propose a motion
constexpr double as_many = 0.5;    // difference of points that agree that tells nothing
constexpr double share = 1e-3;     // of the size of the network: how far a common point may be off

std::vector<Common> common_points(const Frame &local, const Frame &ground)
{
    std::vector<Common> all;
    for (const int m : local.members) {
        const Place &to = ground.places[(size_t)m], &at = local.places[(size_t)m];
        if (to.known) all.push_back({at.x, at.y, to.x, to.y});
    }
    return all;
}

double size_of(const std::vector<Common> &all)
{
    double size = 0.0;
    for (const Common &c : all) size = std::fmax(size, std::hypot(c.to_x - all[0].to_x, c.to_y - all[0].to_y));
    return size;
}

// Weighted least squares over points; rigid keeps lengths.
std::optional<Motion> fit(const std::vector<Common> &all, const std::vector<double> &weight, bool rigid, double mirror)
{
    double w = 0, x = 0, y = 0, u = 0, v = 0, square = 0, cosine = 0, sine = 0;
    for (size_t i = 0; i < all.size(); i++) {
        w += weight[i];
        x += weight[i] * all[i].x, y += weight[i] * mirror * all[i].y;
        u += weight[i] * all[i].to_x, v += weight[i] * all[i].to_y;
    }
    if (!(w > 0.0)) return std::nullopt;
    x /= w, y /= w, u /= w, v /= w;
    for (size_t i = 0; i < all.size(); i++) {
        const double dx = all[i].x - x, dy = mirror * all[i].y - y, du = all[i].to_x - u, dv = all[i].to_y - v;
        square += weight[i] * (dx * dx + dy * dy);
        cosine += weight[i] * (dx * du + dy * dv);
        sine += weight[i] * (dx * dv - dy * du);
    }
    const double length = rigid ? std::hypot(cosine, sine) : square;
    if (!(length > 0.0)) return std::nullopt;
    Motion m;
    m.mirror = mirror;
    m.a = cosine / length, m.b = sine / length;
    m.p = u - m.a * x + m.b * y;
    m.q = v - m.b * x - m.a * y;
    return m;
}

double agreement(const Motion &m, const std::vector<Common> &all, double t)
{
    double sum = 0.0;
    for (const Common &c : all) sum += 1.0 / (1.0 + (distance_after(m, c) / t) * (distance_after(m, c) / t));
    return sum;
}

// Closer and closer to the points that agree.
Motion refined(Motion m, const std::vector<Common> &all, double t, bool rigid)
{
    for (const double wide : {10.0, 3.0, 1.0, 1.0}) {
        std::vector<double> weight;
        for (const Common &c : all) {
            const double q = distance_after(m, c) / (wide * t);
            weight.push_back(1.0 / ((1.0 + q * q) * (1.0 + q * q)));
        }
        if (const auto next = fit(all, weight, rigid, m.mirror)) m = *next;
    }
    return m;
}

// Shift of a frame whose axes and scale are true: median over the points.
Motion shift_of(const std::vector<Common> &all, const Motion &turned)
{
    std::vector<double> p, q;
    for (const Common &c : all) {
        double x, y;
        turned.apply(c.x, c.y, &x, &y);
        p.push_back(c.to_x - x);
        q.push_back(c.to_y - y);
    }
    Motion m = turned;
    std::nth_element(p.begin(), p.begin() + (long)(p.size() / 2), p.end());
    std::nth_element(q.begin(), q.begin() + (long)(q.size() / 2), q.end());
    m.p = p[p.size() / 2], m.q = q[q.size() / 2];
    m.agreed = (double)all.size();
    return m;
}

// Whether any ray tells the frame from its mirror image.
bool handed(const Frame &local)
{
    return std::any_of(local.turns.begin(), local.turns.end(), [](const Turn &t) { return t.known && t.votes > 1; });
}

// Turn of the ground less that of the frame, by circles that have one in both.
std::optional<double> common_turn(const Sightings &s, const Frame &local, const Frame &ground)
{
    double sine = 0, cosine = 0;
    for (const int m : local.members)
        for (const int *c = s.circles_at.begin(m); c != s.circles_at.end(m); c++) {
            const Turn &l = local.turns[(size_t)*c], &g = ground.turns[(size_t)*c];
            if (!l.known || !g.known) continue;
            sine += std::sin(g.value - l.value);
            cosine += std::cos(g.value - l.value);
        }
    if (!(std::hypot(sine, cosine) > 0.0)) return std::nullopt;
    return std::atan2(sine, cosine);
}

std::optional<Motion> by_points(const std::vector<Common> &all, const Frame &local, bool mirror_first)
{
    const double t = share * size_of(all);
    if (!(t > 0.0)) return std::nullopt;
    std::optional<Motion> best;
    double agreed[2] = {0.0, 0.0}; // of the frame as it is, and of its mirror image
    const bool may_mirror = !handed(local);
    for (const bool rigid : {true, false})
        for (const double mirror : {mirror_first ? -1.0 : 1.0, mirror_first ? 1.0 : -1.0}) {
            if ((rigid && !local.scaled) || (mirror < 0.0 && !may_mirror)) continue;
            const auto m = motion_of_most(all, t, rigid, mirror);
            if (m) agreed[mirror < 0.0] = std::fmax(agreed[mirror < 0.0], m->agreed);
            if (m && (!best || m->agreed > best->agreed + (rigid ? 0.01 : 0.5))) best = m;
        }
    if (best) best->guessed = may_mirror && std::fabs(agreed[0] - agreed[1]) < as_many;
    return best;
}

// What sights inside a frame say of its turn and scale in the axes of the network.
struct Axes {
    double sine = 0, cosine = 0, ratio = 0;
    int vectors = 0;

    void add(double turn) { sine += std::sin(turn), cosine += std::cos(turn); }
    bool any() const { return std::hypot(sine, cosine) > 0.0; }
};

double bearing(const Place &from, const Place &to) { return std::atan2(to.y - from.y, to.x - from.x); }

void add_circles(const Sightings &s, const Frame &frame, int p, const std::vector<Turn> &given, Axes &axes)
{
    for (const int *i = s.azimuths_from.begin(p); i != s.azimuths_from.end(p); i++) {
        const Ray &r = s.rays[(size_t)*i];
        const Place &to = frame.places[(size_t)r.to];
        if (to.known) axes.add(r.reading - bearing(frame.places[(size_t)p], to));
    }
    for (const int *c = s.circles_at.begin(p); c != s.circles_at.end(p); c++)
        if (given[(size_t)*c].given && frame.turns[(size_t)*c].known)
            axes.add(given[(size_t)*c].value - frame.turns[(size_t)*c].value);
}

void add_vectors(const Sightings &s, const Frame &frame, int p, Axes &axes)
{
    const Place &at = frame.places[(size_t)p];
    for (const int *i = s.vectors_at.begin(p); i != s.vectors_at.end(p); i++) {
        const Vector &v = s.vectors[(size_t)*i / 2];
        const Place &to = frame.places[(size_t)v.to];
        const double length = v.from == p && to.known ? std::hypot(to.x - at.x, to.y - at.y) : 0.0;
        if (!(length > 0.0)) continue;
        axes.add(std::atan2(v.y, v.x) - bearing(at, to));
        axes.ratio += std::hypot(v.x, v.y) / length;
        axes.vectors++;
    }
}

void turn_frame(double turn, double scale, Frame *frame)
{
    Motion m;
    m.a = scale * std::cos(turn), m.b = scale * std::sin(turn);
    for (const int p : frame->members) {
        Place &x = frame->places[(size_t)p];
        m.apply(x.x, x.y, &x.x, &x.y);
        x.sigma *= scale;
    }
}

} // namespace

double distance_after(const Motion &m, const Common &c)
{
    double x, y;
    m.apply(c.x, c.y, &x, &y);
    return std::hypot(x - c.to_x, y - c.to_y);
}

std::optional<Motion> motion_of_most(const std::vector<Common> &all, double t, bool rigid, double mirror)
{
    std::optional<Motion> best;
    const size_t n = std::min(all.size(), most_common), stride = all.size() / n;
    std::vector<double> weight(2, 1.0);
    for (size_t i = 0; i < n; i++)
        for (size_t j = i + 1; j < n; j++) {
            auto m = fit({all[i * stride], all[j * stride]}, weight, rigid, mirror);
            if (!m) continue;
            m->agreed = agreement(*m, all, t);
            if (!best || m->agreed > best->agreed) best = m;
        }
    if (!best) return best;
    best = refined(*best, all, t, rigid);
    best->agreed = agreement(*best, all, t);
    return best;
}

std::optional<Motion> find_motion(const Sightings &s, const Frame &local, const Frame &ground, bool mirror_first)
{
    const std::vector<Common> all = common_points(local, ground);
    if (all.empty()) return std::nullopt;
    Motion turned;
    const auto turn = common_turn(s, local, ground);
    if (local.true_axes && local.scaled) return shift_of(all, turned);
    if (all.size() == 1 && turn && local.scaled) {
        turned.a = std::cos(*turn), turned.b = std::sin(*turn);
        return shift_of(all, turned);
    }
    return all.size() < 2 ? std::nullopt : by_points(all, local, mirror_first);
}

bool find_axes(const Sightings &s, Frame *frame, const std::vector<Turn> &given)
{
    Axes axes;
    for (const int m : frame->members) {
        add_circles(s, *frame, m, given, axes);
        add_vectors(s, *frame, m, axes);
    }
    if (!axes.any()) return false;
    const double turn = std::atan2(axes.sine, axes.cosine);
    turn_frame(turn, axes.vectors > 0 && !frame->scaled ? axes.ratio / axes.vectors : 1.0, frame);
    for (const int m : frame->members)
        for (const int *c = s.circles_at.begin(m); c != s.circles_at.end(m); c++)
            frame->turns[(size_t)*c].value += turn;
    frame->true_axes = true;
    frame->scaled |= axes.vectors > 0;
    Turn &north = frame->turns[(size_t)s.north];
    north.known = north.given = true;
    return true;
}

} // namespace vornhost::start
