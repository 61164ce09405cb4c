// Angles written as ddd.mmsss: degrees, then two digits of minutes, two of seconds and decimals of seconds.

#ifndef VORNHOST_PACKED_DEGREES_H
#define VORNHOST_PACKED_DEGREES_H

#include <optional>
#include <string_view>

namespace vornhost {

// In degrees; digits that are missing at the end are zeros. Nothing when it is no such number, or when minutes or
// seconds are 60 or more. From the text, as a binary number would lose seconds.
std::optional<double> packed_degrees(std::string_view text);

} // namespace vornhost

#endif
