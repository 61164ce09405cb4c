#include "host/system/decimal.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace vornhost {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

const char *behind_digits(const char *c, const char *last)
{
    while (c != last && is_digit(*c)) c++;
    return c;
}

bool has_word(const char *c, const char *last, const char *word)
{
    return (size_t)(last - c) >= strlen(word) && strncasecmp(c, word, strlen(word)) == 0;
}

// Behind a number without its sign: digits with a point among them, and an exponent; first where there is none.
const char *number_end(const char *first, const char *last)
{
    const char *whole = behind_digits(first, last), *end = whole;
    if (end != last && *end == '.') end = behind_digits(end + 1, last);
    if (end == first || (end == first + 1 && whole == first)) return first; // nothing, or a point alone
    if (end == last || (*end != 'e' && *end != 'E')) return end;
    const char *exponent = end + 1;
    if (exponent != last && (*exponent == '+' || *exponent == '-')) exponent++;
    const char *behind = behind_digits(exponent, last);
    return behind == exponent ? end : behind;
}

const char *word_end(const char *first, const char *last)
{
    for (const char *word : {"infinity", "inf", "nan"})
        if (has_word(first, last, word)) return first + strlen(word);
    return first;
}

// %.Ne with the fewest digits that read back. 15 digits hold every decimal of so many, with zeros at their end.
int places_needed(double value)
{
    char text[40];
    for (int places = 14; places < 16; places++) {
        snprintf(text, sizeof text, "%.*e", places, value);
        if (strtod(text, nullptr) != value) continue;
        const char *digit = strchr(text, 'e');
        while (places > 0 && *--digit == '0') places--;
        return places;
    }
    return 16;
}

std::string scientific(double value)
{
    char text[40];
    const int size = snprintf(text, sizeof text, "%.*e", places_needed(value), value);
    return std::string(text, (size_t)size);
}

std::string fixed(double value)
{
    std::string digits = scientific(value);
    const size_t e = digits.find('e');
    if (e == std::string::npos) return digits; // not finite
    const size_t point = digits.find('.');
    const int places = point == std::string::npos ? 0 : (int)(e - point) - 1;
    char text[800];
    const int size = snprintf(text, sizeof text, "%.*f", std::max(0, places - atoi(digits.c_str() + e + 1)), value);
    return std::string(text, (size_t)size);
}

std::to_chars_result put(char *first, char *last, const std::string &text)
{
    if ((size_t)(last - first) < text.size()) return {last, std::errc::value_too_large};
    return {std::copy(text.begin(), text.end(), first), std::errc()};
}

} // namespace

std::from_chars_result c_from_chars(const char *first, const char *last, double &value)
{
    const char *begin = first != last && *first == '-' ? first + 1 : first;
    const char *end = number_end(begin, last);
    if (end == begin) end = word_end(begin, last);
    if (end == begin) return {first, std::errc::invalid_argument};
    errno = 0;
    const double read = strtod(std::string(first, end).c_str(), nullptr);
    if (errno == ERANGE && (read == 0.0 || std::isinf(read))) return {end, std::errc::result_out_of_range};
    value = read;
    return {end, std::errc()};
}

std::to_chars_result c_to_chars(char *first, char *last, double value, std::chars_format format)
{
    return put(first, last, format == std::chars_format::fixed ? fixed(value) : scientific(value));
}

std::to_chars_result c_to_chars(char *first, char *last, double value, std::chars_format format, int places)
{
    const char *pattern = format == std::chars_format::fixed        ? "%.*f"
                          : format == std::chars_format::scientific ? "%.*e"
                                                                    : "%.*g";
    char text[800];
    const int size = snprintf(text, sizeof text, pattern, places, value);
    return put(first, last, std::string(text, std::min((size_t)size, sizeof text - 1)));
}

std::to_chars_result c_to_chars(char *first, char *last, double value)
{
    const std::string plain = fixed(value), with_exponent = scientific(value);
    return put(first, last, plain.size() <= with_exponent.size() ? plain : with_exponent);
}

} // namespace vornhost
