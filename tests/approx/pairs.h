// A network of three stations that sight each other and five targets, for starts from a pair.

#ifndef TESTS_PAIRS_H
#define TESTS_PAIRS_H

#include <gtest/gtest.h>

#include "approx/sketch.h"

class Pairs : public ::testing::Test {
protected:
    explicit Pairs(int dim = 2) : s(dim)
    {
        P = s.station("P", 10, 20, 0.2, 1);
        Q = s.station("Q", 60, -15, -0.7, 2);
        R = s.station("R", -45, 30, 1.9, 3);
        A = s.target("A", 100, 45, 10);
        B = s.target("B", -90, 60, 20);
        C = s.target("C", 20, -120, -10);
        D = s.target("D", 150, 10, 15);
        E = s.target("E", -70, -30, 5);
    }

    void see(int from, const std::vector<int> &points)
    {
        for (int t : points) s.sight(from, t);
    }

    void pair(int i, int j)
    {
        s.sight(i, j);
        s.sight(j, i);
    }

    // Lists and tables, the partners of each station in the diagonal.
    void wire()
    {
        s.wire();
        npair = 0;
        for (int i = 0; i < s.nsta; i++)
            for (int j = i + 1; j < s.nsta; j++) {
                if (s.table[i][j] == 0 || s.table[j][i] == 0) continue;
                s.table[i][i]++;
                s.table[j][j]++;
                npair++;
            }
    }

    Sketch s;
    int P, Q, R, A, B, C, D, E, npair = 0;
};

#endif
