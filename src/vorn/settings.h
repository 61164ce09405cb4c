// What the steps of a run and its solver work on: the settings, and the tables of the network.
//
// Both records are bases of vornrun, which owns the tables, and of the solvers, which copy the
// records and share the tables. What a solver changes in its copy (the mode and the order of
// the system, the datum, the exported points) the run does not see; coordinates, residuals and
// all else behind the pointers are the run's own.

#ifndef VORN_SETTINGS_H
#define VORN_SETTINGS_H

#include <stdio.h>

#include "loading/hostpoints.h"
#include "vorn/project.h"
#include "vorn/records.h"

namespace vornengine {

struct side_files; // vorn/sidefiles.h

// Read from the project once, by the constructor of a run. What the host changes afterwards
// is not seen, except in the records behind the pointers.
struct settings {
    explicit settings(project *p);

    double lengthfactor() const; // metres in the host's unit of length
    hostpoints hosts() const { return {psta, npsta, ptar, nptar}; }

    project *pproject; // the host object
    Feedback *pfeedback;
    char *pname; // the run's file name inside the project, not a copy
    FILE *out;   // report stream, the host's
    int idebug;
    int dim;         // 1, 2, 3; loading makes a photo run one in space
    int irun;        // -2 error propagation, -1 L1, 0 solution, 1 statistics
    int iearth;      // 0 none, 1 cartesian, 2 mixed coordinates
    double radius;   // metres
    double trans[3]; // metres
    double horigin;  // metres
    double latitude; // radians
    int itmax;
    double convergence;  // metres
    int iredux;          // reduction code of distances
    int iunit;           // unit code of lengths
    int iphoto;          // 1: photogrammetric data are present
    station_input *psta; // host records
    int npsta;
    target_input *ptar;
    int nptar;
    measure_input *pdist;
    int npdist;
    measure_input *pdifh;
    int npdifh;
    measure_input *pdir1;
    int npdir1;
    measure_input *pdir2;
    int npdir2;
    double sdist, sdifh, sdir1, sdir2; // a-priori standard deviations of the lists
    double suv, saz, sgps;
    double pi;
    side_files *sidefiles; // the host's record of lost files, or null; entered after construction
};

// Tables and counts; all are empty at first.
struct network {
    point *points = NULL; // [npoints] stations first, then targets
    int nsta = 0, ntar = 0, npoints = 0;
    measure *dist = NULL, *difh = NULL, *dir1 = NULL, *dir2 = NULL;
    int ndist = 0, ndifh = 0, ndir1 = 0, ndir2 = 0;
    measure *az = NULL;
    int naz = 0;
    gpsbase *gps = NULL;
    int ngps = 0;
    measure *obsuv1 = NULL, *obsuv2 = NULL; // [nobsuv] image coordinates u and v
    int nobsuv = 0;
    double sigma0 = 0.0; // a-priori standard deviation of unit weight
    int nweighted = 0;   // coordinates and parameters with an a-priori weight
    int nfixh = 0;       // fixed heights in mixed coordinates
    int nlump = 0;       // distinct lump indexes, later the lumps that stand
    lump *lumps = NULL;  // [nlump]
    int ncamera = 0;
    camera *cameras = NULL;       // [ncamera]
    int icon = 0;                 // connected net: 0 none, 1 export, 2 import, 3 both
    int nexport = 0, nimport = 0; // exported and imported points
    int *lcon = NULL;             // [max(nexport, nimport)] index table of the connected net
    double *Qcon = NULL;          // packed matrix of the connected net
    // Coordinates, nuisance parameters, datum conditions, order of the system.
    int nunk1 = 0, nunk2 = 0, ndatum = 0, nunk = 0;
    double datum[7] = {0.0};     // entries of the conditions in force are set to 0
    tempresult *temp_res = NULL; // what the statistics leave; null when the run keeps none
};

// The list of one kind of observation: the host's records and the measures made of them.
struct kindlist {
    const char *name;
    measure_input *host; // [nhost]
    int nhost;
    measure *list; // [*n]
    int *n;
};

struct solverinput : settings, network {
    explicit solverinput(project *p) : settings(p) {}

    kindlist listof(int kind); // KIND_..., a distance with constants aside
};

} // namespace vornengine

#endif
