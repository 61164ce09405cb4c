// A Bare solution that keeps every row and every baseline that reaches the solver.

#ifndef TESTS_ROWS_H
#define TESTS_ROWS_H

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <vector>

#include "support/bare.h"

struct Row {
    std::vector<int> i1, i2;
    std::vector<double> c1, c2;
    double b;

    // All coefficients by unknown; second-kind numbers stand behind the nunk1 first ones.
    std::map<int, double> by_unknown(int nunk1) const
    {
        std::map<int, double> c;
        for (size_t k = 0; k < i1.size(); k++) c[i1[k]] += c1[k];
        for (size_t k = 0; k < i2.size(); k++) c[nunk1 + i2[k]] += c2[k];
        return c;
    }
};

struct BaseRow {
    int ibase;
    int iu[6];
    double w[3];
};

class Rows : public Bare {
public:
    explicit Rows(int dim_) : Bare(dim_) {}

    void addrow(int n1, int n2, double b) override
    {
        EXPECT_EQ(n1, ia1[0]); // every row comes with the counts of the row buffer
        EXPECT_EQ(n2, ia2[0]);
        Row r;
        for (int k = 1; k <= n1; k++) {
            r.i1.push_back(ia1[k]);
            r.c1.push_back(a1[k]);
        }
        for (int k = 1; k <= n2; k++) {
            r.i2.push_back(ia2[k]);
            r.c2.push_back(a2[k]);
        }
        r.b = b;
        rows.push_back(r);
        if (after_row) after_row();
    }

    void buildgps(int ibase, const int iu[6], const double w[3]) override
    {
        BaseRow r;
        r.ibase = ibase;
        for (int k = 0; k < 6; k++) r.iu[k] = iu[k];
        for (int k = 0; k < 3; k++) r.w[k] = w[k];
        bases.push_back(r);
    }

    // Gives every coordinate and every parameter of the stations an unknown.
    void number_all(int nsta_)
    {
        int k1 = 0, k2 = 0;
        for (size_t p = 0; p < points.size(); p++) {
            for (int c = 0; c < 3; c++) points[p].n0[c] = k1++;
            for (int c = 0; c < 6 && (int)p < nsta_; c++) points[p].n1[c] = k2++;
        }
        const int red = iredux;
        wire(nsta_);
        iredux = red;
        nunk1 = k1;
        nunk2 = k2;
        nunk = k1 + k2;
    }

    std::vector<Row> rows;
    std::vector<BaseRow> bases;
    std::function<void()> after_row; // what a test does between two rows
};

#endif
