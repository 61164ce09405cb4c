#include "adjust/statistics.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include "adjust/blocks.h"
#include "adjust/small_svd.h"
#include "adjust/tree.h"

namespace vornadjust {

namespace {

const double pi = 3.14159265358979323846;

// Estimated unknowns of a row: their columns and coefficients.
struct SparseRow {
    std::vector<int> column;
    std::vector<double> coefficient;
};

// Points in the order in which their first coordinate is eliminated, those without an estimated one last.
std::vector<int> points_along(const Model &model, const System &s)
{
    std::vector<char> listed(model.n_points, 0);
    std::vector<int> points;
    points.reserve(model.n_points);
    const auto list = [&](int p) {
        if (listed[p]) return;
        listed[p] = 1;
        points.push_back(p);
    };
    for (const int c : s.symbolic.unknown)
        if (s.columns.unknown[c] < 3 * model.n_points) list(s.columns.unknown[c] / 3);
    for (int p = 0; p < model.n_points; p++) list(p);
    return points;
}

void append(const System &s, int r, SparseRow *row)
{
    for (std::size_t k = s.equations.begin[r]; k < s.equations.begin[r + 1]; k++) {
        const int c = s.columns.of[s.equations.column[k]];
        if (c < 0) continue;
        row->column.push_back(c);
        row->coefficient.push_back(s.equations.coefficient[k]);
    }
}

// Rows that share weights, with the cofactors of what they see.
struct Bundle {
    std::vector<int> rows;     // [m] of the equations
    std::vector<SparseRow> a;  // [m] columns by their place in `columns`
    std::vector<int> columns;  // [n] ascending
    std::vector<double> aq;    // [m][n] A Q
    std::vector<double> p;     // [m][m]
    std::vector<double> p_aqa; // [m][m] P A Q A^T
    std::vector<double> aqa;   // [m][m] A Q A^T

    std::size_t m() const { return rows.size(); }

    // Element (i, k) of P Qvv P = P - P A Q A^T P.
    double control(std::size_t i, std::size_t k) const
    {
        double sum = p[i * m() + k];
        for (std::size_t h = 0; h < m(); h++) sum -= p_aqa[i * m() + h] * p[h * m() + k];
        return sum;
    }
};

class RowTests {
public:
    RowTests(const Model &m, const System &s, const Cofactors &c, const StatisticsOptions &o, Statistics *out)
        : model(m), system(s), cofactors(c), watch(o.watch), threads(o.threads), together(o.together), place(o.place),
          result(*out)
    {
    }

    void run();

private:
    void find_bundles();
    struct Work {
        SparseRow sparse;
        std::vector<double> q, dx;
    };

    void alone(int row, Work *work);
    void group(const std::vector<int> &members);
    void enter(int row, double weighted_residual, const RowStatistics &r);
    void add_to_kind(int row, double weighted_residual);
    std::vector<int> usable_members(int group) const;
    void append_other_axes(int row, SparseRow *a) const;
    double own_shift(int row, const std::vector<int> &columns, const double *dx) const;
    void find_cofactors(Bundle *b) const;
    void test_together(const Bundle &b);
    void test(const Bundle &b, const std::vector<std::size_t> &members, JointStatistics *joint) const;

    const Model &model;
    const System &system;
    const Cofactors &cofactors;
    const Watch &watch;
    const int threads;
    const std::vector<std::vector<int>> &together;
    const std::vector<int> &place;
    Statistics &result;
    std::vector<int> bundle_of;   // [rows] which of the observations tested together, or -1
    std::vector<double> weighted; // [rows] weighted residuals (P v)_i of members of groups, 0 where there is no test
};

// Which rows are tested together.
void RowTests::find_bundles()
{
    const Equations &e = system.equations;
    std::vector<int> of(model.observations.size(), -1);
    for (std::size_t b = 0; b < together.size(); b++)
        for (int o : together[b]) of[o] = (int)b;
    bundle_of.assign(e.rows(), -1);
    result.together.assign(together.size(), {});
    for (int r = 0; r < e.rows(); r++) {
        if (!e.usable[r] || of[e.observation[r]] < 0) continue;
        bundle_of[r] = of[e.observation[r]];
        JointStatistics &joint = result.together[bundle_of[r]];
        if (joint.rows++ == 0) joint.first = place[r];
    }
}

std::vector<int> RowTests::usable_members(int group) const
{
    std::vector<int> usable;
    for (int r : system.rows.members[group])
        if (system.equations.usable[r]) usable.push_back(r);
    return usable;
}

// Rows and groups are tested by all threads; sums over them are made in their order.
void RowTests::run()
{
    const Equations &e = system.equations;
    const int n_groups = (int)system.rows.members.size();
    result.rows.assign(e.rows(), {});
    if (n_groups > 0) weighted.assign(e.rows(), 0.0);
    find_bundles();
    in_blocks(threads, e.rows(), [&](int first, int end) {
        Work work;
        for (int r = first; r < end && !watch.stopped(); r++)
            if (e.group[r] < 0 && e.usable[r]) alone(r, &work);
    });
    in_blocks(threads, n_groups, [&](int first, int end) {
        for (int g = first; g < end && !watch.stopped(); g++) group(usable_members(g));
    });
    std::vector<std::vector<int>> apart(together.size()); // rows without correlation that are tested together
    for (int r = 0; r < e.rows() && !watch.stopped(); r++) {
        if (e.group[r] >= 0 || !e.usable[r]) continue;
        add_to_kind(r, result.rows[r].weight * result.rows[r].residual);
        if (bundle_of[r] >= 0) apart[bundle_of[r]].push_back(r);
    }
    for (int g = 0; g < n_groups && !watch.stopped(); g++)
        for (const int r : usable_members(g))
            if (result.rows[r].weight > 0.0) add_to_kind(r, weighted[r]);
    for (const std::vector<int> &rows : apart) {
        if (rows.empty() || watch.stopped()) continue;
        Bundle b;
        b.rows = rows;
        b.p.assign(rows.size() * rows.size(), 0.0);
        for (std::size_t i = 0; i < rows.size(); i++) b.p[i * rows.size() + i] = result.rows[rows[i]].weight;
        find_cofactors(&b);
        test_together(b);
    }
}

// weighted_residual (P v)_i.
void RowTests::enter(int row, double weighted_residual, const RowStatistics &r)
{
    result.rows[row] = r;
    if (r.controlled()) result.rows[row].normalised = weighted_residual / std::sqrt(r.control);
}

void RowTests::add_to_kind(int row, double weighted_residual)
{
    const RowStatistics &r = result.rows[row];
    KindStatistics &kind = result.kinds[(int)model.observations[system.equations.observation[row]].kind];
    kind.rows++;
    kind.squares += r.residual * weighted_residual;
    kind.redundancy += r.redundancy;
}

// Largest shift of a point that the row sees, by those of its coordinates that are among the columns.
//   dx  corrections of the columns
double RowTests::own_shift(int row, const std::vector<int> &columns, const double *corrections) const
{
    const Equations &e = system.equations;
    double most = 0.0;
    int point = -1;
    for (std::size_t k = e.begin[row]; k < e.begin[row + 1] && e.column[k] < 3 * model.n_points; k++) {
        if (e.column[k] / 3 == point) continue;
        point = e.column[k] / 3;
        double squares = 0.0;
        for (int u = 3 * point; u < 3 * point + 3; u++) {
            const auto at = std::lower_bound(columns.begin(), columns.end(), system.columns.of[u]);
            if (system.columns.of[u] < 0 || at == columns.end() || *at != system.columns.of[u]) continue;
            const double d = corrections[at - columns.begin()];
            squares += d * d;
        }
        most = std::fmax(most, squares);
    }
    return std::sqrt(most);
}

// Observed coordinates see one axis of their point: the others, which they shift too.
void RowTests::append_other_axes(int row, SparseRow *a) const
{
    const Observation &o = model.observations[system.equations.observation[row]];
    if (o.kind != Kind::unknown || o.unknown >= 3 * model.n_points || a->column.empty()) return;
    const double own = a->coefficient[0];
    a->column.clear(), a->coefficient.clear();
    for (int u = o.unknown / 3 * 3, end = u + 3; u < end; u++) {
        if (system.columns.of[u] < 0) continue;
        a->column.push_back(system.columns.of[u]);
        a->coefficient.push_back(u == o.unknown ? own : 0.0);
    }
}

void RowTests::alone(int row, Work *work)
{
    SparseRow &sparse = work->sparse;
    std::vector<double> &q = work->q, &dx = work->dx;
    const Equations &e = system.equations;
    sparse.column.clear(), sparse.coefficient.clear();
    append(system, row, &sparse);
    append_other_axes(row, &sparse);
    const int n = (int)sparse.column.size();
    q.resize((std::size_t)n * n);
    dx.assign(n, 0.0);
    cofactors.block(n, sparse.column.data(), q.data());
    const double s = e.sigma[row] / e.factor[row], p = 1.0 / (s * s);
    double adjusted = 0.0;
    for (int a = 0; a < n; a++) {
        for (int b = 0; b < n; b++) dx[a] += q[(std::size_t)a * n + b] * sparse.coefficient[b];
        adjusted += sparse.coefficient[a] * dx[a];
    }
    RowStatistics r;
    r.residual = e.misclosure[row];
    r.cofactor = std::fmax(0.0, s * s - adjusted);
    r.redundancy = r.cofactor * p;
    r.weight = p;
    r.control = p * r.redundancy;
    r.effect = p * own_shift(row, sparse.column, dx.data());
    enter(row, p * r.residual, r);
}

// All of a bundle that has its rows and weights.
void RowTests::find_cofactors(Bundle *b) const
{
    const std::size_t m = b->m();
    b->a.resize(m);
    std::vector<int> &all = b->columns;
    for (std::size_t i = 0; i < m; i++) {
        append(system, b->rows[i], &b->a[i]);
        all.insert(all.end(), b->a[i].column.begin(), b->a[i].column.end());
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    const std::size_t n = all.size();
    std::vector<double> cofactor(n * n);
    b->aq.assign(m * n, 0.0), b->aqa.assign(m * m, 0.0), b->p_aqa.assign(m * m, 0.0);
    cofactors.block((int)n, all.data(), cofactor.data());
    for (SparseRow &row : b->a)
        for (int &c : row.column) c = (int)(std::lower_bound(all.begin(), all.end(), c) - all.begin());
    for (std::size_t i = 0; i < m; i++)
        for (std::size_t k = 0; k < b->a[i].column.size(); k++)
            for (std::size_t j = 0; j < n; j++)
                b->aq[i * n + j] += b->a[i].coefficient[k] * cofactor[b->a[i].column[k] * n + j];
    for (std::size_t i = 0; i < m; i++)
        for (std::size_t j = 0; j < m; j++)
            for (std::size_t k = 0; k < b->a[j].column.size(); k++)
                b->aqa[i * m + j] += b->aq[i * n + b->a[j].column[k]] * b->a[j].coefficient[k];
    for (std::size_t i = 0; i < m; i++)
        for (std::size_t h = 0; h < m; h++)
            for (std::size_t k = 0; k < m; k++) b->p_aqa[i * m + k] += b->p[i * m + h] * b->aqa[h * m + k];
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
    if (m == 0) return;
    const std::vector<double> s = weighted_covariance(model, system.equations, rows);
    std::vector<double> l = s;
    if (!cholesky((int)m, l.data())) return;
    Bundle b;
    b.rows = rows;
    b.p = inverse_of((int)m, l);
    find_cofactors(&b);
    const std::size_t n = b.columns.size();
    for (std::size_t i = 0; i < m; i++) {
        double share = 0.0;
        std::vector<double> dx(n, 0.0); // Q A^T P e
        for (std::size_t k = 0; k < m; k++) {
            const double p = b.p[k * m + i];
            weighted[rows[i]] += p * system.equations.misclosure[rows[k]];
            share += b.aqa[i * m + k] * p;
            for (std::size_t j = 0; j < n; j++) dx[j] += b.aq[k * n + j] * p;
        }
        RowStatistics r;
        r.residual = system.equations.misclosure[rows[i]];
        r.cofactor = std::fmax(0.0, s[i * m + i] - b.aqa[i * m + i]);
        r.redundancy = 1.0 - share;
        r.weight = b.p[i * m + i];
        r.control = std::fmax(0.0, b.control(i, i));
        r.effect = own_shift(rows[i], b.columns, dx.data());
        enter(rows[i], weighted[rows[i]], r);
    }
    test_together(b);
}

// The tests of those observations whose rows stand in the bundle.
void RowTests::test_together(const Bundle &b)
{
    std::map<int, std::vector<std::size_t>> members;
    for (std::size_t i = 0; i < b.m(); i++)
        if (bundle_of[b.rows[i]] >= 0) members[bundle_of[b.rows[i]]].push_back(i);
    for (const auto &[which, of] : members) test(b, of, &result.together[which]);
}

// Cofactors are scaled by the roots of the weights: their elements are shares of control.
void RowTests::test(const Bundle &b, const std::vector<std::size_t> &members, JointStatistics *joint) const
{
    const int n = (int)members.size();
    Dense control(n, n);
    std::vector<double> misfit(n, 0.0);
    for (int i = 0; i < n; i++) {
        const double root = std::sqrt(b.p[members[i] * b.m() + members[i]]);
        for (std::size_t k = 0; k < b.m(); k++)
            misfit[i] += b.p[members[i] * b.m() + k] * system.equations.misclosure[b.rows[k]] / root;
        for (int k = 0; k < n; k++)
            control(i, k) = b.control(members[i], members[k]) / root / std::sqrt(b.p[members[k] * b.m() + members[k]]);
    }
    const SmallSvd svd = small_svd(control);
    joint->rank = count_from(svd.s, least_redundancy);
    for (int j = 0; j < joint->rank; j++) {
        double along = 0.0;
        for (int i = 0; i < n; i++) along += svd.v(i, j) * misfit[i];
        joint->squares += along * along / svd.s[j];
    }
}

// Estimated coordinates of a point and which axes they are.
int point_unknowns(const System &s, int point, int unknowns[3], int axes[3])
{
    int n = 0;
    for (int k = 0; k < 3; k++)
        if (s.takes_part(3 * point + k)) unknowns[n] = 3 * point + k, axes[n++] = k;
    return n;
}

// Whether a column counts on this rank.
bool is_own(const System &s, int column) { return !s.share.shared() || s.share.own[column]; }

// Columns of the coordinates of a point that this rank has, and which axes they are.
int point_columns(const System &s, int point, int columns[3], int axes[3])
{
    const int n = point_unknowns(s, point, columns, axes);
    for (int k = 0; k < n; k++) columns[k] = s.columns.of[columns[k]];
    return n > 0 && columns[0] < 0 ? 0 : n; // all of them or none
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
    if (n == 0 || !is_own(s, columns[0])) return c;
    cofactors.block(n, columns, q);
    add(n, axes, n, axes, q, 1.0, &c);
    return c;
}

// Of the difference q - p: Qpp + Qqq - Qpq - Qqp.
Covariance pair_cofactors(const System &s, const Cofactors &cofactors, const Statistics &result, int p, int q)
{
    int cp[3], cq[3], ap[3], aq[3];
    double cross[9];
    const int np = point_unknowns(s, p, cp, ap), nq = point_unknowns(s, q, cq, aq);
    cofactors.solved(np, cp, nq, cq, cross);
    Covariance c;
    for (int k = 0; k < 6; k++) c[k] = result.points[p][k] + result.points[q][k];
    add(np, ap, nq, aq, cross, -2.0, &c);
    return c;
}

// The same of two points in the plan (heights: in z) without a solve. False where the rows between them do not tie
// these coordinates, such as a height difference in space.
bool neighbour_cofactors(const System &s, bool heights, const Cofactors &cofactors, const Statistics &result, int p,
                         int q, Covariance *c)
{
    int columns[6], axes[6];
    double all[36], cross[9];
    const auto wanted = [&](int point, int *unknowns, int *its_axes) {
        const int n = point_unknowns(s, point, unknowns, its_axes);
        return heights || n == 0 || its_axes[n - 1] < 2 ? n : n - 1;
    };
    const int np = wanted(p, columns, axes), nq = wanted(q, columns + np, axes + np), n = np + nq;
    for (int k = 0; k < n; k++) columns[k] = s.columns.of[columns[k]];
    if (!cofactors.find(n, columns, all)) return false;
    for (int i = 0; i < np; i++)
        for (int j = 0; j < nq; j++) cross[i * nq + j] = all[i * n + np + j];
    for (int k = 0; k < 6; k++) (*c)[k] = result.points[p][k] + result.points[q][k];
    add(np, axes, nq, axes + np, cross, -2.0, c);
    return true;
}

// The points that a row compares; false for rows that tell of no pair.
bool sees_pair(const Model &model, const Equations &e, int r, int ends[2])
{
    const Observation &o = model.observations[e.observation[r]];
    ends[0] = o.from, ends[1] = o.to;
    return e.usable[r] && e.component[r] == 0 && o.kind != Kind::unknown && o.from >= 0 && o.to >= 0 && o.from != o.to;
}

// Pairs of points that usable rows see, each once, the smaller number first.
//   points  [points] in the order in which their pairs are listed, each with the point that comes first
std::vector<std::pair<int, int>> neighbours(const Model &model, const Equations &e, const std::vector<int> &points)
{
    const std::vector<int> rank = inverse_permutation(points);
    std::vector<std::size_t> begin(points.size() + 2, 0); // of the others of each point, counted one place behind
    int ends[2];
    for (int r = 0; r < e.rows(); r++)
        if (sees_pair(model, e, r, ends)) begin[std::min(rank[ends[0]], rank[ends[1]]) + 2]++;
    for (std::size_t i = 2; i < begin.size(); i++) begin[i] += begin[i - 1];
    std::vector<int> other(begin.back());
    for (int r = 0; r < e.rows(); r++) {
        if (!sees_pair(model, e, r, ends)) continue;
        const bool swapped = rank[ends[1]] < rank[ends[0]];
        other[begin[rank[ends[swapped]] + 1]++] = ends[!swapped];
    }
    std::vector<std::pair<int, int>> pairs;
    pairs.reserve(other.size());
    std::vector<int> met(points.size(), -1); // by which point
    for (const int p : points)
        for (std::size_t k = begin[rank[p]]; k < begin[rank[p] + 1]; k++) {
            if (met[other[k]] != p) pairs.push_back(std::minmax(p, other[k]));
            met[other[k]] = p;
        }
    return pairs;
}

// Sizes that differ by rounding alone stand in the order of their points.
bool worse(const WeakPair &p, const WeakPair &q)
{
    const auto key = [](const WeakPair &w) { return std::make_tuple(-(float)w.a, w.from, w.to); };
    return key(p) < key(q);
}

// The worst of those of all ranks, of which several may have one pair.
void gather_pairs(const System &s, std::vector<WeakPair> *weak, int most)
{
    if (!s.share.shared()) return;
    constexpr std::size_t numbers = 4;
    const std::size_t room = numbers * (std::size_t)most, first = room * (std::size_t)s.share.ranks->own();
    std::vector<double> all(room * (std::size_t)s.share.ranks->size(), 0.0);
    for (std::size_t i = 0; i < weak->size(); i++) {
        const WeakPair &p = (*weak)[i];
        const double words[numbers] = {p.from + 1.0, p.to + 1.0, p.a, p.b}; // nothing is 0
        std::copy(words, words + numbers, &all[first + numbers * i]);
    }
    s.share.sum(&all);
    weak->clear();
    for (std::size_t i = 0; i < all.size(); i += numbers) {
        const WeakPair p{(int)all[i] - 1, (int)all[i + 1] - 1, all[i + 2], all[i + 3]};
        const auto same = [&p](const WeakPair &q) { return p.from == q.from && p.to == q.to; };
        if (p.from < 0 || std::any_of(weak->begin(), weak->end(), same)) continue;
        weak->insert(std::upper_bound(weak->begin(), weak->end(), p, worse), p);
    }
    if (weak->size() > (std::size_t)most) weak->resize((std::size_t)most);
}

// Cofactors need `points`; semi-axes with sigma.
std::vector<WeakPair> weakest_pairs(const Model &model, const System &s, const Cofactors &cofactors,
                                    const Statistics &result, int most)
{
    std::vector<WeakPair> weak;
    for (const auto &pair : neighbours(model, s.equations, points_along(model, s))) {
        const bool heights = model.frame.space == Space::heights;
        Covariance c;
        if (!neighbour_cofactors(s, heights, cofactors, result, pair.first, pair.second, &c)) continue;
        const Ellipse e = heights ? Ellipse{std::sqrt(std::fmax(0.0, c[5])), 0.0, 0.0} : ellipse(c[0], c[1], c[3]);
        const WeakPair found{pair.first, pair.second, e.a * result.sigma, e.b * result.sigma};
        if ((int)weak.size() == most && !worse(found, weak.back())) continue;
        weak.insert(std::upper_bound(weak.begin(), weak.end(), found, worse), found);
        if ((int)weak.size() > most) weak.pop_back();
    }
    gather_pairs(s, &weak, most);
    return weak;
}

// Full covariance of some unknowns, 0 for held ones.
std::vector<double> joint_cofactors(const System &s, const Cofactors &cofactors, const std::vector<int> &unknowns)
{
    std::vector<int> estimated;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < unknowns.size(); i++) {
        if (!s.takes_part(unknowns[i])) continue;
        estimated.push_back(unknowns[i]);
        places.push_back(i);
    }
    const std::size_t n = estimated.size();
    std::vector<double> q(n * n), joint(unknowns.size() * unknowns.size(), 0.0);
    cofactors.solved((int)n, estimated.data(), (int)n, estimated.data(), q.data());
    for (std::size_t a = 0; a < n; a++)
        for (std::size_t b = 0; b < n; b++)
            joint[places[a] * unknowns.size() + places[b]] = 0.5 * (q[a * n + b] + q[b * n + a]);
    return joint;
}

// f^T Q f by a solve; held unknowns do not count.
double form_cofactor(const Model &model, const Cofactors &cofactors, const Form &form)
{
    std::vector<double> x(model.n_unknowns(), 0.0);
    for (const auto &[unknown, coefficient] : form)
        if (model.estimated(unknown)) x[unknown] += coefficient;
    cofactors.multiply(x.data());
    double sum = 0.0;
    for (const auto &[unknown, coefficient] : form) sum += coefficient * x[unknown];
    return std::fmax(0.0, sum);
}

void scale(double f, std::vector<Covariance> *list)
{
    for (Covariance &c : *list)
        for (double &x : c) x *= f;
}

void deviations(const System &s, const Cofactors &cofactors, Statistics *result)
{
    result->deviation.assign(s.columns.of.size(), 0.0);
    for (const int c : s.symbolic.unknown) {
        if (!is_own(s, c)) continue;
        double q;
        cofactors.block(1, &c, &q);
        result->deviation[s.columns.unknown[c]] = result->sigma * std::sqrt(std::fmax(0.0, q));
    }
    s.share.sum(&result->deviation);
}

// Cofactors of the coordinates of all points.
std::vector<Covariance> all_points(const Model &model, const System &s, const Cofactors &cofactors)
{
    std::vector<Covariance> points((std::size_t)model.n_points);
    for (const int p : points_along(model, s)) points[(std::size_t)p] = point_cofactors(s, cofactors, p);
    if (s.share.shared() && !points.empty()) s.share.ranks->sum(points[0].data(), 6 * points.size());
    return points;
}

// Sums over the rows of all ranks. Observations that are tested together stand on one of them, and where ranks have
// their own alone no other asks for them.
void sum_over_ranks(const System &s, Statistics *result)
{
    if (!s.share.shared()) return;
    std::vector<double> sums;
    for (const KindStatistics &k : result->kinds) sums.insert(sums.end(), {(double)k.rows, k.squares, k.redundancy});
    std::vector<JointStatistics> none, &together = s.apart ? none : result->together;
    for (const JointStatistics &j : together)
        sums.insert(sums.end(), {(double)j.rank, j.squares, (double)j.rows, j.first + 1.0});
    s.share.sum(&sums);
    const double *at = sums.data();
    for (KindStatistics &k : result->kinds) k.rows = (int)at[0], k.squares = at[1], k.redundancy = at[2], at += 3;
    for (JointStatistics &j : together)
        j.rank = (int)at[0], j.squares = at[1], j.rows = (int)at[2], j.first = (int)at[3] - 1, at += 4;
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
    s.points = all_points(model, system, cofactors);
    for (const auto &pair : options.pairs)
        s.pairs.push_back(pair_cofactors(system, cofactors, s, pair.first, pair.second));
    for (const Form &form : options.forms)
        s.forms.push_back(s.sigma * std::sqrt(form_cofactor(model, cofactors, form)));
    if (options.weak_pairs > 0) s.weak_pairs = weakest_pairs(model, system, cofactors, s, options.weak_pairs);
    scale(s.sigma * s.sigma, &s.points);
    scale(s.sigma * s.sigma, &s.pairs);
    s.joint = joint_cofactors(system, cofactors, options.joint);
    if (options.residuals) {
        RowTests(model, system, cofactors, options, &s).run();
        sum_over_ranks(system, &s);
    }
    return s;
}

} // namespace vornadjust
