// Similarity transformation in space between two lists of named points:
//
//     second = t + s R first
//
//   t        translation tx, ty, tz (metres)
//   s        scale
//   R        rotation by rx, ry, rz (radians), the rotation of a lump and of an instrument:
//              cb cc               cb sc               -sb
//              sa sb cc - ca sc    ca cc + sa sb sc    sa cb
//              sa sc + ca sb cc    ca sb sc - sa cc    ca cb
//            with the cosines and sines ca, sa of rx, cb, sb of ry, cc, sc of rz
//
// The points are matched by name. A closed formula gives the first rotation, a least
// squares refinement the result, which also goes into the report file "simili.out" of the
// working directory. Rotation or scale can be held.
//
// Use: construct, startsimili, and if it returned 0 runsimili; an object is good for one run.

#ifndef SIMILI_H
#define SIMILI_H

#include <stdio.h>

namespace vornengine {

struct simpoint {
    char name[16]; // compared as a text of at most 16 characters
    double x[3];   // coordinates, metres
    double sx[3];  // their standard deviations, metres; changed in place by a run
};

// A point of the first list and the point of the second list with the same name.
struct simpair {
    simpoint *first;
    simpoint *second;
};

class simili {
public:
    // Scale estimated. Lists and result stay the caller's.
    //   nref, pref  first list, the source     nend, pend  second list, the target
    //   res         out  7 doubles: tx, ty, tz, rx, ry, rz, scale; untouched before runsimili returns 0
    //   rotate      0 holds the rotation at none, any other value estimates it
    simili(int nref, simpoint *pref, int nend, simpoint *pend, double *res, int rotate);
    // The same with the scale held at the given value.
    simili(int nref, simpoint *pref, int nend, simpoint *pend, double *res, int rotate, double held);
    ~simili();
    simili(const simili &) = delete;
    simili &operator=(const simili &) = delete;

    // Opens the report and matches the lists. Returns
    //   0  ready
    //   1  "simili.out" can't be opened
    //   2  no memory for the pairs
    //   3  fewer than 3 pairs
    //   4  a pair's first point has a zero standard deviation, and no pair's second point has
    //   5  a pair's second point has a zero standard deviation, and no pair's first point has
    // Zero standard deviations on both sides: those of all points of both lists become 1.0.
    int startsimili();

    // Estimates the transformation, writes the report and fills res. Standard deviations of
    // paired points below 1.0e-06 are raised to that. Returns
    //   0  done; also when the refinement broke off or used up its 50 passes
    //   1  no memory for the centred coordinates, or startsimili has not made the pairs
    //   2  no memory for the matrices of the closed formula
    int runsimili();

    // Closes the report. Returns 0 when it is whole, otherwise the errno with which it could
    // not be opened or written.
    int closereport();

private:
    int nref;       // points of the first list
    int nend;       // points of the second list
    simpoint *pref; // first list, not owned
    simpoint *pend; // second list, not owned
    double *res;    // result, 7 doubles, not owned
    FILE *out;      // "simili.out", or null
    int ireport;    // errno of the report, 0 as long as it is whole
    int npair;      // pairs found
    simpair *pair;  // nref + nend entries, the first npair of them pairs; or null
    double pi;      // 3.14159...
    int irot;       // 0 rotation held; 1 estimated; from runsimili on 3, its place in p
    int iscale;     // 0 scale held; 1 estimated; from runsimili on its place in p, 3 or 6
    int nparam;     // parameters estimated: 3, 4, 6 or 7
    double scale;   // scale held, or its first value

    friend struct simili_access;

    void matchlists();
    int checksigmas();
    void release();

    int firstrotation(double ca[3], double cb[3], double R[3][3]);
    int closedrotation(struct closedform *w, const double ca[3], const double cb[3], double R[3][3]);
    void jacobi(double **a, int n, double *d, double **v, int *nrot);
    void eigsrt(double *d, double **v, int n);
    int rotangles(const double R[3][3], double *a, double *b, double *c);

    void holdrotation(double angle[3], double R[3][3]);
    void number();
    void startvalues(const double ca[3], const double cb[3], const double R[3][3], const double angle[3], double p[7]);
    int refine(double *p, double R[3][3]);
    int buildsim(const double *p, double R[3][3], double *N, double *t);
    double simresidual(int show, const double *p, const double R[3][3]);
    double scale_in(const double *p);
    int packidx(int i, int j);
    void report(int npass, const double p[7]);
};

} // namespace vornengine

#endif
