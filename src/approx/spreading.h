// What one spread works on; the tables are those of approx.h.

#ifndef VORN_SPREADING_H
#define VORN_SPREADING_H

namespace vornengine {

struct spreading {
    double *xap, *yap; // [npoints]
    double *oap;       // [nsta]
    int nrow;          // rows of table
    int **table;       // [nrow][npoints]
    int *itheo;        // [nsta]
    int *iobj;         // [ntar]
    int nused;         // done stations that measure distances
    int nresec;        // stations that can be resected at the start
    int npair;         // pairs of stations that sighted each other
    int nleft;         // stations to compute
    int iscale;        // 1: distances may be used in the frame at hand
    int itransf;       // 1: the frame is a local one
};

} // namespace vornengine

#endif
