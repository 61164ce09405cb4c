/// @file
/// Networks for applications: read one, adjust it, take its results as values.
///
///     vornapi::Reading reading = vornapi::read_file("bridge.inp");
///     if (!reading.network) return tell(reading.faults);
///     const vornapi::Result result = reading.network->adjust();
///     if (!result.adjusted()) return tell(result.faults);
///     for (const vornapi::Point &p : result.points) use(p.name, p.adjusted[0].value());
///
/// Lengths are metres and angles radians, whatever the units of the network file; what a run did not make is absent.
/// Nothing is printed, and there is no state but that of the objects: networks may be read and adjusted in several
/// threads at once, one network also in several.

#ifndef VORN_NETWORK_H
#define VORN_NETWORK_H

#include <array>
#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vorn/project.h"

/// Networks for applications.
namespace vornapi {

/// What is wrong with an input, or why a network was not adjusted.
struct Fault {
    std::string file;     ///< as the application named it
    int line = 0;         ///< from 1; 0 where the fault concerns the file as a whole
    int column = 0;       ///< in characters, from 1; 0 where there is none
    std::string sentence; ///< what is wrong
    std::string remedy;   ///< what would be right; may be empty

    /// All of it in one line: "net.inp:12:25: sentence; remedy".
    VORN_HOST std::string text() const;
};

/// An error or confidence ellipse of one sigma.
struct Ellipse {
    double a = 0;       ///< semi-major axis, metres
    double b = 0;       ///< semi-minor axis, metres
    double bearing = 0; ///< of the major axis, from x towards y, radians
};

/// A station or target after a run. Arrays are in the order x, y, z; a coordinate that the dimension does not have is
/// absent.
struct Point {
    std::string name;                                 ///< as in the network file
    bool station = false;                             ///< a station, not a target
    std::array<std::optional<double>, 3> approximate; ///< before the adjustment, metres
    std::array<std::optional<double>, 3> adjusted;    ///< metres
    std::array<std::optional<double>, 3> deviation;   ///< standard deviations, metres
    std::optional<Ellipse> ellipse;                   ///< in the plane of x and y
};

/// An observation that took part.
struct Residual {
    std::string kind;                 ///< "distance", "direction", "baseline", ...
    std::string component;            ///< which value of it, where it has several: "x", "u", ...; otherwise empty
    std::string unit;                 ///< of the values below: "m", "rad", "pixel" or "1"
    std::string from;                 ///< point, or item that is weighted
    std::string to;                   ///< the other point; may be empty
    std::string at;                   ///< the point of an angle; otherwise empty
    std::string file;                 ///< where it stands
    int line = 0;                     ///< in the file
    double value = 0;                 ///< observed
    double sigma = 0;                 ///< a-priori standard deviation
    double residual = 0;              ///< observed less computed
    std::optional<double> adjusted;   ///< value less residual
    std::optional<double> redundancy; ///< 0, nothing checks it, to 1
    std::optional<double> normalised; ///< residual by its standard deviation
    bool suspicious = false;          ///< beyond the limit for the largest of all
};

/// How far a run is: the step ("factor", "inverse", ...) and the share of it that is done, 0 to 1. Called by the thread
/// of the run; must not throw.
using Progress = std::function<void(const std::string &step, double share)>;

/// What a run should do beyond the network file.
struct Options {
    int threads = 1;                           ///< of the run
    bool report = false;                       ///< whether Result::report is wanted
    bool json = false;                         ///< whether Result::json is wanted
    std::vector<std::string> covariances;      ///< points among which Result::covariance answers
    Progress progress;                         ///< may be empty
    const std::atomic<bool> *cancel = nullptr; ///< set by anybody, ends the run at its next look; may be null
};

/// Covariances of the coordinates of two points, row by row: of x, y, z of the first with x, y, z of the second, square
/// metres. 0 for a coordinate that is held or that the dimension does not have.
using Covariance = std::array<double, 9>;

/// What became of a run.
enum class Outcome {
    adjusted, ///< the results are there
    refused,  ///< Result::faults say why not
    cancelled ///< by Options::cancel
};

/// Results of a run, complete and independent of the network.
struct Result {
    Outcome outcome = Outcome::refused;      ///< how it ended
    std::vector<Fault> faults;               ///< why it was not adjusted; empty when it was
    std::vector<std::string> notes;          ///< what was taken care of, a sentence each
    std::string datum;                       ///< what holds the network
    int dimension = 0;                       ///< 1, 2 or 3
    std::optional<int> degrees_of_freedom;   ///< redundancy
    std::optional<double> sigma_aposteriori; ///< root of the variance factor
    std::optional<bool> variance_test;       ///< whether the variance factor agrees with 1, at 95 %
    std::vector<Point> points;               ///< in the order of the network file
    std::vector<Residual> residuals;         ///< in the order of the adjustment
    std::string report;                      ///< for people, where it was asked for
    std::string json;                        ///< as the program writes it, where it was asked for

    /// Whether the results are there.
    bool adjusted() const { return outcome == Outcome::adjusted; }

    /// The point of that name; null where there is none.
    VORN_HOST const Point *point(const std::string &name) const;

    /// Covariances of two of the points that Options::covariances named, in the order of the arguments; absent for
    /// other points, and where the run made none. They contain the variance factor, as standard deviations do.
    VORN_HOST std::optional<Covariance> covariance(const std::string &first, const std::string &second) const;

    std::vector<std::string> covariance_points; ///< those of covariance_matrix
    std::vector<double> covariance_matrix;      ///< of all their coordinates, x, y, z of each, row by row
};

/// A network that has been read. Copies share what was read.
class Network {
public:
    /// Adjusts the network, which stays as it was read: every call gives the same result. Never throws; without memory
    /// the result says so. A network that exports points writes their file into the working folder, as the program
    /// does.
    VORN_HOST Result adjust(const Options &options = {}) const noexcept;

    /// Title in the network file.
    VORN_HOST const std::string &title() const;

    /// Number of stations and targets.
    VORN_HOST int points() const;

private:
    struct Read;
    friend struct ReadAccess;
    explicit Network(std::shared_ptr<const Read> what);
    std::shared_ptr<const Read> read;
};

/// A network, or what is wrong with its text.
struct Reading {
    std::optional<Network> network; ///< there when there are no faults
    std::vector<Fault> faults;      ///< the first fifty, in the order of their places
};

/// Reads a network file.
VORN_HOST Reading read_file(const std::string &path);

/// Reads the text of a network file. Faults name it by the name; files that the network names are looked for in the
/// folder of the name.
VORN_HOST Reading read_text(const std::string &text, const std::string &name = "network.inp");

/// Reads a stream to its end, as a text.
VORN_HOST Reading read_stream(std::istream &stream, const std::string &name = "network.inp");

/// The version of the library that runs; VORN_VERSION of vorn/version.h is the one an application was compiled with.
VORN_HOST const char *version();

} // namespace vornapi

#endif
