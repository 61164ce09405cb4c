#include "adjust/suspects.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

class Search {
public:
    Search(const Model &m, const System &s, const Cofactors &c, const Statistics &st)
        : model(m), system(s), cofactors(c), statistics(st)
    {
    }

    std::vector<Suspect> worst(double limit, const SuspectOptions &options) const;
    void find_effects(std::vector<Suspect> *suspects, const Watch &watch);
    void find_alike(const SuspectOptions &options, std::vector<Suspect> *suspects) const;

private:
    std::vector<int> usable_members(int group) const;
    void add_weighted_row(int row, double *x) const;
    void find_shift(const double *x, Suspect *suspect) const;
    void take_out(const std::vector<double> &x, std::size_t first, std::size_t m, std::size_t n);
    void weigh(std::size_t n);

    const Model &model;
    const System &system;
    const Cofactors &cofactors;
    const Statistics &statistics;
    std::vector<double> left; // [rows][suspects] e - A Q A^T P e, then P times this: columns of P Qvv P
};

std::vector<Suspect> Search::worst(double limit, const SuspectOptions &options) const
{
    const auto size = [&](int r) {
        const double w = options.weight.empty() ? 1.0 : options.weight[system.equations.observation[r]];
        return std::fabs(statistics.rows[r].normalised) / std::sqrt(w);
    };
    std::vector<int> beyond;
    for (int r = 0; r < (int)statistics.rows.size(); r++)
        if (statistics.rows[r].share() >= options.least_share && size(r) > limit) beyond.push_back(r);
    const std::size_t n = std::min((std::size_t)options.most, beyond.size());
    std::partial_sort(beyond.begin(), beyond.begin() + (std::ptrdiff_t)n, beyond.end(),
                      [&](int a, int b) { return size(a) != size(b) ? size(a) > size(b) : a < b; });
    std::vector<Suspect> suspects(n);
    for (std::size_t i = 0; i < n; i++)
        suspects[i].row = beyond[i], suspects[i].error = statistics.rows[beyond[i]].error();
    return suspects;
}

std::vector<int> Search::usable_members(int group) const
{
    std::vector<int> rows;
    for (int r : system.rows.members[group])
        if (system.equations.usable[r]) rows.push_back(r);
    return rows;
}

// A^T P e to a vector over all unknowns.
void Search::add_weighted_row(int row, double *x) const
{
    const Equations &e = system.equations;
    std::vector<int> rows = {row};
    std::vector<double> pe = {statistics.rows[row].weight};
    if (e.group[row] >= 0) {
        rows = usable_members(e.group[row]);
        std::vector<double> l = weighted_covariance(model, e, rows);
        const int n = (int)rows.size();
        cholesky(n, l.data());
        pe.assign(rows.size(), 0.0);
        for (int i = 0; i < n; i++) pe[i] = rows[i] == row;
        forward_substitute(n, l.data(), 1, pe.data());
        back_substitute(n, l.data(), 1, pe.data());
    }
    for (std::size_t i = 0; i < rows.size(); i++)
        for (std::size_t k = e.begin[rows[i]]; k < e.begin[rows[i] + 1]; k++)
            x[e.column[k]] += pe[i] * e.coefficient[k];
}

void Search::find_shift(const double *x, Suspect *suspect) const
{
    for (int p = 0; p < model.n_points; p++) {
        const double *d = x + 3 * (std::size_t)p;
        const double shift = std::fabs(suspect->error) * std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        if (shift > suspect->shift) suspect->shift = shift, suspect->point = p;
    }
}

// Columns first to first + m - 1 of e - A x, of m vectors x.
void Search::take_out(const std::vector<double> &x, std::size_t first, std::size_t m, std::size_t n)
{
    const Equations &e = system.equations;
    const std::size_t size = model.n_unknowns();
    for (int r = 0; r < e.rows(); r++)
        for (std::size_t i = 0; i < m; i++) {
            const double *xi = &x[i * size];
            double sum = 0.0;
            for (std::size_t at = e.begin[r]; at < e.begin[r + 1]; at++) sum += e.coefficient[at] * xi[e.column[at]];
            left[(std::size_t)r * n + first + i] -= sum;
        }
}

// Multiplies all columns by P.
void Search::weigh(std::size_t n)
{
    const Equations &e = system.equations;
    for (int r = 0; r < e.rows(); r++)
        if (e.group[r] < 0)
            for (std::size_t k = 0; k < n; k++) left[(std::size_t)r * n + k] *= statistics.rows[r].weight;
    std::vector<double> part;
    for (int g = 0; g < (int)model.groups.size(); g++) {
        const std::vector<int> rows = usable_members(g);
        if (rows.empty()) continue;
        std::vector<double> l = weighted_covariance(model, e, rows);
        const int m = (int)rows.size();
        cholesky(m, l.data());
        part.clear();
        for (int r : rows) part.insert(part.end(), &left[r * n], &left[r * n] + n);
        forward_substitute(m, l.data(), (int)n, part.data());
        back_substitute(m, l.data(), (int)n, part.data());
        for (int i = 0; i < m; i++) std::copy_n(&part[i * n], n, &left[rows[i] * n]);
    }
}

void Search::find_effects(std::vector<Suspect> *suspects, const Watch &watch)
{
    const std::size_t n = suspects->size();
    const std::size_t at_once = 8; // that solve() takes side by side
    left.assign(system.equations.rows() * n, 0.0);
    for (std::size_t first = 0; first < n && !watch.stopped(); first += at_once) {
        const std::size_t m = std::min(n - first, at_once), size = model.n_unknowns();
        std::vector<double> x(m * size, 0.0);
        for (std::size_t i = 0; i < m; i++) add_weighted_row((*suspects)[first + i].row, &x[i * size]);
        cofactors.multiply((int)m, x.data());
        for (std::size_t i = 0; i < m; i++) {
            Suspect &s = (*suspects)[first + i];
            find_shift(&x[i * size], &s);
            left[s.row * n + first + i] = 1.0;
        }
        take_out(x, first, m, n);
    }
    weigh(n);
}

void Search::find_alike(const SuspectOptions &options, std::vector<Suspect> *suspects) const
{
    const std::size_t n = suspects->size();
    for (std::size_t k = 0; k < n; k++) {
        Suspect &s = (*suspects)[k];
        for (int r = 0; r < (int)statistics.rows.size(); r++) {
            const RowStatistics &other = statistics.rows[r];
            if (r == s.row || !other.controlled() || other.share() < options.least_share) continue;
            const double c = left[r * n + k] / std::sqrt(other.control * statistics.rows[s.row].control);
            if (std::fabs(c) >= options.least_correlation) s.alike.push_back({r, std::fmax(-1.0, std::fmin(1.0, c))});
        }
        std::stable_sort(s.alike.begin(), s.alike.end(), [](const Alike &a, const Alike &b) {
            return std::fabs(a.correlation) > std::fabs(b.correlation);
        });
        if ((int)s.alike.size() > options.most_alike) s.alike.resize(options.most_alike);
    }
}

} // namespace

int tested_rows(const Statistics &statistics, double least_share)
{
    return (int)std::count_if(statistics.rows.begin(), statistics.rows.end(),
                              [&](const RowStatistics &r) { return r.controlled() && r.share() >= least_share; });
}

std::vector<Suspect> find_suspects(const Model &model, const System &system, const Cofactors &cofactors,
                                   const Statistics &statistics, double limit, const SuspectOptions &options,
                                   const Watch &watch)
{
    Search search(model, system, cofactors, statistics);
    std::vector<Suspect> suspects = search.worst(limit, options);
    if (suspects.empty()) return suspects;
    search.find_effects(&suspects, watch);
    search.find_alike(options, &suspects);
    return suspects;
}

} // namespace vornadjust
