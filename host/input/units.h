// Units of lengths and angles in which a network file may be written.
//
// Records hold metres, millimetres or inches, and gon, degrees, packed degrees or radians; what a file writes in
// another unit is converted when it is read.

#ifndef VORNHOST_UNITS_H
#define VORNHOST_UNITS_H

#include "vorn/project.h"

namespace vornhost {

// The first three are iunit of the project.
enum { LENGTH_METRE, LENGTH_MILLIMETRE, LENGTH_INCH, LENGTH_CENTIMETRE, LENGTH_KILOMETRE, LENGTH_FOOT, LENGTH_US_FOOT };

// Beside the ANGLE_... of project.h. Degrees, minutes and seconds are decimal degrees once they are read; cc is the ten
// thousandth of a gon.
enum { ANGLE_MGON = ANGLE_RADIAN + 1, ANGLE_ARC_SECOND, ANGLE_MIL, ANGLE_DMS, ANGLE_CC };

// Metres in a unit of length. A US survey foot is 1200/3937 m.
double metres_in(int length_unit);

// Unit in which the records hold what a file writes in that unit.
int record_length(int length_unit);
int record_angle(int angle_unit);

// What a network file writes in.
struct FileUnits {
    int length = LENGTH_METRE;
    double metres = 1.0;   // in one unit of length
    int angle = ANGLE_GON; // ANGLE_...
    bool zenith = true;    // vertical angles are zenith angles
};

} // namespace vornhost

#endif
