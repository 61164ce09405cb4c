#include "host/results/plan.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>

#include "host/input/utf8.h"

namespace vornhost {

namespace {

const double turn = 8.0 * std::atan(1.0);

std::optional<double> coordinate(const PointResult &p, int axis)
{
    const std::optional<double> x = p.adjusted[axis] ? p.adjusted[axis] : p.approximate[axis];
    return x && std::isfinite(*x) ? x : std::nullopt;
}

class Planner {
public:
    Planner(const Results &all, Axes the_axes) : results(all), axes(the_axes) {}

    Plan make()
    {
        points();
        size_t i = 0;
        for (const ResidualResult &r : results.residuals) observation(r, i++);
        ellipses();
        plan.magnification = magnification();
        return plan;
    }

private:
    void points();
    void observation(const ResidualResult &r, size_t i);
    void connect(const std::string &from, const std::string &to, const ResidualResult &r, size_t i);
    void ellipses();
    double magnification() const;

    const Results &results;
    const Axes axes;
    Plan plan;
    std::unordered_map<std::string, size_t> places; // in plan.points, by name
    std::map<std::pair<size_t, size_t>, size_t> lines;
};

void Planner::points()
{
    for (size_t i = 0; i < results.points.size(); i++) {
        const std::optional<double> x = coordinate(results.points[i], 0), y = coordinate(results.points[i], 1);
        if (!x || !y) continue;
        const PlanPoint p{i, axes == Axes::yx ? *y : *x, axes == Axes::yx ? *x : *y, coordinate(results.points[i], 2)};
        const bool first = plan.points.empty();
        plan.left = first ? p.right : std::min(plan.left, p.right);
        plan.right = first ? p.right : std::max(plan.right, p.right);
        plan.bottom = first ? p.up : std::min(plan.bottom, p.up);
        plan.top = first ? p.up : std::max(plan.top, p.up);
        places.emplace(results.points[i].name, plan.points.size());
        plan.points.push_back(p);
    }
}

void Planner::connect(const std::string &from, const std::string &to, const ResidualResult &r, size_t i)
{
    const auto a = places.find(from), b = places.find(to);
    if (a == places.end() || b == places.end() || a->second == b->second) return;
    const auto [found, added] = lines.emplace(std::minmax(a->second, b->second), plan.lines.size());
    if (added) plan.lines.push_back({a->second, b->second, {}, std::nullopt, false});
    PlanLine &line = plan.lines[found->second];
    line.observations.push_back(i);
    if (r.normalised) line.worst = std::max(line.worst.value_or(0.0), std::fabs(*r.normalised));
    line.suspicious = line.suspicious || (r.test ? r.test->rejected : r.normal_divided.value_or(false));
}

// An angle lies on two lines.
void Planner::observation(const ResidualResult &r, size_t i)
{
    const std::string &at = results.words_of(r).at;
    connect(at.empty() ? r.from : at, r.to, r, i);
    if (!at.empty()) connect(at, r.from, r, i);
}

// The bearing of a result counts from x towards y.
void Planner::ellipses()
{
    for (size_t i = 0; i < plan.points.size(); i++) {
        const std::optional<EllipseResult> &e = results.points[plan.points[i].point].ellipse[0];
        if (!e || !std::isfinite(e->a) || !(e->a > 0.0)) continue;
        plan.ellipses.push_back({i, e->a, e->b, axes == Axes::yx ? 0.25 * turn - e->bearing : e->bearing});
    }
}

// 1, 2 or 5 times a power of ten, with which the larger ellipses measure a thirtieth of the plan, and less where points
// are dense.
double Planner::magnification() const
{
    if (plan.ellipses.empty()) return 1.0;
    std::vector<double> sizes;
    for (const PlanEllipse &e : plan.ellipses) sizes.push_back(e.a);
    std::nth_element(sizes.begin(), sizes.begin() + (long)(sizes.size() * 4 / 5), sizes.end());
    const double spacing = plan.size() / std::sqrt((double)plan.points.size());
    const double wanted = std::min(plan.size() / 30.0, 0.4 * spacing) / sizes[sizes.size() * 4 / 5];
    const double power = std::pow(10.0, std::floor(std::log10(wanted)));
    return (wanted / power >= 5.0 ? 5.0 : wanted / power >= 2.0 ? 2.0 : 1.0) * power;
}

} // namespace

double Plan::size() const { return std::max({right - left, top - bottom, 1e-3}); }

Plan make_plan(const Results &results, Axes axes) { return Planner(results, axes).make(); }

std::string role_of(const PointResult &point)
{
    const auto has = [&](const char *code) {
        return std::find(std::begin(point.code), std::end(point.code), code) != std::end(point.code);
    };
    if (has("fixed")) return has("free") || has("no_datum") || has("weighted") ? "partly fixed" : "fixed";
    if (has("weighted")) return "weighted";
    return has("no_datum") ? "free, not in the datum" : "free";
}

void ellipse_corner(const Plan &plan, const PlanEllipse &e, int k, int n, double *right, double *up)
{
    const double t = turn * k / n, along = plan.magnification * e.a * std::cos(t),
                 across = plan.magnification * e.b * std::sin(t);
    *right = plan.points[e.at].right + along * std::cos(e.angle) - across * std::sin(e.angle);
    *up = plan.points[e.at].up + along * std::sin(e.angle) + across * std::cos(e.angle);
}

bool is_mapped(const Results &results)
{
    const auto mapped = [](const PointResult &p) {
        return p.map.has_value() || !coordinate(p, 0) || !coordinate(p, 1);
    };
    return results.crs && !results.points.empty() && std::all_of(results.points.begin(), results.points.end(), mapped);
}

MapCorner map_corner(const Results &results, const Plan &plan, const PlanEllipse &ellipse, Axes axes, double right,
                     double up)
{
    const PlanPoint &centre = plan.points[ellipse.at];
    const MapPlace &m = *results.points[centre.point].map;
    double x = up - centre.up, y = right - centre.right;
    if (axes == Axes::xy) std::swap(x, y);
    return {m.longitude + m.longitude_by[0] * x + m.longitude_by[1] * y,
            m.latitude + m.latitude_by[0] * x + m.latitude_by[1] * y};
}

std::string xml_text(const std::string &text)
{
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t length = std::max<size_t>(1, utf8_length(text, at));
        const bool whole = utf8_length(text, at) > 0;
        const std::string c = text.substr(at, length);
        at += length;
        if (!whole)
            out += "?";
        else if (c == "&")
            out += "&amp;";
        else if (c == "<")
            out += "&lt;";
        else if (c == ">")
            out += "&gt;";
        else if ((unsigned char)c[0] >= 32)
            out += c;
    }
    return out;
}

} // namespace vornhost
