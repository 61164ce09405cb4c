#include "host/preparation/start/solid.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/preparation/start/shape.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using Vec = va::Vec3<double>;

constexpr size_t most_ends = 40;  // of lengths at a point, of which pairs are tried as a base
constexpr size_t most_trios = 24; // of known ends, each of which proposes two places
constexpr double times = 5.0;     // standard deviations in a tolerance
constexpr double share = 1e-3;    // of a length, beside them: what errors add up to
constexpr double thin = 0.02;     // breadth of a trio by its length: less puts nothing
constexpr double apart = 0.5;     // lengths that agree: less does not tell one side from the other
constexpr double alone = 3.5;     // lengths that agree, from which a place is checked
constexpr int few_steps = 40;     // of the damped adjustment

struct End {
    int point;
    double length, sigma;
};

struct Proposal {
    Vec place, other; // on both sides of a trio
    double agreed = -1.0, agreed_other = 0.0, height = 0.0;

    bool is_open() const { return agreed - agreed_other < apart; }
};

double size(const Vec &v) { return std::sqrt(va::dot(v, v)); }

Vec across(const Vec &a, const Vec &b) { return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x}; }

class Solid {
public:
    Solid(const va::Model &its_model, const SolidWay &its_way)
        : model(its_model), way(its_way), ends((size_t)model.n_points), placed((size_t)model.n_points, 0),
          at((size_t)model.n_points)
    {
        for (const va::Observation &o : model.observations) {
            if (!o.use || o.from < 0 || o.to < 0) continue;
            const double sigma = standard_deviation(model, o, 0);
            ends[(size_t)o.from].push_back({o.to, o.value[0], sigma});
            ends[(size_t)o.to].push_back({o.from, o.value[0], sigma});
        }
    }

    bool grow();
    std::vector<int> open; // points that fit on both sides, but for the first one
    const Vec &place(int p) const { return at[(size_t)p]; }

private:
    // Of the second point from the first one; the third one lies at (x, y) where the second one is at (d, 0).
    struct Base {
        int second = -1, third = -1;
        double d = 0.0, x = 0.0, y = 0.0;
    };

    int first_point() const;
    Base largest_base(int first) const;
    double length(int a, int b) const;
    bool put_base();
    std::vector<End> known_ends(int p) const;
    double agreement(const std::vector<End> &seen, const Vec &x) const;
    void propose(const std::vector<End> &seen, size_t i, size_t j, size_t k, Proposal *best) const;
    Proposal best_proposal(const std::vector<End> &seen) const;
    bool sweep();
    bool put_open();
    void put(int p, const Vec &x)
    {
        placed[(size_t)p] = 1;
        at[(size_t)p] = x;
    }

    const va::Model &model;
    const SolidWay &way;
    std::vector<std::vector<End>> ends; // of the lengths at each point
    std::vector<char> placed;
    std::vector<Vec> at;
    bool one_side = true; // all lies in the plane of the base
};

// That with most lengths, or one of the next.
int Solid::first_point() const
{
    std::vector<int> order(ends.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return ends[(size_t)a].size() > ends[(size_t)b].size(); });
    return (size_t)way.base < order.size() ? order[(size_t)way.base] : -1;
}

// 0 where none was observed.
double Solid::length(int a, int b) const
{
    for (const End &e : ends[(size_t)a])
        if (e.point == b) return e.length;
    return 0.0;
}

// The largest triangle of lengths at a point.
Solid::Base Solid::largest_base(int first) const
{
    const std::vector<End> &all = ends[(size_t)first];
    const size_t n = std::min(all.size(), most_ends);
    Base best;
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j < n; j++) {
            const double d = all[i].length, r = all[j].length, q = length(all[i].point, all[j].point);
            if (i == j || !(q > 0.0) || !(d > 0.0)) continue;
            const double x = (r * r - q * q + d * d) / (2.0 * d), y = std::sqrt(std::fmax(r * r - x * x, 0.0));
            if (y > thin * d && d * y > best.d * best.y) best = {all[i].point, all[j].point, d, x, y};
        }
    return best;
}

bool Solid::put_base()
{
    const int first = first_point();
    if (first < 0) return false;
    const Base base = largest_base(first);
    if (!(base.d > 0.0)) return false;
    put(first, {0, 0, 0});
    put(base.second, {base.d, 0, 0});
    put(base.third, {base.x, base.y, 0});
    return true;
}

std::vector<End> Solid::known_ends(int p) const
{
    std::vector<End> seen;
    for (const End &e : ends[(size_t)p])
        if (placed[(size_t)e.point]) seen.push_back(e);
    return seen;
}

double Solid::agreement(const std::vector<End> &seen, const Vec &x) const
{
    double sum = 0.0;
    for (const End &e : seen) {
        const double q = (size(x - at[(size_t)e.point]) - e.length) / (times * e.sigma + share * e.length);
        sum += 1.0 / (1.0 + q * q);
    }
    return sum;
}

// Where the spheres around three known points meet, above and below their plane.
void Solid::propose(const std::vector<End> &seen, size_t i, size_t j, size_t k, Proposal *best) const
{
    const Vec &a = at[(size_t)seen[i].point];
    const Vec b = at[(size_t)seen[j].point] - a, c = at[(size_t)seen[k].point] - a;
    const double d = size(b), r = seen[i].length;
    if (!(d > 0.0)) return;
    const Vec e1 = (1.0 / d) * b, rest = c - va::dot(c, e1) * e1;
    const double cx = va::dot(c, e1), cy = size(rest);
    if (cy < thin * d) return;
    const Vec e2 = (1.0 / cy) * rest, e3 = across(e1, e2);
    const double x = (r * r - seen[j].length * seen[j].length + d * d) / (2.0 * d);
    const double y = (r * r - seen[k].length * seen[k].length + cx * cx + cy * cy - 2.0 * cx * x) / (2.0 * cy);
    const double z = std::sqrt(std::fmax(r * r - x * x - y * y, 0.0));
    const Vec foot = a + x * e1 + y * e2, up = foot + z * e3, down = foot - z * e3;
    const double above = agreement(seen, up), below = agreement(seen, down);
    if (std::fmax(above, below) <= best->agreed + share) return;
    const bool other = below > above + share;
    *best = {other ? down : up, other ? up : down, std::fmax(above, below), std::fmin(above, below), z};
}

Proposal Solid::best_proposal(const std::vector<End> &seen) const
{
    Proposal best;
    const size_t n = seen.size();
    size_t tried = 0;
    for (size_t step = 1; 2 * step < n && tried < most_trios; step++)
        for (size_t i = 0; i < n && tried < most_trios; i++, tried++)
            propose(seen, i, (i + step) % n, (i + 2 * step) % n, &best);
    return best;
}

// Once through all points: those that four lengths and more tell.
bool Solid::sweep()
{
    bool any = false;
    for (int p = 0; p < model.n_points; p++) {
        if (placed[(size_t)p]) continue;
        const std::vector<End> seen = known_ends(p);
        if (seen.size() < 4) continue;
        const Proposal best = best_proposal(seen);
        if (best.agreed < alone || best.is_open()) continue;
        put(p, best.place);
        any = true;
    }
    return any;
}

// The point that lies farthest from the plane of three others, on one of its sides.
bool Solid::put_open()
{
    Proposal best;
    int at_point = -1;
    for (int p = 0; p < model.n_points; p++) {
        if (placed[(size_t)p]) continue;
        const Proposal here = best_proposal(known_ends(p));
        if (here.agreed < 0.0 || (at_point >= 0 && here.height <= best.height)) continue;
        best = here, at_point = p;
    }
    if (at_point < 0) return false;
    const bool turned = std::binary_search(way.below.begin(), way.below.end(), at_point);
    put(at_point, turned ? best.other : best.place);
    if (!one_side && best.is_open()) open.push_back(at_point);
    one_side = false;
    return true;
}

bool Solid::grow()
{
    if (!put_base()) return false;
    while (sweep() || put_open()) {
    }
    return std::find(placed.begin(), placed.end(), 0) == placed.end();
}

} // namespace

std::optional<Trial> grow_solid(const va::Model &model, const Given &given, const SolidWay &way, std::vector<int> *open)
{
    Solid solid(model, way);
    if (!solid.grow()) return std::nullopt;
    *open = solid.open;
    Trial t;
    t.model = model;
    t.placed.assign((size_t)model.n_points, 1);
    t.levelled.assign((size_t)model.n_points, 0);
    for (int p = 0; p < model.n_points; p++) {
        const Vec &x = solid.place(p);
        double *to = &t.model.value[3 * (size_t)p];
        to[0] = x.x, to[1] = x.y, to[2] = x.z;
    }
    place_as_given(model, given, &t);
    t.fit = settle(&t.model, few_steps, Pull::most);
    return t;
}

} // namespace vornhost::start
