// A network for the computation of first values: its true positions, its records, which hold
// no value until a test says what is known, and the tables of a spread.
//
//   Sketch s(2);
//   const int S = s.station("S", 0, 0, 0.5);     // true position and orientation (oap)
//   const int A = s.target("A", 100, 0);         // stations before targets
//   s.know(S), s.know_turn(S);
//   s.sight(S, A), s.range(S, A);                // simulated without error
//   s.wire();                                    // makes the approx, its lists and tables
//   EXPECT_EQ(spread(s.net()), 0);
//   ... s.points[A].xpt[0], s.report()

#ifndef TESTS_SKETCH_H
#define TESTS_SKETCH_H

#include <math.h>
#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include "approx/intersection.h"
#include "approx/spread.h"
#include "support/access.h"
#include "support/network.h"

class Sketch {
public:
    explicit Sketch(int dim) : n(dim)
    {
        points.reserve(300); // measures point to them
        n.stations.reserve(300);
    }

    // typ as the host's station: 0 no distances, 1 and 2 distances.
    int station(const char *name, double x, double y, double turn = 0.0, double z = 0.0, int typ = 1)
    {
        n.station(name, x, y, z).typ = typ;
        add(name, x, y, z, turn);
        points.back().n1[2] = N_MISSING;
        nsta++;
        return (int)points.size() - 1;
    }

    int target(const char *name, double x, double y, double z = 0.0)
    {
        add(name, x, y, z, 0.0);
        return (int)points.size() - 1;
    }

    // The true plane position, height or orientation becomes known.
    void know(int i)
    {
        for (int k = 0; k < 2; k++) {
            points[i].xpt[k] = truth[i].x[k];
            points[i].n0[k] = N_NONE;
        }
    }
    void know_height(int i)
    {
        points[i].xpt[2] = truth[i].x[2];
        points[i].n0[2] = N_NONE;
    }
    void know_turn(int i)
    {
        points[i].xex[2] = -truth[i].turn;
        points[i].n1[2] = N_NONE;
    }

    // A direction, and in space the vertical angle with it.
    void sight(int from, int to)
    {
        direction(from, to, bearing(from, to) - truth[from].turn);
        if (n.p.dim == 3) vertical(from, to, atan2(truth[to].x[2] - truth[from].x[2], level(from, to)));
    }
    void range(int from, int to) { distance(from, to, hypot(level(from, to), truth[to].x[2] - truth[from].x[2])); }

    void direction(int from, int to, double val) { observe(dir1, from, to, val); }
    void vertical(int from, int to, double val) { observe(dir2, from, to, val); }
    void distance(int from, int to, double val) { observe(dist, from, to, val); }

    double level(int from, int to) const
    {
        return hypot(truth[to].x[0] - truth[from].x[0], truth[to].x[1] - truth[from].x[1]);
    }
    double bearing(int from, int to) const
    {
        return atan2(truth[to].x[1] - truth[from].x[1], truth[to].x[0] - truth[from].x[0]);
    }

    // The approx on these records, its lists of shots and the table; all statuses are 0.
    void wire()
    {
        n.ready();
        const int np = (int)points.size();
        vornengine::solverinput in(&n.p);
        in.points = points.data();
        in.nsta = nsta;
        in.ntar = np - nsta;
        in.dist = dist.data();
        in.ndist = (int)dist.size();
        in.dir1 = dir1.data();
        in.ndir1 = (int)dir1.size();
        in.dir2 = dir2.data();
        in.ndir2 = (int)dir2.size();
        a = std::make_unique<approx>(in, ia1);
        take_lists(net());
        xap.assign(np, 0.0);
        yap.assign(np, 0.0);
        oap.assign(nsta, 0.0);
        itheo.assign(nsta, 0);
        iobj.assign(np - nsta, 0);
        rows.assign(nsta, std::vector<int>(np, 0));
        table.clear();
        for (std::vector<int> &row : rows) table.push_back(row.data());
        fill_table(net(), tab());
    }

    // The record of the approx, and the tables as its steps take them.
    approxdata *net() { return &X(*a, net); }
    spreadtables *tab()
    {
        tables = {xap.data(), yap.data(), oap.data(), table.data(), itheo.data(), iobj.data()};
        return &tables;
    }

    // Hands the true place of a point to the tables with a status; of a station its turn too.
    void place(int i, int status = -1)
    {
        xap[i] = truth[i].x[0];
        yap[i] = truth[i].x[1];
        if (i < nsta) oap[i] = truth[i].turn;
        (i < nsta ? itheo[i] : iobj[i - nsta]) = status;
    }

    std::string report() { return n.report(); }

    // What the report has gained since the last call.
    std::string news()
    {
        const size_t from = told;
        const std::string text = n.report();
        told = text.size();
        return text.substr(from);
    }

    struct Place {
        double x[3], turn;
    };

    Network n;
    int nsta = 0;
    std::vector<Place> truth;
    std::vector<point> points;
    std::vector<measure> dist, dir1, dir2;
    int ia1[9] = {0, 0, 0, 0, 0, 0, 0, 0, 0};
    std::unique_ptr<approx> a;
    std::vector<double> xap, yap, oap;
    std::vector<int> itheo, iobj;
    std::vector<std::vector<int>> rows;
    std::vector<int *> table;

private:
    size_t told = 0;
    spreadtables tables = spreadtables();

    void add(const char *name, double x, double y, double z, double turn)
    {
        point p = point();
        strncpy(p.name, name, sizeof p.name - 1);
        for (int k = 0; k < 3; k++) p.n0[k] = k < n.p.dim ? N_MISSING : N_NONE;
        for (int &code : p.n1) code = N_NONE;
        points.push_back(p);
        truth.push_back({{x, y, n.p.dim == 3 ? z : 0.0}, turn});
    }

    void observe(std::vector<measure> &list, int from, int to, double val)
    {
        measure m = measure();
        m.p1 = &points[from];
        m.p2 = &points[to];
        m.val[0] = val;
        m.val[1] = 1.0;
        list.push_back(m);
    }
};

#endif
