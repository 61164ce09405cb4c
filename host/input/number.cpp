#include "host/input/number.h"

#include <algorithm>
#include <cmath>

#include "host/system/decimal.h"

namespace vornhost {

namespace {

// from_chars knows no plus sign.
std::string_view without_plus(std::string_view text)
{
    const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    return plus ? text.substr(1) : text;
}

template <class Number> Reading convert(std::string_view text, Number &value)
{
    text = without_plus(text);
    Number read = 0;
    const char *end = text.data() + text.size();
    const std::from_chars_result result = from_chars(text.data(), end, read);
    if (result.ptr != end || result.ec == std::errc::invalid_argument) return Reading::None;
    if (result.ec == std::errc::result_out_of_range) return Reading::OutOfRange;
    value = read;
    return Reading::Number;
}

} // namespace

Reading read_number(std::string_view text, double &value)
{
    double read = 0.0;
    const Reading result = convert(text, read);
    if (result == Reading::Number && !std::isfinite(read)) return Reading::NotFinite;
    if (result == Reading::Number) value = read;
    return result;
}

Reading read_whole(std::string_view text, int &value) { return convert(text, value); }

std::string number_remedy(std::string_view text)
{
    double value = 0.0;
    std::string point(text);
    if (std::count(point.begin(), point.end(), ',') == 1) {
        std::replace(point.begin(), point.end(), ',', '.');
        if (read_number(point, value) == Reading::Number) return "write it with a decimal point, like " + point;
    }
    const std::string_view minus = "\xE2\x88\x92"; // U+2212
    if (text.substr(0, minus.size()) == minus) {
        const std::string plain = "-" + std::string(text.substr(minus.size()));
        if (read_number(plain, value) == Reading::Number) return "write it with a plain minus, like " + plain;
    }
    return "write a number like 12.5";
}

} // namespace vornhost
