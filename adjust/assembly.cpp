#include "adjust/assembly.h"

#include <algorithm>

namespace vornadjust {

namespace {

// Where each column stands among the rows.
struct Places {
    std::vector<std::size_t> begin; // [n + 1] places of column j:
    std::vector<int> row;           //   row that holds it, ascending
    std::vector<int> entry;         //   its entry, counted from the first of that row
};

// Counting sort of the entries by column.
Places transpose(int n, const WeightedRows &rows)
{
    Places s;
    s.begin.assign((std::size_t)n + 1, 0);
    for (int c : rows.column) s.begin[c + 1]++;
    for (int j = 0; j < n; j++) s.begin[j + 1] += s.begin[j];
    s.row.resize(rows.column.size());
    s.entry.resize(rows.column.size());
    std::vector<std::size_t> next(s.begin.begin(), s.begin.end() - 1);
    for (int r = 0; r < rows.rows(); r++)
        for (std::size_t k = rows.begin[r]; k < rows.begin[r + 1]; k++) {
            const std::size_t at = next[rows.column[k]]++;
            s.row[at] = r;
            s.entry[at] = (int)(k - rows.begin[r]);
        }
    return s;
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
void append_column(int j, const WeightedRows &rows, const std::vector<int> &block, const Places &s, Collector *c)
{
    const std::size_t first = c->list->size();
    c->add(j, j);
    for (std::size_t at = s.begin[j]; at < s.begin[j + 1]; at++)
        for (std::size_t k = rows.begin[s.row[at]] + s.entry[at]; k < rows.begin[s.row[at] + 1]; k++)
            c->add(rows.column[k], j);
    for (int i = j + 1; i < (int)block.size() && block[j] >= 0 && block[i] == block[j]; i++) c->add(i, j);
    std::sort(c->list->begin() + first, c->list->end());
}

// Where an ascending list, which holds it from `at` on, has a number.
inline int find(const int *list, int n, int at, int number)
{
    const int near = 32; // below it the search is no faster than going on
    if (list[at] == number) return at;
    if (at + 1 < n && list[at + 1] == number) return at + 1;
    if (n - at > near) return (int)(std::lower_bound(list + at, list + n, number) - list);
    while (list[at] != number) at++;
    return at;
}

// Adds row r to the lower triangle and the right side.
void add_row(const WeightedRows &rows, int r, NormalSystem *s)
{
    SymmetricMatrix &m = s->matrix;
    const std::size_t last = rows.begin[r + 1];
    for (std::size_t k = rows.begin[r]; k < last; k++) {
        const double a = rows.coefficient[k];
        if (a == 0.0) continue;
        const int j = rows.column[k];
        s->right[j] += a * rows.misclosure[r];
        const int *list = m.row.data() + m.start[j];
        double *value = m.value.data() + m.start[j];
        const int n = (int)(m.start[j + 1] - m.start[j]);
        int at = 0;
        for (std::size_t e = k; e < last; e++) {
            at = find(list, n, at, rows.column[e]);
            value[at] += a * rows.coefficient[e];
        }
    }
}

} // namespace

NormalSystem normal_pattern(int n, const WeightedRows &rows, const std::vector<int> &block)
{
    const Places places = transpose(n, rows);
    NormalSystem s;
    s.matrix.n = n;
    Collector collector{std::vector<int>(n, -1), &s.matrix.row};
    for (int j = 0; j < n; j++) {
        append_column(j, rows, block, places, &collector);
        s.matrix.start.push_back((std::int64_t)s.matrix.row.size());
    }
    s.matrix.value.assign(s.matrix.row.size(), 0.0);
    s.right.assign(n, 0.0);
    return s;
}

void assemble(const WeightedRows &rows, NormalSystem *s)
{
    std::fill(s->matrix.value.begin(), s->matrix.value.end(), 0.0);
    std::fill(s->right.begin(), s->right.end(), 0.0);
    for (int r = 0; r < rows.rows(); r++) add_row(rows, r, s);
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
