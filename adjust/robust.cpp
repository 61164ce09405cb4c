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
                               Estimator estimator, Ranks *ranks)
{
    std::vector<double> u(model.observations.size(), 0.0);
    for (int r = 0; r < e.rows(); r++) {
        const int o = e.observation[r];
        if (e.usable[r]) u[o] = std::fmax(u[o], std::fabs(e.misclosure[r]) * factor[o] / e.sigma[r]);
    }
    if (ranks && !ranks->alone()) ranks->sum(u.data(), u.size()); // an observation stands on one of them
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

namespace {

class Reweighting {
public:
    Reweighting(Model *m, const Options &o) : model(*m), options(o), first(m->value)
    {
        for (const Observation &obs : model.observations) factor.push_back(obs.factor);
        result.weight.assign(factor.size(), 1.0);
    }

    Robust run(Estimator estimator);

private:
    void weigh(const std::vector<double> &w);
    bool settle(Estimator estimator);
    void finish();

    Model &model;
    const Options &options;
    const std::vector<double> first; // values
    std::vector<double> factor;      // [observations] of the model
    Robust result;
};

void Reweighting::weigh(const std::vector<double> &w)
{
    for (std::size_t i = 0; i < factor.size(); i++) model.observations[i].factor = factor[i] * std::sqrt(w[i]);
}

// Rounds until the weights stay; false where an adjustment fails.
bool Reweighting::settle(Estimator estimator)
{
    Options values = options;
    values.statistics = false;
    result.settled = false;
    for (int round = 0; round < most_rounds && !result.settled; round++) {
        model.value = first;
        weigh(result.weight);
        result.outcome = adjust(&model, values);
        if (result.outcome.status != Status::adjusted) return false;
        std::vector<double> next = weights_of(model, result.outcome.equations, factor, estimator, options.ranks);
        result.settled = largest_change(next, result.weight) < settled_at;
        result.weight = std::move(next);
    }
    return true;
}

// The run with the last weights.
void Reweighting::finish()
{
    Options last = options;
    last.suspects.weight = result.weight;
    last.a_priori = true; // weights that follow the residuals make their squares small
    model.value = first;
    weigh(result.weight);
    result.outcome = adjust(&model, last);
}

// Danish weights forget what is far off: they begin where Huber's have settled.
Robust Reweighting::run(Estimator estimator)
{
    const bool begun = estimator != Estimator::danish || settle(Estimator::huber);
    if (begun && settle(estimator)) finish();
    weigh(std::vector<double>(factor.size(), 1.0));
    return std::move(result);
}

} // namespace

Robust adjust_robustly(Model *model, const Options &options, Estimator estimator)
{
    return Reweighting(model, options).run(estimator);
}

} // namespace vornadjust
