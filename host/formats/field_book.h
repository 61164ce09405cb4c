// A field book as an instrument recorded it: set-ups, and in each of them the sights in the order in which they were
// taken, face by face. What a reader of any such format fills, and field_book_draft makes observations of.
//
// Lengths in metres. Readings of the circles are in the unit of the book, 400 gon or 360 degrees to the circle.

#ifndef VORNHOST_FIELD_BOOK_H
#define VORNHOST_FIELD_BOOK_H

#include <array>
#include <string>
#include <vector>

#include "host/formats/draft.h"

namespace vornhost {

enum class CircleUnit { gon, degree, dms };

inline double full_circle(CircleUnit unit) { return unit == CircleUnit::gon ? 400.0 : 360.0; }

// Lengths that a sight may hold.
enum SightLength { slope_length, horizontal_length, rise_length };
constexpr size_t sight_lengths = 3;

struct FieldSight {
    std::string target;
    std::string set;                               // as the file names it; empty where it does not
    MaybeNumber direction, zenith;                 // readings of the face in which they were taken
    std::array<MaybeNumber, sight_lengths> length; // the rise is that from instrument to target
    MaybeNumber target_height;
    int face = 0; // 1 or 2; 0: as the zenith reading says, the first without one
    Source where;
};

struct FieldSetup {
    std::string station;
    MaybeNumber height; // of the instrument
    std::vector<FieldSight> sights;
    Source where;
};

struct FieldBook {
    CircleUnit unit = CircleUnit::gon;
    std::vector<FieldSetup> setups;
    std::vector<DraftPoint> points; // with coordinates; a name may come again
};

} // namespace vornhost

#endif
