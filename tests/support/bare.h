// A solution whose records a test writes by hand: no solver, no loading, no unknowns but
// those that the test gives.
//
//   Bare s(2);
//   s.add("S", 0, 0);                   // stations first: s.nstations of them
//   s.add("A", 100, 0);
//   s.observe(s.dist, 0, 1, 100.01, 0.002);
//   s.wire(1);                          // one station; sets pointers and counts
//   S(s, corrections)();
//   ... s.report()

#ifndef TESTS_BARE_H
#define TESTS_BARE_H

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "support/access.h"
#include "support/network.h"
#include "support/passive.h"

// The records, made before the solution that points to them.
struct BareRecords {
    explicit BareRecords(int dim) : n(dim)
    {
        points.reserve(300);
        n.ready();
    }

    solverinput input() { return solverinput(&n.p); }

    // A fixed point with a scale of 1 and x0 equal to xpt. The name is held with blanks.
    point &add(const char *name, double x, double y, double z = 0.0)
    {
        point p = point();
        snprintf(p.name, sizeof p.name, "%-8s", name);
        p.xpt[0] = p.x0[0] = x;
        p.xpt[1] = p.x0[1] = y;
        p.xpt[2] = p.x0[2] = z;
        p.xex[4] = p.e0[4] = 1.0;
        for (int c = 0; c < 3; c++) p.n0[c] = N_NONE;
        for (int c = 0; c < 6; c++) p.n1[c] = N_NONE;
        for (int c = 0; c < 3; c++) p.defdatum[c] = DATUM_USED;
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

    gpsbase &baseline(int from, int to, double dx, double dy, double dz)
    {
        gpsbase g = gpsbase();
        g.p1 = &points[from];
        g.p2 = &points[to];
        g.dx[0] = dx;
        g.dx[1] = dy;
        g.dx[2] = dz;
        g.w[0] = g.w[2] = g.w[5] = 1.0;
        gps.push_back(g);
        return gps.back();
    }

    Network n;
    std::vector<point> points; // at most 300, so that observations may point to them
    std::vector<measure> dist, difh, dir1, dir2, az, u, v;
    std::vector<gpsbase> gps;
    std::vector<camera> cameras;
    std::vector<lump> lumps;
    std::vector<double> delta, inv;
    tempresult result = tempresult();
};

class Bare : public BareRecords, public Passive {
public:
    explicit Bare(int dim_) : BareRecords(dim_), Passive(input()) { solution::dim = dim_; }

    ~Bare() { release(); }

    void finish() override
    {
        finished++;
        release();
    }

    camera &camerawith(const char *name, double focal, double pixel)
    {
        camera c = camera();
        strcpy(c.name, name);
        c.pu = c.pv = pixel;
        c.npar = 3;
        c.par[0] = focal;
        for (int p = 0; p < 10; p++) c.ipar[p] = N_NONE;
        cameras.push_back(c);
        return cameras.back();
    }

    // Sets every field of the solution from the records; the first nsta_ points are stations.
    void wire(int nsta_)
    {
        const int dimension = solution::dim;
        static_cast<settings &>(*this) = settings(&n.p);
        solution::dim = dimension;
        idebug = 0;
        iearth = 0;
        radius = horigin = latitude = 0.0;
        itmax = 20;
        convergence = 1e-6;
        for (double &t : trans) t = 0.0;
        solution::points = BareRecords::points.data();
        npoints = (int)BareRecords::points.size();
        nsta = nsta_;
        ntar = npoints - nsta;
        wire_list(BareRecords::dist, &(solution::dist), &ndist);
        wire_list(BareRecords::difh, &(solution::difh), &ndifh);
        wire_list(BareRecords::dir1, &(solution::dir1), &ndir1);
        wire_list(BareRecords::dir2, &(solution::dir2), &ndir2);
        wire_list(BareRecords::az, &(solution::az), &naz);
        wire_list(BareRecords::u, &obsuv1, &nobsuv);
        wire_list(BareRecords::v, &obsuv2, &nobsuv);
        wire_list(BareRecords::gps, &(solution::gps), &ngps);
        wire_list(BareRecords::cameras, &(solution::cameras), &ncamera);
        wire_list(BareRecords::lumps, &(solution::lumps), &nlump);
        nweighted = nfixh = iredux = nunk1 = nunk2 = ndatum = nunk = 0;
        sdist = 0.9, sdifh = 1.1, sdir1 = 0.8, sdir2 = 1.2, saz = 0.7, sgps = 1.3, suv = 1.4;
        sigma0 = 1.0;
        for (double &d : solution::datum) d = 0.0;
        icon = nexport = nimport = 0;
        lcon = NULL;
        Qcon = rhs = NULL;
        confidence = 95.0;
        nclass = 10;
        hrange = 5.0;
        release();
        temp_res = &result;
        wire_matrices();
    }

    // The vectors delta and inv again, after they were filled.
    void wire_matrices()
    {
        solution::delta = BareRecords::delta.data();
        solution::inv = BareRecords::inv.data();
    }

    // The histogram arrays that the residual analysis expects.
    void take_histograms(int classes = 10)
    {
        freestat(); // a second call starts anew
        nclass = classes;
        hlim = (double *)calloc(classes, sizeof *hlim);
        hnorm = (double *)calloc(classes, sizeof *hnorm);
        for (int **count : {&hall, &hdist, &hdifh, &hdir1, &hdir2, &haz, &hgps1, &hgps2, &hgps3})
            *count = (int *)calloc(classes, sizeof **count);
    }

    std::string report() { return n.report(); }

    using BareRecords::az;
    using BareRecords::cameras;
    using BareRecords::delta;
    using BareRecords::difh;
    using BareRecords::dir1;
    using BareRecords::dir2;
    using BareRecords::dist;
    using BareRecords::gps;
    using BareRecords::inv;
    using BareRecords::lumps;
    using BareRecords::points;

    int finished = 0;

private:
    template <class Record> static void wire_list(std::vector<Record> &from, Record **list, int *count)
    {
        *list = from.data();
        *count = (int)from.size();
    }

    void release()
    {
        free(hlim);
        free(hnorm);
        hlim = hnorm = NULL;
        for (int **count : {&hall, &hdist, &hdifh, &hdir1, &hdir2, &haz, &hgps1, &hgps2, &hgps3}) {
            free(*count);
            *count = NULL;
        }
    }
};

#endif
