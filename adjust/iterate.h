// The way from first values to the least-squares solution.
//
// Each step solves the linear equations at the present values (Gauss-Newton). With F the sum of squares of the weighted
// misclosures, a step is worth taking when
//   gain = (F - F after the step) / (F - F that the linear equations foresaw)
// is not near 0 or below. When it is, the step is taken back and tried again with N + damping diag(N) in the place of N
// (Levenberg, 1944; Marquardt, 1963; the damping follows the gain as in Madsen, Nielsen and Tingleff, Methods for
// non-linear least squares problems, 2004). A step within the limits, or one whose foreseen gain is rounding of F
// (a thousandth of F where derivatives leave curvature out), is taken without asking. The end is an undamped step
// within the limits.

#ifndef VORNADJUST_ITERATE_H
#define VORNADJUST_ITERATE_H

#include <vector>

#include "adjust/free_datum.h"
#include "adjust/system.h"

namespace vornadjust {

struct IterationLimits {
    int steps = 50;
    double length = 1e-6; // metres: largest correction of a length in the last step
    double angle = 1e-9;  // radians: of an angle; of scales, without unit
    double share = 1e-3;  // of any other unknown: of its standard deviation if it were the only one unknown
};

enum class Ending {
    converged,
    limit,          // steps used up
    diverged,       // no step makes the sum of squares smaller, or values are no numbers
    singular,       // the normal matrix has no inverse where the steps led; the system's factor names the unknowns
    bad_covariance, // of a group, see the system; nothing has moved
    stopped         // by the watch
};

struct Iteration {
    Ending ending = Ending::limit;
    int steps = 0;               // taken
    int damped = 0;              // of these, damped ones
    bool singular_start = false; // the normal matrix of the first values has no inverse
    double squares = 0.0;        // F at the last values
    double last_length = 0.0;    // metres: largest correction of a length in the last step
    double last_angle = 0.0;     // radians
};

// Adjusts the model's values, beginning at the present ones. At the end the rows and the normal matrix of the system
// are those of the last values, its factor undamped: of the last values too, or of those before a last step below a
// thousandth of the limits. The motions of the datum follow the values.
Iteration iterate(Model *model, System *system, FreeDatum *datum, const IterationLimits &limits,
                  const FactorOptions &options);

} // namespace vornadjust

#endif
