#include "host/preparation/closures/misclosure.h"

#include <algorithm>
#include <cmath>

#include "host/results/test_limits.h"

namespace vornhost::closures {

namespace {

namespace va = vornadjust;

const double turn = 8.0 * std::atan(1.0);

double covariance(const va::Model &model, const Part &a, const Part &b)
{
    const va::Observation &o = model.observations[(size_t)a.observation],
                          &p = model.observations[(size_t)b.observation];
    if (o.group < 0) {
        const bool same = a.observation == b.observation && a.component == b.component;
        return same ? o.sigma[a.component] * o.sigma[a.component] : 0.0;
    }
    const va::Group &g = model.groups[(size_t)o.group];
    const size_t row = (size_t)o.place + (size_t)a.component, column = (size_t)p.place + (size_t)b.component;
    return model.covariance[g.first + row * (size_t)g.size + column];
}

// w' C^-1 w by a Cholesky factor; not above 0 where C is not positive definite.
double square(const Sum &s)
{
    double l[3][3] = {}, y[3] = {}, square = 0.0;
    for (int i = 0; i < s.n; i++) {
        for (int j = 0; j <= i; j++) {
            double x = s.c[i][j];
            for (int k = 0; k < j; k++) x -= l[i][k] * l[j][k];
            if (i == j && !(x > 1e-12 * s.c[i][i])) return -1.0;
            l[i][j] = i == j ? std::sqrt(x) : x / l[j][j];
        }
        y[i] = s.w[i];
        for (int k = 0; k < i; k++) y[i] -= l[i][k] * y[k];
        y[i] /= l[i][i];
        square += y[i] * y[i];
    }
    return square;
}

// Smallest standard deviation along an axis, for a misclosure of nothing.
double least_deviation(const Sum &s)
{
    double least = s.c[0][0];
    for (int k = 1; k < s.n; k++) least = std::min(least, s.c[k][k]);
    return std::sqrt(least);
}

} // namespace

bool judge(const Sum &sum, double *misclosure, double *limit)
{
    static const double most[4] = {0, chi_square_limit(probability, 1), chi_square_limit(probability, 2),
                                   chi_square_limit(probability, 3)};
    const double q = square(sum);
    const double length = sum.n == 1 ? std::fabs(sum.w[0]) : std::hypot(sum.w[0], sum.w[1], sum.w[2]);
    *misclosure = sum.n == 1 ? sum.w[0] : length;
    *limit = q > 0.0 ? length * std::sqrt(most[sum.n] / q) : least_deviation(sum) * std::sqrt(most[sum.n]);
    return q >= 0.0 && std::isfinite(*limit) && std::isfinite(length) && *limit > 0.0;
}

void add_covariances(const va::Model &model, std::vector<Part> *all, Sum *sum)
{
    std::vector<Part> &parts = *all;
    const auto group = [&](const Part &p) { return model.observations[(size_t)p.observation].group; };
    const auto before = [&](const Part &a, const Part &b) {
        const int g = group(a), h = group(b);
        return g != h ? g < h : g < 0 && a.observation < b.observation;
    };
    std::sort(parts.begin(), parts.end(), before);
    // Parts of one group, or of one observation without one, are correlated with each other alone.
    for (auto first = parts.begin(), last = first; first != parts.end(); first = last) {
        last = std::upper_bound(first, parts.end(), *first, before);
        for (auto a = first; a != last; ++a)
            for (auto b = first; b != last; ++b) {
                const double c = covariance(model, *a, *b);
                for (int i = 0; i < sum->n; i++)
                    for (int k = 0; k < sum->n; k++) sum->c[i][k] += a->by[i] * b->by[k] * c;
            }
    }
}

Sum LegGraph::sum(const va::Model &model, const Loop &loop, std::vector<Part> *work) const
{
    Sum s;
    s.n = n;
    std::vector<Part> &parts = *work;
    parts.clear();
    for (const Step &step : loop) {
        const Leg &leg = legs[(size_t)step.link];
        const double sign = step.forward ? 1.0 : -1.0;
        for (int k = 0; k < n; k++) {
            s.w[k] += sign * leg.value[k];
            if (leg.observation[k] < 0) continue;
            Part part = {leg.observation[k], leg.component[k], {0, 0, 0}};
            part.by[k] = k == 0 ? sign * leg.by[0] : sign;
            parts.push_back(part);
        }
        if (leg.second >= 0) parts.push_back({leg.second, 0, {sign * leg.by[1], 0, 0}});
    }
    if (circular) s.w[0] = std::remainder(s.w[0], turn);
    add_covariances(model, &parts, &s);
    return s;
}

std::vector<int> LegGraph::observations(const Loop &loop) const
{
    std::vector<int> all;
    const auto add = [&all](int o) {
        if (o >= 0 && (all.empty() || all.back() != o)) all.push_back(o);
    };
    for (const Step &step : loop) {
        const Leg &leg = legs[(size_t)step.link];
        for (int k = 0; k < n; k++) add(leg.observation[k]);
        add(leg.second);
    }
    return all;
}

} // namespace vornhost::closures
