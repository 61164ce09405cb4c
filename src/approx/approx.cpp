// What is to be computed, and the datum to start from.

#include "approx/approx.h"

#include <math.h>

approx::approx(project *pproject_, point *points_, measure *dist_, measure *dir1_, measure *dir2_, int nsta_, int ntar_,
               int ndist_, int ndir1_, int ndir2_, int *ia1_)
{
    pproject = pproject_;
    out = pproject->out;
    pi = 4 * atan(1.0);
    idebug = pproject->idebug;
    dim = pproject->dim;
    points = points_;
    nsta = nsta_;
    ntar = ntar_;
    npoints = nsta + ntar;
    dist = dist_;
    dir1 = dir1_;
    dir2 = dir2_;
    ndist = ndist_;
    ndir1 = ndir1_;
    ndir2 = ndir2_;
    ia1 = ia1_;
    nunk1 = nunk2 = nunk = 0;
    shots = seen = seenby = lengths = pairlist();
}

approx::~approx() { drop_lists(); }

int approx::compute(int) { return -12; }

int approx::datum_approx() { return -2; }

int approx::istotal(int) { return 0; }
