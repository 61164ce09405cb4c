#include "host/results/report_units.h"

#include <cmath>
#include <string_view>

#include "host/input/angle.h"
#include "host/system/decimal.h"

namespace vornhost {

namespace {

const double pi = 4.0 * std::atan(1.0);

struct LengthUnit {
    const char *name, *small_name;
    double small; // metres in the small unit
    int decimals, small_decimals;
};

const LengthUnit lengths[] = {{"m", "mm", 0.001, 5, 2},
                              {"mm", "um", 1e-6, 3, 2},
                              {"inch", "mil", 0.0254e-3, 5, 2},
                              {"cm", "mm", 0.001, 3, 2},
                              {"km", "mm", 0.001, 8, 2},
                              {"ft", "ft", 0.3048, 5, 5},
                              {"us_ft", "us_ft", 1200.0 / 3937.0, 5, 5}};

struct AngleUnit {
    const char *name, *small_name;
    double small; // radians in the small unit
    int decimals, small_decimals;
};

const AngleUnit angles[] = {{"gon", "mgon", pi / 200.0e3, 5, 3},         {"degree", "arcsec", pi / 648000.0, 6, 2},
                            {"ddd.mmss", "arcsec", pi / 648000.0, 6, 2}, {"rad", "urad", 1e-6, 8, 2},
                            {"mgon", "mgon", pi / 200.0e3, 2, 3},        {"arcsec", "arcsec", pi / 648000.0, 2, 2},
                            {"mil", "0.001 mil", pi / 3200.0e3, 4, 2},   {"d-m-s", "arcsec", pi / 648000.0, 2, 2}};

} // namespace

std::string decimal(double value, int decimals)
{
    char text[400];
    const char *end = to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
    const std::string_view number(text, (size_t)(end - text));
    const bool zero = number.find_first_of("123456789n") == std::string::npos; // inf and nan hold an n
    return std::string(zero && number[0] == '-' ? number.substr(1) : number);
}

std::string probability_text(double p) { return p < 0.0001 ? "<0.0001" : decimal(p, 4); }

const char *ReportUnits::length_name() const { return lengths[units.length].name; }
const char *ReportUnits::small_length_name() const { return lengths[units.length].small_name; }
const char *ReportUnits::angle_name() const { return angles[units.angle].name; }
const char *ReportUnits::small_angle_name() const { return angles[units.angle].small_name; }

std::string ReportUnits::length(double metres) const
{
    return decimal(metres / units.metres, lengths[units.length].decimals);
}

std::string ReportUnits::small_length(double metres) const
{
    return decimal(metres / lengths[units.length].small, lengths[units.length].small_decimals);
}

std::string ReportUnits::angle_text(double raw) const
{
    const int decimals = angles[units.angle].decimals;
    return units.angle == ANGLE_DMS ? dms_text(raw, decimals) : decimal(raw, decimals);
}

std::string ReportUnits::bearing(double radians) const
{
    const std::string text = angle(radians);
    return units.angle == ANGLE_DMS ? text.substr(0, text.rfind('-')) : decimal(std::stod(text), 1);
}

std::string ReportUnits::angle(double radians) const { return angle_text(from_direction(units.angle, radians)); }

std::string ReportUnits::elevation(double radians) const
{
    return signed_angle(units.zenith ? 0.5 * pi - radians : radians);
}

std::string ReportUnits::signed_angle(double radians) const { return angle_text(from_radians(units.angle, radians)); }

std::string ReportUnits::small_angle(double radians) const
{
    return decimal(radians / angles[units.angle].small, angles[units.angle].small_decimals);
}

} // namespace vornhost
