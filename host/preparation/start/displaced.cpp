#include "host/preparation/start/displaced.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <optional>
#include <utility>

#include "host/preparation/start/joining.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using va::Kind;

constexpr double share = 1e-3;       // of the size of the network: how far a held point may be off
constexpr double rough_share = 0.05; // where approximate points decide
constexpr double sights = 0.5;       // how far an approximate point may be off
constexpr double times = 3.0;        // tolerances within which a point agrees
constexpr double nearly_all = 0.8;   // of the points fit a mirror image or another scale
constexpr double other_scale = 0.01;
constexpr size_t most_exchanged = 20; // points of which two may be exchanged

bool held(const va::Model &model, int p)
{
    return !model.estimated(3 * p) ||
           std::any_of(model.observations.begin(), model.observations.end(),
                       [&](const auto &o) { return o.use && o.kind == Kind::unknown && o.unknown / 3 == p; });
}

bool any_of_kinds(const va::Model &model, std::initializer_list<Kind> kinds)
{
    return std::any_of(model.observations.begin(), model.observations.end(), [&](const va::Observation &o) {
        return o.use && std::find(kinds.begin(), kinds.end(), o.kind) != kinds.end();
    });
}

bool has_lengths(const va::Model &model)
{
    return any_of_kinds(model, {Kind::slope_distance, Kind::plane_distance, Kind::level_distance,
                                Kind::horizontal_distance, Kind::scale_bar, Kind::baseline, Kind::difference});
}

// Whether a sight tells the network from its mirror image.
bool is_handed(const va::Model &model)
{
    return any_of_kinds(model,
                        {Kind::direction, Kind::angle, Kind::azimuth, Kind::bearing, Kind::baseline, Kind::difference});
}

class Comparing {
public:
    Comparing(const va::Model &its_model, const std::vector<int> &its_points, const Trial &its_loose)
        : model(its_model), points(its_points), loose(its_loose)
    {
        for (const int p : points) all.push_back(common(p));
        std::vector<int> firm;
        for (const int p : points)
            if (held(model, p)) firm.push_back(p);
        held_decide = firm.size() > 1;
        for (const int p : held_decide ? firm : points) voters.push_back(common(p));
    }

    Comparison run(double sight);

private:
    Common common(int p) const;
    double size(bool observed) const;
    bool agrees(const Motion &m, const Common &c, double t) const { return distance_after(m, c) < times * t; }
    int agreeing(const Motion &m, double t) const;
    bool most(const Motion &m, double t, double part) const;
    std::optional<Motion> with_two_exchanged(double t, bool rigid);
    std::optional<Motion> decided_motion(double t, bool rigid, bool *turned);
    double scale_of_all(double t) const;

    const va::Model &model;
    const std::vector<int> &points;
    const Trial &loose;
    std::vector<Common> all, voters;
    bool held_decide = false;
};

Common Comparing::common(int p) const
{
    const double *x = &loose.model.value[3 * (size_t)p], *given = &model.value[3 * (size_t)p];
    return {x[0], x[1], given[0], given[1]};
}

// Of the points that decide, by the sights or as given.
double Comparing::size(bool observed) const
{
    std::vector<double> lengths;
    for (const Common &c : voters) {
        const double dx = observed ? c.x - voters[0].x : c.to_x - voters[0].to_x;
        const double dy = observed ? c.y - voters[0].y : c.to_y - voters[0].to_y;
        lengths.push_back(std::hypot(dx, dy));
    }
    std::sort(lengths.begin(), lengths.end());
    return lengths[(lengths.size() + 1) / 2 < lengths.size() ? (lengths.size() + 1) / 2 : lengths.size() - 1];
}

int Comparing::agreeing(const Motion &m, double t) const
{
    return (int)std::count_if(voters.begin(), voters.end(), [&](const Common &c) { return agrees(m, c, t); });
}

bool Comparing::most(const Motion &m, double t, double part) const
{
    return agreeing(m, t) > part * (double)voters.size();
}

// The motion on which all agree once the coordinates of two of them are exchanged.
std::optional<Motion> Comparing::with_two_exchanged(double t, bool rigid)
{
    if (voters.size() < 4 || voters.size() > most_exchanged) return std::nullopt;
    const auto exchange = [](Common &a, Common &b) { std::swap(a.to_x, b.to_x), std::swap(a.to_y, b.to_y); };
    for (size_t i = 0; i < voters.size(); i++)
        for (size_t j = i + 1; j < voters.size(); j++) {
            exchange(voters[i], voters[j]);
            const auto m = motion_of_most(voters, t, rigid, 1.0);
            const bool all_agree = m && agreeing(*m, t) == (int)voters.size();
            exchange(voters[i], voters[j]);
            if (all_agree) return m;
        }
    return std::nullopt;
}

// The motion from the sights to what most of the points say, of either sense where that is open.
std::optional<Motion> Comparing::decided_motion(double t, bool rigid, bool *turned)
{
    const auto plain = motion_of_most(voters, t, rigid, 1.0), other = motion_of_most(voters, t, rigid, -1.0);
    *turned = other && (!plain || agreeing(*other, t) > agreeing(*plain, t));
    const auto &best = *turned ? other : plain;
    const int needed = rigid || voters.size() == 2 ? 2 : 3;
    if (best && agreeing(*best, t) >= needed && most(*best, t, 0.5)) return best;
    *turned = false;
    return with_two_exchanged(t, rigid);
}

// 1 where no other scale brings nearly all together.
double Comparing::scale_of_all(double t) const
{
    if (voters.size() < 3) return 1.0;
    const auto m = motion_of_most(voters, t, false, 1.0);
    const double scale = m ? std::hypot(m->a, m->b) : 1.0;
    return std::fabs(scale - 1.0) > other_scale && most(*m, t, nearly_all) ? scale : 1.0;
}

Comparison Comparing::run(double sight)
{
    Comparison found;
    const bool rigid = has_lengths(model);
    const double part = held_decide ? share : rough_share, t = part * size(rigid);
    bool turned = false;
    const auto motion = decided_motion(t, rigid, &turned);
    if (!motion) {
        if (rigid) found.scale = scale_of_all(part * size(false));
        return found;
    }
    if (turned && is_handed(model)) {
        found.mirrored = agreeing(*motion, t) > 2 && most(*motion, t, nearly_all);
        return found;
    }
    for (size_t i = 0; i < points.size(); i++) {
        const double off = distance_after(*motion, all[i]);
        if (held(model, points[i]) ? off > times * t : off > sights * sight) found.displaced.push_back(points[i]);
    }
    return found;
}

} // namespace

Loosened loosen(const va::Model &model, const Given &given, const std::vector<int> &points)
{
    Loosened loose{model, given};
    std::vector<char> chosen((size_t)model.n_points, 0);
    for (const int p : points) {
        chosen[(size_t)p] = 1;
        for (size_t k = 0; k < 2; k++) {
            loose.given.coordinate[3 * (size_t)p + k] = Known::wanted;
            loose.model.code[3 * (size_t)p + k] = va::Code::free;
        }
    }
    for (va::Observation &o : loose.model.observations)
        if (o.kind == Kind::unknown && o.unknown < 3 * model.n_points && o.unknown % 3 < 2 &&
            chosen[(size_t)o.unknown / 3])
            o.use = false;
    return loose;
}

std::vector<int> given_points(const va::Model &model, const Given &given)
{
    std::vector<int> points;
    for (int p = 0; p < model.n_points; p++)
        if (given.plan(p) && model.code[3 * (size_t)p] != va::Code::absent) points.push_back(p);
    return points;
}

Comparison compare_given(const va::Model &model, const std::vector<int> &points, const Trial &loose, double sight)
{
    return Comparing(model, points, loose).run(sight);
}

} // namespace vornhost::start
