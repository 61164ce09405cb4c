#include "host/formats/number_text.h"

#include <stdio.h>

#include <cmath>
#include <limits>

#include "host/system/decimal.h"

namespace vornhost {

namespace {

constexpr double smallest_plain = 1e-7, largest_plain = 1e15;
constexpr double epsilon = std::numeric_limits<double>::epsilon();

} // namespace

std::string number_text(double value)
{
    const double size = std::fabs(value);
    const bool plain = size == 0.0 || (size >= smallest_plain && size < largest_plain);
    char text[64];
    const std::to_chars_result end = plain ? to_chars(text, text + sizeof text, value, std::chars_format::fixed)
                                           : to_chars(text, text + sizeof text, value);
    const std::string out(text, end.ptr);
    return out == "-0" ? "0" : out;
}

std::string dms_text(double degrees)
{
    const double size = std::fabs(degrees), seconds = size * 3600.0;
    constexpr int most = 10;
    constexpr double tolerance = 4.0 * epsilon * 360.0;
    double unit = 1.0; // places of a second as a whole number
    int places = 0;
    while (places < most && std::fabs(std::round(seconds * unit) / unit / 3600.0 - size) > tolerance) {
        unit *= 10.0;
        places++;
    }
    const double rounded = std::round(seconds * unit) / unit;
    const double whole = std::floor(rounded / 3600.0), minutes = std::floor((rounded - whole * 3600.0) / 60.0);
    const double rest = std::round((rounded - whole * 3600.0 - minutes * 60.0) * unit) / unit;
    char text[96];
    snprintf(text, sizeof text, "%s%.0f-%02.0f-%0*.*f", std::signbit(degrees) ? "-" : "", whole, minutes,
             places ? places + 3 : 2, places, rest);
    return text;
}

double tidy(double value, double size)
{
    double unit = 1.0;
    for (int places = 0; places <= 10; places++, unit *= 10.0) {
        const double rounded = std::round(value * unit) / unit;
        if (std::fabs(rounded - value) <= 2.0 * epsilon * std::fmax(size, std::fabs(value))) return rounded;
    }
    return value;
}

} // namespace vornhost
