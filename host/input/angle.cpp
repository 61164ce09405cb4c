#include "host/input/angle.h"

#include <math.h>
#include <stdio.h>

#include <algorithm>

#include "host/input/number.h"
#include "host/input/units.h"

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
    case ANGLE_MGON: return 400000.0;
    case ANGLE_CC: return 4000000.0;
    case ANGLE_DEGREE:
    case ANGLE_DMS:
    case ANGLE_PACKED: return 360.0;
    case ANGLE_ARC_SECOND: return 1296000.0;
    case ANGLE_MIL: return 6400.0;
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

bool starts_with(std::string_view text, std::string_view mark) { return text.substr(0, mark.size()) == mark; }

// Takes one of the marks from the front of the text.
bool take_mark(std::string_view &text, std::initializer_list<std::string_view> marks)
{
    for (const std::string_view mark : marks) {
        if (!starts_with(text, mark)) continue;
        text.remove_prefix(mark.size());
        return true;
    }
    return false;
}

// Takes a number without sign, whole or with decimals, from the front of the text.
bool take_number(std::string_view &text, bool decimals, double &value)
{
    const size_t end = std::min(text.find_first_not_of(decimals ? "0123456789." : "0123456789"), text.size());
    if (read_number(text.substr(0, end), value) != Reading::Number) return false;
    text.remove_prefix(end);
    return true;
}

const std::initializer_list<std::string_view> degree_marks = {"-", "\xC2\xB0"},
                                              minute_marks = {"-", "'", "\xE2\x80\xB2", "\xE2\x80\x99"},
                                              second_marks = {"\"", "\xE2\x80\xB3", "\xE2\x80\x9D", "''"};

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

double in_angle_unit(int to, int from, double raw)
{
    return to == from ? raw : from_radians(to, to_radians(from, raw));
}

bool read_dms(std::string_view text, double &degrees)
{
    double d = 0.0, m = 0.0, s = 0.0;
    const bool minus = take_mark(text, {"-", "\xE2\x88\x92"});
    if (!minus) take_mark(text, {"+"});
    if (!take_number(text, false, d)) return false;
    bool more = take_mark(text, degree_marks) && !text.empty();
    if (more && !take_number(text, false, m)) return false;
    more = more && take_mark(text, minute_marks) && !text.empty();
    if (more && !take_number(text, true, s)) return false;
    if (more) take_mark(text, second_marks);
    if (!text.empty() || m >= 60.0 || s >= 60.0) return false;
    degrees = (minus ? -1.0 : 1.0) * (d + m / 60.0 + s / 3600.0);
    return true;
}

std::string dms_text(double degrees, int decimals)
{
    const double parts = pow(10.0, decimals), all = floor(fabs(degrees) * 3600.0 * parts + 0.5); // of a second
    const double minutes = floor(all / (60.0 * parts)), seconds = (all - minutes * 60.0 * parts) / parts;
    const double whole = floor(minutes / 60.0);
    char text[400];
    snprintf(text, sizeof text, "%s%.0f-%02.0f-%0*.*f", degrees < 0.0 && all > 0.0 ? "-" : "", whole,
             minutes - whole * 60.0, decimals > 0 ? decimals + 3 : 2, decimals, seconds);
    return text;
}

bool readable_angle(int unit, double raw)
{
    if (!isfinite(raw)) return false;
    if (unit != ANGLE_PACKED) return true;
    const Sexagesimal s = split(raw);
    return s.minutes < 60.0 && s.seconds < 60.0 - 1e-7;
}

} // namespace vornhost
