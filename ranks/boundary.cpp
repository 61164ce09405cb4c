#include "ranks/boundary.h"

#include <algorithm>
#include <cmath>
#include <memory>

extern "C" {
void Cblacs_get(int context, int what, int *value);
void Cblacs_gridinit(int *context, const char *order, int rows, int columns);
void Cblacs_gridinfo(int context, int *rows, int *columns, int *row, int *column);
void Cblacs_gridexit(int context);
int numroc_(const int *n, const int *tile, const int *process, const int *first, const int *processes);
void descinit_(int *descriptor, const int *m, const int *n, const int *mb, const int *nb, const int *row,
               const int *column, const int *context, const int *lld, int *info);
void pdpotrf_(const char *uplo, const int *n, double *a, const int *ia, const int *ja, const int *desc, int *info);
void pdpotrs_(const char *uplo, const int *n, const int *nrhs, const double *a, const int *ia, const int *ja,
              const int *desca, double *b, const int *ib, const int *jb, const int *descb, int *info);
void dsyrk_(const char *uplo, const char *trans, const int *n, const int *k, const double *alpha, const double *a,
            const int *lda, const double *beta, double *c, const int *ldc);
void pdpotri_(const char *uplo, const int *n, double *a, const int *ia, const int *ja, const int *desc, int *info);
}

namespace {

const int at_a_time = 128; // columns of a process that are exchanged together
const int one = 1, zero = 0;

int part(int count, int tile, int process, int processes)
{
    return numroc_(&count, &tile, &process, &zero, &processes);
}

void describe(int *descriptor, int rows, int columns, int tile, int context, int own_rows)
{
    int info = 0;
    const int lld = std::max(1, own_rows);
    descinit_(descriptor, &rows, &columns, &tile, &tile, &zero, &zero, &context, &lld, &info);
}

// OpenBLAS takes its work space at its first call, keeps it, and asks for it forever where there is none.
void take_work_space()
{
    const std::size_t enough = (std::size_t)160 << 20; // bytes; it takes 128 MiB
    std::unique_ptr<char[]>(new char[enough]).reset(); // throws std::bad_alloc
    const double unit = 1.0, a[1] = {1.0};
    double c[1] = {0.0};
    dsyrk_("L", "N", &one, &one, &unit, a, &one, &unit, c, &one);
}

} // namespace

// A grid as square as the number of processes allows.
Boundary::Boundary()
{
    take_work_space();
    MPI_Comm_rank(MPI_COMM_WORLD, &self);
    MPI_Comm_size(MPI_COMM_WORLD, &size);
    for (int r = 1; r * r <= size; r++)
        if (size % r == 0) rows = r;
    columns = size / rows;
    Cblacs_get(-1, 0, &context);
    Cblacs_gridinit(&context, "Row", rows, columns);
    Cblacs_gridinfo(context, &rows, &columns, &row, &column);
}

Boundary::~Boundary() { Cblacs_gridexit(context); }

void Boundary::set(int count, const std::vector<int> &own)
{
    n = count;
    std::vector<int> counts((std::size_t)size), starts((std::size_t)size, 0);
    const int mine = (int)own.size();
    MPI_Allgather(&mine, 1, MPI_INT, counts.data(), 1, MPI_INT, MPI_COMM_WORLD);
    for (int p = 1; p < size; p++) starts[p] = starts[p - 1] + counts[p - 1];
    std::vector<int> all((std::size_t)(starts.back() + counts.back()));
    MPI_Allgatherv(own.data(), mine, MPI_INT, all.data(), counts.data(), starts.data(), MPI_INT, MPI_COMM_WORLD);
    which.assign((std::size_t)size, {});
    for (int p = 0; p < size; p++) which[p].assign(all.begin() + starts[p], all.begin() + starts[p] + counts[p]);
    own_rows = part(n, tile, row, rows);
    own_columns = part(n, tile, column, columns);
    describe(descriptor, n, n, tile, context, own_rows);
}

// Place of an element among the tiles of its owner.
std::size_t Boundary::at(int i, int j) const
{
    const int r = i / tile / rows * tile + i % tile, c = j / tile / columns * tile + j % tile;
    return (std::size_t)c * (std::size_t)own_rows + (std::size_t)r;
}

// Adds up what all processes have; the same bits on all of them.
void Boundary::gather(double *x, std::size_t count) const
{
    std::vector<double> sum(count);
    MPI_Reduce(x, sum.data(), (int)count, MPI_DOUBLE, MPI_SUM, 0, MPI_COMM_WORLD);
    MPI_Bcast(sum.data(), (int)count, MPI_DOUBLE, 0, MPI_COMM_WORLD);
    std::copy(sum.begin(), sum.end(), x);
}

// Own right-hand sides at their unknowns.
std::vector<double> Boundary::spread(int k, const double *b) const
{
    const std::vector<int> &own = which[self];
    std::vector<double> x((std::size_t)k * (std::size_t)n, 0.0);
    for (std::size_t c = 0; c < (std::size_t)k; c++)
        for (std::size_t i = 0; i < own.size(); i++) x[c * (std::size_t)n + own[i]] = b[c * own.size() + i];
    return x;
}

void Boundary::sum(double *x)
{
    std::vector<double> all = spread(1, x);
    gather(all.data(), all.size());
    for (std::size_t i = 0; i < which[self].size(); i++) x[i] = all[which[self][i]];
}

int Boundary::rounds() const
{
    std::size_t most = 0;
    for (const std::vector<int> &list : which) most = std::max(most, list.size());
    return (int)((most + at_a_time - 1) / at_a_time);
}

// The lower triangle of the square of a process, in columns of one round: visit(place in the square, i, j).
template <class Visit> void Boundary::for_elements(int process, int round, const Visit &visit) const
{
    const std::vector<int> &list = which[process];
    const std::size_t m = list.size(), begin = (std::size_t)round * at_a_time, end = std::min(m, begin + at_a_time);
    for (std::size_t j = begin; j < end; j++)
        for (std::size_t i = j; i < m; i++) visit(j * m + i, list[i], list[j]);
}

void Boundary::exchange(const std::vector<std::vector<double>> &out, std::vector<std::vector<double>> *in) const
{
    std::vector<MPI_Request> requests;
    requests.reserve(2 * (std::size_t)size);
    for (int p = 0; p < size; p++) {
        requests.emplace_back();
        MPI_Irecv((*in)[p].data(), (int)(*in)[p].size(), MPI_DOUBLE, p, 1, MPI_COMM_WORLD, &requests.back());
    }
    for (int p = 0; p < size; p++) {
        requests.emplace_back();
        MPI_Isend(out[p].data(), (int)out[p].size(), MPI_DOUBLE, p, 1, MPI_COMM_WORLD, &requests.back());
    }
    MPI_Waitall((int)requests.size(), requests.data(), MPI_STATUSES_IGNORE);
}

// Brings the squares of all processes to the tiles.
void Boundary::add_blocks(const double *block)
{
    matrix.assign((std::size_t)own_rows * (std::size_t)own_columns, 0.0);
    std::vector<std::vector<double>> out((std::size_t)size), in((std::size_t)size);
    for (int round = 0; round < rounds(); round++) {
        for (std::vector<double> &to : out) to.clear();
        for_elements(self, round, [&](std::size_t k, int i, int j) { out[owner(i, j)].push_back(block[k]); });
        for (int p = 0; p < size; p++) {
            std::size_t count = 0;
            for_elements(p, round, [&](std::size_t, int i, int j) { count += owner(i, j) == self; });
            in[p].resize(count);
        }
        exchange(out, &in);
        for (int p = 0; p < size; p++) {
            const double *next = in[p].data();
            for_elements(p, round, [&](std::size_t, int i, int j) {
                if (owner(i, j) == self) matrix[at(i, j)] += *next++;
            });
        }
    }
}

// Brings elements of the tiles to the squares of all processes, both triangles.
void Boundary::fetch_blocks(double *z)
{
    std::vector<std::vector<double>> out((std::size_t)size), in((std::size_t)size);
    const std::size_t m = which[self].size();
    for (int round = 0; round < rounds(); round++) {
        for (int p = 0; p < size; p++) {
            out[p].clear();
            for_elements(p, round, [&](std::size_t, int i, int j) {
                if (owner(i, j) == self) out[p].push_back(matrix[at(i, j)]);
            });
        }
        std::vector<std::size_t> count((std::size_t)size, 0);
        for_elements(self, round, [&](std::size_t, int i, int j) { count[owner(i, j)]++; });
        for (int p = 0; p < size; p++) in[p].resize(count[p]);
        exchange(out, &in);
        std::vector<const double *> next(in.size());
        for (std::size_t p = 0; p < in.size(); p++) next[p] = in[p].data();
        for_elements(self, round,
                     [&](std::size_t k, int i, int j) { z[k] = z[k % m * m + k / m] = *next[owner(i, j)]++; });
    }
}

bool Boundary::factorize(const double *block, const double *diagonal, double least_pivot, double *pivot)
{
    if (n == 0) return true;
    add_blocks(block);
    std::vector<double> whole((std::size_t)n, 0.0);
    for (std::size_t i = 0; i < which[self].size(); i++) whole[which[self][i]] = diagonal[i];
    MPI_Allreduce(MPI_IN_PLACE, whole.data(), n, MPI_DOUBLE, MPI_MAX, MPI_COMM_WORLD);
    int info = 0;
    pdpotrf_("L", &n, matrix.data(), &one, &one, descriptor, &info);
    if (info != 0) return false;
    std::vector<double> relative((std::size_t)n, 0.0);
    for (int i = 0; i < n; i++)
        if (owner(i, i) == self) relative[i] = matrix[at(i, i)] * matrix[at(i, i)] / whole[i];
    gather(relative.data(), relative.size());
    for (std::size_t i = 0; i < which[self].size(); i++) pivot[i] = relative[which[self][i]];
    return std::all_of(relative.begin(), relative.end(),
                       [&](double p) { return p >= least_pivot && std::isfinite(p); });
}

void Boundary::solve(int k, double *b)
{
    if (n == 0) return;
    std::vector<double> x = spread(k, b);
    gather(x.data(), x.size());
    const int sides = part(k, tile, column, columns);
    std::vector<double> side(std::max<std::size_t>(1, (std::size_t)own_rows * (std::size_t)sides));
    const auto for_own = [&](const auto &visit) {
        for (int c = 0; c < k; c++)
            for (int i = 0; i < n; i++)
                if (owner(i, c) == self) visit(x[(std::size_t)c * (std::size_t)n + i], side[at(i, c)]);
    };
    for_own([](double &whole, double &tiled) { tiled = whole; });
    int info = 0, sides_descriptor[9];
    describe(sides_descriptor, n, k, tile, context, own_rows);
    pdpotrs_("L", &n, &k, matrix.data(), &one, &one, descriptor, side.data(), &one, &one, sides_descriptor, &info);
    std::fill(x.begin(), x.end(), 0.0);
    for_own([](double &whole, double &tiled) { whole = tiled; });
    gather(x.data(), x.size());
    const std::vector<int> &own = which[self];
    for (std::size_t c = 0; c < (std::size_t)k; c++)
        for (std::size_t i = 0; i < own.size(); i++) b[c * own.size() + i] = x[c * (std::size_t)n + own[i]];
}

// The factor is needed for solutions behind it.
void Boundary::invert(double *z)
{
    if (n == 0) return;
    const std::vector<double> factor = matrix;
    int info = 0;
    pdpotri_("L", &n, matrix.data(), &one, &one, descriptor, &info);
    fetch_blocks(z);
    matrix = factor;
}
