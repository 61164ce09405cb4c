// Results of one run, as the engine leaves them in project::runresults.
//
// All arrays come from the C allocator, belong to the record and are released by
// project::freerun; an array that the run did not make is null. On a machine with
// 4-byte pointers the byte positions are a contract (src/vorn/contract.cpp).
// Lengths in metres, angles in radians, except the residuals and the standard
// deviations of directions and vertical angles, which are in the host's raw unit.
//   npt   returned points, stations first: nstar + ntarr
//   nres  ndist + ndifh + ndir1 + ndir2, in this order in all residual arrays
//   nrow  rows of the lump table: every lump with each of its epochs but the reference

#ifndef VORN_RESULT_H
#define VORN_RESULT_H

struct result {
    int irun; // run mode
    int dim;
    int nstar, ntarr; // returned stations and targets

    int *ihost;                 // [npt] host index of a point; a target's index stands after the stations
    int *code1, *code2, *code3; // [npt] 1 free in the datum, 2 free outside it, 3 weighted, 4 fixed
    double *x0, *y0, *z0;       // [npt] approximate coordinates
    double *xpt, *ypt, *zpt;    // [npt] final coordinates
    double *sxpt, *sypt, *szpt; // [npt] their standard deviations, 3D only
    double *rx, *ry, *rz;       // [nstar] orientation of each station, 3D only
    double *srx, *sry, *srz;    // [nstar] their standard deviations

    int ndist, ndifh, ndir1, ndir2; // sizes of the four residual blocks
    int *iobs;                      // [nres] index of the observation in its host list
    double *res;                    // [nres] residual
    double *sres;                   // [nres] its standard deviation
    int *iout;                      // [nres] marks, 0 or 1: outside the histogram,
    int *inorm, *inormb;            // [nres] normal test, normal test with divided level,
    int *itau, *itaub;              // [nres] tau test, tau test with divided level

    int dof;                   // degrees of freedom
    alignas(8) double sig0;    // a-priori standard deviation of unit weight
    alignas(8) double sigpost; // a posteriori
    int itest;                 // one-tailed test: 1 passed, -1 failed, 0 not made

    // A kind of observation: a-priori and a-posteriori standard deviation, goodness
    // of fit (1 passed, -1 failed, 0 not made), counts of the last four marks.
    alignas(8) double sdist;
    alignas(8) double spdist;
    int ichidist, nnormdist, nnormbdist, ntaudist, ntaubdist;
    alignas(8) double sdifh;
    alignas(8) double spdifh;
    int ichidifh, nnormdifh, nnormbdifh, ntaudifh, ntaubdifh;
    alignas(8) double sdir1;
    alignas(8) double spdir1;
    int ichidir1, nnormdir1, nnormbdir1, ntaudir1, ntaubdir1;
    alignas(8) double sdir2;
    alignas(8) double spdir2;
    int ichidir2, nnormdir2, nnormbdir2, ntaudir2, ntaubdir2;
    alignas(8) double saz;
    alignas(8) double spaz;
    int ichiaz, nnormaz, nnormbaz, ntauaz, ntaubaz;

    // Point ellipses in the planes 1-2, 1-3, 2-3: semi-axes a >= b, bearing t in radians.
    double *ell12a, *ell12b, *ell12t; // [npt]
    double *ell13a, *ell13b, *ell13t;
    double *ell23a, *ell23b, *ell23t;

    int nrow;
    int *ilump, *iepoch, *iref; // [nrow] lump index, epoch, reference epoch
    double *tx, *ty, *tz;       // [nrow] translation
    double *lrx, *lry, *lrz;    // [nrow] rotation
    double *tscale;             // [nrow] scale
    double *stx, *sty, *stz;    // [nrow] their standard deviations
    double *slrx, *slry, *slrz;
    double *stscale;
};

#endif
