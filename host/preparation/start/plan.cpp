#include "host/preparation/start/plan.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <optional>
#include <utility>

#include "host/preparation/start/joining.h"
#include "host/preparation/start/pair.h"

namespace vornhost::start {

namespace {

constexpr int most_rounds = 20; // of local frames over the whole network
constexpr int free_tries = 8;   // centres of which the largest frame becomes the ground of a free network

class Planner {
public:
    Planner(const Sightings &sightings, const Frame &given, const Way &its_way)
        : s(sightings), way(its_way), turns(given.turns), plan{given, {}}, local(sightings),
          ground_growth(s, &plan.frame, nullptr, way), local_growth(s, &local, &plan.frame, way)
    {
    }

    Plan find();

private:
    double worth(int point) const;
    void order_centres();
    void clear();
    int widest_circle(int point) const;
    int base_target(int circle) const;
    bool grow_by_vectors(int centre);
    bool grow_by_rays(int centre);
    std::vector<CommonSight> common_sights(int circle, int other) const;
    int partner(int circle) const;
    bool grow_by_pair(int centre);
    bool grow_by_length(int centre);
    bool build(int centre);
    void join(const Motion &motion);
    void add_choices(const std::vector<Choice> &more)
    {
        plan.choices.insert(plan.choices.end(), more.begin(), more.end());
    }
    bool round();
    bool make_ground();
    bool known(int p) const { return plan.frame.places[(size_t)p].known; }

    const Sightings &s;
    const Way &way;
    const std::vector<Turn> turns; // as given
    Plan plan;
    Frame local;
    Growth ground_growth, local_growth;
    std::vector<int> centres; // the best first
    std::vector<char> tried;  // [points] in a frame of this round
};

// Polar points around a point count most, then rays, lengths and vectors.
double Planner::worth(int p) const
{
    int polar = 0, rays = 0;
    for (const int *c = s.circles_at.begin(p); c != s.circles_at.end(p); c++)
        for (const int *i = s.rays_of.begin(*c); i != s.rays_of.end(*c); i++) {
            rays++;
            polar += std::any_of(s.lengths_at.begin(p), s.lengths_at.end(p),
                                 [&](int l) { return s.lengths[(size_t)l / 2].other(p) == s.rays[(size_t)*i].to; });
        }
    return 10.0 * polar + rays + s.lengths_at.count(p) + 2.0 * s.vectors_at.count(p);
}

void Planner::order_centres()
{
    std::vector<double> value((size_t)s.n_points);
    for (int p = 0; p < s.n_points; p++) value[(size_t)p] = worth(p);
    centres.resize((size_t)s.n_points);
    std::iota(centres.begin(), centres.end(), 0);
    std::stable_sort(centres.begin(), centres.end(), [&](int a, int b) { return value[(size_t)a] > value[(size_t)b]; });
    if (!centres.empty())
        std::rotate(centres.begin(), centres.begin() + way.skip % (long)centres.size(), centres.end());
}

void Planner::clear()
{
    for (const int m : local.members) {
        local.places[(size_t)m] = Place();
        for (const int *c = s.circles_at.begin(m); c != s.circles_at.end(m); c++) local.turns[(size_t)*c] = Turn();
    }
    local.turns[(size_t)s.north] = Turn();
    local.members.clear();
    local.scaled = true;
    local.true_axes = false;
    local_growth.choices.clear();
}

bool Planner::grow_by_vectors(int centre)
{
    if (s.vectors_at.count(centre) == 0) return false;
    local.true_axes = true;
    local.turns[(size_t)s.north].known = local.turns[(size_t)s.north].given = true;
    local_growth.plant(centre, 0.0, 0.0, 0.0);
    local_growth.grow();
    return local.members.size() > 1;
}

int Planner::widest_circle(int p) const
{
    int best = -1, most = 0;
    for (const int *c = s.circles_at.begin(p); c != s.circles_at.end(p); c++) {
        if (s.rays_of.count(*c) <= most) continue;
        best = *c;
        most = s.rays_of.count(*c);
    }
    return best;
}

// The target with most rays of those that look back, else of all; -1 where none has a circle.
int Planner::base_target(int circle) const
{
    const int centre = s.circle_point[(size_t)circle];
    int best = -1, most = 0;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++) {
        const int to = s.rays[(size_t)*i].to, rays = s.rays_from.count(to);
        const bool back = std::any_of(s.rays_from.begin(to), s.rays_from.end(to),
                                      [&](int r) { return s.rays[(size_t)r].to == centre; });
        if ((back ? s.n_points : 0) + rays <= most) continue;
        most = (back ? s.n_points : 0) + rays;
        best = *i;
    }
    return best;
}

// Polar points of the centre; without any, a target at the distance 1 in a frame without scale.
bool Planner::grow_by_rays(int centre)
{
    const int circle = widest_circle(centre);
    if (circle < 0) return false;
    Turn turn;
    turn.known = true;
    local_growth.plant(centre, 0.0, 0.0, 0.0);
    local_growth.orient(circle, turn);
    local_growth.grow();
    if (local.members.size() > 1) return true;
    const int base = base_target(circle);
    if (base < 0) return false;
    local.scaled = false;
    const Ray &r = s.rays[(size_t)base];
    local_growth.plant(r.to, std::cos(r.reading), std::sin(r.reading), 0.0);
    local_growth.grow();
    return local.members.size() > 2;
}

// Of targets that both sight with vertical angles.
std::vector<CommonSight> Planner::common_sights(int circle, int other) const
{
    std::vector<CommonSight> common;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++)
        for (const int *k = s.rays_of.begin(other); k != s.rays_of.end(other); k++) {
            const Ray &a = s.rays[(size_t)*i], &b = s.rays[(size_t)*k];
            if (a.to == b.to && std::isfinite(a.slope) && std::isfinite(b.slope))
                common.push_back({a.reading, a.slope, b.reading, b.slope});
        }
    return common;
}

// The circle of another point with most common targets; -1 without one.
int Planner::partner(int circle) const
{
    std::map<int, int> count;
    for (const int *i = s.rays_of.begin(circle); i != s.rays_of.end(circle); i++) {
        const Ray &a = s.rays[(size_t)*i];
        if (!std::isfinite(a.slope)) continue;
        for (const int *k = s.rays_to.begin(a.to); k != s.rays_to.end(a.to); k++)
            if (s.rays[(size_t)*k].from != a.from && s.rays[(size_t)*k].circle != s.north)
                count[s.rays[(size_t)*k].circle]++;
    }
    const auto most =
        std::max_element(count.begin(), count.end(), [](const auto &a, const auto &b) { return a.second < b.second; });
    return most == count.end() ? -1 : most->first;
}

// Two stations that sight common points and not each other, in a frame without scale.
bool Planner::grow_by_pair(int centre)
{
    const int circle = widest_circle(centre), other = circle < 0 ? -1 : partner(circle);
    const auto pair = other < 0 ? std::nullopt : find_pair(common_sights(circle, other));
    if (!pair) return false;
    Turn first, second;
    first.known = second.known = true;
    second.value = pair->turn;
    local.scaled = false;
    local_growth.plant(centre, 0.0, 0.0, 0.0);
    local_growth.plant(s.circle_point[(size_t)other], pair->x, pair->y, 0.0);
    local_growth.orient(circle, first);
    local_growth.orient(other, second);
    local_growth.grow();
    return local.members.size() > 2;
}

// The end of a length along the first axis.
bool Planner::grow_by_length(int centre)
{
    if (s.lengths_at.count(centre) == 0) return false;
    const Length &l = s.lengths[(size_t)*s.lengths_at.begin(centre) / 2];
    local_growth.plant(centre, 0.0, 0.0, 0.0);
    local_growth.plant(l.other(centre), l.value, 0.0, l.sigma);
    local_growth.grow();
    return true;
}

// Grows a local frame around a centre.
bool Planner::build(int centre)
{
    bool grown = false;
    for (const auto grow :
         {&Planner::grow_by_vectors, &Planner::grow_by_rays, &Planner::grow_by_pair, &Planner::grow_by_length}) {
        clear();
        grown = (this->*grow)(centre);
        if (grown) break;
    }
    if (!grown) return false;
    if (!local.true_axes && find_axes(s, &local, turns)) {
        local_growth.begin_again();
        local_growth.grow();
    }
    return true;
}

// Moves all that the ground does not have into the ground, which goes on from there.
void Planner::join(const Motion &motion)
{
    const double scale = std::hypot(motion.a, motion.b);
    for (const int m : local.members) {
        if (known(m)) continue;
        const Place &at = local.places[(size_t)m];
        double x, y;
        motion.apply(at.x, at.y, &x, &y);
        ground_growth.plant(m, x, y, scale * at.sigma);
    }
    add_choices(local_growth.choices);
    ground_growth.grow();
}

// Local frames around all centres that have no place; true when one was joined.
bool Planner::round()
{
    bool any = false;
    tried.assign((size_t)s.n_points, 0);
    for (const int centre : centres) {
        if (known(centre) || tried[(size_t)centre] || !build(centre)) continue;
        for (const int m : local.members) tried[(size_t)m] = 1;
        const Choice image = s.n_points + centre;
        const bool mirror_first = ((way.choices & 1U) != 0) != way.turned_round(image);
        const std::optional<Motion> motion = find_motion(s, local, plan.frame, mirror_first);
        if (!motion) continue;
        if (motion->guessed) plan.choices.push_back(image);
        join(*motion);
        any = true;
    }
    return any;
}

// The largest of some frames becomes the ground where nothing is given that holds one; a single known point moves it.
bool Planner::make_ground()
{
    Frame best(s);
    const Frame given = std::exchange(plan.frame, Frame(s));
    std::vector<Choice> choices;
    tried.assign((size_t)s.n_points, 0);
    int tries = 0;
    for (const int centre : centres) {
        if (tries == free_tries) break;
        if (tried[(size_t)centre] || !build(centre)) continue;
        tries++;
        for (const int m : local.members) tried[(size_t)m] = 1;
        if (local.members.size() <= best.members.size()) continue;
        best = local;
        choices = local_growth.choices;
    }
    if (best.members.empty()) {
        plan.frame = given;
        return false;
    }
    double dx = 0, dy = 0;
    for (const int m : given.members) {
        dx = given.places[(size_t)m].x - best.places[(size_t)m].x;
        dy = given.places[(size_t)m].y - best.places[(size_t)m].y;
    }
    for (const int m : best.members) best.places[(size_t)m].x += dx, best.places[(size_t)m].y += dy;
    plan.frame = best;
    plan.choices = choices;
    ground_growth.begin_again();
    ground_growth.grow();
    return true;
}

Plan Planner::find()
{
    order_centres();
    const size_t given = plan.frame.members.size(), all = (size_t)s.n_points;
    if (!way.local_first) ground_growth.begin_again();
    if (!way.local_first) ground_growth.grow();
    for (int i = 0; i < most_rounds && plan.frame.members.size() < all && round(); i++) continue;
    if (given <= 1 && plan.frame.members.size() == given && given < all && make_ground())
        for (int i = 0; i < most_rounds && plan.frame.members.size() < all && round(); i++) continue;
    add_choices(ground_growth.choices);
    return std::move(plan);
}

} // namespace

Plan find_plan(const Sightings &s, const Frame &ground, const Way &way) { return Planner(s, ground, way).find(); }

} // namespace vornhost::start
