/// @file
/// Epochs of a network compared: which points kept their places to one another, and how far the others moved.
///
///     const vornapi::Comparison c = vornapi::compare({may, november});
///     for (const vornapi::ComparedPoint &p : c.points)
///         if (!p.stable) use(p.name, p.shifts[0].by);
///
/// What is computed is in docs/epochs.md. Lengths are metres, angles radians.

#ifndef VORN_COMPARE_H
#define VORN_COMPARE_H

#include <array>
#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "vorn/network.h"

namespace vornapi {

/// What a comparison should do.
struct CompareOptions {
    double level = 0.05;                          ///< probability of a false alarm of each test
    bool apriori = false;                         ///< variance factor 1 instead of that of all epochs
    bool held = false;                            ///< held coordinates stay held, and are not compared
    std::vector<std::string> points;              ///< those to compare; empty: all that the epochs have in common
    std::vector<std::string> dates;               ///< one an epoch, instead of those of the networks; or empty
    std::vector<std::vector<std::string>> groups; ///< of points whose strain is wanted
    const std::atomic<bool> *cancel = nullptr;    ///< set by anybody, ends it at its next look; may be null
};

/// How far a point moved since the first epoch, against the stable ones, in the order x, y, z.
struct Shift {
    std::array<std::optional<double>, 3> by;        ///< metres
    std::array<std::optional<double>, 3> deviation; ///< standard deviations, metres
    std::optional<double> p;                        ///< probability of such a shift of a point that did not move
    bool significant = false;                       ///< beyond the limit of the level
};

/// A point that all epochs have.
struct ComparedPoint {
    std::string name;          ///< as in the networks
    bool stable = false;       ///< one of the points that kept their places to one another
    std::vector<Shift> shifts; ///< one for each epoch behind the first
};

/// What came of it.
struct Comparison {
    Outcome outcome = Outcome::refused; ///< adjusted: it was made
    std::vector<Fault> faults;          ///< why it was not made
    std::vector<std::string> notes;     ///< what was taken care of, a sentence each
    bool congruent = false;             ///< nothing speaks against all points having kept their places
    double p = 1;                       ///< probability of so large a growth of v'Pv where none moved
    double variance_factor = 1;         ///< with which all is tested
    std::vector<ComparedPoint> points;  ///< in the order of the first network
    std::string json;                   ///< everything (docs/epochs.md): velocities and strains too
    std::string report;                 ///< for people

    /// Whether the results are there.
    bool made() const { return outcome == Outcome::adjusted; }
};

/// Compares networks, one an epoch in the order of time, which stay as they were read. Never throws; without memory
/// the comparison says so.
VORN_HOST Comparison compare(const std::vector<Network> &epochs, const CompareOptions &options = {}) noexcept;

} // namespace vornapi

#endif
