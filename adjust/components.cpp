#include "adjust/components.h"

#include <cmath>

#include "adjust/weighted.h"

namespace vornadjust {

namespace {

constexpr double no_errors = 1e-8; // v^T P v beside the redundancy

// v^T S^-1 v of the usable rows of each group.
std::vector<double> group_squares(const Model &model, const Equations &e)
{
    std::vector<std::vector<int>> members(model.groups.size());
    for (int r = 0; r < e.rows(); r++)
        if (e.group[r] >= 0 && e.usable[r]) members[e.group[r]].push_back(r);
    std::vector<double> squares(model.groups.size(), 0.0);
    for (std::size_t g = 0; g < members.size(); g++) {
        const std::size_t m = members[g].size();
        std::vector<double> s, v;
        s.reserve(m * m), v.reserve(m);
        for (const int i : members[g]) {
            v.push_back(e.misclosure[i] * e.factor[i]);
            for (const int j : members[g])
                s.push_back(model.covariance[model.groups[g].first + (std::size_t)e.place[i] * model.groups[g].size +
                                             e.place[j]]);
        }
        if (!cholesky((int)m, s.data())) continue;
        forward_substitute((int)m, s.data(), 1, v.data());
        for (const double x : v) squares[g] += x * x;
    }
    return squares;
}

// Standard deviations of a class times f.
void scale(Model *model, const std::vector<int> &of, int c, double f)
{
    std::vector<char> done(model->groups.size(), 0);
    for (std::size_t i = 0; i < of.size(); i++) {
        if (of[i] != c) continue;
        Observation &o = model->observations[i];
        for (double &s : o.sigma) s *= f;
        if (o.group < 0 || done[o.group]) continue;
        done[o.group] = 1;
        const Group &g = model->groups[o.group];
        for (std::size_t k = 0; k < (std::size_t)g.size * g.size; k++) model->covariance[g.first + k] *= f * f;
    }
}

// sqrt((h^-1)_cc / 2) of each estimated class, by the rows of the others struck; none where h is singular.
void find_deviations(const RedundancyTraces &traces, std::vector<Component> *components)
{
    std::vector<int> chosen;
    for (int c = 0; c < traces.count; c++)
        if ((*components)[c].estimated) chosen.push_back(c);
    const int n = (int)chosen.size();
    std::vector<double> l;
    l.reserve((std::size_t)n * n);
    for (const int c : chosen)
        for (const int d : chosen) l.push_back(traces(c, d));
    if (traces.h.empty() || !cholesky(n, l.data())) return;
    for (int i = 0; i < n; i++) {
        std::vector<double> e(n, 0.0);
        e[i] = 1.0;
        forward_substitute(n, l.data(), 1, e.data());
        double inverse = 0.0;
        for (const double x : e) inverse += x * x;
        Component &k = (*components)[chosen[i]];
        k.deviation = k.factor * std::sqrt(0.5 * inverse);
    }
}

} // namespace

std::vector<Component> component_sums(const Model &model, const Outcome &outcome, const std::vector<int> &of, int count)
{
    const Equations &e = outcome.equations;
    std::vector<Component> sums(count);
    const std::vector<double> groups = group_squares(model, e);
    std::vector<char> counted(groups.size(), 0);
    for (int r = 0; r < e.rows(); r++) {
        const int c = of[e.observation[r]];
        if (c < 0 || !e.usable[r]) continue;
        sums[c].rows++;
        sums[c].redundancy += outcome.statistics.rows[r].redundancy;
        const int g = e.group[r];
        if (g < 0) {
            const double w = e.misclosure[r] * e.factor[r] / e.sigma[r];
            sums[c].squares += w * w;
        } else if (!counted[g]) {
            counted[g] = 1;
            sums[c].squares += groups[g];
        }
    }
    return sums;
}

ComponentEstimate estimate_components(Model *model, Outcome *outcome, const Options &options,
                                      const std::vector<int> &of, int count, const ComponentLimits &limits)
{
    ComponentEstimate out;
    std::vector<double> factor(count, 1.0);
    for (int round = 0; round < limits.rounds; round++) {
        out.components = component_sums(*model, *outcome, of, count);
        out.converged = true;
        for (int c = 0; c < count; c++) {
            Component &k = out.components[c];
            k.estimated = k.redundancy >= limits.redundancy && k.squares > no_errors * k.redundancy;
            const double f = k.estimated ? std::sqrt(k.squares / k.redundancy) : 1.0;
            out.converged &= std::fabs(f - 1.0) <= limits.close;
            scale(model, of, c, f);
            factor[c] *= f;
        }
        Options last = options;
        if (out.converged || round + 1 == limits.rounds) last.classes = of, last.class_count = count;
        Outcome next = adjust(model, last);
        out.stopped = next.status != Status::adjusted;
        if (out.stopped) return out;
        *outcome = std::move(next);
        if (out.converged) break;
    }
    for (int c = 0; c < count; c++) out.components[c].factor = factor[c];
    find_deviations(outcome->traces, &out.components);
    return out;
}

} // namespace vornadjust
