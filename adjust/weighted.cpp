#include "adjust/weighted.h"

#include <algorithm>
#include <cmath>

#include "adjust/blocks.h"

namespace vornadjust {

namespace {

// Columns of the estimated unknowns of a row, to `out` where it is given. Returns their number.
int estimated_columns(const Equations &e, const Columns &columns, int row, int *out)
{
    int n = 0;
    for (std::size_t k = e.begin[row]; k < e.begin[row + 1]; k++) {
        const int c = columns.of[e.column[k]];
        if (c < 0) continue;
        if (out) out[n] = c;
        n++;
    }
    return n;
}

// Calls visit(row, columns) for the members of a group, with the columns of all members up to the row.
template <class Visit>
void for_members(const Equations &e, const Columns &columns, const std::vector<int> &members, const Visit &visit)
{
    std::vector<int> all, more, own;
    for (int r : members) {
        own.resize(estimated_columns(e, columns, r, nullptr));
        estimated_columns(e, columns, r, own.data());
        more.clear();
        std::set_union(all.begin(), all.end(), own.begin(), own.end(), std::back_inserter(more));
        all.swap(more);
        visit(r, all);
    }
}

void weigh_alone(const Equations &e, const Columns &columns, int row, WeightedRows *w)
{
    const double weight = e.usable[row] ? e.factor[row] / e.sigma[row] : 0.0;
    std::size_t at = w->begin[row];
    for (std::size_t k = e.begin[row]; k < e.begin[row + 1]; k++)
        if (columns.of[e.column[k]] >= 0) w->coefficient[at++] = weight * e.coefficient[k];
    w->misclosure[row] = weight * e.misclosure[row];
}

// The covariance of some rows of a group.
std::vector<double> covariance_of(const Model &model, const Equations &e, int group, const std::vector<int> &rows)
{
    const Group &g = model.groups[group];
    const int n = (int)rows.size();
    std::vector<double> s((std::size_t)n * n);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++)
            s[(std::size_t)i * n + j] =
                model.covariance[g.first + (std::size_t)e.place[rows[i]] * g.size + e.place[rows[j]]];
    return s;
}

// Rows of a group over the columns of its last one, misclosures in a further column; dense by rows.
std::vector<double> dense_rows(const Equations &e, const Columns &columns, const std::vector<int> &rows,
                               const int *column, int n_columns)
{
    std::vector<double> b(rows.size() * (n_columns + 1), 0.0);
    for (std::size_t i = 0; i < rows.size(); i++) {
        const int r = rows[i];
        double *row = &b[i * (n_columns + 1)];
        for (std::size_t k = e.begin[r]; k < e.begin[r + 1]; k++) {
            const int c = columns.of[e.column[k]];
            if (c >= 0) row[std::lower_bound(column, column + n_columns, c) - column] = e.factor[r] * e.coefficient[k];
        }
        row[n_columns] = e.factor[r] * e.misclosure[r];
    }
    return b;
}

// Returns the row that depends on those before it, where the covariance is not positive definite; otherwise -1.
int weigh_group(const Model &model, const Equations &e, const Columns &columns, int group, WeightedRows *w)
{
    std::vector<int> rows;
    for (int r : w->members[group]) {
        std::fill(w->coefficient.begin() + w->begin[r], w->coefficient.begin() + w->begin[r + 1], 0.0);
        w->misclosure[r] = 0.0;
        if (e.usable[r]) rows.push_back(r);
    }
    if (rows.empty()) return -1;
    const int n = (int)rows.size(), last = w->members[group].back();
    const int *column = w->column.data() + w->begin[last], n_columns = (int)(w->begin[last + 1] - w->begin[last]);

    std::vector<double> l = covariance_of(model, e, group, rows);
    int pivot = 0;
    if (!cholesky(n, l.data(), &pivot)) return rows[pivot];
    std::vector<double> b = dense_rows(e, columns, rows, column, n_columns);
    forward_substitute(n, l.data(), n_columns + 1, b.data());
    for (int i = 0; i < n; i++) {
        const double *row = &b[(std::size_t)i * (n_columns + 1)];
        for (std::size_t k = w->begin[rows[i]]; k < w->begin[rows[i] + 1]; k++)
            w->coefficient[k] = row[std::lower_bound(column, column + n_columns, w->column[k]) - column];
        w->misclosure[rows[i]] = row[n_columns];
    }
    return -1;
}

} // namespace

std::vector<std::vector<int>> group_members(const Model &model, const Equations &e)
{
    std::vector<std::vector<int>> members(model.groups.size());
    for (int r = 0; r < e.rows(); r++)
        if (e.group[r] >= 0) members[e.group[r]].push_back(r);
    for (std::vector<int> &m : members)
        std::sort(m.begin(), m.end(), [&](int a, int b) { return e.place[a] < e.place[b]; });
    return members;
}

WeightedRows weighted_pattern(const Model &model, const Equations &e, const Columns &columns)
{
    WeightedRows w;
    w.members = group_members(model, e);
    w.begin.assign((std::size_t)e.rows() + 1, 0);
    for (int r = 0; r < e.rows(); r++)
        if (e.group[r] < 0) w.begin[r + 1] = estimated_columns(e, columns, r, nullptr);
    for (const std::vector<int> &m : w.members)
        for_members(e, columns, m, [&](int r, const std::vector<int> &list) { w.begin[r + 1] = list.size(); });
    for (int r = 0; r < e.rows(); r++) w.begin[r + 1] += w.begin[r];

    w.column.resize(w.begin.back());
    for (int r = 0; r < e.rows(); r++)
        if (e.group[r] < 0) estimated_columns(e, columns, r, w.column.data() + w.begin[r]);
    for (const std::vector<int> &m : w.members)
        for_members(e, columns, m, [&](int r, const std::vector<int> &list) {
            std::copy(list.begin(), list.end(), w.column.begin() + w.begin[r]);
        });
    w.coefficient.assign(w.column.size(), 0.0);
    w.misclosure.assign(e.rows(), 0.0);
    return w;
}

int weigh(const Model &model, const Equations &e, const Columns &columns, WeightedRows *w, int threads)
{
    in_blocks(threads, e.rows(), [&](int first, int end) {
        for (int r = first; r < end; r++)
            if (e.group[r] < 0) weigh_alone(e, columns, r, w);
    });
    const int groups = (int)w->members.size();
    std::vector<int> bad(groups, -1); // rows
    in_blocks(threads, groups, [&](int first, int end) {
        for (int g = first; g < end; g++) bad[g] = weigh_group(model, e, columns, g, w);
    });
    const auto found = std::find_if(bad.begin(), bad.end(), [](int row) { return row >= 0; });
    w->bad_row = found == bad.end() ? -1 : *found;
    return found == bad.end() ? -1 : (int)(found - bad.begin());
}

std::vector<double> weighted_covariance(const Model &model, const Equations &e, const std::vector<int> &rows)
{
    std::vector<double> s = covariance_of(model, e, e.group[rows[0]], rows);
    const std::size_t n = rows.size();
    for (std::size_t i = 0; i < n; i++)
        for (std::size_t j = 0; j < n; j++) s[i * n + j] /= e.factor[rows[i]] * e.factor[rows[j]];
    return s;
}

bool cholesky(int n, double *a, int *pivot)
{
    for (int j = 0; j < n; j++) {
        double *aj = a + (std::size_t)j * n;
        for (int i = 0; i <= j; i++) {
            const double *ai = a + (std::size_t)i * n;
            double sum = aj[i];
            for (int k = 0; k < i; k++) sum -= aj[k] * ai[k];
            if (i < j) {
                aj[i] = sum / ai[i];
            } else {
                if (!(sum > 1e-14 * aj[j])) { // NaN fails too
                    if (pivot) *pivot = j;
                    return false;
                }
                aj[j] = std::sqrt(sum);
            }
        }
    }
    return true;
}

void forward_substitute(int n, const double *l, int m, double *x)
{
    for (int i = 0; i < n; i++) {
        double *xi = x + (std::size_t)i * m;
        const double *li = l + (std::size_t)i * n;
        for (int k = 0; k < i; k++) {
            const double *xk = x + (std::size_t)k * m;
            for (int c = 0; c < m; c++) xi[c] -= li[k] * xk[c];
        }
        for (int c = 0; c < m; c++) xi[c] /= li[i];
    }
}

void back_substitute(int n, const double *l, int m, double *x)
{
    for (int i = n - 1; i >= 0; i--) {
        double *xi = x + (std::size_t)i * m;
        for (int c = 0; c < m; c++) xi[c] /= l[(std::size_t)i * n + i];
        for (int k = 0; k < i; k++) {
            double *xk = x + (std::size_t)k * m;
            for (int c = 0; c < m; c++) xk[c] -= l[(std::size_t)i * n + k] * xi[c];
        }
    }
}

} // namespace vornadjust
