// Working records of a run.
//
// One flat array holds all points, stations first, then targets; an observation
// refers to its points by address. Lengths are metres, angles radians. All records
// start zeroed. Before set_prepare an n0 or n1 is a code, after it the number of an
// unknown; -1 always means none.

#ifndef VORN_RECORDS_H
#define VORN_RECORDS_H

#include "vorn/project.h"

namespace vornengine {

// Codes of n0 and n1 before numbering.
enum {
    N_NONE = -1,         // fixed, or not in this dimension
    N_UNKNOWN = 1,       // unknown with an approximate value
    N_MISSING = 9,       // unknown without an approximate value
    N_FIXED_MISSING = -9 // fixed, but its value is still to be computed
};

// Roles of a coordinate in the datum, defdatum[0..2]; of an orientation, defdatum[3..5].
enum {
    DATUM_USED = 1,
    DATUM_UNUSED = 0,
    DATUM_WEIGHTED = -1,
    DATUM_FIXED_HEIGHT = -3 // defdatum[2] in mixed coordinates: height fixed, plane position not
};

const double WEIGHT_CAP = 100000000.0; // weight factor of a standard deviation below SIGMA_LIMIT
const double SIGMA_LIMIT = 1.0e-07;    // metres or radians

struct point {
    char name[12];    // first member: the record's address prints as its name
    int typ;          // 1: levelled instrument
    double xpt[3];    // working coordinates
    double x0[3];     // coordinates at the start of the adjustment
    double sxpt[3];   // standard deviations, a priori, then a posteriori
    double h;         // height above the sphere; 0 without an earth model
    int n0[3];        // code, later unknown number, of each coordinate
    double xex[6];    // Rx1, Rx2, Rx3, additive constant, scale, refraction term
    double e0[6];     // xex at the start; of a weighted constant its a-priori value
    double sxex[6];   // standard deviations of xex
    int n1[6];        // code, later number among the nuisance unknowns, of each xex
    int defdatum[8];  // role in the datum
    int ntie;         // observations that touch the point
    int ilump;        // lump, 1 to nlump; 0 the world
    double ell[3][3]; // semi-major axes, semi-minor axes, bearings; planes 1-2, 1-3, 2-3
};

struct measure {
    int typ;       // distances: 1 takes the station's constants; images: index of the camera
    point *p1;     // from; the station
    double h1;     // height of the instrument, metres
    point *p2;     // to
    double h2;     // height of the target, metres
    double val[2]; // value and its standard deviation
    double res[2]; // residual and its cofactor root
    int iflag;     // class code, later mark word
    int time;      // epoch, 0 none
};

struct gpsbase {
    point *p1, *p2; // the two ends
    double dx[3];   // measured components, p2 - p1
    double w[6];    // inverse covariance: 11, 21, 22, 31, 32, 33
    double res[3];  // residuals
    double nres[3]; // their standard deviations
    int iflag[3];   // class codes, later mark words
};

struct camera {
    char name[16];
    double pu, cu;  // pixel size in u, half the width in pixels
    double pv, cv;  // the same in v and height
    int npar;       // inner parameters in use, 3 or 10
    double par[10]; // focal length; principal point x, y; affinity a, b; radial k1, k2, k3; decentring p1, p2
    int ipar[10];   // -1 fixed, otherwise number among the nuisance unknowns
};

enum { LUMP_PARAMETERS = 7 }; // translation, rotation, scale of one epoch

// A lump; arrays have one entry for each epoch but the reference.
struct lump {
    int id;     // index of the host
    int kind;   // 1 rotations held at zero, 2 scale held at 1
    int nepoch; // epochs, the reference among them
    int iref;   // reference epoch
    int *iunk;  // [nepoch - 1] first of seven nuisance unknowns
    int *epoch; // [nepoch - 1]
    double *tx, *ty, *tz, *rx, *ry, *rz, *scale;
    double *stx, *sty, *stz, *srx, *sry, *srz, *sscale; // null unless the run makes them
};

// Outcome of the tests on one kind of observation.
struct kindresult {
    double sp;         // a-posteriori standard deviation
    int ichi;          // goodness of fit: 1 passed, -1 failed, 0 not made
    int nnorm, nnormb; // residuals over the normal limit, over the divided normal limit
    int ntau, ntaub;   // over the tau limit, over the divided tau limit
};

// What the statistics leave for the host.
struct tempresult {
    int dof;        // degrees of freedom
    double sigpost; // a-posteriori standard deviation of unit weight
    int itest;      // one-tailed test: 1 passed, -1 failed, 0 not made
    kindresult dist, difh, dir1, dir2, az, photo;
};

} // namespace vornengine

#endif
