// Notation: t is a tolerance in metres, three standard deviations of an observation and of the point that it comes
// from, and a share of its length for what the plan leaves out. An observation that is off by q tolerances agrees by
// 1 / (1 + q^2).

#include "host/preparation/start/voting.h"

#include <algorithm>
#include <cmath>

namespace vornhost::start {

namespace {

constexpr double share = 3e-4;     // of a length: curvature, tilts and what else the plan leaves out
constexpr double times = 3.0;      // standard deviations in a tolerance
constexpr double most_base = 5e-3; // of a length: what the place at its other end may add to its tolerance
constexpr size_t most_loci = 7;    // of a point, that propose places
constexpr size_t most_rays = 6;    // of a circle, that propose turns
constexpr double vague = 0.1;      // radians: tolerance of a ray so short that it tells nothing of a turn
constexpr double torn_by = 0.5;    // agreement by which the best place must lead
constexpr double few = 3.0;        // observations, of which two places that are close are looked at
constexpr double blurred = 0.02;   // of the sights: how far places that many observations propose may be apart
constexpr double distinct = 1e-4;  // the same of few
const double pi = 4.0 * std::atan(1.0);

struct Xy {
    double x, y;
};

// Into [-pi, pi]; most angles are within one turn of it.
double wrapped(double angle)
{
    if (angle > pi) angle -= 2.0 * pi;
    if (angle < -pi) angle += 2.0 * pi;
    return std::fabs(angle) <= pi ? angle : std::remainder(angle, 2.0 * pi);
}

// Of lengths in metres, which neither overflow nor vanish when they are squared.
double root_of_squares(double a, double b) { return std::sqrt(a * a + b * b); }

// Standard deviation of the place at the other end of a sight. Places beside one another are off together: what they
// are off by as seen from far away says little of a sight between them, and would double from each place to the next.
double base_of(double sigma, double length) { return std::fmin(sigma, most_base * length); }

double agreement(double q) { return 1.0 / (1.0 + q * q); }

// On a line from a place: ahead of it along (ux, uy).
struct LineEvidence {
    double x, y, ux, uy, angle, base; // standard deviations of the bearing and of the place
};
struct LengthEvidence {
    double x, y, r, sigma;
};
struct PointEvidence {
    double x, y, sigma;
};
// A target of a circle of the point that has no turn.
struct StarRay {
    double x, y, reading, angle, base;
};

struct Evidence {
    std::vector<LineEvidence> lines;
    std::vector<LengthEvidence> lengths;
    std::vector<PointEvidence> points;
    std::vector<std::vector<StarRay>> stars;

    double count() const
    {
        double n = (double)lines.size() + (double)lengths.size() + 2.0 * (double)points.size();
        for (const auto &star : stars) n += (double)star.size() - 1.0;
        return n;
    }
};

// Where a point may lie: on a line, on a circle, in a place.
struct Locus {
    enum { line, circle, place } kind;
    double x, y, ux, uy, r;
};

void add_lines(const Sightings &s, const Frame &f, int p, Evidence &e)
{
    for (const int *i = s.rays_to.begin(p); i != s.rays_to.end(p); i++) {
        const Ray &r = s.rays[(size_t)*i];
        const Place &from = f.places[(size_t)r.from];
        const Turn &turn = f.turns[(size_t)r.circle];
        if (!from.known || !turn.known) continue;
        const double bearing = r.reading + turn.value;
        e.lines.push_back(
            {from.x, from.y, std::cos(bearing), std::sin(bearing), root_of_squares(r.sigma, turn.sigma), from.sigma});
    }
}

// Back along a ray of the point whose circle has a turn.
void add_back_line(const Ray &r, const Place &to, const Turn &turn, Evidence &e)
{
    const double bearing = r.reading + turn.value + pi;
    e.lines.push_back(
        {to.x, to.y, std::cos(bearing), std::sin(bearing), root_of_squares(r.sigma, turn.sigma), to.sigma});
}

// What the point itself sees: back along rays whose circle has a turn, otherwise the angles between them.
void add_own_circle(const Sightings &s, const Frame &f, int circle, Evidence &e)
{
    const Turn &turn = f.turns[(size_t)circle];
    std::vector<StarRay> star;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++) {
        const Ray &r = s.rays[(size_t)*i];
        const Place &to = f.places[(size_t)r.to];
        if (!to.known) continue;
        if (turn.known)
            add_back_line(r, to, turn, e);
        else
            star.push_back({to.x, to.y, r.reading, r.sigma, to.sigma});
    }
    if (star.size() > 1) e.stars.push_back(std::move(star));
}

void add_own_rays(const Sightings &s, const Frame &f, int p, Evidence &e)
{
    for (const int *c = s.circles_at.begin(p); c != s.circles_at.end(p); c++) add_own_circle(s, f, *c, e);
    const Turn &north = f.turns[(size_t)s.north];
    for (const int *i = s.azimuths_from.begin(p); i != s.azimuths_from.end(p) && north.known; i++) {
        const Ray &r = s.rays[(size_t)*i];
        const Place &to = f.places[(size_t)r.to];
        if (to.known) add_back_line(r, to, north, e);
    }
}

void add_lengths(const Sightings &s, const Frame &f, int p, Evidence &e)
{
    for (const int *i = s.lengths_at.begin(p); i != s.lengths_at.end(p) && f.scaled; i++) {
        const Length &l = s.lengths[(size_t)*i / 2];
        const Place &end = f.places[(size_t)l.other(p)];
        if (end.known)
            e.lengths.push_back({end.x, end.y, l.value, root_of_squares(l.sigma, base_of(end.sigma, l.value))});
    }
}

void add_points(const Sightings &s, const Frame &f, int p, Evidence &e)
{
    for (const int *i = s.vectors_at.begin(p); i != s.vectors_at.end(p) && f.true_axes; i++) {
        const Vector &v = s.vectors[(size_t)*i / 2];
        const double sign = v.to == p ? 1.0 : -1.0;
        const Place &end = f.places[(size_t)(v.to == p ? v.from : v.to)];
        if (end.known)
            e.points.push_back({end.x + sign * v.x, end.y + sign * v.y, root_of_squares(v.sigma, end.sigma)});
    }
}

Evidence gather(const Sightings &s, const Frame &f, int p)
{
    Evidence e;
    add_lines(s, f, p, e);
    add_own_rays(s, f, p, e);
    add_lengths(s, f, p, e);
    add_points(s, f, p, e);
    return e;
}

// The circle on which two targets are seen under an angle; a line where that is flat.
Locus arc(const StarRay &a, const StarRay &b)
{
    const double dx = b.x - a.x, dy = b.y - a.y, angle = b.reading - a.reading, sine = std::sin(angle);
    const double chord = root_of_squares(dx, dy);
    if (std::fabs(sine) < 1e-3) return {Locus::line, a.x, a.y, dx / chord, dy / chord, 0.0};
    const double h = 0.5 * std::cos(angle) / sine; // of the centre over the chord, in chords, to the left
    return {Locus::circle, 0.5 * (a.x + b.x) - h * dy, 0.5 * (a.y + b.y) + h * dx, 0, 0, std::fabs(0.5 * chord / sine)};
}

std::vector<Locus> loci_of(const Evidence &e)
{
    std::vector<Locus> loci;
    for (const PointEvidence &p : e.points) loci.push_back({Locus::place, p.x, p.y, 0, 0, 0});
    const size_t most = most_loci + loci.size();
    const auto full = [&](size_t left) { return loci.size() + left > most; };
    for (size_t i = 0; i < e.lengths.size() && !full(e.lines.empty() ? 1 : 5); i++)
        loci.push_back({Locus::circle, e.lengths[i].x, e.lengths[i].y, 0, 0, e.lengths[i].r});
    for (size_t i = 0; i < e.lines.size() && !full(e.stars.empty() ? 1 : 4); i++)
        loci.push_back({Locus::line, e.lines[i].x, e.lines[i].y, e.lines[i].ux, e.lines[i].uy, 0});
    for (const auto &star : e.stars)
        for (size_t k = 1; k < star.size(); k++)
            for (size_t i = 0; i + k < star.size() && !full(1); i++)
                if (star[i].x != star[i + k].x || star[i].y != star[i + k].y) loci.push_back(arc(star[i], star[i + k]));
    return loci;
}

void meet_lines(const Locus &a, const Locus &b, std::vector<Xy> &out)
{
    const double d = a.ux * b.uy - a.uy * b.ux;
    if (std::fabs(d) < 1e-4) return;
    const double t = ((b.x - a.x) * b.uy - (b.y - a.y) * b.ux) / d;
    out.push_back({a.x + t * a.ux, a.y + t * a.uy});
}

// Two places, or where they nearly touch the one between them.
void meet_line(const Locus &line, const Locus &c, std::vector<Xy> &out)
{
    const double along = (c.x - line.x) * line.ux + (c.y - line.y) * line.uy;
    const double fx = line.x + along * line.ux, fy = line.y + along * line.uy;
    const double off = root_of_squares(fx - c.x, fy - c.y), square = c.r * c.r - off * off;
    if (square < -0.1 * c.r * c.r) return;
    const double half = std::sqrt(std::fmax(square, 0.0));
    out.push_back({fx + half * line.ux, fy + half * line.uy});
    if (half > 0.0) out.push_back({fx - half * line.ux, fy - half * line.uy});
}

void meet_circles(const Locus &a, const Locus &b, std::vector<Xy> &out)
{
    const double dx = b.x - a.x, dy = b.y - a.y, d = root_of_squares(dx, dy);
    if (d < 1e-9 * (a.r + b.r)) return;
    const double along = (d * d + a.r * a.r - b.r * b.r) / (2.0 * d), square = a.r * a.r - along * along;
    const double least = std::fmin(a.r, b.r);
    if (square < -0.1 * least * least) return;
    const double h = std::sqrt(std::fmax(square, 0.0)), x = a.x + along * dx / d, y = a.y + along * dy / d;
    out.push_back({x - h * dy / d, y + h * dx / d});
    if (h > 0.0) out.push_back({x + h * dy / d, y - h * dx / d});
}

void meet(const Locus &a, const Locus &b, std::vector<Xy> &out)
{
    if (a.kind == Locus::line && b.kind == Locus::line) return meet_lines(a, b, out);
    if (a.kind == Locus::line) return meet_line(a, b, out);
    if (b.kind == Locus::line) return meet_line(b, a, out);
    meet_circles(a, b, out);
}

std::vector<Xy> proposals(const Evidence &e)
{
    const std::vector<Locus> loci = loci_of(e);
    std::vector<Xy> all;
    for (size_t i = 0; i < loci.size(); i++) {
        if (loci[i].kind == Locus::place) {
            all.push_back({loci[i].x, loci[i].y});
            continue;
        }
        for (size_t j = i + 1; j < loci.size(); j++)
            if (loci[j].kind != Locus::place) meet(loci[i], loci[j], all);
    }
    return all;
}

// How far an observation is off at a place, along the normal (nx, ny), and how far it may be, metres.
struct Off {
    double off, nx, ny, t;
};

double tolerance(double sigma, double length) { return times * sigma + share * length; }

Off off_of(const LineEvidence &l, const Xy &p)
{
    const double dx = p.x - l.x, dy = p.y - l.y, d = root_of_squares(dx, dy);
    const double across = l.ux * dy - l.uy * dx, ahead = l.ux * dx + l.uy * dy;
    const double t = tolerance(root_of_squares(l.angle * d, base_of(l.base, d)), d);
    return {ahead > 0.0 ? across : std::copysign(d + std::fabs(across), across), -l.uy, l.ux, t};
}

Off off_of(const LengthEvidence &l, const Xy &p)
{
    const double dx = p.x - l.x, dy = p.y - l.y, d = root_of_squares(dx, dy);
    if (!(d > 0.0)) return {l.r, 1.0, 0.0, tolerance(l.sigma, l.r)};
    return {d - l.r, dx / d, dy / d, tolerance(l.sigma, l.r)};
}

// Of the rays of a circle at a place: what each says of the turn (radian), with its tolerance.
struct StarTurn {
    double turn, t, gx, gy; // gradient of the turn by the place
};

std::vector<StarTurn> star_turns(const std::vector<StarRay> &star, const Xy &p)
{
    std::vector<StarTurn> turns;
    for (const StarRay &r : star) {
        const double dx = r.x - p.x, dy = r.y - p.y, d2 = dx * dx + dy * dy, d = std::sqrt(d2);
        if (!(d > 0.0)) return {};
        const double t = times * root_of_squares(r.angle, base_of(r.base, d) / d) + share;
        if (t > vague) continue;
        turns.push_back({wrapped(std::atan2(dy, dx) - r.reading), t, dy / d2, -dx / d2});
    }
    return turns;
}

// The turn on which most rays agree, and by how much they do.
double best_turn(const std::vector<StarTurn> &turns, double *agreed)
{
    double best = 0.0;
    *agreed = -1.0;
    for (size_t i = 0; i < turns.size() && i < most_rays; i++) {
        double sum = 0.0;
        for (const StarTurn &b : turns)
            sum += agreement(wrapped(b.turn - turns[i].turn) / root_of_squares(b.t, turns[i].t));
        if (sum <= *agreed) continue;
        *agreed = sum;
        best = turns[i].turn;
    }
    return best;
}

double agreement_at(const Evidence &e, const Xy &p)
{
    double sum = 0.0;
    const auto add = [&](const Off &o) { sum += agreement(o.off / o.t); };
    for (const LineEvidence &l : e.lines) add(off_of(l, p));
    for (const LengthEvidence &l : e.lengths) add(off_of(l, p));
    for (const PointEvidence &v : e.points)
        sum += 2.0 * agreement(root_of_squares(p.x - v.x, p.y - v.y) / tolerance(v.sigma, 0.0));
    for (const auto &star : e.stars) {
        double agreed = 0.0;
        best_turn(star_turns(star, p), &agreed);
        sum += std::fmax(agreed - 1.0, 0.0);
    }
    return sum;
}

// Normal equations of a place.
struct Normal {
    double xx = 0, xy = 0, yy = 0, bx = 0, by = 0;

    void add(double gx, double gy, double l, double weight)
    {
        xx += weight * gx * gx, xy += weight * gx * gy, yy += weight * gy * gy;
        bx += weight * gx * l, by += weight * gy * l;
    }
    double determinant() const { return xx * yy - xy * xy; }
    bool regular() const { return determinant() > 1e-12 * (xx + yy) * (xx + yy); }
};

// Rays of a star with their mean turn eliminated: g - mean g, turn - mean turn.
void add_star(const std::vector<StarRay> &star, const Xy &p, Normal &n)
{
    const std::vector<StarTurn> turns = star_turns(star, p);
    double agreed = 0.0;
    const double best = best_turn(turns, &agreed);
    double w = 0, l = 0, gx = 0, gy = 0;
    std::vector<double> weight;
    for (const StarTurn &t : turns) {
        const double off = wrapped(t.turn - best);
        weight.push_back(agreement(off / t.t) / (t.t * t.t));
        w += weight.back(), l += weight.back() * off, gx += weight.back() * t.gx, gy += weight.back() * t.gy;
    }
    if (!(w > 0.0)) return;
    for (size_t i = 0; i < turns.size(); i++)
        n.add(turns[i].gx - gx / w, turns[i].gy - gy / w, -(wrapped(turns[i].turn - best) - l / w), weight[i]);
}

Normal normal_at(const Evidence &e, const Xy &p)
{
    Normal n;
    const auto add = [&](const Off &o) { n.add(o.nx, o.ny, -o.off, agreement(o.off / o.t) / (o.t * o.t)); };
    for (const LineEvidence &l : e.lines) add(off_of(l, p));
    for (const LengthEvidence &l : e.lengths) add(off_of(l, p));
    for (const PointEvidence &v : e.points) {
        const double t = tolerance(v.sigma, 0.0), w = agreement(root_of_squares(p.x - v.x, p.y - v.y) / t) / (t * t);
        n.add(1, 0, v.x - p.x, w);
        n.add(0, 1, v.y - p.y, w);
    }
    for (const auto &star : e.stars) add_star(star, p, n);
    return n;
}

double mean_reach(const Evidence &e, const Xy &p)
{
    double sum = 0.0, n = 0.0;
    const auto add = [&](double x, double y) { sum += root_of_squares(p.x - x, p.y - y), n += 1.0; };
    for (const LineEvidence &l : e.lines) add(l.x, l.y);
    for (const LengthEvidence &l : e.lengths) add(l.x, l.y);
    for (const auto &star : e.stars)
        for (const StarRay &r : star) add(r.x, r.y);
    return n > 0.0 ? sum / n : 0.0;
}

// Shortest length of what determines a place; 0 where coordinates do.
double least_reach(const Evidence &e, const Xy &p)
{
    double least = e.points.empty() ? HUGE_VAL : 0.0;
    const auto add = [&](double x, double y) { least = std::fmin(least, root_of_squares(p.x - x, p.y - y)); };
    for (const LineEvidence &l : e.lines) add(l.x, l.y);
    for (const LengthEvidence &l : e.lengths) add(l.x, l.y);
    for (const auto &star : e.stars)
        for (const StarRay &r : star) add(r.x, r.y);
    return least;
}

using Ranked = std::vector<std::pair<double, Xy>>; // agreement, place

// The best place first. Proposals that are the same within half of what any observation may be off are looked at once.
Ranked ranked(const Evidence &e, const std::vector<Xy> &all)
{
    Ranked sums;
    sums.reserve(all.size());
    const auto near = [&](const Xy &p) {
        const double same = 0.5 * share * least_reach(e, p);
        return std::any_of(sums.begin(), sums.end(), [&](const auto &q) {
            return std::fabs(q.second.x - p.x) <= same && std::fabs(q.second.y - p.y) <= same;
        });
    };
    for (const Xy &p : all)
        if (!near(p)) sums.emplace_back(agreement_at(e, p), p);
    std::stable_sort(sums.begin(), sums.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    return sums;
}

// Least squares of what agrees near a place; no value where that leaves it open.
std::optional<Xy> refined(const Evidence &e, Xy p, Normal *n)
{
    for (int step = 0; step < 3; step++) {
        *n = normal_at(e, p);
        if (!n->regular()) return std::nullopt;
        p.x += (n->bx * n->yy - n->by * n->xy) / n->determinant();
        p.y += (n->by * n->xx - n->bx * n->xy) / n->determinant();
    }
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) return std::nullopt;
    return p;
}

// Whether a place that few observations propose close to the best one is another one when it is refined.
bool stays_apart(const Evidence &e, const Xy &best, const Xy &next)
{
    Normal n;
    const std::optional<Xy> p = e.count() > few ? std::nullopt : refined(e, next, &n);
    return p && root_of_squares(p->x - best.x, p->y - best.y) > distinct * mean_reach(e, best);
}

// Another place that has hardly less agreement than the best one, which is refined in `best`.
std::optional<Xy> rival(const Evidence &e, const Ranked &places, const Xy &best)
{
    const Xy &first = places[0].second;
    const double apart = blurred * mean_reach(e, first);
    for (const auto &[sum, p] : places) {
        if (!(sum > places[0].first - torn_by)) break;
        if (root_of_squares(p.x - first.x, p.y - first.y) > apart || stays_apart(e, best, p)) return p;
    }
    return std::nullopt;
}

} // namespace

Support support_of(const Sightings &s, const Frame &f, int p)
{
    Support support;
    const auto add = [&](int end, int n) {
        support.count += n;
        support.sigma = std::fmin(support.sigma, f.places[(size_t)end].sigma);
    };
    const auto known = [&](int end) { return f.places[(size_t)end].known; };
    for (const int *i = s.rays_to.begin(p); i != s.rays_to.end(p); i++) {
        const Ray &r = s.rays[(size_t)*i];
        if (known(r.from) && f.turns[(size_t)r.circle].known) add(r.from, 1);
    }
    for (const int *c = s.circles_at.begin(p); c != s.circles_at.end(p); c++) {
        int rays = f.turns[(size_t)*c].known ? 1 : 0;
        for (const int *i = s.rays_of.begin(*c); i != s.rays_of.end(*c); i++)
            if (known(s.rays[(size_t)*i].to)) add(s.rays[(size_t)*i].to, rays++ > 0);
    }
    for (const int *i = s.azimuths_from.begin(p); i != s.azimuths_from.end(p); i++)
        if (f.turns[(size_t)s.north].known && known(s.rays[(size_t)*i].to)) add(s.rays[(size_t)*i].to, 1);
    for (const int *i = s.lengths_at.begin(p); i != s.lengths_at.end(p) && f.scaled; i++) {
        const int end = s.lengths[(size_t)*i / 2].other(p);
        if (known(end)) add(end, 1);
    }
    for (const int *i = s.vectors_at.begin(p); i != s.vectors_at.end(p) && f.true_axes; i++) {
        const Vector &v = s.vectors[(size_t)*i / 2];
        const int end = v.from == p ? v.to : v.from;
        if (known(end)) add(end, 2);
    }
    return support;
}

std::optional<Determination> determine(const Sightings &s, const Frame &frame, int point)
{
    const Evidence e = gather(s, frame, point);
    if (e.count() < 2.0) return std::nullopt;
    const std::vector<Xy> all = proposals(e);
    if (all.empty()) return std::nullopt;
    const Ranked places = ranked(e, all);
    Normal n;
    const std::optional<Xy> p = refined(e, places[0].second, &n);
    if (!p) return std::nullopt;
    Determination d;
    d.x = p->x, d.y = p->y;
    d.sigma = std::sqrt((n.xx + n.yy) / n.determinant()) / times;
    d.reach = e.points.empty() ? mean_reach(e, *p) : HUGE_VAL;
    d.redundancy = agreement_at(e, *p) - 2.0;
    const std::optional<Xy> other = rival(e, places, *p);
    d.torn = other.has_value();
    d.other[0] = other.value_or(*p).x, d.other[1] = other.value_or(*p).y;
    return d;
}

Turn vote_turn(const Sightings &s, const Frame &frame, int circle)
{
    const Place &at = frame.places[(size_t)s.circle_point[(size_t)circle]];
    if (!at.known) return {};
    std::vector<StarRay> star;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++) {
        const Ray &r = s.rays[(size_t)*i];
        const Place &to = frame.places[(size_t)r.to];
        if (to.known) star.push_back({to.x, to.y, r.reading, r.sigma, root_of_squares(at.sigma, to.sigma)});
    }
    star.erase(std::remove_if(star.begin(), star.end(),
                              [&](const StarRay &r) { return !(root_of_squares(r.x - at.x, r.y - at.y) > 0.0); }),
               star.end());
    const std::vector<StarTurn> turns = star_turns(star, {at.x, at.y});
    if (turns.empty()) return {};
    double agreed = 0.0, w = 0.0, mean = 0.0;
    const double best = best_turn(turns, &agreed);
    Turn turn;
    for (const StarTurn &t : turns) {
        const double off = wrapped(t.turn - best), weight = agreement(off / t.t) / (t.t * t.t);
        w += weight, mean += weight * off;
        turn.votes += std::fabs(off) < t.t;
    }
    turn.value = wrapped(best + mean / w);
    turn.sigma = 1.0 / std::sqrt(w) / times;
    turn.known = turns.size() == 1 || agreed > 1.5;
    return turn;
}

} // namespace vornhost::start
