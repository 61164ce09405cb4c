#include "host/results/report_units.h"

#include <cmath>
#include <cstdio>

#include "host/input/angle.h"

namespace vornhost {

namespace {

const double pi = 4.0 * std::atan(1.0);

struct LengthUnit {
    const char *name, *small_name;
    double small; // metres in the small unit
    int decimals;
};

const LengthUnit lengths[] = {{"m", "mm", 0.001, 5}, {"mm", "um", 1e-6, 3}, {"inch", "mil", 0.0254e-3, 5}};

struct AngleUnit {
    const char *name, *small_name;
    double small; // radians in the small unit
    int decimals, small_decimals;
};

const AngleUnit angles[] = {{"gon", "mgon", pi / 200.0e3, 5, 3},
                            {"degree", "arcsec", pi / 648000.0, 6, 2},
                            {"ddd.mmss", "arcsec", pi / 648000.0, 6, 2},
                            {"rad", "urad", 1e-6, 8, 2}};

} // namespace

std::string decimal(double value, int decimals)
{
    char text[400];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    const std::string number = text;
    const bool zero = number.find_first_of("123456789n") == std::string::npos; // inf and nan hold an n
    return zero && number[0] == '-' ? number.substr(1) : number;
}

const char *ReportUnits::length_name() const { return lengths[units.length].name; }
const char *ReportUnits::small_length_name() const { return lengths[units.length].small_name; }
const char *ReportUnits::angle_name() const { return angles[units.angle].name; }
const char *ReportUnits::small_angle_name() const { return angles[units.angle].small_name; }

std::string ReportUnits::length(double metres) const
{
    return decimal(metres / units.metres, lengths[units.length].decimals);
}

std::string ReportUnits::small_length(double metres) const { return decimal(metres / lengths[units.length].small, 2); }

std::string ReportUnits::angle(double radians) const
{
    return decimal(from_direction(units.angle, radians), angles[units.angle].decimals);
}

std::string ReportUnits::elevation(double radians) const
{
    return signed_angle(units.zenith ? 0.5 * pi - radians : radians);
}

std::string ReportUnits::signed_angle(double radians) const
{
    return decimal(from_radians(units.angle, radians), angles[units.angle].decimals);
}

std::string ReportUnits::small_angle(double radians) const
{
    return decimal(radians / angles[units.angle].small, angles[units.angle].small_decimals);
}

} // namespace vornhost
