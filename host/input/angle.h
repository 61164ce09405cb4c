// Angular units of the network file, the ANGLE_... of project.h and units.h: gon, mgon, cc, degree, packed degree
// (ddd.mmss), arc second, mil (6400 to the circle), radian, and degrees, minutes and seconds as text.

#ifndef VORNHOST_ANGLE_H
#define VORNHOST_ANGLE_H

#include <string>
#include <string_view>

namespace vornhost {

// Raw angle in radians. A packed angle must be readable.
double to_radians(int unit, double raw);

// Angle in the raw unit. A packed angle never holds 60 minutes or 60 seconds.
double from_radians(int unit, double rad);

// Raw angle in radians in [0, 2 pi), exactly 0 for full circles. It must be readable.
double to_direction(int unit, double raw);

// Angle in the raw unit in [0, full circle).
double from_direction(int unit, double rad);

// False for a packed angle with minutes or seconds of 60 or more, and for what is not finite.
bool readable_angle(int unit, double raw);

// The same angle in another unit, exactly the same in the same unit.
double in_angle_unit(int to, int from, double raw);

// Degrees of a text like -12-30-36.5 or 12°30'36.5", minutes and seconds below 60 and left out from the right.
// False, degrees untouched, when it is none.
bool read_dms(std::string_view text, double &degrees);

// An angle as -12-30-36.50, with so many decimals of the seconds.
std::string dms_text(double degrees, int decimals);

} // namespace vornhost

#endif
