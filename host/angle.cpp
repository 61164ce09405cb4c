#include "angle.h"

#include <math.h>

#include "project.h"

namespace vornhost {

namespace {

const double pi = 4.0 * atan(1.0);

struct Sexagesimal {
    double degrees, minutes, seconds;
};

// Splits dddmmss.s; rounding of the decimal fraction must not turn 30' into 29'100".
Sexagesimal split(double packed)
{
    const double all = fabs(packed) * 10000.0;
    const double slack = 1e-7 + all * 1e-15; // seconds: binary fractions of ddd.mmss
    Sexagesimal s;
    s.degrees = floor((all + slack) / 10000.0);
    const double rest = all - s.degrees * 10000.0;
    s.minutes = floor((rest + slack) / 100.0);
    s.seconds = fmax(rest - s.minutes * 100.0, 0.0);
    return s;
}

double degrees_of(double packed)
{
    const Sexagesimal s = split(packed);
    return copysign(s.degrees + s.minutes / 60.0 + s.seconds / 3600.0, packed);
}

} // namespace

double to_radians(int unit, double raw)
{
    switch (unit) {
    case ANGLE_GON: return raw * (pi / 200.0);
    case ANGLE_DEGREE: return raw * (pi / 180.0);
    case ANGLE_PACKED: return degrees_of(raw) * (pi / 180.0);
    default: return raw;
    }
}

bool readable_angle(int unit, double raw)
{
    if (unit != ANGLE_PACKED) return true;
    const Sexagesimal s = split(raw);
    return s.minutes < 60.0 && s.seconds < 60.0 - 1e-7;
}

} // namespace vornhost
