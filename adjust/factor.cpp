// Supernodal factorization, multifrontal (Duff and Reid, ACM Trans. Math. Softw. 9, 1983, 302-325).
//
// The front of a supernode is the dense matrix of its own columns (w of them) and the r rows below:
// what the matrix has there, plus the updates of its children. Its columns are factored, and
//   U = F(R,R) - G(R,J) L(R,J)^T,   G = L D,
// is its update for the parent. Own columns are worked on in a panel of strips,
//   panel[strip][column][LANES],   strips of own rows first, then strips of the rows below,
// which hold G; narrow sides hold L = G / D. Updates lie as stairs (stair.h) on a stack.

#include "adjust/factor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "adjust/crew.h"
#include "adjust/kernels.h"
#include "adjust/layout.h"
#include "adjust/schedule.h"
#include "adjust/stair.h"
#include "adjust/team.h"
#include "adjust/tracker.h"

namespace vornadjust {

static const int STRIP_BLOCK = 12; // strips of an update worked on together: they stay in the second cache
static const std::size_t GROUP = (std::size_t)COLUMNS * STRIDE; // numbers of a narrow side

namespace {

struct Front {
    int s;            // supernode
    int w, r, m;      // columns, rows below, rows
    int depth;        // columns of the panel: w in whole groups
    int nown, nbelow; // strips
    double *v;        // [m * w] values of the supernode
    double *panel;    // [nown + nbelow][depth][LANES]
    double *u;        // stair of order r; null when there are no rows below
    double *pivots;   // [depth] reciprocals, 0 behind w
    double *narrow;   // [DEPTH / COLUMNS] narrow sides

    double *strip(int t) const { return panel + (std::size_t)t * depth * LANES; }
    double *column(int t, int j) const { return strip(t) + (std::size_t)j * LANES; }
    int begin(int t) const { return t < nown ? t * LANES : w + (t - nown) * LANES; } // first row of a strip
    int rows(int t) const { return std::min(LANES, (t < nown ? w : m) - begin(t)); }
};

struct Job {
    const SymmetricMatrix &a;
    const Symbolic &symbolic;
    const FactorOptions &options;
    const Kernels kernels;
    const Schedule plan;
    const Family family;
    Factor &factor;
    std::vector<double *> update; // [nsuper] while it is kept
    Layout layout;
};

} // namespace

static std::size_t panel_size(const Symbolic &s, int i)
{
    const int strips = strips_of(s.width(i)) + strips_of(s.below(i));
    return (std::size_t)strips * LANES * (std::size_t)whole_columns(s.width(i));
}

static void enlarge(DeskSize &desk, const Symbolic &s, int i)
{
    desk.index = std::max(desk.index, (std::size_t)s.height(i)); // no child has more rows below
    if (i == s.boundary) return;
    desk.panel = std::max(desk.panel, panel_size(s, i));
    desk.pivots = std::max(desk.pivots, (std::size_t)whole_columns(s.width(i)));
}

static Layout plan_layout(const Symbolic &symbolic, const Schedule &plan, int threads)
{
    DeskSize crown, bunch;
    crown.narrow = bunch.narrow = DEPTH / COLUMNS * GROUP;
    for (int i = 0; i < symbolic.nsuper; i++) enlarge(plan.in_crown[i] ? crown : bunch, symbolic, i);
    crown.stack = plan.crown_stack;
    bunch.stack = plan.bunch_stack();
    return Layout(plan, crown, bunch, threads);
}

// ---- assembly ----

static Front make_front(const Job &job, int s, const Desk &desk, double *u)
{
    Front f;
    f.s = s;
    f.w = job.symbolic.width(s);
    f.r = job.symbolic.below(s);
    f.m = f.w + f.r;
    f.depth = whole_columns(f.w);
    f.nown = strips_of(f.w);
    f.nbelow = strips_of(f.r);
    f.v = job.factor.value.data() + job.symbolic.valuestart[s];
    f.panel = desk.panel;
    f.u = u;
    f.pivots = desk.pivots;
    f.narrow = desk.narrow;
    return f;
}

// Adds columns from to to - 1 of the update of a child, of order n; index are the rows of the front.
static void add_columns(const Front &f, const double *child, int n, const int *index, int from, int to)
{
    for (int b = from; b < to; b++) {
        const double *src = child + stair_column(n, b) + b % LANES; // from the diagonal on
        const int j = index[b] - f.w;
        double *dst = j < 0 ? f.v + (std::size_t)index[b] * f.m + index[b] : f.u + stair_column(f.r, j) + j % LANES;
        const int *to_row = index + b;
        for (int a = 0; a < n - b; a++) dst[to_row[a] - index[b]] += src[a];
    }
}

static void add_children(const Job &job, const Front &f, const Crew &crew, int *index)
{
    if (f.u) {
        crew.share(f.nbelow,
                   [&](int t, int) { std::fill_n(f.u + stair_begin(f.r, t), stair_step(f.r, t) * LANES, 0.0); });
    }
    for (int c = job.family.child[f.s]; c != -1; c = job.family.sibling[c]) {
        const int n = job.symbolic.below(c);
        rows_in_parent(job.symbolic, c, index);
        crew.for_rows(n).share(strips_of(n), [&](int t, int) {
            add_columns(f, job.update[c], n, index, t * LANES, std::min(n, t * LANES + LANES));
        });
    }
}

static void load_strip(const Front &f, int t)
{
    const int rows = f.rows(t);
    for (int j = 0; j < f.w; j++) {
        const double *src = f.v + (std::size_t)j * f.m + f.begin(t);
        double *dst = f.column(t, j);
        for (int l = 0; l < rows; l++) dst[l] = src[l];
        for (int l = rows; l < LANES; l++) dst[l] = 0.0;
    }
    std::fill_n(f.column(t, f.w), (std::size_t)(f.depth - f.w) * LANES, 0.0);
}

static void store_strip(const Front &f, int t)
{
    const int rows = f.rows(t), first = f.begin(t);
    for (int j = 0; j < f.w; j++) {
        const double *src = f.column(t, j);
        double *dst = f.v + (std::size_t)j * f.m + first;
        for (int l = t < f.nown ? std::max(0, j + 1 - first) : 0; l < rows; l++) dst[l] = src[l] * f.pivots[j];
        if (t < f.nown && j >= first && j < first + rows) dst[j - first] = 1.0;
    }
}

// ---- elimination of the own columns ----

// Narrow side: rows lane to lane + 7 of a strip of L, columns from on.
static void narrow_rows(const Front &f, int t, int lane, int from, int n, double *b)
{
    const double *src = f.column(t, from) + lane;
    for (int k = 0; k < n; k++, src += LANES)
        for (int q = 0; q < COLUMNS; q++) b[q * STRIDE + k] = src[q] * f.pivots[from + k];
}

// Pivot of a column, in the place of the panel; keeps it and its reciprocal.
static double take_pivot(const Job &job, const Front &f, int j, double d)
{
    if (j >= f.w) return 0.0;
    const int place = job.symbolic.first[f.s] + j, unknown = job.symbolic.unknown[place];
    const double diagonal = job.a.value[job.a.start[unknown]];
    const double least = job.options.least_pivot * diagonal;
    const bool stands = diagonal > 0.0 && d > 0.0 && d >= least && std::isfinite(d);
    job.factor.pivot[unknown] = diagonal > 0.0 ? d / diagonal : std::isnan(diagonal) ? diagonal : 0.0;
    job.factor.reciprocal[place] = stands ? 1.0 / d : 0.0;
    return job.factor.reciprocal[place];
}

// Triangle of the columns j to j + 7: pivots, and L in the narrow side b from column at on.
static void factor_triangle(const Job &job, const Front &f, int j, int at, double *b)
{
    double g[COLUMNS][COLUMNS];
    const double *src = f.column(j / LANES, j) + j % LANES;
    for (int c = 0; c < COLUMNS; c++)
        for (int i = c; i < COLUMNS; i++) g[i][c] = src[c * LANES + i];
    for (int c = 0; c < COLUMNS; c++) {
        for (int e = 0; e < c; e++)
            for (int i = c; i < COLUMNS; i++) g[i][c] -= g[i][e] * b[c * STRIDE + at + e];
        const double reciprocal = f.pivots[j + c] = take_pivot(job, f, j + c, g[c][c]);
        for (int i = c + 1; i < COLUMNS; i++) b[i * STRIDE + at + c] = g[i][c] * reciprocal;
    }
}

static double *narrow_of(const Front &f, int j, int first)
{
    return f.narrow + (std::size_t)((j - first) / COLUMNS) * GROUP;
}

// Columns first to end - 1 against each other, in the strips that hold their triangle.
static void factor_own(const Job &job, const Front &f, int first, int end)
{
    const int last = std::min(f.nown, strips_of(end));
    for (int j = first; j < end; j += COLUMNS) {
        double *b = narrow_of(f, j, first);
        narrow_rows(f, j / LANES, j % LANES, first, j - first, b);
        if (j > first)
            for (int t = j / LANES; t < last; t++)
                job.kernels.product(j - first, f.column(t, first), b, f.column(t, j), LANES);
        factor_triangle(job, f, j, j - first, b);
        for (int t = j / LANES; t < last; t++) job.kernels.corner(b + (j - first), f.column(t, j));
    }
}

// The same columns in a strip below.
static void factor_below(const Job &job, const Front &f, int t, int first, int end)
{
    for (int j = first; j < end; j += COLUMNS) {
        const double *b = narrow_of(f, j, first);
        if (j > first) job.kernels.product(j - first, f.column(t, first), b, f.column(t, j), LANES);
        job.kernels.corner(b + (j - first), f.column(t, j));
    }
}

// Columns first to end - 1 less their products with the columns of the block before that begins at k.
static void reduce_block(const Job &job, const Front &f, const Crew &crew, int k, int first, int end)
{
    crew.share((end - first) / COLUMNS, [&](int g, int) {
        const int j = first + g * COLUMNS;
        narrow_rows(f, j / LANES, j % LANES, k, DEPTH, narrow_of(f, j, first));
    });
    crew.share(f.nown + f.nbelow - first / LANES, [&](int task, int) {
        const int t = first / LANES + task;
        for (int j = first; j < end; j += COLUMNS)
            job.kernels.product(DEPTH, f.column(t, k), narrow_of(f, j, first), f.column(t, j), LANES);
    });
}

static void factor_panel(const Job &job, const Front &f, const Crew &crew)
{
    for (int first = 0; first < f.depth; first += DEPTH) {
        const int end = std::min(f.depth, first + DEPTH);
        for (int k = 0; k < first; k += DEPTH) reduce_block(job, f, crew, k, first, end);
        factor_own(job, f, first, end);
        const int below = std::min(f.nown, strips_of(end));
        crew.share(f.nown + f.nbelow - below, [&](int t, int) { factor_below(job, f, below + t, first, end); });
    }
}

// ---- update ----

// Strips from to to - 1 of the update.
static void reduce_update(const Job &job, const Front &f, int from, int to, double *b)
{
    for (int k = 0; k < f.depth; k += DEPTH) {
        const int n = std::min(DEPTH, f.depth - k);
        for (int j = 0; j < std::min(f.r, to * LANES); j += COLUMNS) {
            const int t = j / LANES;
            double *c = f.u + stair_begin(f.r, t) + (std::size_t)(j % LANES) * stair_step(f.r, t);
            narrow_rows(f, f.nown + t, j % LANES, k, n, b);
            for (int i = std::max(from, t); i < to; i++)
                job.kernels.product(n, f.column(f.nown + i, k), b, c + (std::size_t)(i - t) * LANES,
                                    stair_step(f.r, t));
        }
    }
}

static void make_update(const Job &job, const Front &f, const Crew &crew)
{
    const int blocks = (f.nbelow + STRIP_BLOCK - 1) / STRIP_BLOCK;
    crew.share(blocks, [&](int task, int thread) { // the longest first
        const int from = (blocks - 1 - task) * STRIP_BLOCK;
        reduce_update(job, f, from, std::min(f.nbelow, from + STRIP_BLOCK), job.layout.desks[thread].narrow);
    });
}

static void keep_boundary(const Job &job, const Front &f)
{
    for (int place = job.symbolic.first[f.s]; place < job.symbolic.first[f.s + 1]; place++)
        job.factor.reciprocal[place] = job.factor.pivot[job.symbolic.unknown[place]] = 1.0;
}

static void factor_front(const Job &job, const Front &f, const Crew &crew)
{
    add_children(job, f, crew, job.layout.desks[crew.thread].index);
    if (f.s == job.symbolic.boundary) return keep_boundary(job, f);
    crew.share(f.nown + f.nbelow, [&](int t, int) { load_strip(f, t); });
    factor_panel(job, f, crew);
    if (f.u) make_update(job, f, crew);
    crew.share(f.nown + f.nbelow, [&](int t, int) { store_strip(f, t); });
}

// ---- the tree ----

// Where the update of s goes.
static double *place_update(const Job &job, int s, TwoStacks &stacks)
{
    const int p = job.symbolic.parent[s];
    if (p < 0) return nullptr;
    if (job.plan.in_crown[p] != job.plan.in_crown[s]) return job.layout.held + job.plan.held[s];
    return stacks.push(job.family.side[s], stair_size(job.symbolic.below(s)));
}

static void drop_updates(const Job &job, int s, TwoStacks &stacks)
{
    for (int c = job.family.child[s]; c != -1; c = job.family.sibling[c])
        if (job.plan.in_crown[c] == job.plan.in_crown[s])
            stacks.pop(job.family.side[c], stair_size(job.symbolic.below(c)));
}

static void work_off(Job &job, int s, const Crew &crew, TwoStacks &stacks, Trail &trail)
{
    const Desk &desk = job.layout.desks[crew.thread];
    job.update[s] = place_update(job, s, stacks);
    factor_front(job, make_front(job, s, desk, job.update[s]), crew);
    drop_updates(job, s, stacks);
    trail.done(job.symbolic.valuestart[s], job.symbolic.valuestart[s + 1]);
}

static void work_off_bunches(Job &job, Team &team, Tracker &tracker)
{
    team.run((int)job.plan.bunch.size(), [&](int task, int thread) {
        const Bunch &b = job.plan.bunch[task];
        TwoStacks stacks(job.layout.desks[thread].stack, b.stack);
        Trail trail(job.factor.value);
        for (int s = b.first; s < b.end && !tracker.stopped(); s++) {
            work_off(job, s, Crew{nullptr, thread}, stacks, trail);
            tracker.add(supernode_operations(job.symbolic, s), thread);
        }
    });
}

static void work_off_crown(Job &job, Team &team, Tracker &tracker)
{
    TwoStacks stacks(job.layout.desks[0].stack, job.plan.crown_stack);
    Trail trail(job.factor.value);
    for (const int s : job.plan.crown) {
        if (tracker.stopped()) return;
        const double operations = supernode_operations(job.symbolic, s);
        work_off(job, s, Crew{team.size() > 1 && operations > LEAST_SHARED ? &team : nullptr, 0}, stacks, trail);
        tracker.add(operations, 0);
    }
}

static void list_failures(const Symbolic &symbolic, Factor &factor)
{
    for (int k = 0; k < symbolic.n; k++)
        if (factor.reciprocal[k] == 0.0)
            factor.failed.push_back({symbolic.unknown[k], factor.pivot[symbolic.unknown[k]]});
}

static void take_memory(Job &job)
{
    Factor &f = job.factor;
    try {
        f.value.assign(addressable(job.symbolic.values()), 0.0);
        f.reciprocal.assign((std::size_t)job.symbolic.n, 0.0);
        f.pivot.assign((std::size_t)job.symbolic.n, 0.0);
        job.update.assign((std::size_t)job.symbolic.nsuper, nullptr);
        job.layout.take();
    } catch (...) {
        f = Factor();
        throw;
    }
}

// The matrix at its places, as many of them at a time as may be in memory.
static void load_matrix(const SymmetricMatrix &a, const Symbolic &symbolic, Store &value)
{
    for (std::size_t from = 0; from < value.size(); from += value.stride()) {
        const std::size_t end = std::min(value.size(), from + value.stride());
        for (std::size_t p = 0; p < a.value.size(); p++) {
            const std::size_t at = (std::size_t)symbolic.target[p];
            if (at >= from && at < end) value[at] = a.value[p];
        }
        value.leave(from, end);
    }
}

bool factorize(const SymmetricMatrix &a, const Symbolic &symbolic, Factor &factor, const FactorOptions &options)
{
    factor.failed.clear();
    Schedule plan = make_schedule(symbolic);
    Layout layout = plan_layout(symbolic, plan, options.threads);
    Job job{a, symbolic, options, best_kernels(), std::move(plan), Family(symbolic), factor, {}, std::move(layout)};
    take_memory(job);
    load_matrix(a, symbolic, factor.value);
    Team team(options.threads);
    Tracker tracker(options.watch, job.plan.operations);
    work_off_bunches(job, team, tracker);
    work_off_crown(job, team, tracker);
    factor.stopped = tracker.stopped();
    if (factor.stopped) return false;
    tracker.finish();
    list_failures(symbolic, factor);
    return factor.failed.empty();
}

std::size_t factor_bytes(const Symbolic &symbolic, int threads)
{
    const std::size_t numbers = (std::size_t)symbolic.values() + 2 * (std::size_t)symbolic.n;
    const std::size_t relations =
        (std::size_t)symbolic.nsuper * (sizeof(double *) + 2 * sizeof(int) + 2 + sizeof(std::size_t));
    return numbers * sizeof(double) + relations + plan_layout(symbolic, make_schedule(symbolic), threads).bytes();
}

} // namespace vornadjust
