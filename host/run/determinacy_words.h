// Sentences on what a network leaves open: the datum that was found, and why it cannot be adjusted.

#ifndef VORNHOST_DETERMINACY_WORDS_H
#define VORNHOST_DETERMINACY_WORDS_H

#include <functional>
#include <string>
#include <vector>

#include "adjust/diagnosis.h"

namespace vornhost {

// How the user calls things.
struct Naming {
    std::function<std::string(int)> point;   // by its index
    std::function<std::string(int)> unknown; // one that is no coordinate: "scale of EDM1"
    double circle = 400;                     // parts of a full circle
    std::string angle = "gon";
    double origin[3] = {0, 0, 0}; // metres, of the model's coordinates in those of the user
};

// "A, B, C", at most eight, then how many more.
std::string names_of(const std::vector<int> &indexes, const std::function<std::string(int)> &name);

// One line: "free: 2 shifts, 1 turn; scale from 7 distances", "held by 4 fixed coordinates; scale also from 7
// distances".
std::string datum_line(const vornadjust::Datum &datum);

// Why a network is refused, a sentence each, names first; empty where it is accepted.
std::vector<std::string> refusals(const vornadjust::Model &model, const vornadjust::Determinacy &found,
                                  const Naming &naming);

// What is determined, but badly; empty where nothing is.
std::vector<std::string> warnings(const vornadjust::Datum &datum, const std::vector<vornadjust::WeakMotion> &weak,
                                  const Naming &naming);

} // namespace vornhost

#endif
