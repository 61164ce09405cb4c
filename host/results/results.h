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

// Where a point of a lump stands at another epoch, against its adjusted place at the reference epoch.
struct MoveResult {
    int epoch = 0;
    double by[3] = {0, 0, 0};
};

struct PointResult {
    std::string name;
    bool station = false;
    std::string code[3];                  // "free", "no_datum", "weighted", "fixed"; empty outside the dimension
    std::optional<double> approximate[3]; // x, y, z
    std::optional<double> adjusted[3];
    std::optional<double> deviation[3];      // standard deviations
    std::optional<EllipseResult> ellipse[3]; // planes xy, xz, yz
    std::vector<MoveResult> moves;           // of the lump it belongs to
};

struct OrientationResult {
    std::string name;
    std::string setup, set;         // empty for the only stand of a station, and where all sets share a zero
    double rotation[3] = {0, 0, 0}; // Rx1, Rx2, Rx3
    std::optional<double> deviation[3];
};

// What the file says of an observation beside its values.
struct RowWords {
    std::string at; // where an angle was taken, between from and to
    std::string setup, set, id, remark;

    bool empty() const { return at.empty() && setup.empty() && set.empty() && id.empty() && remark.empty(); }
};

struct ResidualResult {
    std::string kind;       // "distance", "height difference", "direction", "vertical angle", "azimuth", "baseline",
                            // "image point", "weighted coordinate", "weighted rotation", "weighted constant",
                            // "imported coordinate", "horizontal distance", "bearing", "angle", "scale bar",
                            // "observed coordinate", "coordinate difference"
    std::string component;  // "x", "y", "z" of baselines, coordinates and their differences, "u", "v" of image points,
                            // which value of a weighted or imported item; empty otherwise
    std::string unit = "m"; // of value, sigma and residual: "m", "rad", "pixel", "1"
    std::string from, to;   // to is empty for weighted and imported items
    std::string file;
    int line = 0;
    int words = -1;              // in Results::row_words, -1: none
    double value = 0, sigma = 0; // metres or radians; vertical angles as elevations
    double residual = 0;         // observed less computed
    bool observed = true;        // false: a planned observation, without adjusted value and residual
    std::optional<double> raw;   // the reading, where value is what was made of it
    std::optional<double> adjusted;
    std::optional<double> deviation;  // of the residual, before the variance factor
    std::optional<double> redundancy; // 0 (nothing checks it) to 1
    std::optional<double> normalised; // residual by its standard deviation
    std::optional<bool> outside, normal, normal_divided, tau, tau_divided; // rejection marks
};

struct KindResult {
    std::string kind;
    double sigma_apriori = 0, sigma_aposteriori = 0;
    std::optional<bool> goodness_of_fit; // passed
    int over_normal = 0, over_normal_divided = 0, over_tau = 0, over_tau_divided = 0;
};

// Variance component of a class of observations: the factor of its standard deviations.
struct ComponentResult {
    std::string name; // "distance", "distance, group TS15", "covariance week12"
    int rows = 0;
    double redundancy = 0;
    std::optional<double> factor, deviation; // absent with too little redundancy
    std::optional<double> sigma;             // mean of the standard deviations of the file
    std::string unit;                        // of sigma
    bool used = false;                       // the results are those with the factor
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

struct CameraResult {
    std::string name;
    std::optional<double> value[10], deviation[10]; // c, x0, y0, a, b, k1, k2, k3, p1, p2: those adjusted
};

struct PairResult {
    std::string from, to;
    std::optional<double> deviation[3];
    std::optional<EllipseResult> ellipse[3];
};

// Two-sided test of the variance factor: sum of squares between the limits.
struct VarianceTest {
    double squares = 0, lower = 0, upper = 0;
    bool passed() const { return squares >= lower && squares <= upper; }
};

struct Results {
    std::string program, version, title, file, solver, mode;
    int dimension = 0;
    FileUnits units; // results themselves are metres and radians
    bool adjusted = false;
    std::string stage; // where it ended: "input", "first coordinates", "datum", "adjustment", "done"
    std::string code;  // how: "adjusted", "no first coordinates", "no datum", "undetermined", "singular", ...
    int engine_code = 0;
    std::string datum; // what holds the network, one line
    std::optional<int> iterations;
    double seconds = 0; // of the computation
    std::vector<std::string> words, notes;
    std::optional<int> degrees_of_freedom;
    std::optional<double> sigma_apriori, sigma_aposteriori;
    std::optional<bool> one_tailed_test; // passed
    std::optional<VarianceTest> variance_test;
    std::vector<PointResult> points;
    std::vector<OrientationResult> orientations;
    std::vector<ResidualResult> residuals;
    std::vector<RowWords> row_words;
    std::vector<KindResult> kinds;
    std::vector<ComponentResult> components; // where they were asked for
    std::vector<GroupResult> groups;
    std::vector<CameraResult> cameras;
    std::vector<LumpResult> lumps;
    std::vector<PairResult> pairs;
    std::vector<size_t> suspicious; // residuals beyond the limit for the largest of all, the worst first
    std::vector<Account> accounts;
    std::vector<std::string> covariance_points; // those that the caller named
    std::vector<double> covariances; // of x, y, z of each, all with all, row by row, square metres; 0 for what is held

    const RowWords &words_of(const ResidualResult &residual) const
    {
        static const RowWords none;
        return residual.words < 0 ? none : row_words[(size_t)residual.words];
    }
};

// The reading of a row whose value was made of it, metres or radians; of vertical angles as an elevation.
std::optional<double> raw_reading(const Model &model, bool vertical, const RowNotes &notes, size_t row);

// Everything that is known of a network without a run.
Results describe(const Model &model, const std::string &version);

// Collects what the run has left in the model and its outcome.
Results collect(const Model &model, const RunOutcome &outcome, const std::string &version);

// The quantities in the results that are not a number or infinite: for each kind a line with
// how many there are and the names of the first.
std::vector<std::string> not_numbers(const Results &results);

} // namespace vornhost

#endif
