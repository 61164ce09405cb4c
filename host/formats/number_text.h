// Numbers as an importer writes them: the shortest decimal text that reads back as the same number.

#ifndef VORNHOST_NUMBER_TEXT_H
#define VORNHOST_NUMBER_TEXT_H

#include <string>

namespace vornhost {

// Without an exponent where that is readable: 0.0025, 1054980.484, 1e-09.
std::string number_text(double value);

// Decimal degrees as -57-32-28.428: minutes and seconds of two places, seconds with as many as it takes
// to come within 4e-13 degrees of the value.
std::string dms_text(double degrees);

// The decimal number of up to ten places that value is but for the rounding of one operation between numbers of up to
// `size`; otherwise value itself. 400 - 113.6688 becomes 286.3312.
double tidy(double value, double size);

} // namespace vornhost

#endif
