// Elements of the cofactor matrix of the estimated unknowns, in the datum that was chosen.
//
// Elements on the pattern of the factor come from the inverse on that pattern; any others from solves. Where ranks
// share the system, each has the elements of its own columns; what is made by solves, and the construction, is the work
// of all.

#ifndef VORNADJUST_COFACTORS_H
#define VORNADJUST_COFACTORS_H

#include <vector>

#include "adjust/free_datum.h"
#include "adjust/inverse.h"
#include "adjust/system.h"

namespace vornadjust {

// Refers to the system, factored without damping, and to the datum; both must outlive it unchanged.
class Cofactors {
public:
    Cofactors(const System &system, const FreeDatum &datum);

    // Makes the inverse on the pattern. False when the watch stopped it. Throws std::bad_alloc.
    bool invert(const InverseOptions &options);

    // Cofactors of k columns of the normal system that share a row, after invert(). By one thread at a time.
    //   q  out  [k][k]
    void block(int k, const int *columns, double *q) const;

    // The same of any columns. False when some share no row and the pattern has no element for them.
    bool find(int k, const int *columns, double *q) const;

    // Cofactors of k estimated unknowns of the model with m others, by m solves.
    //   q  out  [k][m]
    void solved(int k, const int *unknowns, int m, const int *others, double *q) const;

    // Multiplies a vector by the cofactors.
    //   x  in/out  [unknowns of the model]; entries of unknowns that are not estimated do not count, and become 0
    void multiply(double *x) const { multiply(1, x); }

    // The same of m vectors, one behind the other.
    void multiply(int m, double *x) const;

private:
    void leave(int k, const int *columns) const;

    const System &system;
    const FreeDatum &datum;
    Inverse inverse;
    mutable std::vector<char> touched; // of an inverse on a disk: stretches that are in memory
    mutable std::size_t brought = 0;   // numbers of these
    CofactorTransform change;
    std::vector<char> held; // [n]
};

} // namespace vornadjust

#endif
