#include "host/preparation/start/heights.h"

#include <algorithm>
#include <cmath>
#include <queue>

namespace vornhost::start {

namespace {

namespace va = vornadjust;
using va::Kind;

constexpr double share = 1e-3; // of a length: how badly it may be known
constexpr double times = 3.0;  // standard deviations in a tolerance

struct Step {
    int a, b;
    double rise, sigma; // of b above a
};

// Of a vertical angle over the horizontal distance d, with the bulge of the level and half the usual refraction.
Step vertical_step(const va::Frame &frame, const va::Observation &o, double d)
{
    const double tangent = std::tan(o.value[0]), bulge = d * d / (2.0 * frame.radius);
    const double rise = d * tangent + o.h1 - o.h2 + (frame.curved() ? bulge : 0.0);
    return {o.from, o.to, rise,
            std::hypot(d * o.sigma[0] * (1.0 + tangent * tangent), share * d * tangent, 0.2 * bulge)};
}

std::vector<Step> steps_of(const va::Model &model, const Distances &distances, const std::vector<char> &left_out)
{
    std::vector<Step> steps;
    for (size_t i = 0; i < model.observations.size(); i++) {
        const va::Observation &o = model.observations[i];
        if (!o.use || left_out[i]) continue;
        if (o.kind == Kind::height_difference)
            steps.push_back({o.from, o.to, o.value[0] - (o.h2 - o.h1), standard_deviation(model, o, 0)});
        const int third = model.frame.space == va::Space::heights ? 0 : 2; // component of a baseline
        if (o.kind == Kind::baseline && !model.frame.curved() && va::components(o.kind, model.frame.space) > third)
            steps.push_back({o.from, o.to, o.value[third], standard_deviation(model, o, third)});
        if (o.kind == Kind::difference && o.axis == 2 && (!model.frame.curved() || model.frame.mixed))
            steps.push_back({o.from, o.to, o.value[0], standard_deviation(model, o, 0)});
        if (o.kind != Kind::vertical_angle) continue;
        const double d = distances.between(o.from, o.to);
        if (d > 0.0) steps.push_back(vertical_step(model.frame, o, d));
    }
    return steps;
}

// One after the other: what two observations agree on first, then what is known best.
class Climb {
public:
    Climb(std::vector<Step> all, std::vector<double> known)
        : steps(std::move(all)), height(std::move(known)), sigma(height.size(), 0.0), version(height.size(), 0)
    {
        std::vector<int> ends;
        for (const Step &s : steps) {
            ends.push_back(s.a);
            ends.push_back(s.b);
        }
        at.make((int)height.size(), ends);
    }

    std::vector<double> carry()
    {
        for (int p = 0; p < (int)height.size(); p++)
            if (known(p)) touch(p);
        while (!queue.empty()) {
            const Waiting w = queue.top();
            queue.pop();
            if (!known(w.point) && w.version == version[(size_t)w.point]) look(w);
        }
        return height;
    }

private:
    struct Waiting {
        int rank;
        double sigma;
        int point, version;
        bool operator<(const Waiting &o) const { return rank != o.rank ? rank > o.rank : sigma > o.sigma; }
    };

    bool known(int p) const { return std::isfinite(height[(size_t)p]); }

    void touch(int p)
    {
        for (const int *i = at.begin(p); i != at.end(p); i++) {
            const Step &s = steps[(size_t)*i / 2];
            const int end = s.a == p ? s.b : s.a;
            if (!known(end)) queue.push({0, 0.0, end, ++version[(size_t)end]});
        }
    }

    void look(const Waiting &w);

    const std::vector<Step> steps;
    std::vector<double> height, sigma;
    std::vector<int> version;
    Lists at;
    std::priority_queue<Waiting> queue;
};

void Climb::look(const Waiting &w)
{
    struct Vote {
        double height, sigma;
    };
    std::vector<Vote> votes;
    for (const int *i = at.begin(w.point); i != at.end(w.point); i++) {
        const Step &s = steps[(size_t)*i / 2];
        const int end = s.a == w.point ? s.b : s.a;
        const double sign = s.a == w.point ? -1.0 : 1.0;
        if (known(end)) votes.push_back({height[(size_t)end] + sign * s.rise, std::hypot(s.sigma, sigma[(size_t)end])});
    }
    double best = -1.0, at_height = 0.0, at_sigma = 0.0;
    for (const Vote &v : votes) {
        double sum = 0.0;
        for (const Vote &u : votes) {
            const double q = (u.height - v.height) / (times * std::hypot(u.sigma, v.sigma) + 1e-6);
            sum += 1.0 / (1.0 + q * q);
        }
        if (sum < best || (sum == best && v.sigma >= at_sigma)) continue;
        best = sum, at_height = v.height, at_sigma = v.sigma;
    }
    if (w.rank == 0 && best < 1.8) return queue.push({1, at_sigma, w.point, w.version});
    height[(size_t)w.point] = at_height;
    sigma[(size_t)w.point] = at_sigma;
    touch(w.point);
}

} // namespace

Distances::Distances(const Sightings &sightings, const std::vector<double> &its_x, const std::vector<double> &its_y)
    : s(sightings), x(its_x), y(its_y)
{
}

double Distances::between(int a, int b) const
{
    const double d = std::hypot(x[(size_t)b] - x[(size_t)a], y[(size_t)b] - y[(size_t)a]);
    if (std::isfinite(d)) return d;
    for (const int *i = s.lengths_at.begin(a); i != s.lengths_at.end(a); i++)
        if (s.lengths[(size_t)*i / 2].other(a) == b) return s.lengths[(size_t)*i / 2].value;
    return -1.0;
}

std::vector<double> carry_heights(const va::Model &model, const Distances &distances, const std::vector<double> &known,
                                  const std::vector<char> &left_out)
{
    return Climb(steps_of(model, distances, left_out), known).carry();
}

double height_of(const va::Frame &frame, const double c[3])
{
    if (!frame.curved()) return c[2];
    if (frame.mixed) return c[2] - frame.height;
    const double r = frame.origin_radius() + c[2], across = c[0] * c[0] + c[1] * c[1];
    return c[2] + across / (r + std::sqrt(r * r + across));
}

double third_of(const va::Frame &frame, double x, double y, double height)
{
    if (!frame.curved()) return height;
    if (frame.mixed) return height + frame.height;
    const double r = frame.origin_radius() + height, across = x * x + y * y;
    return height - across / (r + std::sqrt(r * r - across));
}

} // namespace vornhost::start
