// The table of observations that might be added to a network: kind, from, to, at (of angles), sigma.

#ifndef VORNHOST_CANDIDATES_H
#define VORNHOST_CANDIDATES_H

#include <string>
#include <unordered_map>
#include <vector>

#include "host/input/faults.h"
#include "host/own/numbers.h"
#include "host/planning/planning.h"

namespace vornhost {

struct CandidatePlaces {
    std::unordered_map<std::string, int> points; // by name
    std::unordered_map<int, int> stands;         // the first set-up on a point
};

CandidatePlaces candidate_places(const Model &network, const Numbers &numbers);

// The rows of the file, with faults for names that the network has not. sigma in the file's units of lengths and
// angles.
std::vector<Candidate> read_candidates(const std::string &path, const Model &network, const CandidatePlaces &places,
                                       Faults &faults);

// The candidate as an observation of the model; its kind says how many components it has. Stands of instruments that
// it needs and that the model has not are added; no other observation knows their orientations. False where the
// dimension has no such observation.
bool observation_of(const Candidate &candidate, int dimension, CandidatePlaces &places, Numbers &numbers,
                    vornadjust::Observation *observation);

} // namespace vornhost

#endif
