// Planning of a network at its first coordinates, without observed values: precision and checks that the observations
// of the file give, and which further observation helps a point most.
//
// With Q the cofactors of the unknowns, A the rows of a candidate and S = sigma^2 I its covariance, the cofactors of a
// point p become with it
//   Q_pp - Q_pA (S + A Q A^T)^-1 Q_Ap,  Q_pA = Q_p. A^T,
// so that one adjustment serves all candidates. The share S (S + A Q A^T)^-1 tells how far the network checks it: its
// redundancy number, 0 (nothing else checks it) to 1. Metres and radians.

#ifndef VORNHOST_PLANNING_H
#define VORNHOST_PLANNING_H

#include <optional>
#include <string>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"
#include "host/run/run_watch.h"

namespace vornhost {

struct PlanOptions {
    std::string helped;     // name of the point to help; empty: none
    std::string candidates; // file of the table of candidates
};

struct WeakPoint {
    std::string name;
    double position = 0; // root of the sum of the variances of its coordinates
};

struct WeakObservation {
    std::string text, unit; // "net.inp:12: distance P to Q", "m", "rad" or "pixel"
    double sigma = 0, redundancy = 0;
    std::optional<double> detectable; // error that the test finds with its power; absent where nothing checks it
};

struct Candidate {
    std::string kind, from, to, at; // at of angles
    int line = 0;
    double sigma = 0;      // metres or radians
    bool possible = false; // false: it sees nothing that the network has
    double redundancy = 0; // mean of its components
    double position = 0;   // of the helped point with it
    double deviation[3] = {0, 0, 0};
};

struct Planning {
    std::vector<std::string> words; // why there is none
    bool stopped = false;           // by the watch
    FileUnits units;
    std::string file, datum;
    std::string test; // what finds the detectable errors, in words; empty with tau, which foretells nothing
    int redundancy = 0, rows = 0;
    std::vector<WeakPoint> points;             // all, the weakest first
    std::vector<WeakObservation> observations; // all, those checked least first
    std::string helped;
    double position = 0, deviation[3] = {0, 0, 0}; // of the helped point without a candidate
    std::vector<Candidate> candidates;             // the best first

    bool made() const { return words.empty() && !stopped; }
};

// Faults are those of the table of candidates.
Planning plan_network(Model &network, const PlanOptions &options, Faults &faults, const RunWatch &watch = {});

std::string planning_report(const Planning &planning, const std::string &date);
std::string planning_json(const Planning &planning, const std::string &version);

} // namespace vornhost

#endif
