// Elimination of small blocks of columns by orthogonal transformations.

#include "adjust/block_elimination.h"

#include <algorithm>
#include <numeric>

namespace vornadjust {

namespace {

using Row = std::vector<std::pair<int, double>>;

std::vector<int> columns_of(const std::vector<Row> &rows, int first, int last)
{
    std::vector<int> columns(last - first);
    std::iota(columns.begin(), columns.end(), first);
    for (const Row &row : rows)
        for (const auto &[column, value] : row) columns.push_back(column);
    std::sort(columns.begin(), columns.end());
    columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
    return columns;
}

Triangle triangle_of(const std::vector<Row> &rows, const std::vector<int> &columns)
{
    Triangle triangle(static_cast<int>(columns.size()));
    std::vector<double> work(columns.size());
    for (const Row &row : rows) {
        std::fill(work.begin(), work.end(), 0.0);
        for (const auto &[column, value] : row)
            work[std::lower_bound(columns.begin(), columns.end(), column) - columns.begin()] = value;
        triangle.add(work.data());
    }
    return triangle;
}

std::vector<Row> reduced(const std::vector<Row> &rows)
{
    const std::vector<int> columns = columns_of(rows, 0, 0);
    const Triangle triangle = triangle_of(rows, columns);
    std::vector<Row> out(columns.size());
    for (int i = 0; i < triangle.cols(); i++)
        for (int j = i; j < triangle.cols(); j++) out[i].emplace_back(columns[j], triangle.matrix()(i, j));
    return out;
}

// Leading n by n part of a triangle.
Dense leading(const Dense &r, int n)
{
    Dense out(n, n);
    for (int j = 0; j < n; j++) std::copy(r.col(j), r.col(j) + n, out.col(j));
    return out;
}

// U'B over the determined directions, and what of B they do not explain; B is the part of r right of
// column n in its first n rows.
struct Split {
    Dense explained; // rank by later columns
    Dense rest;      // n by later columns
};

Split split(const Dense &u, int rank, const Dense &r, int n)
{
    Split out{Dense(rank, r.cols - n), Dense(n, r.cols - n)};
    for (int j = 0; j < r.cols - n; j++) {
        const double *b = r.col(n + j);
        std::copy(b, b + n, out.rest.col(j));
        for (int i = 0; i < rank; i++) {
            out.explained(i, j) = std::inner_product(u.col(i), u.col(i) + n, b, 0.0);
            for (int k = 0; k < n; k++) out.rest(k, j) -= u(k, i) * out.explained(i, j);
        }
    }
    return out;
}

// - V diag(1/s) explained
Dense solution(const SmallSvd &d, const Dense &explained)
{
    Dense out(d.v.rows, explained.cols);
    for (int j = 0; j < explained.cols; j++)
        for (int i = 0; i < explained.rows; i++)
            for (int k = 0; k < out.rows; k++) out(k, j) -= d.v(k, i) * explained(i, j) / d.s[i];
    return out;
}

} // namespace

BlockElimination::BlockElimination(const std::vector<int> &sizes) : begin(1, 0), buckets(sizes.size())
{
    for (int size : sizes) begin.push_back(begin.back() + size);
    stages.reserve(sizes.size());
}

int BlockElimination::block_of(int column) const
{
    return static_cast<int>(std::upper_bound(begin.begin(), begin.end(), column) - begin.begin()) - 1;
}

void BlockElimination::add(Row row)
{
    row.erase(std::remove_if(row.begin(), row.end(), [](const auto &x) { return x.second == 0; }), row.end());
    if (row.empty()) return;
    const int first = std::min_element(row.begin(), row.end())->first;
    Bucket &bucket = buckets[block_of(first)];
    bucket.rows.push_back(std::move(row));
    if (bucket.rows.size() < bucket.limit) return;
    bucket.rows = reduced(bucket.rows);
    bucket.limit = std::max<std::size_t>(64, 2 * bucket.rows.size());
}

void BlockElimination::pass_on(const std::vector<int> &columns, const Dense &rows, int first_row, int first_column)
{
    for (int i = first_row; i < rows.rows; i++) {
        Row row;
        for (int j = first_column; j < rows.cols; j++) row.emplace_back(columns[j - first_column], rows(i, j));
        add(std::move(row));
    }
}

void BlockElimination::eliminate(double threshold)
{
    const int block = static_cast<int>(stages.size());
    const int n = begin[block + 1] - begin[block];
    const std::vector<Row> rows = std::move(buckets[block].rows);
    const std::vector<int> columns = columns_of(rows, begin[block], begin[block + 1]);
    const Triangle triangle = triangle_of(rows, columns);
    const Dense &r = triangle.matrix();
    const SmallSvd d = small_svd(leading(r, n));
    const int rank = count_from(d.s, threshold);
    const Split parts = split(d.u, rank, r, n);

    Stage stage;
    stage.later.assign(columns.begin() + n, columns.end());
    stage.solve = solution(d, parts.explained);
    stage.open = column_range(d.v, rank, n);
    if (rank < n) pass_on(stage.later, parts.rest, 0, 0);
    pass_on(stage.later, r, n, n);
    stages.push_back(std::move(stage));
}

std::vector<Row> BlockElimination::take_rest()
{
    std::vector<Row> rest;
    for (std::size_t b = stages.size(); b < buckets.size(); b++) {
        for (Row &row : reduced(buckets[b].rows)) rest.push_back(std::move(row));
        buckets[b] = Bucket();
    }
    return rest;
}

void BlockElimination::complete(std::vector<double> &vector, int block) const
{
    for (int b = block - 1; b >= 0; b--) {
        const Stage &stage = stages[b];
        for (int i = 0; i < stage.solve.rows; i++) {
            double sum = 0;
            for (int j = 0; j < stage.solve.cols; j++) sum += stage.solve(i, j) * vector[stage.later[j]];
            vector[begin[b] + i] = sum;
        }
    }
}

std::vector<double> BlockElimination::null_vector(int block, int j) const
{
    std::vector<double> vector(columns(), 0.0);
    const Dense &open = stages[block].open;
    std::copy(open.col(j), open.col(j) + open.rows, vector.begin() + begin[block]);
    complete(vector, block);
    return vector;
}

} // namespace vornadjust
