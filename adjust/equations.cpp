#include "adjust/equations.h"

#include <algorithm>
#include <cmath>

#include "adjust/blocks.h"
#include "adjust/linear.h"

namespace vornadjust {

namespace {

const double turn = 6.283185307179586476925; // radians

// Distinct unknowns of an observation that are part of the network, ascending.
int row_columns(const Model &model, const Observation &o, int columns[most_unknowns])
{
    int seen[most_unknowns];
    const int n_seen = seen_unknowns(model, o, seen);
    int n = 0;
    for (int k = 0; k < n_seen; k++) {
        const bool absent = model.code[seen[k]] == Code::absent;
        if (!absent) columns[n++] = seen[k];
    }
    std::sort(columns, columns + n);
    return (int)(std::unique(columns, columns + n) - columns);
}

double row_sigma(const Model &model, const Observation &o, int component)
{
    if (o.group < 0) return o.sigma[component];
    const Group &group = model.groups[o.group];
    return std::sqrt(model.covariance[group.first + (std::size_t)(o.place + component) * (group.size + 1)]);
}

void append_row(const Model &model, int i, int component, const int *columns, int n, Equations *e)
{
    const Observation &o = model.observations[i];
    e->column.insert(e->column.end(), columns, columns + n);
    e->begin.push_back(e->column.size());
    e->misclosure.push_back(0.0);
    e->sigma.push_back(row_sigma(model, o, component));
    e->factor.push_back(o.factor);
    e->observation.push_back(i);
    e->component.push_back((unsigned char)component);
    e->group.push_back(o.group);
    e->place.push_back(o.place + component);
    e->usable.push_back(0);
}

bool is_angle(const Model &model, const Observation &o)
{
    switch (o.kind) {
    case Kind::direction:
    case Kind::angle:
    case Kind::azimuth:
    case Kind::bearing: return true;
    case Kind::unknown: return model.meaning[o.unknown] == Meaning::angle;
    default: return false;
    }
}

// Adds slopes to a row whose coefficients are 0. Most unknowns stand in the column behind that of the one before.
void scatter(const int *seen, const double *slope, int n, const int *columns, int n_columns, double *coefficients)
{
    int cursor = 0;
    for (int k = 0; k < n; k++) {
        int at = cursor;
        if (at == n_columns || columns[at] != seen[k])
            at = (int)(std::find(columns, columns + n_columns, seen[k]) - columns);
        if (at == n_columns) continue;
        coefficients[at] += slope[k];
        cursor = at + 1;
    }
}

// Whether an observation has an unknown in its row but never answers to it: a vertical angle to the orientation of an
// instrument that is held upright, an angle to any orientation.
bool is_blind(const Model &model, const Observation &o, int unknown)
{
    if (o.kind == Kind::angle) return o.setup >= 0 && unknown == model.setups[o.setup].first + 2;
    if (o.kind != Kind::vertical_angle) return false;
    const int first = model.setups[o.setup].first;
    const auto upright = [&](int tilt) { return !model.estimated(tilt) && model.value[tilt] == 0.0; };
    return unknown == first + 2 && model.setups[o.setup].levelled && upright(first) && upright(first + 1);
}

} // namespace

int Equations::usable_rows() const { return (int)std::count(usable.begin(), usable.end(), 1); }

Equations pattern(const Model &model) { return pattern(model, {}, 0); }

Equations pattern(const Model &model, const std::vector<int> &part_of, int part)
{
    Equations e;
    e.begin.push_back(0);
    int columns[most_unknowns];
    for (int i = 0; i < (int)model.observations.size(); i++) {
        const Observation &o = model.observations[i];
        if (!o.use || (!part_of.empty() && part_of[i] != part)) continue;
        const int n = row_columns(model, o, columns);
        for (int c = 0; c < components(o.kind, model.frame.space); c++) append_row(model, i, c, columns, n, &e);
    }
    e.coefficient.assign(e.column.size(), 0.0);
    return e;
}

// Rows of the observations whose first rows are first to end - 1.
static void fill_block(const Model &model, Derivatives derivatives, int first, int end, Equations *e)
{
    Linear linear;
    const int rows = e->rows();
    int r = first;
    while (r < end && e->component[r] > 0) r++;
    for (; r < rows && (r < end || e->component[r] > 0); r++) {
        const Observation &o = model.observations[e->observation[r]];
        const int c = e->component[r];
        if (c == 0) linearize(model, o, derivatives == Derivatives::invariant, &linear);
        const std::size_t begin = e->begin[r], n = e->begin[r + 1] - begin;
        std::fill_n(e->coefficient.begin() + (std::ptrdiff_t)begin, n, 0.0);
        e->usable[r] = linear.usable;
        e->misclosure[r] = 0.0;
        if (!linear.usable) continue;
        const double w = o.value[c] - linear.value[c];
        e->misclosure[r] = is_angle(model, o) ? std::remainder(w, turn) : w;
        scatter(linear.unknown, linear.slope[c], linear.n, e->column.data() + begin, (int)n,
                e->coefficient.data() + begin);
    }
}

void fill(const Model &model, Derivatives derivatives, Equations *e, int threads)
{
    in_blocks(threads, e->rows(), [&](int first, int end) { fill_block(model, derivatives, first, end, e); });
}

Columns columns(const Model &model, const Equations &equations)
{
    std::vector<char> stands(model.value.size(), 0);
    for (int r = 0; r < equations.rows(); r++)
        for (std::size_t k = equations.begin[r]; k < equations.begin[r + 1]; k++)
            if (!is_blind(model, model.observations[equations.observation[r]], equations.column[k]))
                stands[equations.column[k]] = 1;
    Columns c;
    c.of.assign(model.value.size(), -1);
    for (int u = 0; u < model.n_unknowns(); u++) {
        if (!model.estimated(u) || (u >= 3 * model.n_points && !stands[u])) continue;
        c.of[u] = c.count();
        c.unknown.push_back(u);
    }
    return c;
}

} // namespace vornadjust
