// A loaded vorn whose host records match its points and lists, for the way back of the results.

#ifndef TESTS_HANDED_H
#define TESTS_HANDED_H

#include "support/loaded.h"

class Handed : public Loaded {
public:
    // Every host point is selected and is the internal point of the same place.
    Handed(int dim, int nsta, int ntar) : Loaded(dim, nsta, ntar)
    {
        for (int i = 0; i < nsta; i++) net.station(at(i).name, 0, 0);
        for (int i = nsta; i < nsta + ntar; i++) net.target(at(i).name, 0, 0);
        attach();
    }

    // As many selected host records as measures; to be called once.
    void observe(int ndist, int ndifh, int ndir1, int ndir2)
    {
        for (int i = 0; i < ndist; i++) net.distance("S0", "T0", 1, 1);
        for (int i = 0; i < ndifh; i++) net.heightdiff("S0", "T0", 1, 1);
        for (int i = 0; i < ndir1; i++) net.direction("S0", "T0", 1, 1);
        for (int i = 0; i < ndir2; i++) net.vertical("S0", "T0", 1, 1);
        V(run, dist) = array<measure>(V(run, ndist) = ndist);
        V(run, difh) = array<measure>(V(run, ndifh) = ndifh);
        V(run, dir1) = array<measure>(V(run, ndir1) = ndir1);
        V(run, dir2) = array<measure>(V(run, ndir2) = ndir2);
        attach();
    }

    // Shows the run the host records as they are; needed after each change of their number.
    void attach()
    {
        net.ready();
        V(run, psta) = net.p.stations;
        V(run, npsta) = net.p.nstations;
        V(run, ptar) = net.p.targets;
        V(run, nptar) = net.p.ntargets;
        V(run, pdist) = net.p.distances;
        V(run, npdist) = net.p.ndistances;
        V(run, pdifh) = net.p.heightdiffs;
        V(run, npdifh) = net.p.nheightdiffs;
        V(run, pdir1) = net.p.directions;
        V(run, npdir1) = net.p.ndirections;
        V(run, pdir2) = net.p.verticals;
        V(run, npdir2) = net.p.nverticals;
    }

    // Lumps of the given numbers of epochs, reference included, with all their arrays.
    void add_lumps(std::initializer_list<int> epochs, bool deviations)
    {
        V(run, lumps) = array<lump>((int)epochs.size());
        for (int nepoch : epochs) {
            lump &l = V(run, lumps)[V(run, nlump)++];
            l.nepoch = nepoch;
            l.epoch = array<int>(nepoch - 1);
            for (double **a : {&l.tx, &l.ty, &l.tz, &l.rx, &l.ry, &l.rz, &l.scale}) *a = array<double>(nepoch - 1);
            for (double **a : {&l.stx, &l.sty, &l.stz, &l.srx, &l.sry, &l.srz, &l.sscale})
                *a = deviations ? array<double>(nepoch - 1) : nullptr;
        }
    }

    // Runs the way back and returns its code.
    int hand_back() { return (V(run, backtoproject)()); }
    const result &r() { return *net.p.runresults; }
};

#endif
