// Inverse on the pattern of the factor, from the last supernode to the first.
//
// A supernode gets Z(R,R) of the r rows below it from its parent, as a stair (stair.h) on a stack, and
// spreads it out in a square of strips. Its w columns follow in blocks, the last ones first: rows and
// columns of the square (slots) are
//   the rows below, padded to whole strips | the last block | the block before | ... ,
// and with R' = the slots before a block B, X = L(B,B)^-1 and Y = L(R',B) X,
//   Z(R',B) = - Z(R',R') Y,   Z(B,R') its transpose,   Z(B,B) = X^T D(B)^-1 X - Z(B,R') Y.
// Then the children of the supernode get their parts of the square.

#include "adjust/inverse.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "adjust/crew.h"
#include "adjust/kernels.h"
#include "adjust/layout.h"
#include "adjust/schedule.h"
#include "adjust/stair.h"
#include "adjust/team.h"
#include "adjust/tracker.h"

namespace vornadjust {

static const int BLOCK = 4 * LANES; // columns of a block
static const std::size_t GROUP = (std::size_t)COLUMNS * STRIDE;

namespace {

struct Square {
    int w, r, m;              // columns, rows below, rows
    int nbelow;               // strips of rows below
    int slots;                // order
    const double *l;          // [m * w] factor
    double *value;            // [m * w] inverse
    const double *reciprocal; // [w]
    double *z;                // [slots / LANES][slots][LANES]
    double *y;                // [slots / LANES + BLOCK / LANES][BLOCK][LANES], columns of a block reversed
    double *narrow;           // [slots / DEPTH][BLOCK / COLUMNS] narrow sides of Y
    double *triangle;         // [BLOCK / COLUMNS] narrow sides of L(B,B), then of X
    double *weighted;         // [BLOCK / LANES][BLOCK][LANES] - D^-1 X

    double *column(int t, int slot) const { return z + ((std::size_t)t * slots + slot) * LANES; }
    double *ycolumn(int t, int q) const { return y + ((std::size_t)t * BLOCK + q) * LANES; }
    double *ynarrow(int slot, int g) const
    {
        return narrow + ((std::size_t)(slot / DEPTH) * (BLOCK / COLUMNS) + g) * GROUP;
    }
    double *triangle_of(int g) const { return triangle + (std::size_t)g * GROUP; }

    // First of the columns of the block that column j is in, and behind its last.
    int block_end(int j) const { return w - (w - 1 - j) / BLOCK * BLOCK; }
    int block_first(int j) const { return std::max(0, block_end(j) - BLOCK); }

    // Slot of a row of the supernode, its columns first.
    int slot(int i) const
    {
        if (i >= w) return i - w;
        return nbelow * LANES + (w - block_end(i)) + (i - block_first(i));
    }

    // First row of a strip, and its number of rows.
    int begin(int t) const
    {
        if (t < nbelow) return w + t * LANES;
        const int at = (t - nbelow) * LANES, end = w - at / BLOCK * BLOCK;
        return std::max(0, end - BLOCK) + at % BLOCK;
    }
    int rows(int t) const { return std::min(LANES, (t < nbelow ? m : block_end(begin(t))) - begin(t)); }
};

struct Part {       // a block of columns
    int first, end; // columns
    int slot;       // of the first
    int n, wide;    // columns, in whole groups
};

struct Job {
    const Symbolic &symbolic;
    const Factor &factor;
    const Kernels kernels;
    const Schedule plan;
    const Family family;
    Inverse &inverse;
    std::vector<double *> below; // [nsuper] Z(R,R) while it is kept
    Layout layout;
};

} // namespace

static std::size_t slots_of(const Symbolic &s, int i)
{
    return (std::size_t)whole_strips(s.width(i)) + whole_strips(s.below(i));
}

static std::size_t square_size(std::size_t slots) { return slots * slots; }
static std::size_t y_size(std::size_t slots) { return (slots + BLOCK) * BLOCK; }
static std::size_t narrow_size(std::size_t slots) { return (slots / DEPTH + 1) * (BLOCK / COLUMNS) * GROUP; }

static void enlarge(DeskSize &desk, const Symbolic &s, int i)
{
    const std::size_t slots = slots_of(s, i);
    desk.panel = std::max(desk.panel, square_size(slots) + y_size(slots));
    desk.narrow = std::max(desk.narrow, narrow_size(slots) + BLOCK / COLUMNS * GROUP + (std::size_t)BLOCK * BLOCK);
    desk.index = std::max(desk.index, (std::size_t)s.height(i)); // no child has more rows below
}

static Layout plan_layout(const Symbolic &symbolic, const Schedule &plan, int threads)
{
    DeskSize crown, bunch;
    for (int i = 0; i < symbolic.nsuper; i++) enlarge(plan.in_crown[i] ? crown : bunch, symbolic, i);
    crown.stack = plan.crown_stack;
    bunch.stack = plan.bunch_stack();
    return Layout(plan, crown, bunch, threads);
}

static Square make_square(const Job &job, int s, const Desk &desk)
{
    Square f;
    f.w = job.symbolic.width(s);
    f.r = job.symbolic.below(s);
    f.m = f.w + f.r;
    f.nbelow = strips_of(f.r);
    const std::size_t slots = slots_of(job.symbolic, s);
    f.slots = (int)slots;
    f.l = job.factor.value.data() + job.symbolic.valuestart[s];
    f.value = job.inverse.value.data() + job.symbolic.valuestart[s];
    f.reciprocal = job.factor.reciprocal.data() + job.symbolic.first[s];
    f.z = desk.panel;
    f.y = desk.panel + square_size(slots);
    f.narrow = desk.narrow;
    f.triangle = desk.narrow + narrow_size(slots);
    f.weighted = f.triangle + BLOCK / COLUMNS * GROUP;
    return f;
}

// b becomes the transpose of a; both LANES by LANES.
static void transpose(const double *a, double *b)
{
    for (int i = 0; i < LANES; i++)
        for (int j = 0; j < LANES; j++) b[j * LANES + i] = a[i * LANES + j];
}

// ---- Z(R,R) ----

// Strip t of Z(R,R), left of the diagonal and on it, and its transpose.
static void spread_strip(const Square &f, const double *stair, int t)
{
    for (int u = 0; u <= t; u++) {
        const double *src = stair + stair_begin(f.r, u) + (std::size_t)(t - u) * LANES;
        for (int j = 0; j < LANES; j++) std::copy_n(src + j * stair_step(f.r, u), LANES, f.column(t, u * LANES + j));
        if (u < t) transpose(f.column(t, u * LANES), f.column(u, t * LANES));
    }
    double *diagonal = f.column(t, t * LANES);
    for (int j = 0; j < LANES; j++)
        for (int i = 0; i < j; i++) diagonal[j * LANES + i] = diagonal[i * LANES + j];
}

// Columns of strip t of the part of the square that a child of n rows gets.
//   slot  in  [n] of its rows
static void gather_strip(const Square &f, int n, const int *slot, int t, double *stair)
{
    const std::size_t step = stair_step(n, t), strip = (std::size_t)f.slots * LANES;
    double *dst = stair + stair_begin(n, t);
    for (int j = t * LANES; j < t * LANES + LANES; j++, dst += step) {
        std::size_t filled = 0;
        if (j < n) {
            const double *src = f.z + (std::size_t)slot[j] * LANES;
            for (int i = t * LANES; i < n; i++) dst[filled++] = src[slot[i] / LANES * strip + slot[i] % LANES];
        }
        std::fill(dst + filled, dst + step, 0.0);
    }
}

// ---- one block of columns ----

// L(R',B) in a strip, columns reversed; behind R' the identity of B.
static void load_y(const Square &f, const Part &p, int t, int before)
{
    for (int q = 0; q < p.wide; q++) {
        double *dst = f.ycolumn(t, q);
        std::fill_n(dst, LANES, 0.0);
        if (q >= p.n) continue;
        const int j = p.end - 1 - q, unit = j - p.first - (t - before) * LANES;
        if (t < before)
            std::copy_n(f.l + (std::size_t)j * f.m + f.begin(t), f.rows(t), dst);
        else if (unit >= 0 && unit < LANES)
            dst[unit] = 1.0;
    }
}

// Narrow sides of L(B,B) for reversed columns.
static void load_triangle(const Square &f, const Part &p)
{
    for (int q = 0; q < p.wide; q++) {
        double *b = f.triangle_of(q / COLUMNS) + (std::size_t)(q % COLUMNS) * STRIDE;
        std::fill_n(b, q, 0.0);
        if (q >= p.n) continue;
        const double *column = f.l + (std::size_t)(p.end - 1 - q) * f.m + p.end - q; // the rows behind its own
        std::reverse_copy(column, column + q, b);
    }
}

static void solve_y(const Job &job, const Square &f, const Part &p, int t)
{
    for (int q = 0; q < p.wide; q += COLUMNS) {
        const double *b = f.triangle_of(q / COLUMNS);
        if (q > 0) job.kernels.product(q, f.ycolumn(t, 0), b, f.ycolumn(t, q), LANES);
        job.kernels.corner(b + q, f.ycolumn(t, q));
    }
}

// A strip as part of the narrow sides b[group], from column at on.
static void narrow_strip(const Square &f, const Part &p, int t, double *b, int at)
{
    for (int j = 0; j < p.wide; j++) {
        double *dst = b + (std::size_t)(j / COLUMNS) * GROUP + (std::size_t)(j % COLUMNS) * STRIDE + at;
        if (j < p.n)
            std::copy_n(f.ycolumn(t, p.n - 1 - j), LANES, dst);
        else
            std::fill_n(dst, LANES, 0.0);
    }
}

// Takes Z(t,R') Y from Z(t,B).
static void reduce_strip(const Job &job, const Square &f, const Part &p, int t)
{
    for (int k = 0; k < p.slot; k += DEPTH)
        for (int g = 0; g < p.wide / COLUMNS; g++)
            job.kernels.product(std::min(DEPTH, p.slot - k), f.column(t, k), f.ynarrow(k, g),
                                f.column(t, p.slot + g * COLUMNS), LANES);
}

static void clear_strip(const Square &f, const Part &p, int t)
{
    std::fill_n(f.column(t, p.slot), (std::size_t)whole_strips(p.n) * LANES, 0.0);
}

// - D^-1 X by strips, from the narrow sides of X.
static void weight_triangle(const Square &f, const Part &p)
{
    for (int t = 0; t < strips_of(p.n); t++)
        for (int k = 0; k < p.n; k++) {
            const double d = -f.reciprocal[p.first + k];
            double *dst = f.weighted + ((std::size_t)t * BLOCK + k) * LANES;
            for (int l = 0; l < LANES; l++) {
                const int j = t * LANES + l;
                dst[l] = j < p.n ? f.triangle_of(j / COLUMNS)[j % COLUMNS * STRIDE + k] * d : 0.0;
            }
        }
}

// Z(B,R') and Z(B,B) of strip e of the block.
static void finish_block(const Job &job, const Square &f, const Part &p, int e)
{
    const int before = p.slot / LANES, t = before + e;
    for (int u = 0; u < before; u++) transpose(f.column(u, t * LANES), f.column(t, u * LANES));
    clear_strip(f, p, t);
    for (int g = 0; g < p.wide / COLUMNS; g++)
        job.kernels.product(p.n, f.weighted + (std::size_t)e * BLOCK * LANES, f.triangle_of(g),
                            f.column(t, p.slot + g * COLUMNS), LANES);
    reduce_strip(job, f, p, t);
}

static void invert_block(const Job &job, const Square &f, const Part &p, const Crew &crew)
{
    const int before = p.slot / LANES, own = strips_of(p.n);
    load_triangle(f, p);
    crew.share(before + own, [&](int t, int) {
        load_y(f, p, t, before);
        solve_y(job, f, p, t);
    });
    crew.share(before, [&](int t, int) { narrow_strip(f, p, t, f.ynarrow(t * LANES, 0), t * LANES % DEPTH); });
    for (int e = 0; e < own; e++) narrow_strip(f, p, before + e, f.triangle, e * LANES);
    weight_triangle(f, p);
    crew.share(before, [&](int t, int) {
        clear_strip(f, p, t);
        reduce_strip(job, f, p, t);
    });
    crew.share(own, [&](int e, int) { finish_block(job, f, p, e); });
}

static void store_strip(const Square &f, int t)
{
    for (int j = 0; j < f.w; j++)
        std::copy_n(f.column(t, f.slot(j)), f.rows(t), f.value + (std::size_t)j * f.m + f.begin(t));
}

static void invert_square(const Job &job, const Square &f, const double *stair, const Crew &crew)
{
    crew.share(f.nbelow, [&](int t, int) { spread_strip(f, stair, f.nbelow - 1 - t); });
    for (int end = f.w; end > 0;) {
        const int first = f.block_first(end - 1);
        const Part part = {first, end, f.slot(first), end - first, whole_columns(end - first)};
        invert_block(job, f, part, crew);
        end = first;
    }
    crew.share(f.slots / LANES, [&](int t, int) { store_strip(f, t); });
}

// A boundary, whose inverse is given.
static void load_square(const Square &f)
{
    for (int j = 0; j < f.w; j++)
        for (int i = 0; i < f.w; i++)
            f.column(f.slot(i) / LANES, f.slot(j))[f.slot(i) % LANES] = f.value[(std::size_t)j * f.m + i];
}

// ---- the tree ----

// A stack of parts for children, and what is done with.
struct Stack {
    Stack(const Job &job, double *space) : top(space), factor(job.factor.value), inverse(job.inverse.value) {}

    double *top;
    Trail factor, inverse;
};

static void hand_down(Job &job, int s, const Square &f, const Crew &crew, Stack &stack)
{
    int *index = job.layout.desks[crew.thread].index;
    for (int c = job.family.child[s]; c != -1; c = job.family.sibling[c]) {
        const int n = job.symbolic.below(c);
        if (job.plan.in_crown[c] != job.plan.in_crown[s]) {
            job.below[c] = job.layout.held + job.plan.held[c];
        } else {
            job.below[c] = stack.top;
            stack.top += stair_size(n);
        }
        rows_in_parent(job.symbolic, c, index);
        for (int k = 0; k < n; k++) index[k] = f.slot(index[k]);
        crew.for_rows(n).share(strips_of(n), [&](int t, int) { gather_strip(f, n, index, t, job.below[c]); });
    }
}

static void work_off(Job &job, int s, const Crew &crew, Stack &stack)
{
    const Square f = make_square(job, s, job.layout.desks[crew.thread]);
    if (s == job.symbolic.boundary)
        load_square(f);
    else
        invert_square(job, f, job.below[s], crew);
    const int p = job.symbolic.parent[s];
    if (p >= 0 && job.plan.in_crown[p] == job.plan.in_crown[s]) stack.top -= stair_size(f.r);
    hand_down(job, s, f, crew, stack);
    for (Trail *trail : {&stack.factor, &stack.inverse})
        trail->done(job.symbolic.valuestart[s], job.symbolic.valuestart[s + 1]);
}

static void work_off_crown(Job &job, Team &team, Tracker &tracker)
{
    Stack stack(job, job.layout.desks[0].stack);
    for (std::size_t k = job.plan.crown.size(); k-- > 0 && !tracker.stopped();) {
        const double operations = supernode_operations(job.symbolic, job.plan.crown[k]);
        work_off(job, job.plan.crown[k], Crew{team.size() > 1 && operations > LEAST_SHARED ? &team : nullptr, 0},
                 stack);
        tracker.add(operations, 0);
    }
}

static void work_off_bunches(Job &job, Team &team, Tracker &tracker)
{
    team.run((int)job.plan.bunch.size(), [&](int task, int thread) {
        const Bunch &b = job.plan.bunch[task];
        Stack stack(job, job.layout.desks[thread].stack);
        for (int s = b.end - 1; s >= b.first && !tracker.stopped(); s--) {
            work_off(job, s, Crew{nullptr, thread}, stack);
            tracker.add(supernode_operations(job.symbolic, s), thread);
        }
    });
}

static void take_memory(Job &job)
{
    try {
        job.inverse.value.resize(addressable(job.symbolic.values()));
        job.below.assign((std::size_t)job.symbolic.nsuper, nullptr);
        job.layout.take();
    } catch (...) {
        job.inverse = Inverse();
        throw;
    }
}

bool invert(const Symbolic &symbolic, const Factor &factor, Inverse &inverse, const InverseOptions &options)
{
    Schedule plan = make_schedule(symbolic);
    Layout layout = plan_layout(symbolic, plan, options.threads);
    Job job{symbolic, factor, best_kernels(), std::move(plan), Family(symbolic), inverse, {}, std::move(layout)};
    take_memory(job);
    Team team(options.threads);
    Tracker tracker(options.watch, job.plan.operations);
    work_off_crown(job, team, tracker);
    work_off_bunches(job, team, tracker);
    inverse.stopped = tracker.stopped();
    if (!inverse.stopped) tracker.finish();
    return !inverse.stopped;
}

std::size_t inverse_bytes(const Symbolic &symbolic, int threads)
{
    const std::size_t relations =
        (std::size_t)symbolic.nsuper * (sizeof(double *) + 2 * sizeof(int) + 2 + sizeof(std::size_t));
    return (std::size_t)symbolic.values() * sizeof(double) + relations +
           plan_layout(symbolic, make_schedule(symbolic), threads).bytes();
}

// ---- look-up ----

// Where element (i, j) lies among the values; -1 when it is not there.
static std::int64_t find_element(const Symbolic &symbolic, int i, int j)
{
    const int row = std::max(symbolic.place[i], symbolic.place[j]),
              column = std::min(symbolic.place[i], symbolic.place[j]);
    const int s = symbolic.super[column];
    const std::int64_t begin = symbolic.valuestart[s] + (std::int64_t)(column - symbolic.first[s]) * symbolic.height(s);
    if (row < symbolic.first[s + 1]) return begin + (row - symbolic.first[s]);
    const int *rows = symbolic.row.data() + symbolic.rowstart[s], *end = rows + symbolic.below(s);
    const int *found = std::lower_bound(rows, end, row);
    return found == end || *found != row ? -1 : begin + symbolic.width(s) + (found - rows);
}

const double *element(const Symbolic &symbolic, const Inverse &inverse, int i, int j)
{
    const std::int64_t at = find_element(symbolic, i, j);
    return at < 0 ? nullptr : &inverse.value[(std::size_t)at];
}

double *element(const Symbolic &symbolic, Inverse &inverse, int i, int j)
{
    const std::int64_t at = find_element(symbolic, i, j);
    return at < 0 ? nullptr : &inverse.value[(std::size_t)at];
}

namespace {

// Unknowns whose elements are wanted, ascending by place. Those of one supernode have the others in the same rows of
// it, which are therefore looked up once for each supernode, one behind the other.
struct Wanted {
    int place, index, local; // local: row in the supernode that was looked at last
};

} // namespace

// Rows of the unknowns from `first` on in supernode s; false when one is not there.
static bool find_local(const Symbolic &symbolic, int s, Wanted *first, const Wanted *end)
{
    const int *row = symbolic.row.data() + symbolic.rowstart[s], *rows_end = row + symbolic.below(s), *const rows = row;
    for (Wanted *w = first; w != end; w++) {
        if (w->place < symbolic.first[s + 1]) {
            w->local = w->place - symbolic.first[s];
            continue;
        }
        if (row != rows_end && *row < w->place) row++; // most stand behind one another
        if (row == rows_end || *row != w->place) row = std::lower_bound(row, rows_end, w->place);
        if (row == rows_end || *row != w->place) return false;
        w->local = symbolic.width(s) + (int)(row - rows);
    }
    return true;
}

// Where the elements of k unknowns lie among the values, each with itself and those behind it.
static bool find_elements(const Symbolic &symbolic, Wanted *wanted, int k, std::int64_t *at)
{
    int last = -1;
    for (int a = 0; a < k; a++) {
        const int s = symbolic.super[wanted[a].place];
        if (s != last && !find_local(symbolic, s, wanted + a, wanted + k)) return false;
        last = s;
        const std::int64_t column =
            symbolic.valuestart[s] + (std::int64_t)(wanted[a].place - symbolic.first[s]) * symbolic.height(s);
        for (int b = a; b < k; b++) *at++ = column + wanted[b].local;
    }
    return true;
}

bool elements(const Symbolic &symbolic, const Inverse &inverse, int k, const int *i, double *block)
{
    const int few = 16; // rows of observations have no more unknowns, most of them
    Wanted few_wanted[few];
    std::int64_t few_places[few * (few + 1) / 2];
    std::vector<Wanted> many_wanted(k > few ? (std::size_t)k : 0);
    std::vector<std::int64_t> many_places(k > few ? (std::size_t)k * ((std::size_t)k + 1) / 2 : 0);
    Wanted *wanted = k > few ? many_wanted.data() : few_wanted;
    std::int64_t *at = k > few ? many_places.data() : few_places;
    for (int a = 0; a < k; a++) wanted[a] = {symbolic.place[i[a]], a, 0};
    std::sort(wanted, wanted + k, [](const Wanted &x, const Wanted &y) { return x.place < y.place; });
    if (!find_elements(symbolic, wanted, k, at)) return false;
    for (int a = 0; a < k; a++)
        for (int b = a; b < k; b++) {
            const std::size_t r = (std::size_t)wanted[a].index, c = (std::size_t)wanted[b].index;
            block[r * k + c] = block[c * k + r] = inverse.value[(std::size_t)*at++];
        }
    return true;
}

} // namespace vornadjust
