// A whole adjustment: from a model with first values to adjusted ones and what they are worth, or to the reason why
// there are none. Everything is told by index; the host puts names and words to it.

#ifndef VORNADJUST_ADJUSTMENT_H
#define VORNADJUST_ADJUSTMENT_H

#include <utility>
#include <vector>

#include "adjust/diagnosis.h"
#include "adjust/disk.h"
#include "adjust/iterate.h"
#include "adjust/misclosures.h"
#include "adjust/places.h"
#include "adjust/redundancy_traces.h"
#include "adjust/statistics.h"
#include "adjust/suspects.h"

namespace vornadjust {

struct Options {
    bool iterate = true;    // false: the precision that the observations give at the present values, with a variance
                            // factor of 1, for planning
    bool statistics = true; // false: values only
    bool residuals = true;  // false: no cofactors, redundancy numbers and tests of residuals
    std::vector<std::pair<int, int>> pairs; // points whose difference wants a covariance
    int weak_pairs = 0;                     // how many of the worst known pairs of neighbours are wanted
    std::vector<int> joint;                 // unknowns whose cofactors are wanted, all with all
    std::vector<int> classes;               // [observations] for the redundancy traces, -1 for none; or empty
    int class_count = 0;
    std::function<std::vector<Form>(const Model &)>
        forms;                              // of the adjusted model, whose standard deviations are wanted
    std::vector<std::vector<int>> together; // observations that are tested together, see StatisticsOptions
    SuspectOptions suspects;
    bool a_priori = false;  // standard deviations with a variance factor of 1
    std::vector<char> made; // [points] 1 where the first coordinates are the program's own; or empty
    IterationLimits limits;
    int threads = 1;
    Disk *disk = nullptr;   // for factor and inverse, where memory does not hold them
    Watch watch;            // with ranks nothing stops
    Ranks *ranks = nullptr; // that share the work; they need the same model and the same options
    // With ranks: the model of each has all points and unknowns but its own observations alone, perhaps none. Groups
    // are numbered by each, and one lies whole on one rank; `together` is of own observations. Not with classes.
    const OwnObservations *own = nullptr;
};

enum class Status {
    adjusted,
    no_observations, // no usable row
    bad_covariance,  // of a group: not positive definite
    no_datum,        // loose parts that can move, see determinacy.datum
    datum_points,    // the datum points do not hold what is open, see determinacy.datum
    undetermined,    // the rows leave unknowns open inside the network, see determinacy.findings
    singular,        // no such movement is found, but the normal matrix is too close to singular, see failed
    no_convergence,  // see iteration and misfits
    stopped          // by the watch
};

struct Outcome {
    Status status = Status::adjusted;
    Determinacy determinacy; // datum at the first values; mechanisms and findings where something is not determined
    Equations equations;     // at the last values, of this rank; misclosure is the residual observed - adjusted
    std::vector<int> place;  // [rows of the equations] among the usable rows of all ranks, which stand in the order of
                             // the observations; -1 where it is not usable
    std::vector<char> seen;  // [unknowns] 1 where a row of any rank sees it
    Iteration iteration;
    std::vector<int> left_out;   // observations without a derivative at the last values, of all that the model has
    std::vector<int> failed;     // unknowns of singular; of no_convergence those that are hardly determined
    int bad_group = -1;          // -1 too where another rank has it
    int bad_row = -1;            // of the equations, of bad_group: it depends on those of the group before it
    std::vector<Misfit> misfits; // at the first values, where the iteration failed

    int rows = 0;                 // usable, of all ranks
    int tested = 0;               // of these, rows with the share of control that the options of suspects ask for
    int unknowns = 0;             // estimated
    int open = 0;                 // motions closed by datum points
    int redundancy = 0;           // rows - unknowns + open
    double variance_factor = 1.0; // v^T P v / redundancy; 1 without redundancy or iteration
    Statistics statistics;        // where asked for
    std::vector<Suspect> suspects;
    RedundancyTraces traces; // of the classes
    std::vector<WeakMotion>
        weak; // turns and scale that the observations determine badly, where statistics are asked for
};

// With ranks, each factors, inverts and tests its part of the network. The model and what the outcome has of unknowns
// and points is whole on all of them; equations and tests are those of its own observations. A network that cannot be
// adjusted is left to the first rank, which finds out by itself why not. No rank can, where each has observations of
// its own alone: all of them return the status then, with values untouched and nothing else of worth. It is singular,
// too, where a look at all observations would have to tell whether all unknowns are determined.
//
// Adjusts the values of the model; they are the adjusted ones after Status::adjusted, the last ones of the iteration
// after no_convergence, and untouched otherwise. Throws std::bad_alloc; the values are then those of any step.
Outcome adjust(Model *model, const Options &options);

} // namespace vornadjust

#endif
