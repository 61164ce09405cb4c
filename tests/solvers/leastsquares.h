// What the tests of both least-squares solvers share: rows written by hand, the normal system
// element by element, the table of its datum rows, a folder with a list of stations.

#ifndef TESTS_LEASTSQUARES_H
#define TESTS_LEASTSQUARES_H

#include <gtest/gtest.h>
#include <stdio.h>

#include <random>
#include <string>
#include <vector>

#include "support/solved.h"
#include "support/workfolder.h"

typedef std::vector<double> Vector; // or a matrix, row by row

// Element of the symmetric normal matrix, zero outside the profile.
inline double at(compact &s, int i, int j)
{
    const double *e = i >= j ? C(s, element)(i, j) : C(s, element)(j, i);
    return e ? *e : 0.0;
}

inline double at(jordan &s, int i, int j) { return J(s, norm)[(size_t)i * S(s, nunk) + j]; }

template <class Solver> Vector full(Solver &s)
{
    const int n = S(s, nunk);
    Vector m((size_t)n * n);
    for (int i = 0; i < n; i++)
        for (int j = 0; j < n; j++) m[(size_t)i * n + j] = at(s, i, j);
    return m;
}

inline double *right_side(compact &s) { return S(s, delta); } // where the solution comes to stand
inline double *right_side(jordan &s) { return S(s, rhs); }

// Adds a row with coefficients a1 of coordinates u1 and a2 of nuisance unknowns u2.
template <class Solver>
void write_row(Solver &s, const std::vector<int> &u1, const Vector &a1, const std::vector<int> &u2, const Vector &a2,
               double b)
{
    for (size_t k = 0; k < u1.size(); k++) {
        S(s, ia1)[k + 1] = u1[k];
        S(s, a1)[k + 1] = a1[k];
    }
    for (size_t k = 0; k < u2.size(); k++) {
        S(s, ia2)[k + 1] = u2[k];
        S(s, a2)[k + 1] = a2[k];
    }
    s.addrow((int)u1.size(), (int)u2.size(), b);
}

// Points A, B, ... in no special position.
template <class Solver> void scatter(Solved<Solver> &r, int n)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> one(-50.0, 50.0);
    for (int p = 0; p < n; p++) {
        const double x = one(random), y = one(random), z = one(random);
        r.add(std::string(1, (char)('A' + p)).c_str(), x, y, z);
    }
}

// ---- datum rows ----

// An entry of the conditions: row, axis of its column, value, flag that it needs (-1 none).
struct Entry {
    int row, axis;
    char value; // 1; x, y, z less the centre; X, Y, Z the negative
    int flag;
};

typedef std::vector<Entry> Entries;

inline double valueof(char v, const double d[3])
{
    if (v >= 'x') return d[v - 'x'];
    return v >= 'X' ? -d[v - 'X'] : 1.0;
}

inline Entries joined(Entries a, const Entries &b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

inline Entries shifts() { return {{0, 0, '1', 0}, {1, 1, '1', 1}, {2, 2, '1', 2}}; }
inline Entries scaleat(int row) { return {{row, 0, 'x', 0}, {row, 1, 'y', 1}, {row, 2, 'z', 2}}; }

// The system behind zeronormal is that of the table, whatever stood there before: every
// combination of used and other coordinates over seven points.
template <class Solver> void expect_table(int dim, int ndatum, const Entries &table, int imixed = -1)
{
    Solved<Solver> r(dim);
    scatter(r, 7);
    for (int p = 0; p < 7; p++)
        for (int c = 0; c < 3; c++) r.points[p].defdatum[c] = (p + 1) >> c & 1 ? DATUM_USED : -(p % 2);
    r.nunk2 = 2;
    r.n.p.imixed = imixed;
    Solver &s = r.solver(0, ndatum);
    ASSERT_EQ(s.prepare(), 0);
    write_row(s, {0}, {5.0}, {}, {}, 1.0);
    right_side(s)[1] = 5.0;
    s.zeronormal();
    const int n = S(s, nunk), r0 = r.nunk1 + 2;
    Vector want((size_t)n * n, 0.0);
    for (const point &p : r.points) {
        double d[3];
        for (int c = 0; c < 3; c++) d[c] = p.xpt[c] - S(s, centre)[c];
        for (const Entry &e : table) {
            if (e.flag >= 0 && p.defdatum[e.flag] != DATUM_USED) continue;
            const size_t row = r0 + e.row, col = p.n0[e.axis];
            want[row * n + col] = want[col * n + row] = valueof(e.value, d);
        }
    }
    EXPECT_EQ(full(s), want) << dim << " " << ndatum;
    EXPECT_EQ(Vector(right_side(s), right_side(s) + n), Vector(n, 0.0));
}

// ---- export ----

// A folder of its own, with an empty list of stations for the export of covariances.
class StationFile : public WorkFolder {
public:
    StationFile()
    {
        if (FILE *f = fopen("tessalpin.sta", "w")) fclose(f);
    }
};

const char *const TOO_FEW = "\ninput_for_tessalpin: need at least 2 stations\n";

#endif
