#include "host/formats/packed_degrees.h"

#include <string>

#include "host/input/number.h"

namespace vornhost {

std::optional<double> packed_degrees(std::string_view text)
{
    const bool negative = text.substr(0, 1) == "-";
    if (negative || text.substr(0, 1) == "+") text.remove_prefix(1);
    const size_t point = text.find('.');
    std::string digits(point == std::string_view::npos ? std::string_view() : text.substr(point + 1));
    if (text.find_first_of("0123456789") == std::string_view::npos) return std::nullopt;
    if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    while (digits.size() < 4) digits += '0';
    const std::string whole(text.substr(0, point));
    double degrees = 0.0, minutes = 0.0, seconds = 0.0;
    if (whole.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    if (!whole.empty() && read_number(whole, degrees) != Reading::Number) return std::nullopt;
    read_number(digits.substr(0, 2), minutes);
    read_number(digits.substr(2, 2) + "." + (digits.size() > 4 ? digits.substr(4) : "0"), seconds);
    if (minutes >= 60.0 || seconds >= 60.0) return std::nullopt;
    const double value = degrees + (minutes * 60.0 + seconds) / 3600.0;
    return negative ? -value : value;
}

} // namespace vornhost
