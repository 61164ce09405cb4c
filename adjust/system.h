// All that one linearization of a network holds, from the rows to the factor of the normal matrix: made once for a
// pattern, refilled at every step. Where ranks share a system (share.h), each has its own rows and columns.

#ifndef VORNADJUST_SYSTEM_H
#define VORNADJUST_SYSTEM_H

#include <vector>

#include "adjust/assembly.h"
#include "adjust/disk.h"
#include "adjust/equations.h"
#include "adjust/factor.h"
#include "adjust/inverse.h"
#include "adjust/places.h"
#include "adjust/share.h"
#include "adjust/symbolic.h"
#include "adjust/watch.h"
#include "adjust/weighted.h"

namespace vornadjust {

struct System {
    Derivatives derivatives = Derivatives::exact;
    Equations equations;
    Columns columns;
    WeightedRows rows;
    NormalSystem normal;
    std::vector<double> diagonal; // [n] of the normal matrix, summed over the ranks
    Symbolic symbolic;
    Factor factor;
    bool whole = false; // all pivots of the last factor stand, those of all ranks
    Share share;
    bool apart = false;    // the ranks have their own observations alone
    std::vector<int> held; // columns that keep their values: the minimal datum. Their rows and columns of the normal
                           // matrix are those of the identity, so that they have correction 0.
    Watch watch;           // of all that is done with the system
    bool present = false;  // the equations are filled at the present values, as the next fill_rows would do it
    int threads = 1;       // that fill rows and normal matrix
    int bad_group = -1;    // a group whose covariance is not positive definite, and whose rows are 0

    int n() const { return columns.count(); }
    // Whether an unknown of the model is estimated, here or on another rank.
    bool takes_part(int unknown) const
    {
        return share.shared() ? share.takes_part[unknown] != 0 : columns.of[unknown] >= 0;
    }
};

// Patterns, columns and order of elimination; nothing is filled.
//   own  with ranks: all observations of the model are those of this rank; null: they are divided among the ranks
// Throws std::bad_alloc, and std::runtime_error where ranks have different networks.
System make_system(const Model &model, const Watch &watch = {}, Ranks *ranks = nullptr,
                   const OwnObservations *own = nullptr);

// Rows at the model's present values, weighted, held columns 0. Returns the sum of squares of weighted misclosures, of
// all ranks.
double fill_rows(const Model &model, System *system);

// Factor and inverse go to the disk where memory does not hold them. Throws what the disk says where its limit is too
// low, and where there is no room.
//   inverse  whether one will be wanted
void fit_into_memory(System *system, Disk *disk, int threads, bool inverse);

// Normal matrix and right side of the filled rows.
void fill_normal(System *system);

// Factors N + damping diag(N).
// Returns whether all pivots stand; otherwise system->factor names those that fail (without ranks).
bool factorize(System *system, double damping, const FactorOptions &options);

// Gives back what only another linearization needs: weighted rows and normal matrix. Members of groups stay.
void release_rows(System *system);

// Solves with the factor.
//   b  in/out  [m][n] right-hand sides, contributions of this rank; become solutions
void solve(const System &system, int m, double *b);

// Inverse on the pattern of the factor. False when the watch stopped it. Throws std::bad_alloc.
bool invert(const System &system, Inverse &inverse, const InverseOptions &options);

} // namespace vornadjust

#endif
