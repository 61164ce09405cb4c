// The boundary between the parts of a network as a dense matrix that all processes hold together (ScaLAPACK).
//
// The matrix of order n, of which the lower triangle counts, is cut into square tiles of TILE numbers a side, dealt out
// to a grid of processes, rows by rows and columns by columns, in turn. A process that stands at (r, c) of a grid of R
// by C has the tiles (i, j) with i mod R = r and j mod C = c, as one matrix by columns.
//
// Sums and results are exchanged a few columns at a time: a process needs room for its tiles and its own square, and
// no more. Sums are made in the order of the processes, so that they are the same in every run.

#ifndef VORN_RANKS_BOUNDARY_H
#define VORN_RANKS_BOUNDARY_H

#include <mpi.h>

#include <cstddef>
#include <vector>

class Boundary {
public:
    Boundary();
    ~Boundary();
    Boundary(const Boundary &) = delete;
    Boundary &operator=(const Boundary &) = delete;

    // As those of vornadjust::Ranks. Throw std::bad_alloc.
    void set(int n, const std::vector<int> &own);
    void sum(double *x);
    bool factorize(const double *block, const double *diagonal, double least_pivot, double *pivot);
    void solve(int k, double *b);
    void invert(double *z);

private:
    struct Lists;

    int owner(int i, int j) const { return i / tile % rows * columns + j / tile % columns; }
    std::size_t at(int i, int j) const;
    std::vector<double> spread(int k, const double *b) const;
    void gather(double *x, std::size_t count) const;
    void add_blocks(const double *block);
    void fetch_blocks(double *z);
    template <class Visit> void for_elements(int process, int round, const Visit &visit) const;
    int rounds() const;
    void exchange(const std::vector<std::vector<double>> &out, std::vector<std::vector<double>> *in) const;

    static constexpr int tile = 64;
    int self = 0, size = 1;
    int context = -1, rows = 1, columns = 1, row = 0, column = 0; // grid of processes
    int n = 0;
    int own_rows = 0, own_columns = 0;   // of the tiles of this process
    int descriptor[9] = {};              // of the matrix
    std::vector<std::vector<int>> which; // [processes] unknowns of each, ascending
    std::vector<double> matrix;          // [own_columns][own_rows]
};

#endif
