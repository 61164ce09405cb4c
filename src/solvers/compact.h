// Least squares with the normal matrix in profile storage, for large networks.
//
// Each row of the lower triangle is held from its first non-zero column to the diagonal
// (profile.h). The unknowns keep their numbers: coordinates, nuisance parameters, datum
// rows. The zero diagonal of the datum rows is avoided by exchanging them with the last
// coordinates just before each factorization. The inverse is made on demand, by a second
// assembly at the final coordinates.

#ifndef VORN_COMPACT_H
#define VORN_COMPACT_H

#include <stddef.h>

#include "solution/solution.h"

namespace vornengine {

class compact final : public solution {
public:
    explicit compact(const solverinput &in);

    void finish() override;
    void banner() override;
    void debugnormal() override;
    int prepare() override;
    void zeronormal() override;
    int resolution() override;
    void addrow(int n1, int n2, double b) override;
    void buildgps(int ibase, const int iu[6], const double w[3]) override;
    int inverse() override;

private:
    friend struct compact_access; // white-box tests

    // profile
    void lower(const int *first, int nfirst, const int *second, int nsecond);
    void scanpair(const measure *list, int n, int first, int last, int alsorefraction);
    void scangps();
    void scanphoto();
    void scanobs();
    void scanextra();
    void scanlumps();
    void scanimport();
    int addresses();
    void fullrows(int first, int last);

    // system
    double *element(int row, int col);
    void add(int row, int col, double value);
    void put(int row, int col, double value);
    void importblock();
    double heightscale();
    void datumrows();

    // exchanges before a factorization
    int npair();
    void pair(int k, int *a, int *b);
    int exchange(int a, int b);
    int exchanges();
    void swapdelta();
    void swapinverse(int a, int b);

    // trace
    void pivotline(const char *routine, int row);
    void printrows(const char *type, int first, int last);

    size_t *compadd; // [nunk + 1] address of each row; first columns during the scan
    double *cnorm;   // [compadd[nunk]] profile of the normal matrix
    double *work;    // [solvespace] second buffer of exchange, pivots and panels of the factorization
};

} // namespace vornengine

#endif
