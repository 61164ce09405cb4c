// Least absolute values: the unknowns that make the weighted sum of the absolute residuals
// least, found as a linear programme by exchange steps in one dense tableau.
//
//   minimise  sum newpd[i] |v[i]|,   v[i] = a_i x - l[i]     (row i without weight)
//   under     d_k x = 0              for the ndatum conditions of a free network
//
// The tableau holds the columns of the non-basic variables only ("part N+"):
//
//   basic variable of row i  +  sum over j of a[i][j] (non-basic variable j)  =  delta[i] >= 0
//
// Every variable has an identifier, with U = nunk and M = nobs:
//
//   0 .. U-1               unknown, positive part      complement id + U
//   U .. 2U-1              unknown, negative part                 id - U
//   2U .. 2U+M-1           residual, positive part                id + M
//   2U+M .. 2U+2M-1        residual, negative part                id - M
//   2U+2M ..               artificial variable of a datum row     none
//
// Rows: distances, height differences, horizontal directions, vertical angles, fixed heights,
// then the datum conditions. There are no rows for azimuths, baselines, weighted parameters,
// lumps and images: a network with rows of such kinds is refused by resolution, baselines
// take no part.

#ifndef VORN_SIMPLEX_H
#define VORN_SIMPLEX_H

#include "solution/solution.h"

namespace vornengine {

struct balancing; // work arrays of the balancing, private to it

enum { SIMPLEX_GROUP = 4 }; // rows are worked in whole groups of columns

class simplex final : public solution {
public:
    explicit simplex(const solverinput &in);
    ~simplex() { simplex::finish(); }
    simplex(const simplex &) = delete;
    simplex &operator=(const simplex &) = delete;

    void finish() override; // may be called twice
    void banner() override; // makes the run one of a single pass
    void debugnormal() override {}
    int prepare() override; // -1 without memory, or when the balancing fails
    void zeronormal() override;
    int resolution() override; // -3 datum rows at fault or too many observation rows, -8 without memory
    void addrow(int n1, int n2, double b) override;
    void buildgps(int ibase_, const int iu[6], const double w[3]) override;
    int inverse() override { return 0; }

private:
    friend struct simplex_access; // white-box tests

    // tableau
    void dropconstants();
    int allocate(int nparam);
    void fillweights();
    void copyrow(int n1, int n2, double *row) const;
    void datumrows();
    void condition(int k, int number, double value);

    // balancing
    int balance();
    int takedesign(balancing *b);
    int takenormal(balancing *b);
    int design(double **row);
    void designdist(double **row);
    int designdir1(double **row);
    int designdir2(double **row);
    int columns(const double *row, bool all, int *list) const;
    void addproducts(balancing *b, const double *row, double p);
    void invertnormal(balancing *b);
    double influence(const balancing *b, int i) const;
    double sweep(balancing *b, double rbar, bool first);
    void equalize(balancing *b, double rbar);

    // stages
    int artificialstage(int *rows, int *cols);
    int removeartificial(int rows, int *cols);
    void unknownstage(int rows, int cols);
    int residualstage(int rows, int cols);
    int exchanges(int rows, int cols, int limit, int *iobsout);
    void stagetrace(int rows, int cols);
    void stageend(int stage, int res);

    // exchange step
    void decode(int id, int *complement, int *type, int *index) const;
    int search1(int rows, int cols, int *newid, int *col);
    int search2(int rows, int cols, int *newid, int *col, const int *iobsout);
    void negatecolumn(int rows, int col);
    int pivotrow(int rows, int cols, int col) const;
    void exchange(int rows, int cols, int newid, int col, int row);
    void flush(int rows, int cols, int col);
    void turnaround(int rows, int cols);

    // results
    void readout(int rows);
    double correction(int number) const;
    void showcorrections();
    void showresiduals();
    int residuals(const char *heading, measure *list, int n, int first, double threshold, int angle);

    // traces
    void unknowntable();
    int tableoflist(const char *text, const measure *list, int n, int id);
    void debugsimplex(int rows, int cols);
    void debugblock(int rows, int first, int last);

    double gcost;  // global cost
    double *cost;  // [nunk] cost line of part N+
    int *inplus;   // [nunk] variable of each column
    int *ibase;    // [rows] basic variable of each row
    double **a;    // [rows] rows of the tableau, whole groups of columns; nunk are in use
    double *newpd; // [rows] cost weight of each row; rhs holds the first weights, delta the right-hand sides
    int nobs;      // observation rows stored so far, 0 before the pass; nplan behind it

    double *block; // the memory of all rows of a
    int nplan;     // observation rows that the lists ask for
    int nextra;    // rows that came beyond them and were not stored
    bool flushed;  // no rounding stands in the tableau, every row went through an exchange
};

} // namespace vornengine

#endif
