// Abstract class under the three solvers: the iteration and inversion frames, the row
// of every observation kind, the statistics and the reports.
//
// One iteration is a Gauss-Newton step. Every observation gives one row: coefficients
// w * d(computed)/d(unknown), right-hand side w * (observed - computed), with
// w = a-priori standard deviation of the list / own standard deviation. Rows carry the
// square root of the weight, so a solver accumulates plain products.
// It takes n1 entries of the first and n2 of the second kind from the row buffer by
// addrow(n1, n2, b).
//
// Helpers that need no solver are static functions of their files: they take the settings and
// the network that they read.

#ifndef VORN_SOLUTION_H
#define VORN_SOLUTION_H

#include <stdio.h>

#include "solution/histograms.h"
#include "solution/rowbuffer.h"
#include "vorn/settings.h"

namespace vornengine {

struct testlimits; // limits of the residual tests, private to the residual analysis

struct residualsum; // what the residuals of a kind add up to, private to their covariances

class solution : public solverinput, public rowbuffer, public histograms {
public:
    explicit solution(const solverinput &in);

    virtual void finish() = 0;      // releases all arrays of the solver
    virtual void banner() = 0;      // head of the report
    virtual void debugnormal() = 0; // prints the system
    virtual int prepare() = 0;      // allocates; non-zero stops the run
    virtual void zeronormal() = 0;  // clears the system, writes the datum rows
    virtual int resolution() = 0;   // solves for delta; non-zero stops the run
    virtual void addrow(int n1, int n2, double b) = 0;
    virtual void buildgps(int ibase, const int iu[6], const double w[3]) = 0;
    virtual int inverse() = 0; // makes inv; non-zero stops the inversion

    // Adjusts. Returns 0; -2 stop in prepare; -3 stop in resolution; -4 divergence or no
    // convergence. After 0 with irun other than 0 the arrays stand for inversion; on every
    // other road they are released.
    int iterate();

    // Inverse, statistics, standard deviations. Returns 0; -1 no memory for the histograms;
    // -5 no inverse. The arrays are released.
    int inversion();

protected:
    friend struct solution_access; // white-box tests

    ~solution() = default; // objects are deleted through their own class

    // frame
    int iterations(int *iter);
    int testdelta(int iter, double limit, double *largest);
    void plainreport();
    int statistics(double *sigpost);
    void normal();
    int statalloc();

    // observation geometry
    void norm_dist();
    void norm_difh();
    void norm_dir1();
    void norm_dir2();
    void norm_az();
    void setrot(int which, int i, double *ca, double *sa, double *cb, double *sb, double *cc, double *sc);
    double distance(int i, double d[3], double r1[3][3], double r2[3][3], int *l1, int *l2);
    void distrow1(int i, double c, double w, const double d[3], const double r1[3][3], const double r2[3][3], int l1,
                  int l2);
    void distrow2(int i, double *c, double w, const double d[3], const double r1[3][3], const double r2[3][3], int l1,
                  int l2);
    void difhrow(int i, double dh, double w);
    double dir1comp(int i, double d[3], double e[3], double *rr, double r1[3][3], double r2[3][3], int *l1, int *l2);
    void dir1row1(int i, double w, const double e[3], double rr, double g[3], const double r1[3][3],
                  const double r2[3][3], int l1, int l2);
    void dir1row2(int i, double w, const double d[3], const double e[3], double rr, const double g[3], double ca,
                  double sa, double cc, double sc, const double r1[3][3], const double r2[3][3], int l1, int l2);
    double dir2comp(int i, double d[3], double e[3], double *rr, double *l, double r1[3][3], double r2[3][3], int *l1,
                    int *l2);
    void dir2row1(int i, double w, const double d[3], const double e[3], double rr, double l, double g[3],
                  const double r1[3][3], const double r2[3][3], int l1, int l2);
    void dir2row2(int i, double w, const double d[3], double ca, double sa, double cb, double l, const double g[3],
                  const double r1[3][3], const double r2[3][3], int l1, int l2);
    double azcomp(int i);
    void difference(const measure *m, double d[3], double r1[3][3], double r2[3][3], int *l1, int *l2);
    void toinstrument(const double d[3], double e[3]);
    void coorentries(const measure *m, double f, const double v[3], const double r1[3][3], const double r2[3][3],
                     int l1, int l2);
    void lumpentries(const measure *m, double f, const double v[3], const double r1[3][3], const double r2[3][3],
                     int l1, int l2);
    void coorentry(int number, double c);  // appends to the first-kind row
    void paramentry(int number, double c); // appends to the second-kind row
    double withinturn(double v);           // a misclosure of angles, brought back by one turn at most

    // reductions
    double distred(int i);
    void geomvec(int which, int i, double n[3], double l[3], double g[3]);
    double dir1red(int i);
    double dir2red(int i);

    // images and baselines
    void norm_photo();
    int image_coor(int i, int icam, double d[3], double e[3], double *u, double *v, double r1[3][3], double r2[3][3],
                   int *l1, int *l2);
    void photorow1(int i, int which, int icam, double f, const double e[3]);
    void photorow2(int i, int which, int icam, double f, const double d[3], const double e[3], double ca, double sa,
                   double cb, double sb, double cc, double sc);
    void photoangles(const point *p, int which, double k, const double d[3], const double e[3], double ca, double sa,
                     double cb, double sb, double cc, double sc);
    void norm_gps();

    // lumps and constraints
    void lumpdelta(const measure *m, double d[3], double r1[3][3], double r2[3][3], int *l1, int *l2);
    void lumppoint(int ilump, int j, double x[3], double r[3][3]);
    void lumpderiv(int ilump, int j, const double x[3], const double r[3][3], double b[3][7]);
    void lumprow(int first, double f, const double v[3], const double b[3][7]);
    void norm_lump();
    void norm_fixh();
    void norm_weighted();
    int lumpmoved(const point *p, int t, double x[3], double r[3][3]);
    void coorcondition(int number, double a, double b);
    void paramcondition(int number, double a, double b);
    void holdparam(int number, double wanted, double value);
    void lumpconditions(const lump *l, int j);
    void fixedscales(const lump *l);
    void weightparam(const point *p, int k);

    // shared by the least-squares solvers
    void traceobs(int withtyp); // lists the observations; withtyp adds typ to a distance
    void setcentre();           // means of the datum coordinates
    int indeximport();          // takes bycolumn with an imported net; 0, or -1 without memory
    void dropimport();
    double importdiff(int col, double previous);

    // statistics
    double Q(int i, int j) const // cofactor by its position in inv; 0 when that lies before inv
    {
        const long long at = (long long)i * nunk + j;
        return at >= 0 ? inv[at] : 0.0;
    }
    double cofres(int n1, int n2, double w);
    void addresidual(residualsum *s, measure *m, double v, double w, double wrow, const char *what, int i);
    double covdist(double *sum, double *dofc);
    double covdifh(double *sum, double *dofc);
    double covdir1(double *sum, double *dofc);
    double covdir2(double *sum, double *dofc);
    double covaz(double *sum, double *dofc);
    void gpscofactor(const gpsbase *g, double c[6]);
    double covgps(double *sum, double *dofc);
    double covphoto(double *sum, double *dofc);
    double rescov(double *dofc, double *vdist, double *vdifh, double *vdir1, double *vdir2, double *vaz, double *vgps,
                  double *vphoto);
    double variances(double sum, double dofc, double vdist, double vdifh, double vdir1, double vdir2, double vaz,
                     double vgps, double vphoto);
    void resanalysis(double sigpost, double dofc);
    void stddev(double f);
    double justres(int kind);
    double justdist(); // plain residuals of one list; weighted sum of squares
    double justdifh();
    double justdir1();
    double justdir2();
    double justphoto();
    double justaz();
    double plainresidual(measure *m, double v, double s);
    void gpsres(double *sum);
    void justtest(double sum);

    void testresidual(double r, double s, const testlimits *lim, int *count, kindresult *block, int *iflag,
                      char marks[5]);
    void kindresiduals(int kind, const char *title, const char *heading, measure *list, int n, const testlimits *lim,
                       int *count, kindresult *block);
    void gpsresiduals(const testlimits *lim);
    void photoresiduals(const testlimits *lim, kindresult *block);
    void histogram(const char *title, const int *count, int n, int *verdict);
    int classify(double r, double s, double sigpost, double cn, char *mn, double cnb, char *mnb, double ct, char *mt,
                 double ctb, char *mtb, char *mout);

    double rootvariance(int i, double f);
    void pointheight(point *p, double f);
    void pointplane(point *p, double f);
    void pointspace(point *p, double f);
    void stationerrors(point *p, double f);
    void lumperrors(lump *l, double f);
    void pairellipses(double f);
    void ellipse(double qxx, double qyy, double qxy, double *a, double *b, double *t);
    int findpoint(const char *name);
    void relellipse(int k, int i, int j, double f);

    // reports and exports
    void applydelta(int iter);
    void tracedelta(int iter);
    void adddatum();
    void corrections();
    void finalresults(int iter);
    double toraw(int kind, int mode, double x); // angles of a kind to the host's unit; lengths as they are
    int justout();
    void residualtables();
    void residualtable(int kind, const char *title, const measure *list, int n);
    void gpstable();
    void phototable();
    void writeQcon();
    void writecofactors(FILE *f, const int *chosen, int row);
    void writestations(FILE *f, const int *chosen, int n);
    void input_for_tessalpin(FILE *f);
    void stationcofactors();

    double centre[3]; // means of the datum coordinates
    double rot[3][3]; // rotation of the current station
    double *rhs;
    double *delta;     // [nunk] solution of one iteration
    double *inv;       // [nunk][nunk] inverse, row by row
    double confidence; // percent
    int *bycolumn;     // [nunk1 + 1] with an imported net, see indeximport
    int nskip;         // rows that lists which ended early left out of this assembly
};

// Weight factor of an observation: a-priori standard deviation s of its list over its own,
// WEIGHT_CAP when that one is not at least SIGMA_LIMIT.
double weightfactor(double s, double sigma);

// Brings an angle (radians) below two pi in magnitude, keeping its sign.
void reduceangle(double *a);

} // namespace vornengine

#endif
