// Sights of a set-up in sets, and the readings of both faces of a set as one.
//
// With the circle C, readings I and II of the horizontal circle H and of zenith angles V:
//   w = H_II - H_I - C/2           direction = H_I + w/2         collimation error  c = -w/2 sin z
//   i = (V_I + V_II - C) / 2       zenith angle = V_I - i        index error        i
// where both errors are those that a reading of the first face has (Kahmen, Angewandte Geodaesie, 20th ed., 5.3).

#ifndef VORNHOST_FIELD_SETS_H
#define VORNHOST_FIELD_SETS_H

#include <vector>

#include "host/formats/field_book.h"
#include "host/formats/record_account.h"

namespace vornhost {

// Standard deviations of a direction and a zenith angle in both faces, in the unit of the circle, and of a distance.
struct SightSigmas {
    double direction, zenith, distance;
};

// The sights to one target in one set.
struct SetTarget {
    std::string target;
    MaybeNumber target_height;
    MaybeNumber direction, zenith; // reduced to the first face
    std::array<MaybeNumber, sight_lengths> length;
    bool both_faces = false; // the direction and the zenith angle are means of them
    Source where;            // of the first sight
};

using FieldSet = std::vector<SetTarget>;

// Errors of the instrument in one set-up.
struct FaceErrors {
    size_t collimations = 0, indexes = 0;            // pairs of readings that they are the means of
    double collimation = 0.0, index = 0.0;           // means
    double most_collimation = 0.0, most_index = 0.0; // largest, without sign
};

struct ReducedSetup {
    std::vector<FieldSet> sets;
    FaceErrors errors;
};

// A mark with another height of its target is another target.
bool same_target(const SetTarget &a, const SetTarget &b);

// Difference of two directions, above -C/2, at most C/2.
double wrapped(double angle, double circle);

// From which difference on two readings cannot be those of one target.
double gross_angle(double circle);
constexpr double gross_length = 0.1; // metres

// Sets, means and errors. Sights that cannot be means of two faces are left out with their reasons; closures of the
// horizon and differences of faces beyond their limits are noted.
ReducedSetup reduce_faces(const FieldSetup &setup, double circle, const SightSigmas &sigmas, RecordAccount &account);

} // namespace vornhost

#endif
