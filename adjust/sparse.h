// A symmetric matrix by its lower triangle in compressed columns.
//
// Column j holds its diagonal element first and then the rows below it, ascending:
//   rows  row[start[j]] = j < row[start[j] + 1] < ... < row[start[j + 1] - 1],
//   values beside them in value[].
// Example, 3 unknowns with elements (0,0) (2,0) (1,1) (2,2): start 0 2 3 4, row 0 2 1 2.
// Every diagonal element is there, be it 0. An element that is 0 still belongs to the pattern,
// so that a pair of unknowns whose cofactor is wanted can be named by such an element.

#ifndef VORNADJUST_SPARSE_H
#define VORNADJUST_SPARSE_H

#include <cstdint>
#include <vector>

namespace vornadjust {

struct SymmetricMatrix {
    int n = 0;                             // order
    std::vector<std::int64_t> start = {0}; // [n + 1] place of the diagonal element of each column
    std::vector<int> row;                  // [start[n]]
    std::vector<double> value;             // [start[n]]; empty where the pattern alone is meant
};

// Whether start and row are as described above, with values for all elements or for none.
bool is_well_formed(const SymmetricMatrix &a);

// y = A x.
//   x  in   [n]
//   y  out  [n]
void multiply(const SymmetricMatrix &a, const double *x, double *y);

} // namespace vornadjust

#endif
