// Processes of MPI as ranks of one adjustment.

#ifndef VORN_RANKS_MPI_RANKS_H
#define VORN_RANKS_MPI_RANKS_H

#include <cstddef>
#include <string>
#include <vector>

#include "adjust/ranks.h"
#include "ranks/boundary.h"

// Thrown on processes that the first one has no more need of.
struct Released {};

class MpiRanks : public vornadjust::Ranks {
public:
    MpiRanks();

    int size() const override { return processes; }
    int own() const override { return self; }
    void begin() override;
    void leave_to_first() override;
    bool alone() const override { return is_alone; }

    void stand_by() override { stands_by = true; }
    void hear(double *x, std::size_t n) override;
    std::vector<std::string> bring(const std::string &own) override;

    void sum(double *x, std::size_t n) override;
    void most(double *x, std::size_t n) override;

    void set_boundary(int n, const std::vector<int> &which) override { boundary.set(n, which); }
    void sum_boundary(double *x) override { boundary.sum(x); }
    bool factorize(const double *block, const double *diagonal, double least_pivot, double *pivot) override
    {
        return boundary.factorize(block, diagonal, least_pivot, pivot);
    }
    void solve(int k, double *b) override { boundary.solve(k, b); }
    void invert(double *z) override { boundary.invert(z); }

    // Whether any adjustment has begun.
    bool begun() const { return has_begun; }
    // Whether the others wait for what the first one asks.
    bool standing_by() const { return stands_by; }
    // The first process tells the others, which wait for an adjustment to begin or stand by, that there is nothing
    // more.
    void release();
    // Another process waits for that. False when the first one begins to adjust.
    bool await_release();

private:
    int call(int go);

    int self = 0, processes = 1;
    bool is_alone = false, has_begun = false, stands_by = false;
    Boundary boundary;
};

#endif
