#include "adjust/assembly.h"

#include <algorithm>

namespace vornadjust {

namespace {

// Where each column stands: counting sort of the entries by column.
void transpose(int n, const WeightedRows &rows, NormalSystem *s)
{
    s->begin.assign((std::size_t)n + 1, 0);
    for (int c : rows.column) s->begin[c + 1]++;
    for (int j = 0; j < n; j++) s->begin[j + 1] += s->begin[j];
    s->row.resize(rows.column.size());
    s->entry.resize(rows.column.size());
    std::vector<std::size_t> next(s->begin.begin(), s->begin.end() - 1);
    for (int r = 0; r < rows.rows(); r++)
        for (std::size_t k = rows.begin[r]; k < rows.begin[r + 1]; k++) {
            const std::size_t at = next[rows.column[k]]++;
            s->row[at] = r;
            s->entry[at] = (int)(k - rows.begin[r]);
        }
}

// Lists unknowns once for each column.
struct Collector {
    std::vector<int> mark; // [n] column that an unknown was last listed for
    std::vector<int> *list;
    void add(int unknown, int column)
    {
        if (mark[unknown] == column) return;
        mark[unknown] = column;
        list->push_back(unknown);
    }
};

// Rows of column j of the lower triangle: columns from j on that stand in a row with j or belong to its block,
// ascending.
void append_column(int j, const WeightedRows &rows, const std::vector<int> &block, const NormalSystem &s, Collector *c)
{
    const std::size_t first = c->list->size();
    c->add(j, j);
    for (std::size_t at = s.begin[j]; at < s.begin[j + 1]; at++)
        for (std::size_t k = rows.begin[s.row[at]] + s.entry[at]; k < rows.begin[s.row[at] + 1]; k++)
            c->add(rows.column[k], j);
    for (int i = j + 1; i < (int)block.size() && block[j] >= 0 && block[i] == block[j]; i++) c->add(i, j);
    std::sort(c->list->begin() + first, c->list->end());
}

// Adds column j of B^T B from its diagonal on to work; returns element j of B^T b.
double gather(int j, const WeightedRows &rows, const NormalSystem &s, double *work)
{
    double right = 0.0;
    for (std::size_t at = s.begin[j]; at < s.begin[j + 1]; at++) {
        const int r = s.row[at];
        const std::size_t first = rows.begin[r] + s.entry[at], last = rows.begin[r + 1];
        const double a = rows.coefficient[first];
        if (a == 0.0) continue;
        right += a * rows.misclosure[r];
        for (std::size_t k = first; k < last; k++) work[rows.column[k]] += a * rows.coefficient[k];
    }
    return right;
}

} // namespace

NormalSystem normal_pattern(int n, const WeightedRows &rows, const std::vector<int> &block)
{
    NormalSystem s;
    transpose(n, rows, &s);
    s.matrix.n = n;
    Collector collector{std::vector<int>(n, -1), &s.matrix.row};
    for (int j = 0; j < n; j++) {
        append_column(j, rows, block, s, &collector);
        s.matrix.start.push_back((std::int64_t)s.matrix.row.size());
    }
    s.matrix.value.assign(s.matrix.row.size(), 0.0);
    s.right.assign(n, 0.0);
    s.work.assign(n, 0.0);
    return s;
}

void assemble(const WeightedRows &rows, NormalSystem *s)
{
    double *work = s->work.data();
    for (int j = 0; j < s->matrix.n; j++) {
        s->right[j] = gather(j, rows, *s, work);
        for (std::int64_t k = s->matrix.start[j]; k < s->matrix.start[j + 1]; k++) {
            s->matrix.value[k] = work[s->matrix.row[k]];
            work[s->matrix.row[k]] = 0.0;
        }
    }
}

double sum_of_squares(const WeightedRows &rows)
{
    double sum = 0.0;
    for (double b : rows.misclosure) sum += b * b;
    return sum;
}

double foreseen_squares(const WeightedRows &rows, const double *dx)
{
    double sum = 0.0;
    for (int r = 0; r < rows.rows(); r++) {
        double b = rows.misclosure[r];
        for (std::size_t k = rows.begin[r]; k < rows.begin[r + 1]; k++) b -= rows.coefficient[k] * dx[rows.column[k]];
        sum += b * b;
    }
    return sum;
}

} // namespace vornadjust
