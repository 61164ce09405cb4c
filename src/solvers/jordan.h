// Least squares with the full normal matrix, solved by Gauss-Jordan elimination.

#ifndef VORN_JORDAN_H
#define VORN_JORDAN_H

#include "solution/solution.h"

namespace vornengine {

class jordan final : public solution {
public:
    explicit jordan(const solverinput &in);
    ~jordan(); // releases the arrays of a run that was solved and not inverted; writes no file
    jordan(const jordan &) = delete;
    jordan &operator=(const jordan &) = delete;

    void finish() override; // may be called twice
    void banner() override;
    void debugnormal() override;
    int prepare() override; // -1 without memory
    void zeronormal() override;
    int resolution() override; // -20 without memory: delta and inv are zero then
    void addrow(int n1, int n2, double b) override;
    void buildgps(int ibase, const int iu[6], const double w[3]) override;
    int inverse() override; // as resolution, for error propagation; otherwise inv stands already

private:
    friend struct jordan_access; // white-box tests

    void releasework();
    void debugrows(const char *title, int first, int last, long long *count);
    void addimport();
    void condition(int row, int col, double c);
    void datumrows();
    void gaussj(const double *a, double *b, int n, double *x, double *ainv, double *det);
    void eliminate(double *a, double *b, int n, double *det, int *pivots, char *used);
    static double preparerow(double *a, double *b, int n, int irow, int icol);
    static void unscramble(double *a, int n, const int *pivots);
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

} // namespace vornengine

#endif
