// A simplex solver on records that a test writes by hand, with an empty tableau of any size.

#ifndef TESTS_SIMPLEX_HAND_H
#define TESTS_SIMPLEX_HAND_H

#include "support/solved.h"

class Hand : public Solved<simplex> {
public:
    using Solved<simplex>::Solved;

    // A solver whose tableau has nunk columns and nobs rows of zeros.
    simplex &tableau(int nunk, int nobs, int ndatum = 0)
    {
        add("A", 0, 0);
        nunk1 = nunk;
        for (int i = 0; i < nobs; i++) observe(difh, 0, 0, 0.0, sdifh);
        solver(0, ndatum);
        s->banner();
        s->prepare();
        s->zeronormal();
        L1(*s, nobs) = nobs;
        for (int i = 0; i < nobs + ndatum; i++) L1(*s, ibase)[i] = 2 * nunk + i;
        return *s;
    }
};

#endif
