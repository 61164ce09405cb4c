#include "adjust/share.h"

namespace vornadjust {

double Share::sum(double x) const
{
    if (ranks) ranks->sum(&x, 1);
    return x;
}

bool Share::any(bool x) const
{
    double found = x;
    if (ranks) ranks->most(&found, 1);
    return found != 0.0;
}

void Share::sum(std::vector<double> *x) const
{
    if (ranks) ranks->sum(x->data(), x->size());
}

Columns columns_of_share(const Model &model, const Equations &own)
{
    std::vector<char> seen((std::size_t)model.n_points, 0);
    for (const int u : own.column)
        if (u < 3 * model.n_points) seen[u / 3] = 1;
    Columns c = columns(model, own);
    int n = 0;
    for (const int u : c.unknown) {
        const bool taken = u >= 3 * model.n_points || seen[u / 3];
        c.of[u] = taken ? n : -1;
        if (taken) c.unknown[n++] = u;
    }
    c.unknown.resize((std::size_t)n);
    return c;
}

// An unknown is owned by the last of the ranks that have it.
Share make_share(const Model &model, const Columns &columns, Ranks *ranks)
{
    Share s;
    s.ranks = ranks;
    if (!ranks) return s;
    const std::size_t all = (std::size_t)model.n_unknowns();
    std::vector<double> count(all, 0.0), owner(all, -1.0);
    for (const int u : columns.unknown) count[u] = 1.0, owner[u] = ranks->own();
    ranks->sum(count.data(), all);
    ranks->most(owner.data(), all);
    s.takes_part.assign(all, 0);
    std::vector<int> which;
    int n = 0;
    for (std::size_t u = 0; u < all; u++) {
        s.takes_part[u] = count[u] > 0.0;
        s.unknowns += s.takes_part[u];
        if (count[u] < 2.0) continue;
        if (columns.of[u] >= 0) s.boundary.push_back(columns.of[u]), which.push_back(n);
        n++;
    }
    for (const int u : columns.unknown) s.own.push_back(owner[u] == ranks->own());
    ranks->set_boundary(n, which);
    return s;
}

void contribute(const Share &share, double *x)
{
    for (std::size_t j = 0; j < share.own.size(); j++)
        if (!share.own[j]) x[j] = 0.0;
}

void gather_values(const Share &share, const Columns &columns, Model *model)
{
    if (!share.shared()) return;
    std::vector<double> value(model->value.size(), 0.0);
    for (int j = 0; j < columns.count(); j++)
        if (share.own[j]) value[columns.unknown[j]] = model->value[columns.unknown[j]];
    share.ranks->sum(value.data(), value.size());
    for (std::size_t u = 0; u < value.size(); u++)
        if (share.takes_part[u]) model->value[u] = value[u];
}

} // namespace vornadjust
