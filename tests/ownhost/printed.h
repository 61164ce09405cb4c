// Comparison of printed texts: words, blanks and whole numbers alike; a number with decimals may
// differ by one in its last digit, or by 1e-9 of itself where more digits than that are printed.
// More than 12 decimals of a number show its rounding, and so does the sign of what is not a number.

#ifndef TESTS_OWNHOST_PRINTED_H
#define TESTS_OWNHOST_PRINTED_H

#include <ctype.h>
#include <math.h>
#include <stdlib.h>

#include <algorithm>
#include <sstream>
#include <string>

namespace printed {

// A number with decimals at the start of a text: its value, the value of one in its last digit,
// and how many characters it takes; 0 characters when there is none.
struct Number {
    double value = 0.0, last = 0.0;
    size_t decimals = 0, length = 0;
};

inline size_t digits(const std::string &s, size_t at)
{
    size_t n = 0;
    while (at + n < s.size() && isdigit((unsigned char)s[at + n])) n++;
    return n;
}

inline Number number(const std::string &s, size_t at)
{
    Number n;
    const size_t sign = at < s.size() && s[at] == '-', whole = digits(s, at + sign), point = at + sign + whole;
    if (whole == 0 || point >= s.size() || s[point] != '.') return n;
    n.decimals = digits(s, point + 1);
    size_t end = point + 1 + n.decimals;
    int exponent = 0;
    if (end + 1 < s.size() && s[end] == 'e' && (s[end + 1] == '-' || s[end + 1] == '+')) {
        exponent = atoi(s.c_str() + end + 1);
        end += 2 + digits(s, end + 2);
    }
    n.value = atof(s.c_str() + at);
    n.last = pow(10.0, exponent - (int)std::min(n.decimals, (size_t)12));
    n.length = end - at;
    return n;
}

inline bool same_token(const std::string &a, const std::string &b)
{
    size_t i = 0, k = 0;
    while (i < a.size() && k < b.size()) {
        const Number x = number(a, i), y = number(b, k);
        if (x.length > 0 && y.length > 0) {
            if (x.decimals != y.decimals) return false;
            const double last = 1.000001 * fmax(x.last, y.last); // 9.9999e-05 and 1.0000e-04
            if (!(fabs(x.value - y.value) <= fmax(last, 1e-9 * fabs(x.value)))) return false;
            i += x.length;
            k += y.length;
        } else if (a[i++] != b[k++]) {
            return false;
        }
    }
    return i == a.size() && k == b.size();
}

// Words of both lines stand in the same columns, those of other lengths by their ends or starts.
inline bool same_line(const std::string &a, const std::string &b)
{
    if (a == b) return true;
    size_t i = 0, k = 0;
    while (true) {
        const size_t p = a.find_first_not_of(' ', i), q = b.find_first_not_of(' ', k);
        if (p == std::string::npos || q == std::string::npos) return p == q && a.size() == b.size();
        i = std::min(a.find(' ', p), a.size());
        k = std::min(b.find(' ', q), b.size());
        if (!same_token(a.substr(p, i - p), b.substr(q, k - q))) return false;
        if (i != k && p != q) return false;
    }
}

inline std::string without_signs_of_nan(std::string text)
{
    for (size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan", at + 1)) text[at] = ' ';
    return text;
}

// Empty, or the first line that differs.
inline std::string difference(const std::string &wanted, const std::string &found)
{
    std::istringstream w(without_signs_of_nan(wanted)), f(without_signs_of_nan(found));
    std::string lw, lf;
    for (int line = 1;; line++) {
        const bool more_w = (bool)std::getline(w, lw), more_f = (bool)std::getline(f, lf);
        if (!more_w && !more_f) break;
        if (more_w == more_f && same_line(lw, lf)) continue;
        return "line " + std::to_string(line) + "\nwanted: " + (more_w ? lw : "end") +
               "\nfound:  " + (more_f ? lf : "end");
    }
    const bool same_end =
        wanted.empty() == found.empty() && (wanted.empty() || (wanted.back() == '\n') == (found.back() == '\n'));
    return same_end ? "" : "line ends differ";
}

} // namespace printed

#endif
