#include "adjust/robust.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

constexpr int most_rounds = 200;
constexpr double settled_at = 1e-4; // change of weights

double weight_of(Estimator estimator, double u)
{
    const double k = estimator == Estimator::huber ? 1.5 : estimator == Estimator::danish ? 2.0 : 0.05;
    if (u <= k) return 1.0;
    return estimator == Estimator::danish ? std::exp(1.0 - u * u / (k * k)) : k / u;
}

// Weights by the residuals of a run.
std::vector<double> weights_of(const Model &model, const Equations &e, const std::vector<double> &factor,
                               Estimator estimator)
{
    std::vector<double> u(model.observations.size(), 0.0);
    for (int r = 0; r < e.rows(); r++) {
        const int o = e.observation[r];
        if (e.usable[r]) u[o] = std::fmax(u[o], std::fabs(e.misclosure[r]) * factor[o] / e.sigma[r]);
    }
    std::vector<double> w;
    w.reserve(u.size());
    for (double x : u) w.push_back(std::fmax(1e-12, weight_of(estimator, x)));
    if (estimator != Estimator::least_absolute || w.empty()) return w;
    std::vector<double> sorted = w;
    const auto middle = sorted.begin() + (std::ptrdiff_t)(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    for (double &x : w) x /= *middle;
    return w;
}

double largest_change(const std::vector<double> &a, const std::vector<double> &b)
{
    double most = 0.0;
    for (std::size_t i = 0; i < a.size(); i++) most = std::fmax(most, std::fabs(a[i] - b[i]) / std::fmax(1.0, a[i]));
    return most;
}

} // namespace

Robust adjust_robustly(Model *model, const Options &options, Estimator estimator)
{
    const std::vector<double> first = model->value;
    std::vector<double> factor;
    for (const Observation &o : model->observations) factor.push_back(o.factor);
    const auto weigh = [&](const std::vector<double> &w) {
        for (std::size_t i = 0; i < factor.size(); i++) model->observations[i].factor = factor[i] * std::sqrt(w[i]);
    };
    Robust r;
    r.weight.assign(factor.size(), 1.0);
    Options values = options;
    values.statistics = false;
    r.settled = false;
    for (int round = 0; round < most_rounds && !r.settled; round++) {
        model->value = first;
        weigh(r.weight);
        r.outcome = adjust(model, values);
        if (r.outcome.status != Status::adjusted) break;
        std::vector<double> next = weights_of(*model, r.outcome.equations, factor, estimator);
        r.settled = largest_change(next, r.weight) < settled_at;
        r.weight = std::move(next);
    }
    if (r.outcome.status == Status::adjusted && options.statistics) {
        Options last = options;
        last.suspects.weight = r.weight;
        last.a_priori = true; // weights that follow the residuals make their squares small
        model->value = first;
        weigh(r.weight);
        r.outcome = adjust(model, last);
    }
    weigh(std::vector<double>(factor.size(), 1.0));
    return r;
}

} // namespace vornadjust
