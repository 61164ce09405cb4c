#include "adjust/suspects.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

// A row that is suspect, or like one: its size in the order of the list, its place, its observation, and what else is
// told of it.
struct FoundRow {
    double numbers[6] = {};

    double size() const { return numbers[0]; }
    int place() const { return (int)numbers[1]; }
    int observation() const { return (int)numbers[2]; }
};

class Search {
public:
    Search(const Model &m, const System &s, const Cofactors &c, const Statistics &st, const std::vector<int> &p)
        : model(m), system(s), cofactors(c), statistics(st), place(p)
    {
    }

    std::vector<Suspect> worst(double limit, const SuspectOptions &options);
    void find_effects(std::vector<Suspect> *suspects, const Watch &watch);
    void find_alike(const SuspectOptions &options, std::vector<Suspect> *suspects) const;

private:
    int row_at(int its_place) const;
    int observation_of(const FoundRow &found, int row) const;
    std::vector<int> usable_members(int group) const;
    void add_weighted_row(int row, double *x) const;
    void find_shift(const double *x, Suspect *suspect) const;
    void take_out(const std::vector<double> &x, std::size_t first, std::size_t m, std::size_t n);
    void weigh(std::size_t n);

    const Model &model;
    const System &system;
    const Cofactors &cofactors;
    const Statistics &statistics;
    const std::vector<int> &place;
    std::vector<int> own_row;    // [suspects] or -1 where another rank has it
    std::vector<double> control; // [suspects] of their rows
    std::vector<double> left;    // [rows][suspects] e - A Q A^T P e, then P times this: columns of P Qvv P
};

// The first n in that order of those that the ranks have found. On one rank they are what it has found.
template <class Found, class Order>
void gather_first(const Share &share, std::size_t n, const Order &before, std::vector<Found> *found)
{
    constexpr std::size_t numbers = sizeof(Found) / sizeof(double);
    static_assert(sizeof(Found) == numbers * sizeof(double), "they are summed as numbers");
    std::sort(found->begin(), found->end(), before);
    if (found->size() > n) found->resize(n);
    if (!share.shared()) return;
    std::vector<double> counts(share.ranks->size(), 0.0);
    counts[share.ranks->own()] = (double)found->size();
    share.sum(&counts);
    std::size_t first = 0, all = 0;
    for (int r = 0; r < share.ranks->size(); r++) {
        if (r == share.ranks->own()) first = all;
        all += (std::size_t)counts[r];
    }
    std::vector<double> sum(numbers * all, 0.0);
    for (std::size_t i = 0; i < found->size(); i++)
        std::copy_n((*found)[i].numbers, numbers, &sum[numbers * (first + i)]);
    share.sum(&sum);
    found->resize(all);
    for (std::size_t i = 0; i < all; i++) std::copy_n(&sum[numbers * i], numbers, (*found)[i].numbers);
    std::sort(found->begin(), found->end(), before);
    if (found->size() > n) found->resize(n);
}

bool larger(const FoundRow &a, const FoundRow &b)
{
    return a.size() != b.size() ? a.size() > b.size() : a.place() < b.place();
}

std::vector<Suspect> Search::worst(double limit, const SuspectOptions &options)
{
    const auto size = [&](int r) {
        const double w = options.weight.empty() ? 1.0 : options.weight[system.equations.observation[r]];
        return std::fabs(statistics.rows[r].normalised) / std::sqrt(w);
    };
    std::vector<FoundRow> beyond;
    for (int r = 0; r < (int)statistics.rows.size(); r++) {
        const RowStatistics &s = statistics.rows[r];
        if (s.share() < options.least_share || !(size(r) > limit)) continue;
        beyond.push_back(
            {{size(r), (double)place[r], (double)system.equations.observation[r], s.normalised, s.error(), s.control}});
    }
    gather_first(system.share, (std::size_t)options.most, larger, &beyond);
    std::vector<Suspect> suspects;
    suspects.reserve(beyond.size());
    for (const FoundRow &f : beyond) {
        own_row.push_back(row_at(f.place()));
        control.push_back(f.numbers[5]);
        suspects.push_back({f.place(), observation_of(f, own_row.back()), f.numbers[3], f.numbers[4], 0.0, -1, {}});
    }
    return suspects;
}

// Own row with a place, or -1.
int Search::row_at(int its_place) const
{
    const auto own = std::find(place.begin(), place.end(), its_place);
    return own == place.end() ? -1 : (int)(own - place.begin());
}

// The observation of a row, which is an own one where it is not -1.
int Search::observation_of(const FoundRow &found, int row) const
{
    return row < 0 && system.apart ? -1 : found.observation();
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
        for (std::size_t i = 0; i < m; i++)
            if (own_row[first + i] >= 0) add_weighted_row(own_row[first + i], &x[i * size]);
        system.share.sum(&x);
        cofactors.multiply((int)m, x.data());
        for (std::size_t i = 0; i < m; i++) {
            find_shift(&x[i * size], &(*suspects)[first + i]);
            if (own_row[first + i] >= 0) left[own_row[first + i] * n + first + i] = 1.0;
        }
        take_out(x, first, m, n);
    }
    weigh(n);
}

void Search::find_alike(const SuspectOptions &options, std::vector<Suspect> *suspects) const
{
    const std::size_t n = suspects->size();
    for (std::size_t k = 0; k < n; k++) {
        std::vector<FoundRow> alike;
        for (int r = 0; r < (int)statistics.rows.size(); r++) {
            const RowStatistics &other = statistics.rows[r];
            if (r == own_row[k] || !other.controlled() || other.share() < options.least_share) continue;
            const double found = left[r * n + k] / std::sqrt(other.control * control[k]);
            const double c = std::fmax(-1.0, std::fmin(1.0, found));
            if (std::fabs(c) >= options.least_correlation)
                alike.push_back({{std::fabs(c), (double)place[r], (double)system.equations.observation[r], c}});
        }
        gather_first(system.share, (std::size_t)options.most_alike, larger, &alike);
        for (const FoundRow &f : alike)
            (*suspects)[k].alike.push_back({f.place(), observation_of(f, row_at(f.place())), f.numbers[3]});
    }
}

} // namespace

int tested_rows(const Statistics &statistics, double least_share)
{
    return (int)std::count_if(statistics.rows.begin(), statistics.rows.end(),
                              [&](const RowStatistics &r) { return r.controlled() && r.share() >= least_share; });
}

std::vector<Suspect> find_suspects(const Model &model, const System &system, const Cofactors &cofactors,
                                   const Statistics &statistics, const std::vector<int> &place, double limit,
                                   const SuspectOptions &options, const Watch &watch)
{
    Search search(model, system, cofactors, statistics, place);
    std::vector<Suspect> suspects = search.worst(limit, options);
    if (suspects.empty()) return suspects;
    search.find_effects(&suspects, watch);
    search.find_alike(options, &suspects);
    return suspects;
}

} // namespace vornadjust
