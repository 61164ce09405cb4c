// Results of a run as one structure, from which every output is written.
//
// Lengths in metres, angles in radians. What the run did not make is absent, never zero.

#ifndef VORNHOST_RESULTS_H
#define VORNHOST_RESULTS_H

#include <optional>
#include <string>
#include <vector>

#include "host/run/accounts.h"
#include "host/input/model.h"
#include "host/run/runner.h"

namespace vornhost {

struct EllipseResult {
    double a = 0, b = 0; // semi-axes, a >= b
    double bearing = 0;  // of the major axis, from the first axis of the plane towards the second, radians
};

struct PointResult {
    std::string name;
    bool station = false;
    std::string code[3];                  // "free", "no_datum", "weighted", "fixed"; empty outside the dimension
    std::optional<double> approximate[3]; // x, y, z
    std::optional<double> adjusted[3];
    std::optional<double> deviation[3];      // standard deviations
    std::optional<EllipseResult> ellipse[3]; // planes xy, xz, yz
};

struct OrientationResult {
    std::string name;
    double rotation[3] = {0, 0, 0}; // Rx1, Rx2, Rx3
    std::optional<double> deviation[3];
};

struct ResidualResult {
    std::string kind; // "distance", "height difference", "direction", "vertical angle"
    std::string from, to;
    std::string file;
    int line = 0;
    double value = 0, sigma = 0; // metres or radians; vertical angles as elevations
    double residual = 0;         // observed less computed
    std::optional<double> deviation;
    std::optional<bool> outside, normal, normal_divided, tau, tau_divided; // rejection marks
};

struct KindResult {
    std::string kind;
    double sigma_apriori = 0, sigma_aposteriori = 0;
    std::optional<bool> goodness_of_fit; // passed
    int over_normal = 0, over_normal_divided = 0, over_tau = 0, over_tau_divided = 0;
};

struct GroupResult {
    std::string name;
    std::optional<double> value[3], deviation[3]; // additive constant, scale, refraction: those adjusted
};

struct LumpResult {
    int lump = 0, epoch = 0, reference = 0;
    double translation[3] = {0, 0, 0}, rotation[3] = {0, 0, 0}, scale = 1;
    std::optional<double> translation_deviation[3], rotation_deviation[3], scale_deviation;
};

struct PairResult {
    std::string from, to;
    double deviation[3] = {0, 0, 0};
    EllipseResult ellipse[3];
};

struct Results {
    std::string program, version, title, file, solver, mode;
    int dimension = 0;
    bool adjusted = false;
    int code = 0;
    std::vector<std::string> words, notes;
    std::optional<int> degrees_of_freedom;
    std::optional<double> sigma_apriori, sigma_aposteriori;
    std::optional<bool> one_tailed_test; // passed
    std::vector<PointResult> points;
    std::vector<OrientationResult> orientations;
    std::vector<ResidualResult> residuals;
    std::vector<KindResult> kinds;
    std::vector<GroupResult> groups;
    std::vector<LumpResult> lumps;
    std::vector<PairResult> pairs;
    std::vector<Account> accounts;
};

// Collects what the run has left in the model and its outcome.
Results collect(const Model &model, const RunOutcome &outcome, const std::string &version);

// The quantities in the results that are not a number or infinite: for each kind a line with
// how many there are and the names of the first.
std::vector<std::string> not_numbers(const Results &results);

} // namespace vornhost

#endif
