#include "adjust/system.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "adjust/division.h"
#include "adjust/order.h"

namespace vornadjust {

namespace {

// Ranks whose networks differ (a file that is another one on another machine) would find a wrong result together.
//   own  null: all have all observations
void agree(const Model &model, Ranks *ranks, const OwnObservations *own)
{
    const double observations = own ? (double)own->all : (double)model.observations.size();
    std::vector<double> told = {(double)model.n_unknowns(), observations, 0.0, 0.0, 0.0};
    for (const double x : model.value) told[2] += x;
    for (const Code c : model.code) told[3] += (double)c;
    for (const Observation &o : model.observations) told[4] += o.use && !own ? o.value[0] + o.sigma[0] : 0.0;
    const std::size_t n = told.size();
    for (std::size_t i = 0; i < n; i++) told.push_back(-told[i]);
    ranks->most(told.data(), told.size());
    for (std::size_t i = 0; i < n; i++)
        if (told[i] != -told[n + i])
            throw std::runtime_error("the processes have read different networks; give them the same files");
}

// Part of each observation. The first rank divides: without memory METIS does other than with it, and ranks that divide
// in different ways would not know.
std::vector<int> agreed_parts(const Model &model, Ranks *ranks)
{
    std::vector<double> told(model.observations.size(), 0.0);
    if (ranks->own() == 0) {
        const std::vector<int> part = divide(model, ranks->size());
        told.assign(part.begin(), part.end());
    }
    ranks->sum(told.data(), told.size());
    return std::vector<int>(told.begin(), told.end());
}

Equations pattern_of_share(const Model &model, Ranks *ranks, const OwnObservations *own)
{
    agree(model, ranks, own);
    return own ? pattern(model) : pattern(model, agreed_parts(model, ranks), ranks->own());
}

// Elements of the boundary among those of the factor or the inverse: [m][m] by columns, m the columns of the boundary.
std::size_t boundary_block(const Symbolic &symbolic)
{
    return symbolic.boundary < 0 ? 0 : (std::size_t)symbolic.valuestart[symbolic.boundary];
}

Symbolic analyse_share(const SymmetricMatrix &a, const Share &share)
{
    if (share.boundary.empty()) return analyse(a, fill_reducing_order(a).unknown);
    std::vector<char> at_boundary((std::size_t)a.n, 0);
    for (const int c : share.boundary) at_boundary[c] = 1;
    return analyse(a, order_inside(a, at_boundary), (int)share.boundary.size());
}

void sum_at_boundary(const Share &share, std::vector<double> *x)
{
    std::vector<double> boundary;
    boundary.reserve(share.boundary.size());
    for (const int c : share.boundary) boundary.push_back((*x)[c]);
    share.ranks->sum_boundary(boundary.data());
    for (std::size_t i = 0; i < boundary.size(); i++) (*x)[share.boundary[i]] = boundary[i];
}

// What all ranks make of the boundary behind the elimination of their own unknowns.
bool factorize_boundary(System *s, double damping, const FactorOptions &options)
{
    const std::size_t m = s->share.boundary.size();
    std::vector<double> diagonal(m), pivot(m);
    for (std::size_t i = 0; i < m; i++) diagonal[i] = (1.0 + damping) * s->diagonal[s->share.boundary[i]];
    const bool stands = s->share.ranks->factorize(s->factor.value.data() + boundary_block(s->symbolic), diagonal.data(),
                                                  options.least_pivot, pivot.data());
    s->factor.value.leave(boundary_block(s->symbolic), s->factor.value.size());
    for (std::size_t i = 0; i < m; i++) s->factor.pivot[s->share.boundary[i]] = pivot[i];
    return stands;
}

// Bytes of factor and inverse together.
struct Needs {
    std::size_t work = 0;    // beside the results
    std::size_t results = 0; // of the factor, and of the inverse where one is wanted
    std::size_t blocks = 0;  // supernodes that are worked on at a time, the largest
    std::size_t trails = 0;  // (store.h) at a time

    std::size_t all() const { return work + results; }
    // The matrix goes to its places in some passes, not in hundreds.
    std::size_t least() const { return work + blocks + std::max(trails << 16, results / 16); }
};

Needs needs_of(const Symbolic &symbolic, int threads, bool inverse)
{
    Needs needs;
    const std::size_t values = (std::size_t)symbolic.values() * sizeof(double), stores = inverse ? 2 : 1;
    std::size_t most = factor_bytes(symbolic, threads);
    if (inverse) most = std::max(most, inverse_bytes(symbolic, threads));
    std::int64_t block = 0;
    for (int i = 0; i < symbolic.nsuper; i++)
        block = std::max(block, symbolic.valuestart[i + 1] - symbolic.valuestart[i]);
    needs.work = most - values;
    needs.results = stores * values;
    needs.trails = stores * (std::size_t)threads;
    needs.blocks = needs.trails * (std::size_t)block * sizeof(double);
    return needs;
}

bool factorize_share(System *s, double damping, const FactorOptions &options)
{
    const bool inside = factorize(s->normal.matrix, s->symbolic, s->factor, options);
    if (!s->share.shared()) return s->whole = inside;
    s->whole = !s->share.any(!inside);
    if (s->whole) s->whole = factorize_boundary(s, damping, options);
    return s->whole;
}

} // namespace

System make_system(const Model &model, const Watch &watch, Ranks *ranks, const OwnObservations *own)
{
    System s;
    s.watch = watch;
    watch.tell(Step::equations);
    s.equations = ranks ? pattern_of_share(model, ranks, own) : pattern(model);
    s.columns = ranks ? columns_of_share(model, s.equations) : columns(model, s.equations);
    s.share = make_share(model, s.columns, ranks);
    s.apart = ranks && own;
    s.rows = weighted_pattern(model, s.equations, s.columns);
    std::vector<int> point;
    for (int u : s.columns.unknown) point.push_back(u < 3 * model.n_points ? u / 3 : -1);
    s.normal = normal_pattern(s.n(), s.rows, point);
    watch.tell(Step::order);
    s.symbolic = analyse_share(s.normal.matrix, s.share);
    return s;
}

double fill_rows(const Model &model, System *s)
{
    s->watch.tell(Step::equations);
    if (!s->present) fill(model, s->derivatives, &s->equations, s->threads);
    s->present = false;
    s->bad_group = weigh(model, s->equations, s->columns, &s->rows, s->threads);
    for (int h : s->held)
        for (std::size_t at = s->normal.begin[h]; at < s->normal.begin[h + 1]; at++)
            s->rows.coefficient[s->rows.begin[s->normal.row[at]] + s->normal.entry[at]] = 0.0;
    return s->share.sum(sum_of_squares(s->rows));
}

void fit_into_memory(System *s, Disk *disk, int threads, bool inverse)
{
    if (!disk) return;
    const Needs needs = needs_of(s->symbolic, threads, inverse);
    if (needs.all() <= disk->limit()) return;
    if (disk->limit() < needs.least()) disk->refuse(needs.least());
    disk->begin(needs.all());
    s->factor.value = Store(disk, (disk->limit() - needs.work - needs.blocks) / needs.trails / sizeof(double));
}

void fill_normal(System *s)
{
    s->watch.tell(Step::equations);
    assemble(s->rows, &s->normal);
    for (int h : s->held) s->normal.matrix.value[s->normal.matrix.start[h]] = 1.0;
    s->diagonal.resize((std::size_t)s->n());
    for (int j = 0; j < s->n(); j++) s->diagonal[j] = s->normal.matrix.value[s->normal.matrix.start[j]];
    if (s->share.shared()) sum_at_boundary(s->share, &s->diagonal);
}

bool factorize(System *s, double damping, const FactorOptions &options)
{
    s->watch.tell(Step::factor);
    if (damping == 0.0) return factorize_share(s, damping, options);
    SymmetricMatrix &a = s->normal.matrix;
    std::vector<double> diagonal(a.n);
    for (int j = 0; j < a.n; j++) {
        diagonal[j] = a.value[a.start[j]];
        a.value[a.start[j]] += damping * diagonal[j];
    }
    const bool whole = factorize_share(s, damping, options);
    for (int j = 0; j < a.n; j++) a.value[a.start[j]] = diagonal[j];
    return whole;
}

void release_rows(System *s)
{
    WeightedRows members;
    members.members = std::move(s->rows.members);
    s->rows = std::move(members);
    s->normal.matrix = SymmetricMatrix();
    for (std::vector<double> *list : {&s->normal.right, &s->normal.work}) *list = std::vector<double>();
    s->normal.entry = std::vector<int>();
}

void solve(const System &s, int m, double *b)
{
    if (!s.share.shared()) return solve(s.symbolic, s.factor, m, b);
    reduce(s.symbolic, s.factor, m, b);
    const std::size_t n = (std::size_t)s.n(), k = s.share.boundary.size();
    std::vector<double> boundary(k * (std::size_t)m);
    for (std::size_t c = 0; c < (std::size_t)m; c++)
        for (std::size_t i = 0; i < k; i++) boundary[c * k + i] = b[c * n + s.share.boundary[i]];
    s.share.ranks->solve(m, boundary.data());
    for (std::size_t c = 0; c < (std::size_t)m; c++)
        for (std::size_t i = 0; i < k; i++) b[c * n + s.share.boundary[i]] = boundary[c * k + i];
    complete(s.symbolic, s.factor, m, b);
}

bool invert(const System &s, Inverse &inverse, const InverseOptions &options)
{
    inverse.value = s.factor.value.beside();
    if (s.share.shared()) {
        inverse.value.resize((std::size_t)s.symbolic.values());
        s.share.ranks->invert(inverse.value.data() + boundary_block(s.symbolic));
    }
    return invert(s.symbolic, s.factor, inverse, options);
}

} // namespace vornadjust
