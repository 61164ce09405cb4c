// Results of a run as one structure, from which every output is written.
//
// Lengths in metres, angles in radians. What the run did not make is absent, never zero.

#ifndef VORNHOST_RESULTS_H
#define VORNHOST_RESULTS_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/run/accounts.h"
#include "host/input/model.h"
#include "host/results/residuals.h"
#include "host/run/runner.h"

namespace vornhost {

struct EllipseResult {
    double a = 0, b = 0; // semi-axes, a >= b
    double bearing = 0;  // of the major axis, from the first axis of the plane towards the second, radians
};

// Semi-axes, the longest first, with the direction of each: bearing from x towards y, and elevation above the plane of
// both, radians.
struct EllipsoidResult {
    double axis[3] = {0, 0, 0}, bearing[3] = {0, 0, 0}, elevation[3] = {0, 0, 0};
};

// Where a point of a lump stands at another epoch, against its adjusted place at the reference epoch.
struct MoveResult {
    int epoch = 0;
    double by[3] = {0, 0, 0};
};

// A point on the earth, in the reference system of the network.
struct EarthPlace {
    double latitude = 0, longitude = 0;              // degrees
    std::optional<double> height;                    // above the ellipsoid
    std::optional<std::array<double, 3>> geocentric; // X, Y, Z, where there is a height
};

// Where a point stands on maps: degrees in WGS 84, and how they change by a metre of x and of y.
struct MapPlace {
    double longitude = 0, latitude = 0;
    double longitude_by[2] = {0, 0}, latitude_by[2] = {0, 0};
};

struct PointResult {
    std::string name;
    bool station = false;
    std::string code[3];                  // "free", "no_datum", "weighted", "fixed"; empty outside the dimension
    std::optional<double> approximate[3]; // x, y, z
    std::optional<double> adjusted[3];
    std::optional<double> deviation[3];       // standard deviations
    std::optional<EllipseResult> ellipse[3];  // planes xy, xz, yz
    std::optional<EllipsoidResult> ellipsoid; // of points that are adjusted in space
    std::optional<EarthPlace> earth;          // with a reference system
    std::optional<MapPlace> map;
    std::vector<MoveResult> moves;     // of the lump it belongs to
    std::optional<double> uncertainty; // radius of the circle that holds the position with 95 %
};

struct OrientationResult {
    std::string name;
    std::string setup, set;         // empty for the only stand of a station, and where all sets share a zero
    double rotation[3] = {0, 0, 0}; // Rx1, Rx2, Rx3
    std::optional<double> deviation[3];
};

struct KindResult {
    std::string kind;
    double sigma_apriori = 0, sigma_aposteriori = 0;
    std::optional<bool> goodness_of_fit; // passed
    int over_normal = 0, over_normal_divided = 0, over_tau = 0, over_tau_divided = 0;
    int suspicious = 0, unchecked = 0; // of the solver sparse
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

// Deflection of the vertical at a point, radians.
struct DeflectionResult {
    std::string point;
    double value[2] = {0, 0};           // xi, eta
    std::optional<double> deviation[2]; // of those that were estimated
};

// From the network's reference system into that of observations, about the geocentre; metres, radians, factor.
struct TransformationResult {
    std::string name;
    double value[7] = {0, 0, 0, 0, 0, 0, 1};   // tx, ty, tz, rx, ry, rz, scale
    std::optional<double> deviation[7];        // of those that were estimated; of shifts where they count from
    std::optional<std::array<double, 3>> here; // the shift at the first point, where it counts from there
};

struct CameraResult {
    std::string name;
    std::optional<double> value[10], deviation[10]; // c, x0, y0, a, b, k1, k2, k3, p1, p2: those adjusted
};

struct PairResult {
    std::string from, to;
    std::optional<double> deviation[3];
    std::optional<EllipseResult> ellipse[3];
    std::optional<EllipsoidResult> ellipsoid;
    std::optional<double> uncertainty; // as of points, of one point against the other
};

// Two points that observations join, and how well they are known to one another.
struct WeakPairResult {
    std::string from, to;
    double uncertainty = 0; // as of a pair
    double distance = 0;    // metres
};

// The reference system of the coordinates.
struct CrsResult {
    std::string network, name; // "EPSG:25832", "ETRS89 / UTM zone 32N"
    std::string heights;       // "orthometric", "ellipsoidal"; empty for a local system
    std::optional<double> epoch;

    std::string text() const; // one line for people
};

// Tests of the variance factor by the sum of squares.
struct VarianceTest {
    double squares = 0, lower = 0, upper = 0; // two-sided: between the limits
    double level = 0;
    double probability = 0;                                // two-sided
    double one_sided_limit = 0, one_sided_probability = 0; // upwards only
    bool passed() const { return squares >= lower && squares <= upper; }
    bool one_sided_passed() const { return squares <= one_sided_limit; }
};

// How observations were tested and precision is stated.
struct TestsResult {
    std::string test;  // "baarda", "tau", "b_method"
    std::string words; // in a sentence
    bool sidak = false;
    double level = 0, single_level = 0, power = 0; // asked for, of one observation
    std::optional<double> limit;                   // of a normalised residual; absent where nothing was tested
    double least_redundancy = 0;
    int tested = 0, rejected = 0, unchecked = 0;
    std::optional<size_t> first_unchecked; // residual
};

// What standard deviations and ellipses contain.
struct PrecisionResult {
    bool a_priori = false;            // the standard deviations of the observations alone
    double sigma = 1;                 // root of the variance factor that they contain
    std::optional<double> confidence; // of the ellipses in the report; those here are standard ellipses
    double ellipse_factor = 1;        // semi-axes at that confidence by standard ones
    double ellipsoid_factor = 1;      // the same in space
};

// Test of the components of an observation together.
struct JointTestResult {
    size_t first = 0; // of its residuals, which follow one another
    int components = 0, rank = 0;
    double squares = 0;
    std::optional<double> probability;
    bool rejected = false;
};

// A quantity of adjusted coordinates.
struct DerivedResult {
    std::string kind; // "distance", "horizontal distance", "bearing", "height difference", "angle"
    std::string unit = "m";
    std::string from, at, to; // at is empty but for angles
    double value = 0;
    std::optional<double> deviation;
};

// A step of leaving out what the tests reject.
struct SnoopStep {
    bool taken_again = false; // or left out
    std::string kind, at, from, to, file;
    int line = 0;
    const char *table = nullptr; // of the network file; null for image points, weighted and imported values
    size_t row = 0, rows = 0;    // in the table, from 1, and how many it has
    double normalised = 0;       // largest of its components in that run
    double sigma = 0;            // a posteriori, of the run behind the step
};

// Weight of an observation in a robust adjustment, by that of its standard deviation.
struct WeightResult {
    size_t residual = 0;
    double weight = 1;
};

struct AlikeResult {
    size_t residual = 0;
    double correlation = 0;
};

// A suspicious observation that was looked at closely.
struct SuspectResult {
    size_t residual = 0;
    double error = 0;               // estimated, in the unit of the residual
    double would_read = 0;          // what would fit: the reading less the error
    double shift = 0;               // metres, by which the error moves a point
    std::string point;              // that it moves most; empty where it moves none
    std::vector<AlikeResult> alike; // observations that it cannot be told apart from
};

struct RowPlace {
    std::string file;
    int line = 0;
};

// A sum of observations around a loop or between known points, which would be zero without errors.
struct ClosureResult {
    std::string at;                  // station of a horizon
    std::vector<std::string> points; // in order; a loop ends at its first point
    std::vector<RowPlace> rows;      // of the observations
    double misclosure = 0;           // metres or radians; a length where it has components
    std::optional<double> off[3];    // x, y, z where it has more than one component
    double limit = 0;                // by the sigmas, for this direction
    std::optional<double> length;    // metres, of traverses and baselines
};

struct ClosuresResult {
    std::string kind; // "levelling", "heights", "baselines", "horizon", "angles", "traverse"
    std::string unit; // "m", "rad"
    size_t found = 0, beyond = 0;
    size_t missed = 0; // too long to be formed
    std::vector<ClosureResult> worst;
};

struct Results {
    std::string program, version, title, file, solver, mode;
    int dimension = 0;
    FileUnits units; // results themselves are metres and radians
    std::optional<CrsResult> crs;
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
    std::optional<TestsResult> tests;
    std::optional<PrecisionResult> precision;
    std::vector<PointResult> points;
    std::vector<OrientationResult> orientations;
    Residuals residuals;
    std::vector<KindResult> kinds;
    std::vector<ComponentResult> components; // where they were asked for
    std::vector<GroupResult> groups;
    std::vector<CameraResult> cameras;
    std::vector<LumpResult> lumps;
    std::vector<DeflectionResult> deflections;
    std::vector<TransformationResult> transformations; // those of which something acts
    std::vector<PairResult> pairs;
    std::vector<WeakPairResult> weak_pairs; // the worst first
    std::vector<size_t> suspicious;         // residuals that the test rejects, the worst first
    std::vector<SuspectResult> suspects;
    std::vector<JointTestResult> joint_tests;
    std::vector<SnoopStep> snooping;
    std::string robust;                // "huber", "danish", "l1"; empty for least squares
    std::vector<WeightResult> weights; // of robust estimation, those below 1, the least first
    std::vector<DerivedResult> derived;
    std::vector<Account> accounts;
    std::vector<ClosuresResult> closures;       // before the adjustment
    std::vector<std::string> covariance_points; // those that the caller named
    std::vector<double> covariances; // of x, y, z of each, all with all, row by row, square metres; 0 for what is held

    static const RowWords &words_of(const ResidualResult &residual)
    {
        static const RowWords none;
        return residual.words ? *residual.words : none;
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
