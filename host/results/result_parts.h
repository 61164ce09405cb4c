// The parts of a run's results, each collected on its own; see results.h for the whole.

#ifndef VORNHOST_RESULT_PARTS_H
#define VORNHOST_RESULT_PARTS_H

#include <stddef.h>

#include <optional>
#include <string>

#include "vorn/result.h"
#include "host/results/results.h"

namespace vornhost {

// What the parts are made from.
struct ResultSource {
    const Model &model;
    const RunOutcome &outcome;
    const result &run;

    bool statistics() const { return run.irun == 1; }
    bool propagation() const { return run.irun == -2; }
    bool precision() const { return outcome.adjusted() && (statistics() || propagation()); }
    bool coordinates() const { return outcome.adjusted() && !propagation(); }

    // Residuals and the marks were tested: there was redundancy.
    bool tested() const { return statistics() && run.dof > 0; }
};

void collect_points(const ResultSource &from, Results &results);
void collect_orientations(const ResultSource &from, Results &results);
void collect_residuals(const ResultSource &from, Results &results);
void collect_kinds(const ResultSource &from, Results &results);

// A name of the engine without the blanks that fill it up.
std::string bare_name(const char *field, size_t size);

// Element i of an array that may be missing; a standard deviation of exactly 0 was not made.
std::optional<double> element(const double *array, size_t i);
std::optional<double> deviation(double value);

// Bearing of a major axis from the first axis of its plane towards the second, 0 to pi. The
// engine counts it from the first axis away from the second.
double bearing(double engine);

// Standard deviations along the two axes of an ellipse: the roots of the diagonal of its
// covariance block.
double deviation_first(const EllipseResult &e);
double deviation_second(const EllipseResult &e);

} // namespace vornhost

#endif
