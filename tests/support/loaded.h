// A vorn with points in its arrays as loading leaves them; codes and counts are set by hand.

#ifndef TESTS_LOADED_H
#define TESTS_LOADED_H

#include <stdlib.h>
#include <string.h>

#include <string>

#include "support/access.h"
#include "support/network.h"

class Loaded {
public:
    // Stations "S0", "S1", ..., targets "T0", ..., padded with blanks to 8 characters. Stations
    // have no constants; what is not in the dimension is fixed, all else is unknown.
    Loaded(int dim, int nsta, int ntar) : net(dim), run(net.ready())
    {
        const int n = nsta + ntar;
        V(run, nsta) = nsta;
        V(run, ntar) = ntar;
        V(run, npoints) = n;
        V(run, points) = array<point>(n);
        for (int i = 0; i < n; i++) {
            point &p = at(i);
            name(i, i < nsta ? "S" + std::to_string(i) : "T" + std::to_string(i - nsta));
            for (int c = 0; c < 3; c++) {
                const bool inside = dim == 3 || (dim == 2 && c < 2) || (dim == 1 && c == 2);
                p.n0[c] = inside ? N_UNKNOWN : N_NONE;
                p.defdatum[c] = DATUM_USED;
                if (!inside) V(run, ia1)[c]++;
                if (i >= nsta) continue;
                const bool turns = dim == 3 || (dim == 2 && c == 2);
                p.n1[c] = turns ? N_UNKNOWN : N_NONE;
                p.n1[3 + c] = N_NONE;
                if (!turns) V(run, ia1)[3 + c]++;
            }
        }
    }

    point &at(int i) { return V(run, points)[i]; }

    void name(int i, std::string text)
    {
        text.resize(8, ' ');
        strcpy(at(i).name, text.c_str());
    }

    void fix(int i, int c)
    {
        at(i).n0[c] = N_NONE;
        V(run, ia1)[c]++;
    }

    // An array that the vorn will release.
    template <class Record> static Record *array(int n) { return (Record *)calloc((size_t)n, sizeof(Record)); }

    Network net;
    vorn run;
};

#endif
