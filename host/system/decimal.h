// Decimal numbers as text and back, to the last bit and in any locale: from_chars and to_chars of the standard
// library. Where it has them for whole numbers only, as that for browsers, the same out of the C library.

#ifndef VORNHOST_DECIMAL_H
#define VORNHOST_DECIMAL_H

#include <charconv>
#include <version>

namespace vornhost {

// The same as std::from_chars for double, and as std::to_chars, out of strtod and printf of a C library that knows no
// decimal comma: any number reads back as it was, in its fewest digits (below 1e-307 in more).
std::from_chars_result c_from_chars(const char *first, const char *last, double &value);
std::to_chars_result c_to_chars(char *first, char *last, double value);
std::to_chars_result c_to_chars(char *first, char *last, double value, std::chars_format format);
std::to_chars_result c_to_chars(char *first, char *last, double value, std::chars_format format, int places);

using std::from_chars; // also for whole numbers
#ifdef __cpp_lib_to_chars
using std::to_chars;
#else
inline std::from_chars_result from_chars(const char *first, const char *last, double &value)
{
    return c_from_chars(first, last, value);
}
inline std::to_chars_result to_chars(char *first, char *last, double value) { return c_to_chars(first, last, value); }
inline std::to_chars_result to_chars(char *first, char *last, double value, std::chars_format format)
{
    return c_to_chars(first, last, value, format);
}
inline std::to_chars_result to_chars(char *first, char *last, double value, std::chars_format format, int places)
{
    return c_to_chars(first, last, value, format, places);
}
#endif

} // namespace vornhost

#endif
