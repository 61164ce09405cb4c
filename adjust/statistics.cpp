#include "adjust/statistics.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

const double pi = 3.14159265358979323846;

// Estimated unknowns of a row: their columns and coefficients.
struct SparseRow {
    std::vector<int> column;
    std::vector<double> coefficient;
};

void append(const System &s, int r, SparseRow *row)
{
    for (std::size_t k = s.equations.begin[r]; k < s.equations.begin[r + 1]; k++) {
        const int c = s.columns.of[s.equations.column[k]];
        if (c < 0) continue;
        row->column.push_back(c);
        row->coefficient.push_back(s.equations.coefficient[k]);
    }
}

class RowTests {
public:
    RowTests(const Model &m, const System &s, const Cofactors &c, const Watch &w, Statistics *out)
        : model(m), system(s), cofactors(c), watch(w), result(*out)
    {
    }

    void run();

private:
    void alone(int row);
    void group(const std::vector<int> &members);
    void enter(int row, double weighted_residual, double weighted_cofactor, const RowStatistics &r);
    std::vector<double> covariance(const std::vector<int> &rows) const;
    std::vector<double> adjusted_cofactors(const std::vector<int> &rows) const;

    const Model &model;
    const System &system;
    const Cofactors &cofactors;
    const Watch &watch;
    Statistics &result;
    SparseRow sparse;      // work
    std::vector<double> q; // work
};

void RowTests::run()
{
    const Equations &e = system.equations;
    result.rows.assign(e.rows(), {});
    for (int r = 0; r < e.rows() && !watch.stopped(); r++)
        if (e.group[r] < 0 && e.usable[r]) alone(r);
    for (const std::vector<int> &members : system.rows.members) {
        if (watch.stopped()) return;
        std::vector<int> usable;
        for (int r : members)
            if (e.usable[r]) usable.push_back(r);
        if (!usable.empty()) group(usable);
    }
}

// weighted_residual (P v)_i, weighted_cofactor (P Qvv P)_ii.
void RowTests::enter(int row, double weighted_residual, double weighted_cofactor, const RowStatistics &r)
{
    result.rows[row] = r;
    if (r.redundancy >= least_redundancy && weighted_cofactor > 0.0)
        result.rows[row].normalised = weighted_residual / std::sqrt(weighted_cofactor);
    KindStatistics &kind = result.kinds[(int)model.observations[system.equations.observation[row]].kind];
    kind.rows++;
    kind.squares += r.residual * weighted_residual;
    kind.redundancy += r.redundancy;
}

void RowTests::alone(int row)
{
    const Equations &e = system.equations;
    sparse.column.clear(), sparse.coefficient.clear();
    append(system, row, &sparse);
    const int n = (int)sparse.column.size();
    q.resize((std::size_t)n * n);
    cofactors.block(n, sparse.column.data(), q.data());
    double adjusted = 0.0;
    for (int a = 0; a < n; a++)
        for (int b = 0; b < n; b++)
            adjusted += sparse.coefficient[a] * q[(std::size_t)a * n + b] * sparse.coefficient[b];
    const double s = e.sigma[row] / e.factor[row], p = 1.0 / (s * s);
    RowStatistics r;
    r.residual = e.misclosure[row];
    r.cofactor = std::fmax(0.0, s * s - adjusted);
    r.redundancy = r.cofactor * p;
    enter(row, p * r.residual, p * p * r.cofactor, r);
}

std::vector<double> RowTests::covariance(const std::vector<int> &rows) const
{
    const Equations &e = system.equations;
    const Group &g = model.groups[e.group[rows[0]]];
    std::vector<double> s;
    for (int i : rows)
        for (int j : rows)
            s.push_back(model.covariance[g.first + (std::size_t)e.place[i] * g.size + e.place[j]] / e.factor[i] /
                        e.factor[j]);
    return s;
}

// A Q A^T of the rows of a group.
std::vector<double> RowTests::adjusted_cofactors(const std::vector<int> &rows) const
{
    std::vector<SparseRow> a(rows.size());
    std::vector<int> all;
    for (std::size_t i = 0; i < rows.size(); i++) {
        append(system, rows[i], &a[i]);
        all.insert(all.end(), a[i].column.begin(), a[i].column.end());
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    const std::size_t n = all.size(), m = rows.size();
    std::vector<double> cofactor(n * n), aq(m * n, 0.0), aqa(m * m, 0.0);
    cofactors.block((int)n, all.data(), cofactor.data());
    for (SparseRow &row : a)
        for (int &c : row.column) c = (int)(std::lower_bound(all.begin(), all.end(), c) - all.begin());
    for (std::size_t i = 0; i < m; i++)
        for (std::size_t k = 0; k < a[i].column.size(); k++)
            for (std::size_t j = 0; j < n; j++) aq[i * n + j] += a[i].coefficient[k] * cofactor[a[i].column[k] * n + j];
    for (std::size_t i = 0; i < m; i++)
        for (std::size_t j = 0; j < m; j++)
            for (std::size_t k = 0; k < a[j].column.size(); k++)
                aqa[i * m + j] += aq[i * n + a[j].column[k]] * a[j].coefficient[k];
    return aqa;
}

// P by rows, from the Cholesky factor of the covariance.
std::vector<double> inverse_of(int m, const std::vector<double> &l)
{
    std::vector<double> root((std::size_t)m * m, 0.0), p((std::size_t)m * m, 0.0);
    for (int i = 0; i < m; i++) root[(std::size_t)i * m + i] = 1.0;
    forward_substitute(m, l.data(), m, root.data());
    for (int k = 0; k < m; k++)
        for (int i = 0; i <= k; i++)
            for (int j = 0; j <= k; j++)
                p[(std::size_t)i * m + j] += root[(std::size_t)k * m + i] * root[(std::size_t)k * m + j];
    return p;
}

void RowTests::group(const std::vector<int> &rows)
{
    const std::size_t m = rows.size();
    const std::vector<double> s = covariance(rows), aqa = adjusted_cofactors(rows);
    std::vector<double> l = s;
    if (!cholesky((int)m, l.data())) return;
    const std::vector<double> p = inverse_of((int)m, l);
    for (std::size_t i = 0; i < m; i++) {
        double weighted = 0.0, share = 0.0, weighted_cofactor = p[i * m + i];
        for (std::size_t k = 0; k < m; k++) {
            weighted += p[i * m + k] * system.equations.misclosure[rows[k]];
            share += aqa[i * m + k] * p[k * m + i];
            double pa = 0.0; // (P A Q A^T)_ik
            for (std::size_t h = 0; h < m; h++) pa += p[i * m + h] * aqa[h * m + k];
            weighted_cofactor -= pa * p[k * m + i];
        }
        RowStatistics r;
        r.residual = system.equations.misclosure[rows[i]];
        r.cofactor = std::fmax(0.0, s[i * m + i] - aqa[i * m + i]);
        r.redundancy = 1.0 - share;
        enter(rows[i], weighted, weighted_cofactor, r);
    }
}

// Columns of the coordinates of a point and which axes they are.
int point_columns(const System &s, int point, int columns[3], int axes[3])
{
    int n = 0;
    for (int k = 0; k < 3; k++) {
        const int c = s.columns.of[3 * (std::size_t)point + k];
        if (c >= 0) columns[n] = c, axes[n++] = k;
    }
    return n;
}

const int place_of[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};

// Adds f times cofactors of n by m coordinates, symmetrised, to a covariance.
void add(int n, const int *axes, int m, const int *others, const double *q, double f, Covariance *c)
{
    for (int a = 0; a < n; a++)
        for (int b = 0; b < m; b++) {
            const int i = axes[a], k = others[b];
            (*c)[place_of[i][k]] += (i == k ? 1.0 : 0.5) * f * q[a * m + b];
        }
}

Covariance point_cofactors(const System &s, const Cofactors &cofactors, int point)
{
    int columns[3], axes[3];
    double q[9];
    const int n = point_columns(s, point, columns, axes);
    Covariance c = {};
    if (n == 0) return c;
    cofactors.block(n, columns, q);
    add(n, axes, n, axes, q, 1.0, &c);
    return c;
}

// Of the difference q - p: Qpp + Qqq - Qpq - Qqp.
Covariance pair_cofactors(const System &s, const Cofactors &cofactors, const Statistics &result, int p, int q)
{
    int cp[3], cq[3], ap[3], aq[3];
    double cross[9];
    const int np = point_columns(s, p, cp, ap), nq = point_columns(s, q, cq, aq);
    cofactors.solved(np, cp, nq, cq, cross);
    Covariance c;
    for (int k = 0; k < 6; k++) c[k] = result.points[p][k] + result.points[q][k];
    add(np, ap, nq, aq, cross, -2.0, &c);
    return c;
}

// Full covariance of some unknowns, 0 for held ones.
std::vector<double> joint_cofactors(const System &s, const Cofactors &cofactors, const std::vector<int> &unknowns)
{
    std::vector<int> columns;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < unknowns.size(); i++) {
        if (s.columns.of[unknowns[i]] < 0) continue;
        columns.push_back(s.columns.of[unknowns[i]]);
        places.push_back(i);
    }
    const std::size_t n = columns.size();
    std::vector<double> q(n * n), joint(unknowns.size() * unknowns.size(), 0.0);
    cofactors.solved((int)n, columns.data(), (int)n, columns.data(), q.data());
    for (std::size_t a = 0; a < n; a++)
        for (std::size_t b = 0; b < n; b++)
            joint[places[a] * unknowns.size() + places[b]] = 0.5 * (q[a * n + b] + q[b * n + a]);
    return joint;
}

void scale(double f, std::vector<Covariance> *list)
{
    for (Covariance &c : *list)
        for (double &x : c) x *= f;
}

void deviations(const System &s, const Cofactors &cofactors, Statistics *result)
{
    result->deviation.assign(s.columns.of.size(), 0.0);
    for (int c = 0; c < s.n(); c++) {
        double q;
        cofactors.block(1, &c, &q);
        result->deviation[s.columns.unknown[c]] = result->sigma * std::sqrt(std::fmax(0.0, q));
    }
}

} // namespace

Ellipse ellipse(double qxx, double qxy, double qyy)
{
    const double half = 0.5 * (qxx + qyy), w = 0.5 * std::hypot(qxx - qyy, 2.0 * qxy);
    double bearing = 0.5 * std::atan2(2.0 * qxy, qxx - qyy);
    if (bearing < 0.0) bearing += pi;
    return {std::sqrt(std::fmax(0.0, half + w)), std::sqrt(std::fmax(0.0, half - w)), bearing < pi ? bearing : 0.0};
}

Statistics statistics(const Model &model, const System &system, const Cofactors &cofactors,
                      const StatisticsOptions &options)
{
    Statistics s;
    s.sigma = options.sigma;
    deviations(system, cofactors, &s);
    for (int p = 0; p < model.n_points; p++) s.points.push_back(point_cofactors(system, cofactors, p));
    for (const auto &pair : options.pairs)
        s.pairs.push_back(pair_cofactors(system, cofactors, s, pair.first, pair.second));
    scale(s.sigma * s.sigma, &s.points);
    scale(s.sigma * s.sigma, &s.pairs);
    s.joint = joint_cofactors(system, cofactors, options.joint);
    if (options.residuals) RowTests(model, system, cofactors, options.watch, &s).run();
    return s;
}

} // namespace vornadjust
