// Angular units of the network file: gon, degree, packed degree (ddd.mmss) and radian,
// the ANGLE_... of project.h.

#ifndef VORNHOST_ANGLE_H
#define VORNHOST_ANGLE_H

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

} // namespace vornhost

#endif
