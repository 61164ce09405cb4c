#include "adjust/system.h"

#include "adjust/order.h"

namespace vornadjust {

System make_system(const Model &model, const Watch &watch)
{
    System s;
    s.watch = watch;
    watch.tell(Step::equations);
    s.equations = pattern(model);
    s.columns = columns(model, s.equations);
    s.rows = weighted_pattern(model, s.equations, s.columns);
    std::vector<int> point;
    for (int u : s.columns.unknown) point.push_back(u < 3 * model.n_points ? u / 3 : -1);
    s.normal = normal_pattern(s.n(), s.rows, point);
    watch.tell(Step::order);
    s.symbolic = analyse(s.normal.matrix, fill_reducing_order(s.normal.matrix).unknown);
    return s;
}

double fill_rows(const Model &model, System *s)
{
    s->watch.tell(Step::equations);
    if (!s->present) fill(model, s->derivatives, &s->equations);
    s->present = false;
    s->bad_group = weigh(model, s->equations, s->columns, &s->rows);
    for (int h : s->held)
        for (std::size_t at = s->normal.begin[h]; at < s->normal.begin[h + 1]; at++)
            s->rows.coefficient[s->rows.begin[s->normal.row[at]] + s->normal.entry[at]] = 0.0;
    return sum_of_squares(s->rows);
}

void fill_normal(System *s)
{
    s->watch.tell(Step::equations);
    assemble(s->rows, &s->normal);
    for (int h : s->held) s->normal.matrix.value[s->normal.matrix.start[h]] = 1.0;
}

bool factorize(System *s, double damping, const FactorOptions &options)
{
    s->watch.tell(Step::factor);
    if (damping == 0.0) return factorize(s->normal.matrix, s->symbolic, s->factor, options);
    SymmetricMatrix &a = s->normal.matrix;
    std::vector<double> diagonal(a.n);
    for (int j = 0; j < a.n; j++) {
        diagonal[j] = a.value[a.start[j]];
        a.value[a.start[j]] += damping * diagonal[j];
    }
    const bool whole = factorize(a, s->symbolic, s->factor, options);
    for (int j = 0; j < a.n; j++) a.value[a.start[j]] = diagonal[j];
    return whole;
}

} // namespace vornadjust
