// Where the rounds of a stand begin when the file does not say it.
//
// A new round begins at the latest where a target comes again. Where targets are missing it may have begun before that:
// then the last readings of a round disagree with the others of it, as seen in the rounds around, and belong to the
// next one or are a round of their own.

#ifndef VORNHOST_ROUND_CUTS_H
#define VORNHOST_ROUND_CUTS_H

#include <string>
#include <vector>

namespace vornhost {

struct Reading {
    int record, set; // set: -1 for none
    std::string target;
    double angle, sigma; // radians
};

// A direction that may have been read under another zero.
struct DoubtfulZero {
    int row;      // record, or observation of numbers
    int other;    // orientation of the stand, or set-up of numbers
    bool certain; // the readings of its stand agree with the zero that it has
};

using Readings = std::vector<Reading>;

constexpr double reading_sigmas = 20.0; // by which readings of one target differ under one zero

// In the order of the readings, none of which has a set. Rounds are compared with the four before and after them.
std::vector<Readings> cut_again(const std::vector<Readings> &rounds);

} // namespace vornhost

#endif
