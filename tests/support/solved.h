// Records of a network and a solver on them, no loading; every point gets consecutive
// unknowns in the order of the points.
//
//   Solved<compact> r(2);
//   r.add("A", 1, 10);
//   r.observe(r.dist, 0, 1, 10.5, 0.01);
//   compact &s = r.solver(1, 3);         // one station, three datum rows

#ifndef TESTS_SOLVED_H
#define TESTS_SOLVED_H

#include <memory>
#include <vector>

#include "support/bare.h"

template <class Solver> class Solved : public BareRecords {
public:
    explicit Solved(int d) : BareRecords(d), dim(d) {}
    ~Solved()
    {
        if (s) s->finish();
    }

    // All coordinates of the dimension unknown.
    point &add(const char *name, double x, double y, double z = 0.0)
    {
        point &p = BareRecords::add(name, x, y, z);
        for (int c = 0; c < 3; c++)
            if (dim == 3 || (dim == 1 ? c == 2 : c < 2)) p.n0[c] = nunk1++;
        return p;
    }

    // A solver on the records as they are; to be called once.
    Solver &solver(int nsta = 0, int ndatum = 0)
    {
        solverinput in = input();
        in.points = points.data();
        in.nsta = nsta;
        in.ntar = (int)points.size() - nsta;
        in.npoints = (int)points.size();
        wire(dist, &in.dist, &in.ndist);
        wire(difh, &in.difh, &in.ndifh);
        wire(dir1, &in.dir1, &in.ndir1);
        wire(dir2, &in.dir2, &in.ndir2);
        wire(az, &in.az, &in.naz);
        wire(gps, &in.gps, &in.ngps);
        wire(u, &in.obsuv1, &in.nobsuv);
        wire(v, &in.obsuv2, &in.nobsuv);
        wire(cameras, &in.cameras, &in.ncamera);
        wire(lumps, &in.lumps, &in.nlump);
        in.sdist = sdist, in.sdifh = sdifh, in.sdir1 = sdir1, in.sdir2 = sdir2;
        in.saz = saz, in.sgps = sgps, in.suv = suv;
        in.sigma0 = 1.0;
        in.nfixh = nfixh;
        in.nunk1 = nunk1, in.nunk2 = nunk2, in.ndatum = ndatum, in.nunk = nunk1 + nunk2;
        in.temp_res = &result;
        s = std::make_unique<Solver>(in);
        return *s;
    }

    std::string report() { return n.report(); }

    int dim, nunk1 = 0, nunk2 = 0, nfixh = 0;
    // A-priori deviations of the lists: an observation of a tenth of its own has a weight of 10.
    double sdist = 0.75, sdifh = 1.25, sdir1 = 0.625, sdir2 = 1.5, saz = 0.875, sgps = 1.375, suv = 1.75;
    std::unique_ptr<Solver> s;

private:
    template <class Record> static void wire(std::vector<Record> &from, Record **list, int *count)
    {
        *list = from.data();
        *count = (int)from.size();
    }
};

#endif
