#include "host/preparation/start/degenerate.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/preparation/start/voting.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr double about = 0.01; // radians: angles that are taken to be the same
constexpr double sigmas = 6.0; // of a reading, in an angle of three
const double half_turn = 4.0 * std::atan(1.0);

// A placed target and its reading under a zero that is common to all of them.
struct Seen {
    int to;
    double reading, sigma;
};

class Search {
public:
    Search(const va::Model &model, const std::vector<char> &placed, Near its_near)
        : near(its_near), s(sightings_of(model, std::vector<double>(placed.size(), NAN),
                                         std::vector<char>(model.observations.size(), 0))),
          frame(s)
    {
        for (int p = 0; p < s.n_points; p++) {
            const double *x = &model.value[3 * (size_t)p];
            if (placed[(size_t)p]) frame.put(p, x[0], x[1], 0.0);
        }
    }

    std::optional<Degenerate> of(int point) const
    {
        const bool seen = s.rays_to.count(point) > 0, free = s.lengths_at.count(point) + s.vectors_at.count(point) == 0;
        if (!free || s.azimuths_from.count(point) > 0) return std::nullopt;
        return seen ? on_line(point) : on_circle(point);
    }

private:
    bool same_line(double angle, double sigma) const
    {
        return std::fabs(std::remainder(angle, half_turn)) < (near == Near::about ? about : sigmas * sigma);
    }

    double bearing(int from, int to) const
    {
        const Place &a = frame.places[(size_t)from], &b = frame.places[(size_t)to];
        return std::atan2(b.y - a.y, b.x - a.x);
    }

    double distance(int a, int b) const
    {
        const Place &p = frame.places[(size_t)a], &q = frame.places[(size_t)b];
        return std::hypot(p.x - q.x, p.y - q.y);
    }

    std::vector<Seen> seen_from(int point) const;
    std::optional<Degenerate> on_circle(int point) const;
    std::optional<Degenerate> on_line(int point) const;

    const Near near;
    const Sightings s;
    Frame frame;
};

// Of all circles and angles that share a target with those before them.
std::vector<Seen> Search::seen_from(int point) const
{
    std::vector<Seen> all;
    const auto reading_of = [&](int to) {
        return std::find_if(all.begin(), all.end(), [&](const Seen &seen) { return seen.to == to; });
    };
    for (const int *c = s.circles_at.begin(point); c != s.circles_at.end(point); c++) {
        double zero = NAN;
        for (const int *i = s.rays_of.begin(*c); i != s.rays_of.end(*c); i++) {
            const auto found = reading_of(s.rays[(size_t)*i].to);
            if (found != all.end()) zero = found->reading - s.rays[(size_t)*i].reading;
        }
        if (all.empty()) zero = 0.0;
        for (const int *i = s.rays_of.begin(*c); i != s.rays_of.end(*c) && std::isfinite(zero); i++) {
            const Ray &r = s.rays[(size_t)*i];
            if (frame.places[(size_t)r.to].known && reading_of(r.to) == all.end())
                all.push_back({r.to, r.reading + zero, r.sigma});
        }
    }
    return all;
}

// A, B, C and the station lie on a circle where A and B are seen under the same angle, of lines, from it and from C.
std::optional<Degenerate> Search::on_circle(int point) const
{
    const std::vector<Seen> seen = seen_from(point);
    if (seen.size() < 3) return std::nullopt;
    const Seen a = seen[0];
    const Seen b = *std::max_element(seen.begin(), seen.end(), [&](const Seen &p, const Seen &q) {
        return distance(a.to, p.to) < distance(a.to, q.to);
    });
    Degenerate found = {point, {a.to, b.to, -1}};
    for (const Seen &c : seen) {
        if (c.to == a.to || c.to == b.to) continue;
        if (!same_line(b.reading - a.reading - bearing(c.to, b.to) + bearing(c.to, a.to), c.sigma)) return std::nullopt;
        found.through[2] = c.to;
    }
    if (same_line(b.reading - a.reading, b.sigma)) found.through[2] = -1;
    return found;
}

// All rays from stations that have a turn point along the line through the first two of these.
std::optional<Degenerate> Search::on_line(int point) const
{
    if (s.circles_at.count(point) > 0) return std::nullopt;
    Degenerate found = {point, {-1, -1, -1}};
    double along = 0.0;
    for (const int *i = s.rays_to.begin(point); i != s.rays_to.end(point); i++) {
        const Ray &r = s.rays[(size_t)*i];
        const Turn turn = r.circle == s.north ? Turn() : vote_turn(s, frame, r.circle);
        if (r.from == found.through[0] || (r.circle != s.north && !turn.known)) continue;
        if (found.through[0] >= 0 && !same_line(bearing(found.through[0], r.from) - along, r.sigma))
            return std::nullopt;
        if (found.through[0] < 0) {
            found.through[0] = r.from;
            along = r.reading + turn.value;
        } else if (found.through[1] < 0) {
            found.through[1] = r.from;
        }
        if (!same_line(r.reading + turn.value - along, r.sigma)) return std::nullopt;
    }
    if (found.through[1] < 0) return std::nullopt;
    return found;
}

} // namespace

std::vector<Degenerate> find_degenerate(const va::Model &model, const std::vector<char> &placed,
                                        const std::vector<int> &points, Near near)
{
    std::vector<Degenerate> all;
    const Search search(model, placed, near);
    for (const int p : points)
        if (const auto found = search.of(p)) all.push_back(*found);
    return all;
}

} // namespace vornhost::start
