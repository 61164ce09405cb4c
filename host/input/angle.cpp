#include "host/input/angle.h"

#include <math.h>

#include "vorn/project.h"

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

// The angle without the packing of minutes and seconds.
double decimal(int unit, double raw) { return unit == ANGLE_PACKED ? degrees_of(raw) : raw; }

double packed(double degrees)
{
    const double slack = 5e-6; // seconds: what is nearer than this to a full minute is one
    const double all = fabs(degrees) * 3600.0;
    const double minutes = floor((all + slack) / 60.0);
    const double seconds = fmax(all - minutes * 60.0, 0.0);
    const double whole = floor(minutes / 60.0);
    return copysign(whole + (minutes - whole * 60.0) / 100.0 + seconds / 10000.0, degrees);
}

double full_circle(int unit)
{
    switch (unit) {
    case ANGLE_GON: return 400.0;
    case ANGLE_DEGREE:
    case ANGLE_PACKED: return 360.0;
    default: return 2.0 * pi;
    }
}

// x reduced into [0, full); what rounds to a full circle is 0.
double reduce(double x, double full)
{
    const double r = fmod(x, full);
    const double up = r < 0.0 ? r + full : r;
    return up < full ? up : 0.0;
}

} // namespace

double to_radians(int unit, double raw) { return decimal(unit, raw) * (2.0 * pi / full_circle(unit)); }

double from_radians(int unit, double rad)
{
    const double raw = rad * (full_circle(unit) / (2.0 * pi));
    return unit == ANGLE_PACKED ? packed(raw) : raw;
}

double to_direction(int unit, double raw)
{
    const double full = full_circle(unit);
    return reduce(reduce(decimal(unit, raw), full) * (2.0 * pi / full), 2.0 * pi);
}

double from_direction(int unit, double rad)
{
    return reduce(from_radians(unit, reduce(rad, 2.0 * pi)), full_circle(unit));
}

bool readable_angle(int unit, double raw)
{
    if (!isfinite(raw)) return false;
    if (unit != ANGLE_PACKED) return true;
    const Sexagesimal s = split(raw);
    return s.minutes < 60.0 && s.seconds < 60.0 - 1e-7;
}

} // namespace vornhost
