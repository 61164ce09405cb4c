// Angular units of the network file: gon, degree, packed degree (ddd.mmss) and radian,
// the ANGLE_... of project.h.

#ifndef VORNHOST_ANGLE_H
#define VORNHOST_ANGLE_H

namespace vornhost {

// Raw angle in radians. A packed angle must be readable.
double to_radians(int unit, double raw);

// False for a packed angle with minutes or seconds of 60 or more.
bool readable_angle(int unit, double raw);

} // namespace vornhost

#endif
