// All that one linearization of a network holds, from the rows to the factor of the normal matrix: made once for a
// pattern, refilled at every step.

#ifndef VORNADJUST_SYSTEM_H
#define VORNADJUST_SYSTEM_H

#include <vector>

#include "adjust/assembly.h"
#include "adjust/equations.h"
#include "adjust/factor.h"
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
    Symbolic symbolic;
    Factor factor;
    std::vector<int> held; // columns that keep their values: the minimal datum. Their rows and columns of the normal
                           // matrix are those of the identity, so that they have correction 0.
    Watch watch;           // of all that is done with the system
    bool present = false;  // the equations are filled at the present values, as the next fill_rows would do it
    int bad_group = -1;    // a group whose covariance is not positive definite, and whose rows are 0

    int n() const { return columns.count(); }
};

// Patterns, columns and order of elimination; nothing is filled.
// Throws std::bad_alloc.
System make_system(const Model &model, const Watch &watch = {});

// Rows at the model's present values, weighted, held columns 0. Returns the sum of squares of weighted misclosures.
double fill_rows(const Model &model, System *system);

// Normal matrix and right side of the filled rows.
void fill_normal(System *system);

// Factors N + damping diag(N).
// Returns whether all pivots stand; otherwise system->factor names those that fail.
bool factorize(System *system, double damping, const FactorOptions &options);

} // namespace vornadjust

#endif
