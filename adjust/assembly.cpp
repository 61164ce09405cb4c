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

// Rows of column j of the lower triangle: unknowns from j on that stand in a row with j, ascending.
void append_column(int j, const WeightedRows &rows, const NormalSystem &s, std::vector<int> *mark,
                   std::vector<int> *list)
{
    const std::size_t first = list->size();
    list->push_back(j);
    (*mark)[j] = j;
    for (std::size_t at = s.begin[j]; at < s.begin[j + 1]; at++)
        for (std::size_t k = rows.begin[s.row[at]] + s.entry[at]; k < rows.begin[s.row[at] + 1]; k++) {
            if ((*mark)[rows.column[k]] == j) continue;
            (*mark)[rows.column[k]] = j;
            list->push_back(rows.column[k]);
        }
    std::sort(list->begin() + first, list->end());
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

NormalSystem normal_pattern(int n, const WeightedRows &rows)
{
    NormalSystem s;
    transpose(n, rows, &s);
    s.matrix.n = n;
    std::vector<int> mark(n, -1);
    for (int j = 0; j < n; j++) {
        append_column(j, rows, s, &mark, &s.matrix.row);
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
