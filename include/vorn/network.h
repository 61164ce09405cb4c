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
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "vorn/project.h"

namespace vornhost {
struct Results;
class InputLines;
} // namespace vornhost

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
    std::array<std::string, 3> code;                  ///< "free", "no_datum", "weighted" or "fixed"; empty: absent
    std::array<std::optional<double>, 3> approximate; ///< before the adjustment, metres
    std::array<std::optional<double>, 3> adjusted;    ///< metres
    std::array<std::optional<double>, 3> deviation;   ///< standard deviations, metres
    std::optional<Ellipse> ellipse;                   ///< in the plane of x and y
};

/// An observation that took part.
struct Residual {
    std::string kind;                    ///< "distance", "direction", "baseline", ...
    std::string component;               ///< which value of it, where it has several: "x", "u", ...; otherwise empty
    std::string unit;                    ///< of the values below: "m", "rad", "pixel" or "1"
    std::string from;                    ///< point, or item that is weighted
    std::string to;                      ///< the other point; may be empty
    std::string at;                      ///< the point of an angle; otherwise empty
    std::string id;                      ///< that of the network file; may be empty
    std::string file;                    ///< where it stands
    int line = 0;                        ///< in the file
    double value = 0;                    ///< observed
    double sigma = 0;                    ///< a-priori standard deviation
    double residual = 0;                 ///< observed less computed
    std::optional<double> adjusted;      ///< value less residual
    std::optional<double> redundancy;    ///< 0, nothing checks it, to 1
    std::optional<double> normalised;    ///< residual by its standard deviation
    bool suspicious = false;             ///< the test of observations rejects it
    std::optional<bool> checked;         ///< other observations control it
    std::optional<double> p_value;       ///< probability of a normalised residual of this size or larger
    std::optional<double> detectable;    ///< smallest error of it that the test finds with its power
    std::optional<double> bias_to_noise; ///< what that error does to the unknowns, by their standard deviations
    std::optional<double> shift;         ///< what it does to the observation's own points, metres
};

/// How far a run is: the step ("factor", "inverse", ...) and the share of it that is done, 0 to 1. Called by the thread
/// of the run; must not throw.
using Progress = std::function<void(const std::string &step, double share)>;

/// What a run should do beyond the network file.
struct Options {
    int threads = 1;                           ///< of the run
    bool report = false;                       ///< whether Result::report is wanted
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

    /// Whether the results are there.
    bool adjusted() const { return outcome == Outcome::adjusted; }

    /// The point of that name; null where there is none.
    VORN_HOST const Point *point(const std::string &name) const;

    /// Covariances of two of the points that Options::covariances named, in the order of the arguments; absent for
    /// other points, and where the run made none. They contain the variance factor, as standard deviations do.
    VORN_HOST std::optional<Covariance> covariance(const std::string &first, const std::string &second) const;

    std::vector<std::string> covariance_points; ///< those of covariance_matrix
    std::vector<double> covariance_matrix;      ///< of all their coordinates, x, y, z of each, row by row

    /// All that is known of the run as JSON (share/vorn-result.schema.json); empty after a run that was cancelled or
    /// failed without results.
    VORN_HOST std::string json() const;

    /// The page of the run for a browser: one HTML file with everything in it; empty where json() is.
    VORN_HOST std::string page() const;

    std::shared_ptr<const vornhost::Results> whole;    ///< what json() and page() write
    std::shared_ptr<const vornhost::InputLines> lines; ///< lines of the files that were read, for page()
};

/// One member of all items side by side, for arrays: column(result.residuals, &Residual::residual). What is absent is
/// NaN. Of coordinates, as of &Point::adjusted, x, y, z of each.
template <class Item, class Member> std::vector<double> column(const std::vector<Item> &items, Member Item::*member)
{
    constexpr double absent = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> values;
    values.reserve(items.size());
    for (const Item &item : items)
        if constexpr (std::is_arithmetic_v<Member>)
            values.push_back((double)(item.*member));
        else if constexpr (std::is_same_v<Member, std::optional<double>>)
            values.push_back((item.*member).value_or(absent));
        else
            for (const std::optional<double> &x : item.*member) values.push_back(x.value_or(absent));
    return values;
}

struct Reading;

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

    /// Their names, in the order of the network file.
    VORN_HOST std::vector<std::string> point_names() const;

    /// The network with other observed values: those that its coordinates, orientations and constants give, with errors
    /// drawn from the standard deviations and covariances of the rows. Values of weighted unknowns are drawn too. Each
    /// number `seed` gives another draw, the same one every time; errors are multiplied by `noise`. A network that was
    /// planned (mode "propagation") becomes one to be adjusted. The coordinates of every point must be given, and there
    /// must be no images, imported points or lumps; faults say so. Throws std::bad_alloc alone.
    VORN_HOST Reading simulate(std::uint64_t seed, double noise = 1.0) const;

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
    std::vector<std::string> notes; ///< what was left out of a foreign file or assumed, a sentence each
};

/// A column of a table that an application makes: a number or a word for every row.
struct Column {
    std::string heading;            ///< as docs/network-file.md names it
    std::vector<double> numbers;    ///< NaN: not known
    std::vector<std::string> words; ///< in place of numbers; an empty one: not known
};

/// A table that an application makes.
struct Table {
    std::string name;            ///< "stations", "distances", ...
    std::vector<Column> columns; ///< all with as many rows
};

/// A covariance that rows share, [covariances.NAME] of a network file.
struct Matrix {
    std::string name;             ///< which rows name in their column covariance
    int size = 0;                 ///< number of rows and of columns
    std::vector<double> elements; ///< size x size, row by row
};

/// A network as arrays: what a network file says, with its tables by columns.
struct Arrays {
    std::string settings;            ///< the sections in TOML but for [tables]: "[run]\ndimension = 2\n"
    std::vector<Table> tables;       ///< each once
    std::vector<Matrix> covariances; ///< each once
};

/// Takes a network from arrays, through the checks of every network. A fault in a table has the file "table NAME" and
/// as line the row, from 1; so have residuals. Files that the settings name are looked for in the folder of the name.
VORN_HOST Reading read_arrays(const Arrays &arrays, const std::string &name = "network.inp");

/// Reads a network file, or one of a foreign format that the program imports.
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
