// Singular values of matrices with few columns, and their reduction row by row.
//
// Neither routine forms A'A: small singular values come out with an absolute error of a few
// roundings of the largest one, so that a threshold of 1e-10 beside 1 separates zero from small.
// Nothing here has a unit.

#ifndef VORNADJUST_SMALL_SVD_H
#define VORNADJUST_SMALL_SVD_H

#include <vector>

namespace vornadjust {

// A matrix by columns: entry of row i and column j is a[j * rows + i].
struct Dense {
    int rows = 0;
    int cols = 0;
    std::vector<double> a; // [rows * cols]

    Dense() = default;
    Dense(int m, int n) : rows(m), cols(n), a(static_cast<std::size_t>(m) * n, 0.0) {}
    double *col(int j) { return a.data() + static_cast<std::size_t>(j) * rows; }
    const double *col(int j) const { return a.data() + static_cast<std::size_t>(j) * rows; }
    double &operator()(int i, int j) { return col(j)[i]; }
    double operator()(int i, int j) const { return col(j)[i]; }
};

// A = U diag(s) V', s falling.
struct SmallSvd {
    std::vector<double> s; // [cols]
    Dense u;               // rows by cols; column j is zero where s[j] is
    Dense v;               // cols by cols, orthonormal
};

// Singular values and vectors of a by one-sided Jacobi rotations (Hestenes, 1958; Demmel and
// Veselic, 1992: small singular values of scaled matrices keep their relative accuracy).
// Any shape; a matrix wider than long has singular values of 0. Entries must be finite.
SmallSvd small_svd(Dense a);

// Number of leading values of s, which falls, that reach the threshold.
int count_from(const std::vector<double> &s, double threshold);

// Upper triangle R with R'R = A'A, made from the rows of A one by one by Givens rotations.
class Triangle {
public:
    explicit Triangle(int cols) : r(cols, cols) {}
    // Takes one more row, [cols]; the row is used up as work.
    void add(double *row);
    int cols() const { return r.cols; }
    // Upper triangular, cols by cols.
    const Dense &matrix() const { return r; }

private:
    Dense r;
};

} // namespace vornadjust

#endif
