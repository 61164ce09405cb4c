// A simplex solver on records that a test writes by hand: points with consecutive unknowns and
// lists of observations, no loading.

#ifndef TESTS_SIMPLEX_HAND_H
#define TESTS_SIMPLEX_HAND_H

#include <stdio.h>

#include <memory>
#include <vector>

#include "support/bare.h"

class Hand : public BareRecords {
public:
    explicit Hand(int d) : BareRecords(d), dim(d) {}

    // All coordinates of the dimension unknown.
    point &add(const char *name, double x, double y, double z = 0.0)
    {
        point p = point();
        snprintf(p.name, sizeof p.name, "%-8s", name);
        p.xpt[0] = p.x0[0] = x;
        p.xpt[1] = p.x0[1] = y;
        p.xpt[2] = p.x0[2] = z;
        p.xex[4] = 1.0;
        for (int c = 0; c < 3; c++) {
            p.n0[c] = dim == 1 ? (c == 2 ? nunk1++ : N_NONE) : c < dim ? nunk1++ : N_NONE;
            p.defdatum[c] = DATUM_USED;
        }
        for (int c = 0; c < 6; c++) p.n1[c] = N_NONE;
        points.push_back(p);
        return points.back();
    }

    measure &observe(std::vector<measure> &list, int from, int to, double val, double sigma)
    {
        measure m = measure();
        m.p1 = &points[from];
        m.p2 = &points[to];
        m.val[0] = val;
        m.val[1] = sigma;
        list.push_back(m);
        return list.back();
    }

    simplex &solver(int nsta = 0, int ndatum = 0)
    {
        solverinput in = input();
        in.points = points.data();
        in.nsta = nsta;
        in.ntar = (int)points.size() - nsta;
        in.dist = dist.data(), in.ndist = (int)dist.size();
        in.difh = difh.data(), in.ndifh = (int)difh.size();
        in.dir1 = dir1.data(), in.ndir1 = (int)dir1.size();
        in.dir2 = dir2.data(), in.ndir2 = (int)dir2.size();
        in.lumps = lumps.data(), in.nlump = (int)lumps.size();
        in.nfixh = nfixh;
        in.sdist = in.sdifh = in.sdir1 = in.sdir2 = 1.0;
        in.nunk1 = nunk1, in.nunk2 = nunk2, in.ndatum = ndatum, in.nunk = nunk1 + nunk2;
        s.reset(new simplex(in));
        return *s;
    }

    // A solver whose tableau has nunk columns and nobs rows of zeros.
    simplex &tableau(int nunk, int nobs, int ndatum = 0)
    {
        add("A", 0, 0);
        nunk1 = nunk;
        for (int i = 0; i < nobs; i++) observe(difh, 0, 0, 0.0, 1.0);
        solver(0, ndatum);
        s->banner();
        s->prepare();
        s->zeronormal();
        L1(*s, nobs) = nobs;
        for (int i = 0; i < nobs + ndatum; i++) L1(*s, ibase)[i] = 2 * nunk + i;
        return *s;
    }

    int dim, nunk1 = 0, nunk2 = 0, nfixh = 0;
    std::unique_ptr<simplex> s;
};

#endif
