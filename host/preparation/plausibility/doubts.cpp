#include "host/preparation/plausibility/doubts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

#include "adjust/linear.h"

namespace vornhost::plausibility {

namespace {

namespace va = vornadjust;
using va::Kind;

const double turn = 8.0 * std::atan(1.0);

bool is_angle(Kind kind)
{
    return kind == Kind::direction || kind == Kind::angle || kind == Kind::azimuth || kind == Kind::bearing ||
           kind == Kind::vertical_angle;
}

bool is_length(Kind kind) { return kind <= Kind::scale_bar; }

// What makes two rows equal.
auto content(const va::Observation &o)
{
    return std::make_tuple((int)o.kind, (int)o.axis, o.from, o.to, o.third, o.setup, o.motion_from, o.motion_to,
                           o.value[0], o.value[1], o.value[2], o.sigma[0], o.h1, o.h2);
}

bool is_compared(const va::Observation &o)
{
    if (!o.use || o.group >= 0 || o.kind == Kind::unknown || o.kind == Kind::image) return false;
    return o.kind != Kind::direction || o.value[0] != 0.0;
}

size_t hash_of(const va::Observation &o)
{
    const std::hash<double> number;
    return ((size_t)o.from * 1000003U + (size_t)o.to) * 31U + (size_t)o.kind + 7U * number(o.value[0]);
}

double computed(const va::Model &model, const va::Observation &o, int component, bool *usable)
{
    double value[3];
    *usable = va::compute(model, o, value) && std::isfinite(value[component]);
    return value[component];
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + (std::ptrdiff_t)(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// What an observation is off by, in the component that is off most; no number where it is not compared.
struct Deviation {
    double by = std::nan("");
    int component = 0;
};

Deviation deviation_of(const va::Model &model, const va::Observation &o)
{
    Deviation d;
    if (!o.use || o.kind == Kind::unknown || o.kind == Kind::image) return d;
    double value[3];
    const bool usable = va::compute(model, o, value);
    for (int k = 0; k < va::components(o.kind, model.frame.space) && usable; k++) {
        const double by = o.value[k] - value[k];
        if (k > 0 && std::fabs(by) <= std::fabs(d.by)) continue;
        d = {is_angle(o.kind) ? std::remainder(by, turn) : by, k};
    }
    return d;
}

// [set-ups] Median of what the directions of each are off.
std::vector<double> offsets_of(const va::Model &model, const std::vector<Deviation> &off)
{
    std::vector<std::vector<double>> by_setup(model.setups.size());
    for (size_t i = 0; i < off.size(); i++) {
        const va::Observation &o = model.observations[i];
        if (o.kind != Kind::direction || !std::isfinite(off[i].by)) continue;
        std::vector<double> &all = by_setup[(size_t)o.setup];
        all.push_back(all.empty() ? off[i].by : all[0] + std::remainder(off[i].by - all[0], turn));
    }
    std::vector<double> offsets(model.setups.size(), 0.0);
    for (size_t s = 0; s < offsets.size(); s++)
        if (!by_setup[s].empty()) offsets[s] = median(by_setup[s]);
    return offsets;
}

// [observations] Directions beside the median of their set-up.
std::vector<Deviation> deviations_of(const va::Model &model)
{
    std::vector<Deviation> off;
    off.reserve(model.observations.size());
    for (const va::Observation &o : model.observations) off.push_back(deviation_of(model, o));
    const std::vector<double> offsets = offsets_of(model, off);
    for (size_t i = 0; i < off.size(); i++) {
        const va::Observation &o = model.observations[i];
        if (o.kind == Kind::direction) off[i].by = std::remainder(off[i].by - offsets[(size_t)o.setup], turn);
    }
    return off;
}

double horizontal(const va::Model &model, const va::Observation &o)
{
    const double *p = &model.value[3 * (size_t)o.from], *q = &model.value[3 * (size_t)o.to];
    return std::hypot(q[0] - p[0], q[1] - p[1]);
}

double largest(const va::Observation &o)
{
    return std::max({std::fabs(o.value[0]), std::fabs(o.value[1]), std::fabs(o.value[2])});
}

// Whether an observation that is off by so much contradicts the coordinates.
bool contradicts(const va::Model &model, const va::Observation &o, double off)
{
    const bool plan = model.frame.space != va::Space::heights;
    if (is_angle(o.kind)) {
        const double across = std::fabs(off) * horizontal(model, o);
        return std::fabs(off) > angle_contradiction && across > least_contradiction;
    }
    double length = largest(o);
    if (o.kind == Kind::height_difference && plan) length = std::max(length, horizontal(model, o));
    return std::fabs(off) > std::max(least_contradiction, share_contradiction * length);
}

// Points whose share of contradicted observations is at least `most_of`, and above that of all other ends of these.
std::vector<Misplaced> misplaced_of(const va::Model &model, const std::vector<Deviation> &off,
                                    const std::vector<Finding> &rows)
{
    constexpr int least = 2;
    constexpr double most_of = 0.6;
    std::vector<int> all((size_t)model.n_points, 0), wrong(all);
    const auto ends = [&](int i) {
        const va::Observation &o = model.observations[(size_t)i];
        return std::array<int, 3>{o.from, o.to, o.third};
    };
    for (size_t i = 0; i < off.size(); i++)
        for (const int p : ends((int)i))
            if (p >= 0 && std::isfinite(off[i].by)) all[(size_t)p]++;
    for (const Finding &f : rows)
        for (const int p : ends(f.observation))
            if (p >= 0) wrong[(size_t)p]++;
    const auto share = [&](int p) { return (double)wrong[(size_t)p] / (double)all[(size_t)p]; };
    std::vector<char> doubtful((size_t)model.n_points, 0);
    for (int p = 0; p < model.n_points; p++) doubtful[(size_t)p] = wrong[(size_t)p] >= least && share(p) >= most_of;
    for (const Finding &f : rows)
        for (const int p : ends(f.observation))
            for (const int q : ends(f.observation))
                if (p >= 0 && q >= 0 && p != q && share(q) >= share(p)) doubtful[(size_t)p] = 0;
    std::vector<Misplaced> points;
    for (int p = 0; p < model.n_points; p++)
        if (doubtful[(size_t)p]) points.push_back({p, wrong[(size_t)p], all[(size_t)p]});
    return points;
}

} // namespace

SigmaRange sigma_range(Kind kind)
{
    if (kind == Kind::azimuth || kind == Kind::bearing) return {0.0, 0.02}; // a tiny one holds a direction
    if (is_angle(kind)) return {1e-8, 0.02};
    if (is_length(kind)) return {1e-7, 1.0};
    if (kind == Kind::height_difference) return {1e-7, 1.0};
    if (kind == Kind::baseline) return {1e-7, 10.0};
    return {0.0, 0.0};
}

std::vector<Finding> find_repeated(const va::Model &model, const std::vector<int> &label)
{
    std::vector<std::pair<size_t, int>> rows; // hashes of the contents
    rows.reserve(model.observations.size());
    for (int i = 0; i < (int)model.observations.size(); i++)
        if (is_compared(model.observations[(size_t)i])) rows.emplace_back(hash_of(model.observations[(size_t)i]), i);
    std::sort(rows.begin(), rows.end());
    std::vector<Finding> findings;
    std::vector<int> firsts; // of one hash, those that repeat none
    for (size_t at = 0; at < rows.size(); at++) {
        const int i = rows[at].second;
        const va::Observation &o = model.observations[(size_t)i];
        if (at == 0 || rows[at].first != rows[at - 1].first) firsts.clear();
        const auto same = std::find_if(firsts.begin(), firsts.end(), [&](int f) {
            return label[(size_t)f] == label[(size_t)i] && content(model.observations[(size_t)f]) == content(o);
        });
        if (same == firsts.end())
            firsts.push_back(i);
        else
            findings.push_back({Doubt::repeated, i, *same, o.value[0], 0});
    }
    std::sort(findings.begin(), findings.end(),
              [](const Finding &a, const Finding &b) { return a.observation < b.observation; });
    return findings;
}

std::vector<Finding> find_strange_sigmas(const va::Model &model)
{
    std::vector<Finding> findings;
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const va::Observation &o = model.observations[(size_t)i];
        const SigmaRange range = sigma_range(o.kind);
        if (!o.use || o.group >= 0 || range.most == 0.0) continue;
        const double s = o.sigma[0], value = std::fabs(o.value[0]);
        const bool small_value = value > 0.0 && value < range.most && value < 0.01 * s;
        if (s > range.most)
            findings.push_back({small_value ? Doubt::exchanged : Doubt::large_sigma, i, -1, s, range.most});
        else if (s < range.least)
            findings.push_back({Doubt::small_sigma, i, -1, s, range.least});
    }
    return findings;
}

Contradictions find_contradicted(const va::Model &model)
{
    const std::vector<Deviation> off = deviations_of(model);
    Contradictions found;
    std::vector<Finding> rows;
    for (size_t i = 0; i < off.size(); i++) {
        const va::Observation &o = model.observations[i];
        if (!std::isfinite(off[i].by)) continue;
        found.compared++;
        const double value = o.value[off[i].component];
        if (contradicts(model, o, off[i].by))
            rows.push_back({Doubt::contradicted, (int)i, -1, value, value - off[i].by});
    }
    found.contradicted = (int)rows.size();
    found.points = misplaced_of(model, off, rows);
    std::vector<char> misplaced((size_t)model.n_points, 0);
    for (const Misplaced &m : found.points) misplaced[(size_t)m.point] = 1;
    const auto lies_wrong = [&](int p) { return p >= 0 && misplaced[(size_t)p]; };
    for (const Finding &f : rows) {
        const va::Observation &o = model.observations[(size_t)f.observation];
        if (!lies_wrong(o.from) && !lies_wrong(o.to) && !lies_wrong(o.third)) found.rows.push_back(f);
    }
    return found;
}

std::vector<Finding> find_horizontal(const va::Model &model)
{
    constexpr double sigmas = 20.0, nearer = 0.1, most = 0.8;
    constexpr size_t least = 3; // steep distances that tell how good the coordinates are
    std::vector<Finding> findings;
    size_t steep = 0, slopes = 0;
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const va::Observation &o = model.observations[(size_t)i];
        if (!o.use || o.kind != Kind::slope_distance || o.group >= 0) continue;
        va::Observation flat = o;
        flat.kind = Kind::horizontal_distance;
        bool usable = false, also = false;
        const double slope = computed(model, o, 0, &usable), across = computed(model, flat, 0, &also);
        if (!usable || !also || !(slope - across > sigmas * o.sigma[0])) continue;
        steep++;
        const double off = std::fabs(o.value[0] - slope), off_flat = std::fabs(o.value[0] - across);
        slopes += off < nearer * off_flat;
        if (off_flat < nearer * off) findings.push_back({Doubt::looks_horizontal, i, -1, o.value[0], slope});
    }
    const bool told = steep >= least && (double)(slopes + findings.size()) >= most * (double)steep;
    if (!told) findings.clear();
    return findings;
}

} // namespace vornhost::plausibility
