#include "host/preparation/start/growth.h"

#include <cmath>

namespace vornhost::start {

namespace {

constexpr double sharp = 0.03;       // of its sights: standard deviation of a place that is known well
constexpr double useless = 1.0;      // of its sights: one that says nothing
constexpr double well_checked = 0.8; // agreement of one more observation
constexpr int enough_votes = 6;      // of a circle, after which it is not turned any more
// What is not looked at yet: checked by one observation more than needed, or not.
enum Rank { fresh, agreed, bare, open, blunt, torn };

} // namespace

Growth::Growth(const Sightings &sightings, Frame *its_frame, const Frame *the_ground, const Way &its_way)
    : s(sightings), frame(*its_frame), ground(the_ground), way(its_way), bits(its_way.choices),
      version((size_t)sightings.n_points)
{
}

void Growth::orient(int circle, const Turn &turn)
{
    frame.turns[(size_t)circle] = turn;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++)
        touch(s.rays[(size_t)*i].from, s.rays[(size_t)*i].to);
}

void Growth::begin_again()
{
    for (const int m : frame.members)
        for (const int *c = s.circles_at.begin(m); c != s.circles_at.end(m); c++) vote(*c);
    for (const int m : frame.members) touch_neighbours(m);
}

// What is carried from one ground point to another belongs to the ground.
void Growth::touch(int from, int point)
{
    if (frame.places[(size_t)point].known) return;
    if (ground && ground->places[(size_t)from].known && ground->places[(size_t)point].known) return;
    const Support support = support_of(s, frame, point);
    if (support.count < 2) return;
    const bool checked = support.count > 2;
    queue.push({checked ? fresh : bare, checked ? 0.0 : support.sigma, point, ++version[(size_t)point], queued++});
}

void Growth::vote(int circle)
{
    Turn &turn = frame.turns[(size_t)circle];
    if (circle == s.north || turn.given || turn.votes >= enough_votes) return;
    const bool known = turn.known;
    turn = vote_turn(s, frame, circle);
    if (known || !turn.known) return;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++)
        touch(s.circle_point[(size_t)circle], s.rays[(size_t)*i].to);
}

void Growth::touch_neighbours(int p)
{
    for (const int *i = s.rays_from.begin(p); i != s.rays_from.end(p); i++) touch(p, s.rays[(size_t)*i].to);
    for (const int *i = s.rays_to.begin(p); i != s.rays_to.end(p); i++) touch(p, s.rays[(size_t)*i].from);
    for (const int *i = s.lengths_at.begin(p); i != s.lengths_at.end(p); i++)
        touch(p, s.lengths[(size_t)*i / 2].other(p));
    for (const int *i = s.vectors_at.begin(p); i != s.vectors_at.end(p); i++) {
        const Vector &v = s.vectors[(size_t)*i / 2];
        touch(p, v.from == p ? v.to : v.from);
    }
}

// The first length between two places gives a frame its scale.
void Growth::scale_by(int p)
{
    const Place &at = frame.places[(size_t)p];
    for (const int *i = s.lengths_at.begin(p); i != s.lengths_at.end(p) && !frame.scaled; i++) {
        const Length &l = s.lengths[(size_t)*i / 2];
        const Place &end = frame.places[(size_t)l.other(p)];
        const double now = end.known ? std::hypot(end.x - at.x, end.y - at.y) : 0.0;
        if (!(now > 0.0)) continue;
        const double scale = l.value / now;
        frame.scaled = true;
        for (const int m : frame.members) {
            Place &x = frame.places[(size_t)m];
            x.x *= scale, x.y *= scale, x.sigma *= scale;
        }
        for (const int m : frame.members) touch_neighbours(m);
    }
}

void Growth::place(int p, double x, double y, double sigma)
{
    frame.put(p, x, y, sigma);
    version[(size_t)p]++;
    for (const int *c = s.circles_at.begin(p); c != s.circles_at.end(p); c++) vote(*c);
    for (const int *i = s.rays_to.begin(p); i != s.rays_to.end(p); i++) {
        const Ray &r = s.rays[(size_t)*i];
        if (frame.places[(size_t)r.from].known) vote(r.circle);
    }
    touch_neighbours(p);
    if (!frame.scaled) scale_by(p);
}

int Growth::rank_of(const Determination &d) const
{
    if (d.torn) return torn;
    if (!(d.sigma < sharp * d.reach) && d.reach > 0.0) return blunt;
    return d.redundancy >= well_checked ? agreed : open;
}

void Growth::take(int p, const Determination &d)
{
    if (!d.torn) return place(p, d.x, d.y, d.sigma);
    const bool second = ((bits & 1U) != 0) != way.turned_round(p);
    bits >>= 1U;
    choices.push_back(p);
    place(p, second ? d.other[0] : d.x, second ? d.other[1] : d.y, d.sigma);
}

// Places a point that is known well and checked; what is not waits with its rank.
void Growth::look(const Waiting &w)
{
    const std::optional<Determination> d = determine(s, frame, w.point);
    if (!d || d->sigma > useless * d->reach) return;
    const int rank = rank_of(*d);
    if (rank == agreed || (rank == open && w.rank == bare) || w.rank > bare) return take(w.point, *d);
    queue.push({rank, d->sigma, w.point, w.version, queued++});
}

void Growth::grow()
{
    while (!queue.empty()) {
        const Waiting w = queue.top();
        queue.pop();
        if (frame.places[(size_t)w.point].known || w.version != version[(size_t)w.point]) continue;
        look(w);
    }
}

} // namespace vornhost::start
