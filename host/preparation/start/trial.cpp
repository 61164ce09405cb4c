#include "host/preparation/start/trial.h"

#include <algorithm>
#include <cmath>

#include "host/preparation/start/heights.h"
#include "host/preparation/start/slopes.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr int few_steps = 25;    // of the damped adjustment
constexpr double far_off = 20.0; // standard deviations, times the scale of the fit

// Coordinates that are given or observed, NaN where there is neither.
std::vector<double> known_values(const va::Model &model, const Given &given, const std::vector<char> &left_out)
{
    std::vector<double> known(3 * (size_t)model.n_points, NAN);
    for (size_t i = 0; i < model.observations.size(); i++) {
        const va::Observation &o = model.observations[i];
        if (!o.use || left_out[i]) continue;
        if (o.kind == va::Kind::unknown && o.unknown < 3 * model.n_points) known[(size_t)o.unknown] = o.value[0];
        if (o.kind == va::Kind::position) std::copy(o.value, o.value + 3, &known[3 * (size_t)o.from]);
    }
    for (size_t u = 0; u < known.size(); u++) {
        if (given.coordinate[u] == Known::given) known[u] = model.value[u];
        if (given.coordinate[u] == Known::nothing) known[u] = NAN;
    }
    return known;
}

std::vector<double> known_heights(const va::Model &model, const std::vector<double> &known)
{
    std::vector<double> h((size_t)model.n_points, NAN);
    for (size_t p = 0; p < h.size(); p++)
        if (std::isfinite(known[3 * p + 2])) h[p] = height_of(model.frame, &known[3 * p]);
    return h;
}

// The frame of the network with what is known in it.
Frame known_ground(const va::Model &model, const Given &given, const std::vector<double> &known, const Sightings &s)
{
    Frame ground(s);
    ground.true_axes = true;
    for (int p = 0; p < model.n_points; p++) {
        const double x = known[3 * (size_t)p], y = known[3 * (size_t)p + 1];
        if (std::isfinite(x) && std::isfinite(y)) ground.put(p, x, y, 0.0);
    }
    for (size_t c = 0; c < model.setups.size(); c++) {
        if (!given.setup[c]) continue;
        Turn &turn = ground.turns[c];
        turn.known = turn.given = true;
        turn.value = -model.value[(size_t)model.setups[c].first + 2];
    }
    Turn &north = ground.turns[(size_t)s.north];
    north.known = north.given = true;
    return ground;
}

double mean_of(const std::vector<double> &h)
{
    double sum = 0.0, n = 0.0;
    for (const double x : h)
        if (std::isfinite(x)) sum += x, n += 1.0;
    return n > 0.0 ? sum / n : 0.0;
}

void set_plan(const Plan &plan, const Given &given, Trial *t)
{
    for (int p = 0; p < t->model.n_points; p++) {
        const Place &at = plan.frame.places[(size_t)p];
        t->placed[(size_t)p] = at.known;
        if (!at.known && given.wants_plan(p)) t->missing.push_back(p);
        const double x[2] = {at.x, at.y};
        for (int k = 0; k < 2; k++)
            if (at.known && given.at(p, k) == Known::wanted) t->model.value[3 * (size_t)p + (size_t)k] = x[k];
    }
    for (size_t c = 0; c < t->model.setups.size(); c++)
        if (!given.setup[c] && plan.frame.turns[c].known)
            t->model.value[(size_t)t->model.setups[c].first + 2] = -plan.frame.turns[c].value;
}

void set_heights(const std::vector<double> &h, const Given &given, Trial *t)
{
    const double mean = mean_of(h);
    for (int p = 0; p < t->model.n_points; p++) {
        t->levelled[(size_t)p] = std::isfinite(h[(size_t)p]);
        if (given.at(p, 2) != Known::wanted) continue;
        double *c = &t->model.value[3 * (size_t)p];
        c[2] = third_of(t->model.frame, c[0], c[1], t->levelled[(size_t)p] ? h[(size_t)p] : mean);
    }
}

// Observations take part between points that have a place; images do not help.
void select(Trial *t)
{
    const auto there = [&](int p) { return p < 0 || t->placed[(size_t)p]; };
    for (va::Observation &o : t->model.observations) {
        if (o.kind == va::Kind::image) o.use = false;
        if (o.kind == va::Kind::unknown)
            o.use = o.use && (o.unknown >= 3 * t->model.n_points || there(o.unknown / 3));
        else
            o.use = o.use && there(o.from) && there(o.to) && there(o.third);
    }
}

// What was carried far is off where it meets what is known there: that is not to be taken for a gross error, and so
// everything is pulled together first where anything seems to be one. A large network is left as it is: a few steps
// leave points far out, from where its adjustment finds no way back, and more of them are the adjustment itself.
void adjust(Trial *t)
{
    const std::vector<double> before = t->model.value;
    if (is_large(t->model)) {
        t->fit = measure_fit(t->model);
        return;
    }
    t->fit = settle(&t->model, few_steps, Pull::most);
    if (misfits(*t).empty()) return;
    Trial pulled = *t;
    pulled.model.value = before;
    pulled.fit = settle(&pulled.model, few_steps, Pull::together);
    if (pulled.fit.finite && misfits(pulled).empty()) *t = std::move(pulled);
}

// Of observations that are off in values that are not adjusted: those whose ends agree with all else that is observed
// there. Where what was carried far meets, whole points are off.
std::vector<int> alone_off(const Trial &t, double limit)
{
    const auto &all = t.model.observations;
    std::vector<int> off((size_t)t.model.n_points, 0), seen = off, alone;
    for (size_t i = 0; i < all.size(); i++)
        for (const int p : {all[i].from, all[i].to, all[i].third}) {
            if (p < 0 || !all[i].use) continue;
            seen[(size_t)p]++;
            off[(size_t)p] += t.fit.off[i] > 0.25 * limit;
        }
    const auto agrees = [&](int p) { return p < 0 || (seen[(size_t)p] > 3 && off[(size_t)p] == 1); };
    for (size_t i = 0; i < all.size(); i++)
        if (t.fit.off[i] > limit && agrees(all[i].from) && agrees(all[i].to) && agrees(all[i].third))
            alone.push_back((int)i);
    return alone;
}

// Whether points stay without a height that slope distances may tell.
bool wants_slopes(const Trial &t, const Given &given)
{
    if (t.model.frame.space != va::Space::space || t.model.frame.curved() || is_large(t.model)) return false;
    for (int p = 0; p < t.model.n_points; p++)
        if (!t.levelled[(size_t)p] && given.at(p, 2) == Known::wanted) return true;
    return false;
}

} // namespace

bool is_large(const va::Model &model) { return model.observations.size() > 100000; }

Trial try_way(const va::Model &model, const Given &given, const std::vector<char> &left_out, const Way &way)
{
    const size_t n = (size_t)model.n_points;
    Trial t;
    t.model = model;
    t.way = way;
    t.placed.assign(n, 1);
    t.levelled.assign(n, 0);
    const std::vector<double> nowhere(n, NAN), known = known_values(model, given, left_out);
    const std::vector<double> levels = known_heights(model, known);
    std::vector<double> x(n, NAN), y(n, NAN);
    const Sightings first = sightings_of(model, levels, left_out);
    std::vector<double> heights = carry_heights(model, Distances(first, nowhere, nowhere), levels, left_out);
    if (model.frame.space != va::Space::heights) {
        const Sightings s = sightings_of(model, heights, left_out);
        const Plan plan = find_plan(s, known_ground(model, given, known, s), way);
        set_plan(plan, given, &t);
        t.choices = plan.choices;
        for (size_t p = 0; p < n; p++)
            if (t.placed[p]) x[p] = plan.frame.places[p].x, y[p] = plan.frame.places[p].y;
        heights = carry_heights(model, Distances(s, x, y), levels, left_out);
    }
    set_heights(heights, given, &t);
    select(&t);
    Trial raised;
    const bool slopes = wants_slopes(t, given);
    if (slopes) raised = t;
    adjust(&t);
    if (!slopes || !raise_by_slopes(given, &raised)) return t;
    adjust(&raised);
    return raised.fit.finite && raised.fit.loss < t.fit.loss ? raised : t;
}

std::vector<int> misfits(const Trial &t)
{
    std::vector<int> all;
    const double limit = far_off * t.fit.scale;
    if (!t.fit.ended && is_large(t.model)) return alone_off(t, 10.0 * limit);
    for (int i = 0; i < (int)t.fit.off.size(); i++)
        if (t.fit.off[(size_t)i] > limit) all.push_back(i);
    return all;
}

} // namespace vornhost::start
