// Least squares with the full normal matrix, solved by Gauss-Jordan elimination.

#ifndef VORN_JORDAN_H
#define VORN_JORDAN_H

#include "solution/solution.h"

class jordan final : public solution {
public:
    explicit jordan(const solverinput &in);

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
    friend struct jordan_access; // white-box tests

    void gaussj(const double *a, double *b, int n, double *x, double *ainv, double *det);
    static void swapd(double *a, double *b);
    static double clampdet(double det);
    void seterror(int code);
    int geterror();
    void checkalloc(void *p);

    double tiny;
    int ierralloc; // error code of a failed allocation
    int ierror;    // last error
    double *norm;  // [nunk][nunk] normal matrix with datum border, row by row
};

#endif
